// SPDX-License-Identifier: Apache-2.0
// Which tracks a player's source has, which of them are presented, and which the page wants: answered from memory.
#pragma once

#include <array>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/mediamgmnt/component.h"
#include "platform/mediamgmnt/preferences.h"

namespace mediamgmnt {

/// The tracks that are to be presented. A kind without a track has no stream id.
struct ComponentChoice {
  struct OfKind {
    std::string streamId;
    const void* stream = nullptr;
    bool shown = false;  ///< false: silent, hidden, or there is none
  };
  std::array<OfKind, kComponentKinds.size()> of;

  const OfKind& operator[](ComponentKind kind) const { return of[indexOf(kind)]; }
};

/// What only the decoder knows of some streams.
struct DecodedFacts {
  int channels = 0;
  double aspectRatio = 0;
};

/// One player's components.
///
/// A wish is what the page selected. It is kept as a description of the track, so that it finds the same track again in the list of
/// a second period, and in the list of the same source when it is played once more. A new source forgets it.
///
/// A list begins with the component that is presented first, of each kind; the others follow in the source's order. The object of a
/// component that a page has met first among the active ones is selected by its place there, which is 0: so it is the right one.
/// What is known of the others grows when they are presented; the record of an active one follows once the list has told it.
/// A list that takes the place of another one that differs has its number in each record, so that no record of it is taken for one
/// of the other's.
///
/// Threads: any, for all functions.
class Components {
 public:
  explicit Components(const Preferences& preferences) : m_preferences(preferences) {}

  std::size_t length(ComponentKind kind, bool active) const;
  std::optional<std::string> record(ComponentKind kind, bool active, std::size_t index);

  /// The wishes. False is a refusal: nothing like it is in the list. Without a list, before the first play, an index is taken on
  /// trust.
  bool select(ComponentKind kind, std::size_t index);
  bool select(std::string_view record);
  void selectDefault(ComponentKind kind);
  /// Refused when another one is selected.
  bool unselect(ComponentKind kind, std::size_t index);
  bool unselect(std::string_view record);
  void unselect(ComponentKind kind);

  /// A new source: nothing is known and nothing is wished.
  void forgetSource();
  void beginPresentation();
  /// The same presentation, from another opening of the source: all wishes hold on.
  void continuePresentation();
  /// Nothing is presented any more; what can be selected stays known.
  void endPresentation();

  /// The source's tracks in its order. A list of other streams than the present one waits until one of them is presented.
  void offer(ComponentList tracks);

  /// What is to be presented of the present list.
  ComponentChoice choice() const;
  /// What is to be presented of @p tracks, which may be a list that comes next.
  ComponentChoice choiceFrom(const ComponentList& tracks) const;

  /// That stream is seen or heard from now on. @return true when that changes what is active.
  bool present(ComponentKind kind, const void* stream, const DecodedFacts& decoded);
  /// @return true when that changes what is active.
  bool show(ComponentKind kind, bool shown);
  bool isShown(ComponentKind kind) const;
  /// Something of the present list is presented, and something else of it is to be.
  bool isSwitchDue() const;
  const void* presented(ComponentKind kind) const;
  std::optional<Component> presentedTrack(ComponentKind kind) const;

 private:
  enum class Wanted { Initial, Default, Nothing, Track, Index };
  struct Wish {
    Wanted wanted = Wanted::Initial;
    Component track;
    std::size_t index = 0;
    unsigned long era = 0;
  };
  struct State {
    Wish wish;
    bool shown = true;
    std::optional<Component> presented;
  };

  State& of(ComponentKind kind) { return m_states[indexOf(kind)]; }
  const State& of(ComponentKind kind) const { return m_states[indexOf(kind)]; }
  const Component* activeLocked(ComponentKind kind) const;
  const Component* chosenLocked(ComponentKind kind, const ComponentList& list) const;
  const Component* defaultLocked(ComponentKind kind, const ComponentList& list) const;
  std::optional<std::size_t> placeLocked(const Component& component) const;
  const Component* atLocked(ComponentKind kind, std::size_t index) const;
  const Component* byRecordLocked(std::string_view record) const;
  void wishLocked(ComponentKind kind, Wish wish);
  bool unselectLocked(const Component& component);
  void adoptLocked(ComponentList list);
  void settleWishesLocked(const ComponentList& list);
  bool isPresentingLocked() const;
  void arrangeLocked(ComponentList& list) const;
  void completeLocked(ComponentList& list) const;

  const Preferences& m_preferences;
  mutable std::mutex m_mutex;
  ComponentList m_list;  // guarded by m_mutex, like all below; in the order that pages see
  ComponentList m_next;  // of the streams that follow; in the source's order
  std::array<std::map<std::size_t, std::string>, kComponentKinds.size()> m_told;  ///< the records of m_list by their places
  unsigned m_generation = 0;
  ComponentList m_previous;  ///< of the last presentation of the same source
  unsigned m_previousGeneration = 0;
  std::array<State, kComponentKinds.size()> m_states;
  std::map<const void*, DecodedFacts> m_decoded;
};

}  // namespace mediamgmnt
