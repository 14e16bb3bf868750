// SPDX-License-Identifier: Apache-2.0
// What a player does with its commands and with what its pipeline tells: the order of the status words is decided here.
#pragma once

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "platform/mediamgmnt/components.h"
#include "platform/mediamgmnt/descriptor_opener.h"
#include "platform/mediamgmnt/parental_guard.h"
#include "platform/mediamgmnt/pipeline.h"
#include "platform/mediamgmnt/playback_facts.h"
#include "platform/mediamgmnt/protection_facts.h"
#include "platform/mediamgmnt/subtitle_feed.h"
#include "platform/mediamgmnt/task_loop.h"
#include "platform/mediamgmnt/video_plane.h"
#include "platform/mediamgmnt/voice.h"

namespace mediamgmnt {

/// One player's playback, from source to source.
///
///   idle --play/pause--> opening --prerolled--> ready <--> running --end--> over (play opens anew)
///                            \________ error _______________/
///
/// The wish (play or pause, speed, place) is kept apart from what the pipeline is doing; proceed() takes the next step towards it
/// whenever something changed. At most one seek is in flight; the newest of those asked meanwhile follows it.
///
/// Threads: all on the control thread, construction and destruction too. Borrows all that it is made of. Milliseconds throughout.
class Playback final : private PipelineListener {
 public:
  Playback(TaskLoop& loop, PlaybackFacts& facts, ProtectionFacts& protection, Voice& voice, Components& components,
           unsigned long player);
  ~Playback();

  void setInput(const std::string& url);
  void setDeclaredType(const std::string& mimeType) { m_settings.declaredType = mimeType; }
  void setUserAgent(const std::string& userAgent) { m_settings.userAgent = userAgent; }
  void setKeepDownload(bool keep) { m_settings.keepDownload = keep; }
  void setMaxVideoSize(int width, int height);
  /// How often the source is presented in a row; kEndless for ever.
  void setPlays(int plays) { m_plays = plays; }
  void setRect(media::Rect rect) { m_guard.setRect(rect); }
  /// The viewer's limit is another one.
  void judgeRatings();
  /// Of the open source; empty without one.
  StreamReport report() const { return m_pipeline == nullptr ? StreamReport{} : m_pipeline->report(); }

  void play(double rate);
  void pause();
  /// @p target is not negative. Pairs with PlaybackFacts::seekAsked().
  void seek(double target);
  void stop();
  /// The components' wishes have changed.
  void applySelection();

  static constexpr int kEndless = -1;

 private:
  using Clock = std::chrono::steady_clock;
  enum class Wish { Nothing, Pause, Play };
  struct Place {
    double target;
    double rate;
  };

  void onDescriptorServed() override;
  void onSourceAnswered() override;
  void onPrerolled() override;
  void onPlayingReached() override;
  void onBuffering(int percent) override;
  void onEnd() override;
  void onFailure(Failure failure) override;
  void onTracksChanged() override;
  void onDemuxerLocked() override;
  void onPresented(ComponentKind kind, const void* stream, const DecodedFacts& decoded) override;
  void onRightsMissing(const RightsError& error) override;
  void onRatings(RatingSource source, std::vector<Rating> ratings) override;

  // playback.cc: opening, the next step, the end
  void open();
  void openPipeline();
  void closePipeline();
  void forgetAnswers();
  void countAnew();
  void proceed();
  void start();
  void halt();
  void finish();
  bool playsAgain();
  void openAgain();
  bool endsTooEarly() const;
  bool showsKeyPicturesOnly() const;
  void fail(Failure failure);
  static constexpr int kAttempts = 4;
  void tryAgain();

  // playback_protection.cc: descriptors, rights, ratings
  bool mustResolve() const;
  void resolve(const std::string& url);
  void onDescriptor(const DescriptorOutcome& outcome);
  void tellMissingRights(const RightsError& error);
  void tellRatings();
  bool blamesKeys();
  void sayRatings();
  void pauseWhatIsBlocked();

  // playback_words.cc: answers
  void answerPlay();
  void answerPause();
  void leavePaused();
  void answerSeeks();
  void announceUnderrun();

  // playback_seek.cc: places and speeds
  void beginReposition();
  void repositionRefused(const Place& place);
  double clampTarget(double target) const;
  double clampToWindow(double target) const;
  double withinReach(double target) const;
  double presentTarget() const;
  void beginStepping(const Place& place);
  void stepInstead();
  void seekByWayOfElsewhere();
  void step();
  void leaveStepping();
  void rewoundToStart();
  double pipelinePosition() const;
  std::int64_t toPipeline(double target) const;

