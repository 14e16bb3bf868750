// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/components.h"

#include <algorithm>
#include <utility>

#include "platform/mediamgmnt/track_choice.h"

namespace mediamgmnt {
namespace {

const Component* find(const ComponentList& list, const void* stream) {
  const auto found = std::find_if(list.begin(), list.end(), [=](const Component& each) { return each.stream == stream; });
  return found != list.end() ? &*found : nullptr;
}

bool isOfSameStreams(const ComponentList& one, const ComponentList& other) {
  if (one.size() != other.size()) return false;
  return std::all_of(one.begin(), one.end(), [&](const Component& each) { return find(other, each.stream) != nullptr; });
}

/// Puts @p list into the order of @p model by what @p isSame says. @return false, with @p list unchanged, when they differ.
template <typename IsSame>
bool orderLike(const ComponentList& model, ComponentList& list, IsSame isSame) {
  if (model.size() != list.size()) return false;
  ComponentList rest = list;
  ComponentList ordered;
  for (const Component& wanted : model) {
    const auto found = std::find_if(rest.begin(), rest.end(), [&](const Component& each) { return isSame(wanted, each); });
    if (found == rest.end()) return false;
    ordered.push_back(std::move(*found));
    rest.erase(found);
  }
  list = std::move(ordered);
  return true;
}

bool isSameStream(const Component& one, const Component& other) { return one.stream == other.stream; }

bool looksAlikeInPlace(const ComponentList& one, const ComponentList& other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(), looksAlike);
}

}  // namespace

std::size_t Components::length(ComponentKind kind, bool active) const {
  std::lock_guard lock(m_mutex);
  if (active) return activeLocked(kind) != nullptr ? 1 : 0;
  return static_cast<std::size_t>(
      std::count_if(m_list.begin(), m_list.end(), [=](const Component& each) { return each.kind == kind; }));
}

std::optional<std::string> Components::record(ComponentKind kind, bool active, std::size_t index) {
  std::lock_guard lock(m_mutex);
  const Component* const component = !active ? atLocked(kind, index) : index == 0 ? activeLocked(kind) : nullptr;
  if (component == nullptr) return std::nullopt;
  const std::optional<std::size_t> place = placeLocked(*component);
  if (!place || *place == 0) return recordOf(*component);
  std::map<std::size_t, std::string>& told = m_told[indexOf(kind)];
  if (!active) return told[*place] = recordOf(*component);
  const auto known = told.find(*place);
  return known != told.end() ? known->second : recordOf(*component);
}

/// Among those of its kind; none where the list has another one in its stead.
std::optional<std::size_t> Components::placeLocked(const Component& component) const {
  std::size_t place = 0;
  for (const Component& each : m_list) {
    if (&each == &component) return place;
    if (each.kind == component.kind) ++place;
  }
  return std::nullopt;
}

/// As the present list has it: what is known of a stream grows while it plays.
const Component* Components::activeLocked(ComponentKind kind) const {
  const State& state = of(kind);
  if (!state.shown || !state.presented) return nullptr;
  const Component* const listed = find(m_list, state.presented->stream);
  return listed != nullptr ? listed : &*state.presented;
}

const Component* Components::atLocked(ComponentKind kind, std::size_t index) const {
  for (const Component& each : m_list) {
    if (each.kind != kind) continue;
    if (index == 0) return &each;
    --index;
  }
  return nullptr;
}

const Component* Components::byRecordLocked(std::string_view record) const {
  const auto found =
      std::find_if(m_list.begin(), m_list.end(), [=](const Component& each) { return selectionTextOf(each) == record; });
  return found != m_list.end() ? &*found : nullptr;
}

void Components::wishLocked(ComponentKind kind, Wish wish) {
  wish.era = m_preferences.era(kind);
  of(kind).wish = std::move(wish);
}

bool Components::select(ComponentKind kind, std::size_t index) {
  std::lock_guard lock(m_mutex);
  const Component* const component = atLocked(kind, index);
  if (component == nullptr && !m_list.empty()) return false;
  if (component == nullptr) {
    wishLocked(kind, {Wanted::Index, {}, index, 0});
  } else {
    wishLocked(kind, {Wanted::Track, *component, 0, 0});
  }
  return true;
}

bool Components::select(std::string_view record) {
  std::lock_guard lock(m_mutex);
  const Component* const component = byRecordLocked(record);
  if (component == nullptr) return false;
  wishLocked(component->kind, {Wanted::Track, *component, 0, 0});
  return true;
}

void Components::selectDefault(ComponentKind kind) {
  std::lock_guard lock(m_mutex);
  wishLocked(kind, {Wanted::Default, {}, 0, 0});
}

