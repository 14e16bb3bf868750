// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/player_core.h"

#include <algorithm>
#include <utility>

#include "platform/mediamgmnt/component_words.h"
#include "platform/mediamgmnt/media_report.h"
#include "platform/mediamgmnt/number_text.h"
#include "platform/mediamgmnt/property_text.h"
#include "platform/mediamgmnt/subtitle_settings.h"
#include "platform/mediamgmnt/thread_ledger.h"

namespace mediamgmnt {
namespace {

constexpr double kFastest = 64;

}  // namespace

PlayerCore::PlayerCore(unsigned long handle)
    : m_handle(handle), m_components(Preferences::instance()), m_dispatcher(handle), m_voice(m_dispatcher, m_facts) {}

template <typename Work>
bool PlayerCore::onControlThread(Work work) {
  if (!ensureThreads()) return false;
  m_loop.post([this, work = std::move(work)] { work(*m_playback); });
  return true;
}

bool PlayerCore::ensureThreads() {
  std::lock_guard lock(m_mutex);
  if (m_closed) return false;
  if (m_started) return true;
  ensureDispatcherLocked();
  startListedThread(m_handle, [self = shared_from_this()] { self->runControlThread(); });
  m_started = true;  // only now: for want of a thread the next command tries again
  return true;
}

void PlayerCore::ensureDispatcherLocked() {
  if (m_dispatching) return;
  startListedThread(m_handle, [self = shared_from_this()] { self->m_dispatcher.run(); });
  m_dispatching = true;
}

void PlayerCore::tell(const _SubtitleSettingsParams& settings) {
  std::lock_guard lock(m_mutex);
  if (m_closed) return;
  ensureDispatcherLocked();
  m_dispatcher.enqueue(settings);
}

void PlayerCore::runControlThread() {
  m_playback = std::make_unique<Playback>(m_loop, m_facts, m_protection, m_voice, m_components, m_handle);
  applyWindow();
  m_loop.run();
  m_playback.reset();
}

void PlayerCore::close() {
  {
    std::lock_guard lock(m_mutex);
    m_closed = true;
  }
  m_dispatcher.close();
  m_loop.quit();
  markClosed(m_handle);
}

bool PlayerCore::command(std::string_view name, std::string_view argument) {
  if (name == command::kPlay) return play(argument);
  if (name == command::kPause) return onControlThread([](Playback& playback) { playback.pause(); });
  if (name == command::kStop) return stop();
  if (name == command::kSeek) return seek(argument);
  if (name == command::kSetWindowProperties) return setWindow(argument);
  if (name == command::kStopBroadcast) return true;  // there is no tuner whose broadcast could run
  return selection(name, argument);
}

/// Taken here, so that a selection of what is not there is refused at once; carried out on the control thread.
bool PlayerCore::selection(std::string_view name, std::string_view argument) {
  const std::optional<SelectionCommand> command = parseSelection(name, argument);
  if (!command || !ensureThreads() || !apply(*command, m_components)) return false;
  return onControlThread([](Playback& playback) { playback.applySelection(); });
}

bool PlayerCore::play(std::string_view argument) {
  const std::optional<double> rate = parseNumber(argument);
  if (!rate || std::abs(*rate) > kFastest) return false;
  if (*rate == 0) return onControlThread([](Playback& playback) { playback.pause(); });
  return onControlThread([rate = *rate](Playback& playback) { playback.play(rate); });
}

bool PlayerCore::seek(std::string_view argument) {
  const std::optional<double> asked = parsePlace(argument);
  if (!asked || !ensureThreads()) return false;
  const double target = std::clamp(*asked, 0.0, kLatestPositionMs);
  m_facts.seekAsked(target);  // the position is the target from now on, not only when the control thread comes to it
  return onControlThread([target](Playback& playback) { playback.seek(target); });
}

bool PlayerCore::stop() {
  if (!ensureThreads()) return false;
  const Voice::Ticket ticket = m_voice.stopAsked();
  return onControlThread([this, ticket](Playback& playback) {
    playback.stop();
    m_voice.stopDone(ticket);
  });
}

/// Redrawing the last picture takes longer than a command may, so it is done on the control thread.
bool PlayerCore::setWindow(std::string_view argument) {
  const std::optional<media::Rect> rect = parseRect(argument);
  if (!rect) return false;
  std::lock_guard lock(m_mutex);
  if (m_closed) return false;
  m_window = rect;
  m_windowAsked = argument;
  if (m_started) m_loop.post([this] { applyWindow(); });
  return true;
}

/// A player that was never used has no ratings, and no threads for their sake.
void PlayerCore::judgeRatings() {
  std::lock_guard lock(m_mutex);
  if (!m_started || m_closed) return;
  m_loop.post([this] { m_playback->judgeRatings(); });
}

void PlayerCore::applyWindow() {
  std::optional<media::Rect> rect;
  std::string text;
  {
    std::lock_guard lock(m_mutex);
    rect = std::exchange(m_window, std::nullopt);
    text = m_windowAsked;
  }
  if (!rect) return;
  m_playback->setRect(*rect);
  std::lock_guard lock(m_mutex);
  m_windowInForce = text;
}

bool PlayerCore::setProperty(std::string_view key, std::string_view text) {
  std::string value(text);
  if (key == property::kInput) {
    SubtitleSettings::instance().repeat(*this);
    return onControlThread([value](Playback& playback) { playback.setInput(value); });
  }
  if (key == property::kForcedFormat) return onControlThread([value](Playback& playback) { playback.setDeclaredType(value); });
  if (key == property::kUserAgent) return onControlThread([value](Playback& playback) { playback.setUserAgent(value); });
  if (key == property::kCached) {
    return onControlThread([keep = parseCached(text)](Playback& playback) { playback.setKeepDownload(keep); });
  }
  if (key == property::kLoop) return onControlThread([plays = parsePlays(text)](Playback& playback) { playback.setPlays(plays); });
  if (key == property::kNativeWindowSize) {
    return onControlThread([size = parseSize(text)](Playback& playback) { playback.setMaxVideoSize(size.width, size.height); });
  }
  return false;
}

bool PlayerCore::property(std::string_view key, std::string& value) {
  if (key == property::kPosition) {
    value = formatWhole(m_facts.position());
    return true;
  }
  if (key == property::kPlaySpeed) {
    value = formatSpeed(m_facts.speed());
    return true;
  }
  if (key == property::kDuration) {
    const std::optional<long long> duration = m_facts.duration();
    if (duration) value = formatWhole(*duration);
    return duration.has_value();
  }
  if (key == property::kLastErrorCode) {
    const std::optional<int> code = m_facts.errorCode();
    if (code) value = formatWhole(*code);
    return code.has_value();
  }
  if (key.starts_with(report::kPrefix)) return reportProperty(key, value);
  if (componentProperty(key, value)) return true;
  const std::optional<std::string> answer = m_protection.answer(key);
  if (answer) value = *answer;
  return answer.has_value();
}

/// A player that was never used has nothing to place yet: its window is in force at once.
bool PlayerCore::reportProperty(std::string_view key, std::string& value) {
  if (key == report::kWindow) {
    std::lock_guard lock(m_mutex);
    value = m_started ? m_windowInForce : m_windowAsked;
    return !value.empty();
  }
  {
    std::lock_guard lock(m_mutex);
    if (!m_started || m_closed) return false;
  }
  m_loop.post([this] { m_report.set(m_playback->report()); });
  const std::optional<std::string> text = m_report.text(key);
  if (text) value = *text;
  return text.has_value();
}

bool PlayerCore::componentProperty(std::string_view key, std::string& value) {
  const std::optional<ComponentQuery> query = parseComponentQuery(key);
  if (!query) return false;
  if (!query->index) {
    value = formatWhole(static_cast<long long>(m_components.length(query->kind, query->active)));
    return true;
  }
  const std::optional<std::string> record = m_components.record(query->kind, query->active, *query->index);
  if (record) value = *record;
  return record.has_value();
}

}  // namespace mediamgmnt
