// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/playback.h"

#include <utility>

#include "platform/mediamgmnt/web_address.h"

namespace mediamgmnt {
namespace {

/// A pause before the source has answered is answered with the source, so that a page may play on from it; but not later than this.
constexpr std::chrono::milliseconds kLatestPauseAnswer{500};

/// A medium that ends this much before its declared end is cut off.
constexpr std::chrono::milliseconds kMissingEnd{1500};

}  // namespace

Playback::Playback(TaskLoop& loop, PlaybackFacts& facts, ProtectionFacts& protection, Voice& voice, Components& components,
                   unsigned long player)
    : m_loop(loop),
      m_facts(facts),
      m_protection(protection),
      m_voice(voice),
      m_components(components),
      m_subtitles(voice),
      m_surface(player),
      m_guard(m_surface, protection, [this, alive = std::weak_ptr<bool>(m_alive)] {
        m_loop.post([this, alive] {
          if (!alive.expired()) tellRatings();
        });
      }) {
  m_settings.player = player;
}

Playback::~Playback() { closePipeline(); }

void Playback::setInput(const std::string& url) {
  stop();
  m_facts.forget();
  m_components.forgetSource();
  m_guard.forget();
  m_protection.forget();
  m_content.reset();
  m_settings.url = url;
  m_connectedSaid = false;
  m_voice.sayReady();
}

void Playback::setMaxVideoSize(int width, int height) {
  m_settings.maxVideoWidth = width;
  m_settings.maxVideoHeight = height;
}

void Playback::play(double rate) {
  if (m_guard.isBlocked()) return pause();
  if (m_pauseDue) answerPause();
  m_wish = Wish::Play;
  m_wantedRate = rate;
  m_playingDue = m_speedDue = true;
  if (m_pipeline == nullptr) {
    m_playsDone = 0;
    m_attempts = 1;
    countAnew();
    return open();
  }
  const double present = m_stepping ? m_facts.speed() : m_next ? m_next->rate : m_rate;
  if (m_heldSeek) {
    m_heldSeek->rate = rate;  // it comes at the end of a switch
  } else if (present != rate) {
    const double target = presentTarget();
    leaveStepping();
    m_next = Place{target, rate};
  }
  if (m_stepping) return answerPlay();
  proceed();
}

void Playback::pause() {
  const bool opensSource = m_pipeline == nullptr && !m_over && !m_settings.url.empty();
  m_wish = Wish::Pause;
  leaveStepping();
  if (opensSource) {
    m_playsDone = 0;
    m_attempts = 1;
    countAnew();
    m_wantedRate = 1;
    open();
  }
  if (m_pipeline == nullptr || m_connectedSaid) {
    if (isFetchingTrack()) {
      m_announced = m_starved = false;  // the pipeline itself pauses when the track's seek is done
    } else {
      halt();
    }
    return answerPause();
  }
  m_pauseDue = true;
  m_loop.cancel(m_pauseTimer);
  m_pauseTimer = m_loop.postAfter(kLatestPauseAnswer, [this] {
    if (m_pauseDue) answerPause();
  });
}

void Playback::stop() {
  closePipeline();
  m_surface.clear();
  forgetAnswers();
  m_wish = Wish::Nothing;
  m_wantedRate = 1;
  m_startPosition = 0;
  m_over = false;
  m_pausedSaid = false;
}

/// A descriptor is looked into first; what is asked meanwhile is kept as the wish.
void Playback::open() {
  m_over = false;
  if (m_resolving) return;
  if (mustResolve()) return resolve(m_settings.url);
  openPipeline();
}

void Playback::openPipeline() {
  m_prerolled = m_timesKnown = m_running = m_announced = m_starved = m_live = m_durationGuessed = false;
  m_rate = 1;
  m_percent = 100;
  m_bufferReadyDue = true;
  m_next.reset();
  m_inFlight.reset();
  if (m_startPosition > 0 || m_wantedRate != 1) m_next = Place{std::exchange(m_startPosition, 0), m_wantedRate};
  m_facts.freezeAt(m_next ? m_next->target : 0);
  noteProgress();
  PipelineListener& listener = *this;
  if (m_reopening) {
    m_components.continuePresentation();
  } else {
    m_components.beginPresentation();
    m_changesToSay = {};
  }
  SourceSettings settings = m_settings;
  if (m_content) {
    settings.url = m_content->url;
    settings.declaredType = m_content->mimeType;
  }
  m_pipeline = std::make_unique<Pipeline>(m_loop, listener, m_surface, m_components, m_subtitles, settings);
  for (const ComponentKind kind : kComponentKinds) m_pipeline->setShown(kind, m_components.isShown(kind));
  if (m_settings.url.empty()) return fail(Failure::ContentNotAvailable);
  if (isWebAddress(settings.url) && !namesHost(settings.url)) return fail(Failure::CannotConnect);
  if (!m_pipeline->open()) return fail(Failure::InsufficientResources);
  armConnectWatchdog();
  m_tickTimer = m_loop.postAfter(std::chrono::milliseconds(200), [this] { tick(); });
}

void Playback::closePipeline() {
  for (TaskLoop::TimerId* const timer :
       {&m_tickTimer, &m_connectTimer, &m_underrunTimer, &m_pauseTimer, &m_stepTimer, &m_switchTimer}) {
    m_loop.cancel(std::exchange(*timer, 0));
  }
  m_descriptorOpener.reset();
  m_resolving = false;
  m_pipeline.reset();
  m_next.reset();
  m_heldSeek.reset();
  m_inFlight.reset();
  if (m_reopening) {
    m_subtitles.interrupt();
  } else {
    m_subtitles.end();
  }
  m_components.endPresentation();
  m_prerolled = m_running = m_announced = m_stepping = m_starved = m_switchDue = m_switchBySeek = m_redrawDue = m_keepRunning =
      false;
  m_switchesTried = 0;
}

void Playback::forgetAnswers() {
  m_bufferReadyDue = m_playingDue = m_speedDue = m_pauseDue = false;
  m_seeksDue = 0;
}

/// A source that is opened once more for the same wish goes on counting from where it did.
void Playback::countAnew() {
  m_origin = 0;
  m_originKnown = false;
}

/// Takes the next step towards the wish; called whenever something has changed.
void Playback::proceed() {
  if (m_pipeline == nullptr || !m_prerolled) return;  // opening, or a seek is in flight: its end comes here again
  if (isFetchingTrack()) return;                      // its end comes here again
  if (m_next) return beginReposition();
  if (m_switchDue) beginSwitch();
  if (!m_prerolled || isFetchingTrack()) return;
  if (m_next) return beginReposition();
  if (m_wish != Wish::Play) return halt();
  if (m_stepping) return;
  if (!m_running && !hasEnough()) return;  // the missing percents come here again
  start();
}

void Playback::start() {
  if (m_running) {
    if (m_announced) answerPlay();
    return;
  }
  m_running = true;
  m_lastMove = Clock::now();
  m_pipeline->play();
}

void Playback::halt() {
  if (!m_running) return;
  m_running = m_announced = m_starved = false;
  m_pipeline->pause();
}

void Playback::onSourceAnswered() {
  m_loop.cancel(std::exchange(m_connectTimer, 0));
  noteProgress();
  if (!m_connectedSaid) m_connectedSaid = m_voice.say(status::kConnected);
  if (m_pauseDue) answerPause();
}

void Playback::onPrerolled() {
  m_prerolled = true;
  m_inFlight.reset();
  if (!m_heldSeek) m_seeksRepeated = 0;
  if (!m_next) m_next = std::exchange(m_heldSeek, std::nullopt);
  noteProgress();
  if (!m_timesKnown) m_pipeline->refreshTracks();
  if (!m_timesKnown) learnTimes();
  noteDueSwitch();
  if (!m_next && m_wish != Wish::Play) answerSeeks();
  proceed();
}

void Playback::onPlayingReached() {
  if (!m_running || !m_prerolled) return;  // said before the last pause or seek
  if (m_next) return;                      // a switch is done, the seek that was asked for meanwhile comes now
  m_announced = true;
  m_facts.runFrom(pipelinePosition(), m_rate);
  answerPlay();
}

void Playback::onEnd() {
  // Said before the last pause or seek, or before the one that a switch is about to make.
  if (m_pipeline->hasAudioOrVideo() && (!m_running || !m_prerolled || isFetchingTrack())) return;
  if (!m_pipeline->hasAudioOrVideo()) return fail(Failure::FormatNotSupported);
  if (m_rate < 0) return rewoundToStart();
  if (endsTooEarly()) return fail(Failure::CorruptContent);
  if (playsAgain()) {
    ++m_seeksDue;
    if (!m_pipeline->canSeek()) return openAgain();
    m_next = Place{0, m_rate};
    m_subtitles.expectSeek();
    return proceed();
  }
  finish();
}

/// Where the source's beginning cannot be sought.
void Playback::openAgain() {
  m_startPosition = 0;
  m_wantedRate = m_rate;
  closePipeline();
  countAnew();
  open();
  m_bufferReadyDue = false;  // the page goes on playing
}

bool Playback::playsAgain() {
  ++m_playsDone;
  return m_plays == kEndless || m_playsDone < m_plays;
}

bool Playback::endsTooEarly() const {
  const std::optional<long long> duration = m_facts.duration();
  if (m_live || showsKeyPicturesOnly() || !duration || !m_pipeline->declaresDuration()) return false;
  const std::int64_t position = m_pipeline->position();
  const std::chrono::milliseconds least = std::chrono::milliseconds(*duration) - kMissingEnd;
  return position != Pipeline::kUnknown && pipelinePosition() < static_cast<double>(least.count()) &&
         m_pipeline->isAllShorterThan(least);
}

/// The last picture stays on the plane until a stop or a new source.
void Playback::finish() {
  if (m_durationGuessed) m_facts.setDuration(static_cast<long long>(pipelinePosition()));
  stretchDuration(pipelinePosition());
  const double end = static_cast<double>(m_facts.duration().value_or(0));
  m_over = true;
  m_wish = Wish::Nothing;
  forgetAnswers();
  m_facts.freezeAt(end);
  m_facts.setSpeed(0);
  m_voice.say(status::kFinished);
  m_voice.say(status::kPlaySpeedChanged);
  closePipeline();
}

void Playback::onFailure(Failure failure) {
  if (failure == Failure::NotAvailableAtPosition && !m_timesKnown && m_attempts < kAttempts) return tryAgain();
  fail(failure);
}

/// The adaptive demuxers of GStreamer 1.22 report a missing segment, too, when all of a short stream has come before they have made
/// its outputs.
void Playback::tryAgain() {
  ++m_attempts;
  m_startPosition = m_next ? m_next->target : 0;
  closePipeline();
  open();
}

void Playback::fail(Failure failure) {
  if (failure != Failure::NoRights && blamesKeys()) return;
  m_over = true;
  m_wish = Wish::Nothing;
  if (m_playingDue) leavePaused();
  forgetAnswers();
  m_facts.freezeAt(static_cast<double>(m_facts.position()));
  if (failure == Failure::NoRights) m_voice.say(status::kDrmRightsError);
  m_facts.setErrorCode(errorCodeOf(failure));
  m_facts.setSpeed(0);
  m_voice.say(status::kError);
  closePipeline();
  m_surface.clear();
}

}  // namespace mediamgmnt