bool Components::unselect(ComponentKind kind, std::size_t index) {
  std::lock_guard lock(m_mutex);
  const Component* const component = atLocked(kind, index);
  return component != nullptr && unselectLocked(*component);
}

bool Components::unselect(std::string_view record) {
  std::lock_guard lock(m_mutex);
  const Component* const component = byRecordLocked(record);
  return component != nullptr && unselectLocked(*component);
}

bool Components::unselectLocked(const Component& component) {
  if (chosenLocked(component.kind, m_list) != &component) return false;
  wishLocked(component.kind, {Wanted::Nothing, {}, 0, 0});
  return true;
}

void Components::unselect(ComponentKind kind) {
  std::lock_guard lock(m_mutex);
  wishLocked(kind, {Wanted::Nothing, {}, 0, 0});
}

void Components::forgetSource() {
  std::lock_guard lock(m_mutex);
  m_list.clear();
  m_next.clear();
  m_decoded.clear();
  m_previous.clear();
  m_told = {};
  m_generation = m_previousGeneration = 0;
  m_states = {};
}

void Components::beginPresentation() {
  {
    std::lock_guard lock(m_mutex);
    for (const ComponentKind kind : kComponentKinds) {
      if (of(kind).wish.era < m_preferences.era(kind)) of(kind).wish = {};
    }
  }
  continuePresentation();
}

void Components::continuePresentation() {
  std::lock_guard lock(m_mutex);
  m_next.clear();
  m_decoded.clear();
  m_previous = m_list;
  m_previousGeneration = m_generation;
  for (const ComponentKind kind : kComponentKinds) {
    State& state = of(kind);
    state.wish.track.stream = nullptr;  // may be another stream's address by now
    state.presented.reset();
    const bool byDefault = kind != ComponentKind::Subtitle;
    state.shown = state.wish.wanted == Wanted::Initial ? byDefault : state.wish.wanted != Wanted::Nothing;
  }
}

void Components::endPresentation() {
  std::lock_guard lock(m_mutex);
  m_next.clear();
  for (State& state : m_states) state.presented.reset();
}

void Components::offer(ComponentList tracks) {
  std::lock_guard lock(m_mutex);
  completeLocked(tracks);
  if (isPresentingLocked() && !isOfSameStreams(m_list, tracks)) {
    m_next = std::move(tracks);
    return;
  }
  adoptLocked(std::move(tracks));
}

bool Components::isPresentingLocked() const {
  return std::any_of(m_states.begin(), m_states.end(), [](const State& each) { return each.presented.has_value(); });
}

/// A list that says the same as the one before it, or as the one of the last time, keeps its order, so that objects of it which a
/// page holds still mean the same.
void Components::adoptLocked(ComponentList list) {
  settleWishesLocked(list);
  const bool presenting = isPresentingLocked();
  const unsigned generation = m_generation;
  if (presenting) {
    if (!orderLike(m_list, list, isSameStream) && !orderLike(m_list, list, looksAlike)) {
      arrangeLocked(list);
      ++m_generation;
    }
  } else if (orderLike(m_previous, list, looksAlike)) {
    m_generation = m_previousGeneration;
  } else {
    arrangeLocked(list);
    m_generation = m_previous.empty() ? 0 : m_previousGeneration + 1;
  }
  if (m_generation != generation || (!presenting && !looksAlikeInPlace(m_list, list))) m_told = {};
  const std::string name = m_generation > 0 ? std::to_string(m_generation + 1) : "";
  for (Component& each : list) each.generation = name;
  m_list = std::move(list);
}

/// A place that was taken on trust becomes the track at that place; a track becomes what the list knows of it by now.
void Components::settleWishesLocked(const ComponentList& list) {
  for (const ComponentKind kind : kComponentKinds) {
    Wish& wish = of(kind).wish;
    if (wish.wanted != Wanted::Track && wish.wanted != Wanted::Index) continue;
    const Component* const meant = wish.wanted == Wanted::Index ? chosenLocked(kind, list) : find(list, wish.track.stream);
    if (meant == nullptr) continue;
    wish.track = *meant;
    wish.wanted = Wanted::Track;
  }
}

void Components::arrangeLocked(ComponentList& list) const {
  for (const ComponentKind kind : kComponentKinds) {
    const Component* const first = chosenLocked(kind, list) != nullptr ? chosenLocked(kind, list) : defaultLocked(kind, list);
    if (first == nullptr) continue;
    const auto chosen = list.begin() + (first - list.data());
    std::rotate(list.begin(), chosen, chosen + 1);
  }
}

