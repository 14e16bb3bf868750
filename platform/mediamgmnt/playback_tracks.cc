// SPDX-License-Identifier: Apache-2.0
// Which tracks are presented. The components know what is wished; here the pipeline is led there, and the page hears of it.
#include <array>
#include <utility>

#include "platform/mediamgmnt/playback.h"

namespace mediamgmnt {
namespace {

/// A track that has not come by itself after this is fetched by a seek to the present place.
constexpr std::chrono::milliseconds kLatestSwitch{500};

const char* wordFor(ComponentKind kind) {
  switch (kind) {
    case ComponentKind::Video: return status::kSelectedVideoChanged;
    case ComponentKind::Audio: return status::kSelectedAudioChanged;
    case ComponentKind::Subtitle: return status::kSelectedSubtitleChanged;
  }
  return status::kSelectedSubtitleChanged;
}

}  // namespace

void Playback::applySelection() {
  if (m_pipeline == nullptr) return;  // the next opening begins with it
  showWhatIsWished();
  noteDueSwitch();
  proceed();
}

void Playback::onTracksChanged() { applySelection(); }

void Playback::onPresented(ComponentKind kind, const void* stream, const DecodedFacts& decoded) {
  const bool changed = m_components.present(kind, stream, decoded);
  if (changed) sayChanged(kind);
  showWhatIsWished();
  if (!m_components.isSwitchDue()) m_loop.cancel(std::exchange(m_switchTimer, 0));
}

/// Hides at once; shows as soon as the right one is there.
void Playback::showWhatIsWished() {
  const ComponentChoice choice = m_components.choice();
  for (const ComponentKind kind : kComponentKinds) {
    const ComponentChoice::OfKind& wished = choice[kind];
    if (!wished.shown) {
      show(kind, false);
    } else if (wished.stream != nullptr && m_components.presented(kind) == wished.stream) {
      show(kind, true);
    }
  }
}

void Playback::show(ComponentKind kind, bool shown) {
  if (m_components.isShown(kind) == shown) return;
  m_pipeline->setShown(kind, shown);
  if (m_components.show(kind, shown)) sayChanged(kind);
  const bool mustRedraw = shown && kind == ComponentKind::Video && !m_running;
  if (mustRedraw) m_switchDue = true;
}

/// What a presentation begins with is no change.
void Playback::sayChanged(ComponentKind kind) {
  if (m_timesKnown) m_voice.say(wordFor(kind));
}

void Playback::noteDueSwitch() {
  if (m_components.isSwitchDue()) m_switchDue = true;
}

/// Adaptive sources have seconds of the old track in store, and a paused one lets nothing new through: the seek to the present
/// place empties them.
void Playback::beginSwitch() {
  m_switchDue = false;
  m_pipeline->selectStreams(m_components.choice());
  if (m_stepping) return;  // the next step seeks anyway
  const bool bySeek = std::exchange(m_switchBySeek, false) || m_pipeline->isAdaptive() || !m_running;
  if (!bySeek) return armSwitchWatch();
  if (m_next) return;  // what is sought now empties them too
  m_next = Place{presentTarget(), m_rate};
  m_keepRunning = true;
}

void Playback::armSwitchWatch() {
  m_loop.cancel(m_switchTimer);
  m_switchTimer = m_loop.postAfter(kLatestSwitch, [this] {
    m_switchTimer = 0;
    if (!m_components.isSwitchDue()) return;
    m_switchDue = m_switchBySeek = true;
    proceed();
  });
}

}  // namespace mediamgmnt