  // playback_tracks.cc: which tracks are presented
  void showWhatIsWished();
  void show(ComponentKind kind, bool shown);
  void showSubtitles();
  void sayChanged(ComponentKind kind);
  void noteDueSwitch();
  void beginSwitch();
  void reopen();
  void armSwitchWatch();
  bool isFetchingTrack() const;
  void seekWhenFetched(Clock::time_point latest, std::int64_t selected);
  void seekForSwitch();

  // playback_watch.cc: what is looked at while time passes
  void learnTimes();
  void learnWindow();
  void tick();
  void followPosition();
  void stretchDuration(double position);
  bool awaitsEnd(double position) const;
  void announceTrickPosition();
  void noteProgress() { m_lastProgress = Clock::now(); }
  void watchDownload();
  void watchForStall();
  void armConnectWatchdog();
  bool hasEnough() const;
  void checkUnderrun();

  TaskLoop& m_loop;
  PlaybackFacts& m_facts;
  ProtectionFacts& m_protection;
  Voice& m_voice;
  Components& m_components;
  SubtitleFeed m_subtitles;
  media::VideoSurface m_surface;
  const std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);  ///< what other threads post holds it weakly
  ParentalGuard m_guard;
  SourceSettings m_settings;
  int m_plays = 1;
  std::unique_ptr<DescriptorOpener> m_descriptorOpener;  ///< knows which descriptors the open source came through
  bool m_resolving = false;                              ///< what is to be opened is not known yet
  std::optional<ResolvedContent> m_content;              ///< what the source's descriptor says; none for a source that is media
  std::unique_ptr<Pipeline> m_pipeline;

  // The wish.
  Wish m_wish = Wish::Nothing;
  double m_wantedRate = 1;
  double m_startPosition = 0;       ///< where the next opening begins
  std::optional<Place> m_next;      ///< asked, not begun
  std::optional<Place> m_heldSeek;  ///< follows the seek that a switch needs

  // The pipeline's condition.
  bool m_prerolled = false;  ///< nothing is in flight
  bool m_timesKnown = false;
  bool m_running = false;    ///< the clock was told to run
  bool m_announced = false;  ///< the page was told so
  bool m_over = false;       ///< ended or failed: a pause opens nothing
  double m_rate = 1;         ///< the pipeline's
  std::optional<double> m_inFlight;
  int m_seeksRepeated = 0;  ///< in vain, for the present wish
  int m_playsDone = 0;
  bool m_endExpected = false;  ///< nothing has moved for a moment, as at the end
  int m_locks = 0;             ///< of the demuxer, one soon after the other
  Clock::time_point m_lastLock;
  int m_attempts = 0;  ///< openings of the source for the present wish
  bool m_live = false;
  bool m_durationGuessed = false;
  std::int64_t m_origin = 0;  ///< the pipeline's time at position 0, nanoseconds
  bool m_originKnown = false;

  // Answers that are due.
  bool m_connectedSaid = false;
  bool m_bufferReadyDue = false;
  bool m_playingDue = false;
  bool m_pausedSaid = false;  ///< and nothing since that leaves the paused state
  bool m_speedDue = false;
  bool m_pauseDue = false;
  int m_seeksDue = 0;

  // Another track.
  bool m_switchDue = false;     ///< asked for, not begun
  bool m_redrawDue = false;     ///< a picture is shown again while nothing moves
  int m_switchesTried = 0;      ///< in vain, for the present wish
  bool m_switchBySeek = false;  ///< it did not come by itself
  bool m_keepRunning = false;   ///< the next seek is for a switch: the clock runs on

  bool m_reopening = false;
  std::array<bool, kComponentKinds.size()> m_changesToSay = {};  ///< once a reopened source presents them

  // Rewinding by steps, where the pipeline cannot play backwards.
  bool m_stepping = false;
  double m_stepPosition = 0;
  Clock::time_point m_stepTime;

  // What is watched.
  int m_percent = 100;
  bool m_starved = false;  ///< running, but nothing moves
  double m_seenPosition = 0;
  Clock::time_point m_lastMove;
  Clock::time_point m_lastProgress;
  Clock::time_point m_lastTrickWord;
  TaskLoop::TimerId m_tickTimer = 0;
  TaskLoop::TimerId m_connectTimer = 0;
  TaskLoop::TimerId m_underrunTimer = 0;
  TaskLoop::TimerId m_pauseTimer = 0;
  TaskLoop::TimerId m_stepTimer = 0;
  TaskLoop::TimerId m_switchTimer = 0;
};

}  // namespace mediamgmnt