void Components::completeLocked(ComponentList& list) const {
  for (Component& each : list) {
    const auto decoded = m_decoded.find(each.stream);
    if (decoded == m_decoded.end()) continue;
    if (each.channels == 0) each.channels = decoded->second.channels;
    if (each.aspectRatio == 0) each.aspectRatio = decoded->second.aspectRatio;
  }
}

const Component* Components::defaultLocked(ComponentKind kind, const ComponentList& list) const {
  return defaultComponent(kind, list, m_preferences.languages(kind));
}

/// What the wish means in this list. Null: nothing is to be presented of that kind.
const Component* Components::chosenLocked(ComponentKind kind, const ComponentList& list) const {
  const Wish& wish = of(kind).wish;
  switch (wish.wanted) {
    case Wanted::Nothing: return nullptr;
    case Wanted::Initial:
      if (kind == ComponentKind::Subtitle) return nullptr;
      break;
    case Wanted::Default: break;
    case Wanted::Track: {
      const Component* const same = find(list, wish.track.stream);
      const Component* const like = same != nullptr ? same : matchingComponent(list, wish.track);
      if (like != nullptr) return like;
      if (kind == ComponentKind::Subtitle) return nullptr;  // another language is no help
      break;
    }
    case Wanted::Index: {
      std::size_t index = wish.index;
      for (const Component& each : list) {
        if (each.kind == kind && index-- == 0) return &each;
      }
      break;
    }
  }
  return defaultLocked(kind, list);
}

ComponentChoice Components::choice() const {
  std::lock_guard lock(m_mutex);
  ComponentChoice choice;
  for (const ComponentKind kind : kComponentKinds) {
    const Component* const chosen = chosenLocked(kind, m_list);
    ComponentChoice::OfKind& out = choice.of[indexOf(kind)];
    out.shown = m_list.empty() ? of(kind).shown : chosen != nullptr;
    // What is hidden goes on unseen: taking it up again is quicker than starting it.
    const Component* const taken = chosen != nullptr                ? chosen
                                   : of(kind).presented.has_value() ? find(m_list, of(kind).presented->stream)
                                                                    : defaultLocked(kind, m_list);
    if (taken != nullptr) {
      out.stream = taken->stream;
      out.streamId = taken->streamId;
    }
  }
  return choice;
}

ComponentChoice Components::choiceFrom(const ComponentList& tracks) const {
  std::lock_guard lock(m_mutex);
  ComponentChoice choice;
  for (const ComponentKind kind : kComponentKinds) {
    const Component* const chosen = chosenLocked(kind, tracks);
    const Component* const taken = chosen != nullptr ? chosen : defaultLocked(kind, tracks);
    if (taken != nullptr) choice.of[indexOf(kind)] = {taken->streamId, taken->stream, chosen != nullptr};
  }
  return choice;
}

bool Components::present(ComponentKind kind, const void* stream, const DecodedFacts& decoded) {
  std::lock_guard lock(m_mutex);
  const Component* const before = activeLocked(kind);
  const std::optional<Component> old = before != nullptr ? std::optional<Component>(*before) : std::nullopt;
  m_decoded[stream] = decoded;
  if (find(m_list, stream) == nullptr && find(m_next, stream) != nullptr) adoptLocked(std::exchange(m_next, {}));
  completeLocked(m_list);
  const Component* const now = find(m_list, stream);
  if (now == nullptr) return false;  // of a list that is gone
  of(kind).presented = *now;
  if (!of(kind).shown) return false;
  return !old || (old->stream != stream && !looksAlike(*old, *now));
}

bool Components::show(ComponentKind kind, bool shown) {
  std::lock_guard lock(m_mutex);
  const bool changed = of(kind).shown != shown;
  of(kind).shown = shown;
  return changed && of(kind).presented.has_value();
}

bool Components::isShown(ComponentKind kind) const {
  std::lock_guard lock(m_mutex);
  return of(kind).shown;
}

bool Components::isSwitchDue() const {
  std::lock_guard lock(m_mutex);
  return std::any_of(kComponentKinds.begin(), kComponentKinds.end(), [this](ComponentKind kind) {
    const Component* const chosen = chosenLocked(kind, m_list);
    const std::optional<Component>& presented = of(kind).presented;
    if (chosen == nullptr) return false;
    if (!presented) return kind == ComponentKind::Subtitle && isPresentingLocked();
    return presented->stream != chosen->stream && find(m_list, presented->stream) != nullptr;
  });
}

std::optional<Component> Components::presentedTrack(ComponentKind kind) const {
  std::lock_guard lock(m_mutex);
  return of(kind).presented;
}

const void* Components::presented(ComponentKind kind) const {
  std::lock_guard lock(m_mutex);
  return of(kind).presented ? of(kind).presented->stream : nullptr;
}

}  // namespace mediamgmnt
