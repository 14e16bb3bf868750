// SPDX-License-Identifier: Apache-2.0
// One opened source: the GStreamer pipeline from a URL to the video plane and the sound device.
#pragma once

#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/mediamgmnt/build_gate.h"
#include "platform/mediamgmnt/components.h"
#include "platform/mediamgmnt/content_ratings.h"
#include "platform/mediamgmnt/content_rights.h"
#include "platform/mediamgmnt/download_rest.h"
#include "platform/mediamgmnt/error_map.h"
#include "platform/mediamgmnt/fetched_media.h"
#include "platform/mediamgmnt/http_fetch.h"
#include "platform/mediamgmnt/input_progress.h"
#include "platform/mediamgmnt/key_session.h"
#include "platform/mediamgmnt/protection_facts.h"
#include "platform/mediamgmnt/rating.h"
#include "platform/mediamgmnt/store_room.h"
#include "platform/mediamgmnt/stream_reader.h"
#include "platform/mediamgmnt/stream_report.h"
#include "platform/mediamgmnt/subtitle_feed.h"
#include "platform/mediamgmnt/task_loop.h"
#include "platform/mediamgmnt/video_plane.h"

namespace mediamgmnt {

/// What is to be opened, and how.
struct SourceSettings {
  std::string url;
  std::string declaredType;  ///< MIME type; may be empty
  std::string userAgent;     ///< empty: GStreamer's own
  bool keepDownload = true;  ///< progressive media over HTTP are kept on disc while they play, so that they can be rewound
  int maxVideoWidth = 0;     ///< adaptive streaming takes no larger picture; 0: any
  int maxVideoHeight = 0;
  unsigned long player = 0;  ///< whose it is
};

/// Receives what happens to a pipeline, on the control thread.
class PipelineListener {
 public:
  virtual void onDescriptorServed() = 0;  ///< the server says that this is no media but a content-access-streaming descriptor
  virtual void onSourceAnswered() = 0;
  virtual void onPrerolled() = 0;       ///< everything selected is ready to be shown; also after each seek
  virtual void onPlayingReached() = 0;  ///< the clock runs
  virtual void onBuffering(int percent) = 0;
  virtual void onEnd() = 0;
  virtual void onFailure(Failure failure) = 0;
  virtual void onTracksChanged() = 0;  ///< the components have been offered what is known now
  virtual void onDemuxerLocked() = 0;  ///< it neither seeks nor selects any more: the source is to be opened anew
  /// The first picture or sound of another stream has come to its output.
  virtual void onPresented(ComponentKind kind, const void* stream, const DecodedFacts& decoded) = 0;
  virtual void onRightsMissing(const RightsError& error) = 0;  ///< nothing can be played without them
  /// On a streaming thread, before what is rated is handed on.
  virtual void onRatings(RatingSource source, std::vector<Rating> ratings) = 0;

 protected:
  ~PipelineListener() = default;
};

/// uridecodebin3 with one video, one audio and one text output.
///
/// Threads: all functions on the control thread, which is also where the listener is called. GStreamer's streaming threads come in
/// through the static functions; they touch only the atomics, the surface, the components, the subtitles and what the two mutexes
/// guard. Ownership: borrows loop, listener, surface, components and subtitles; all outlive it. Destruction stops the pipeline and
/// waits for its streaming threads; the listener hears nothing afterwards.
class Pipeline {
 public:
  static constexpr std::int64_t kUnknown = -1;

  Pipeline(TaskLoop& loop, PipelineListener& listener, media::VideoSurface& surface, Components& components,
           SubtitleFeed& subtitles, SourceSettings settings);
  ~Pipeline();
  Pipeline(const Pipeline&) = delete;
  Pipeline& operator=(const Pipeline&) = delete;

  /// Begins to open the source, paused. @return false when an element is missing; the pipeline is of no use then.
  bool open();

  void play();
  void pause();

  /// Begins a flushing seek to @p place, in nanoseconds; onPrerolled() tells its end. @return false when the source cannot.
  bool seek(double rate, std::int64_t place, GstSeekFlags extraFlags);

  /// Begins to present other streams of the source. What follows is heard and seen at once after a seek only, where the source is
  /// adaptive. Not between two periods.
  void selectStreams(const ComponentChoice& choice);
  /// When media of an adaptive source arrived last, in microseconds of the monotonic clock.
  std::int64_t lastFetch() const { return m_lastFetchUs; }
  /// The source fetches a period that is not the one presented. GStreamer 1.22 takes no selection then, and locks itself up when it
  /// is asked; a seek ends it, and begins with what is chosen.
  bool isBetweenPeriods() const;
  /// Lets a seek between two periods go on that waits for the one before.
  void endPresentedPeriod();
  /// Hides a picture, silences a sound, or takes it back; also before there is any.
  void setShown(ComponentKind kind, bool shown);
  /// The next seek only passes by its place: neither picture nor subtitles nor ratings are taken from there.
  void passUnseen(bool unseen) { m_unseen = unseen; }
  /// Offers the components what is known of the streams by now.
  void refreshTracks();

  std::int64_t position() const;  ///< nanoseconds or kUnknown
  std::int64_t duration() const;  ///< nanoseconds or kUnknown: also for live sources
  /// The part of a live source that can be reached, nanoseconds. @return false when there is none.
  bool seekableWindow(std::int64_t& start, std::int64_t& end) const;

  StreamReport report() const;
  /// Of what must be downloaded to play, 100 being enough; 0 where that is not known. Nobody tells when it grows.
  int downloadedPercent();

  /// To be called when nothing has moved for a while; they do no harm when nothing is wrong.
  void wakeDownload();
  void makeRoomForTheEnd();

  bool isPrerolled() const;
  /// What to tell when nothing comes of a source whose keys were there but may be wrong; nothing for any other source.
  std::optional<RightsError> doubtfulRights() const;
  bool hasAudioOrVideo() const { return m_linked > 0; }
  /// The container says how long the medium is; transport streams and plain audio only have guesses.
  bool declaresDuration() const { return m_declaresDuration; }
  /// All that the source has was taken apart, and nothing of it lasts for that long.
  bool isAllShorterThan(std::chrono::nanoseconds length) const;
  /// Something was taken apart to its end since the last seek.
  bool hasDemuxedAnEnd() const { return m_progress.hasEnd(); }
  /// All sound and all pictures of a source that is not adaptive have been presented.
  bool isMediaOver() const;
  /// What is known of the duration may be less than there is: so of MP4 fragments, of which GStreamer 1.22 knows those it has met.
  bool mayLastLonger() const { return !m_declaresDuration || m_fragmented; }
  /// The source has given all that it has, and nothing that could be played was found in it.
  bool endedWithoutStreams() const { return m_sourceEnded && !m_adaptive && m_selected == 0; }
  /// DASH or HLS: fetched in segments, and live when it has no duration.
  bool isAdaptive() const { return m_adaptive; }
  /// tsdemux counts from the first clock reference, other demuxers from the first picture.
  bool isTransportStream() const { return m_transportStream; }
  /// Its server has other places than the next one.
  bool canSeek() const { return m_adaptive || isSourceSeekable(); }
  /// Transport streams refuse to play backwards; fragmented MP4 files stand still or jump; where a presentation of several periods
  /// begins, the demuxer looks for a period before, and crashes.
  bool playsBackwards() const { return !m_transportStream && !m_fragmented && !hasPeriods(); }

 private:
  using Kind = ComponentKind;
  /// What has come to an output; only its streaming thread's.
  struct Arrival {
    Pipeline* pipeline = nullptr;
    Kind kind = Kind::Video;
    const void* next = nullptr;  ///< announced, nothing of it has come yet
    const void* present = nullptr;
  };
  struct Presented {
    Kind kind = Kind::Video;
    const void* stream = nullptr;
    DecodedFacts decoded;
  };
  struct Output {
    GstElement* queue = nullptr;
    GstElement* sink = nullptr;
  };

  static void onPadAdded(GstElement* decoder, GstPad* pad, gpointer self);
  static void onElementAdded(GstBin* pipeline, GstBin* parent, GstElement* element, gpointer self);
  static void onSourceSetup(GstElement* decoder, GstElement* source, gpointer self);
  static void onTypeFound(GstElement* typefind, guint probability, GstCaps* caps, gpointer self);
  static GstPadProbeReturn onFirstBytes(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  static GstPadProbeReturn onSourceEvent(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  static GstPadProbeReturn onSourceSeek(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  static GstFlowReturn onPreroll(GstAppSink* sink, gpointer self);
  static GstFlowReturn onSample(GstAppSink* sink, gpointer self);
  static GstFlowReturn onTextPreroll(GstAppSink* sink, gpointer self);
  static GstFlowReturn onTextSample(GstAppSink* sink, gpointer self);
  static GstBusSyncReply onBusMessage(GstBus* bus, GstMessage* message, gpointer self);

  GstElement* sinkOf(Kind kind) const;
  std::int64_t positionOf(Kind kind) const;
  void attach(Kind kind, GstPad* pad);
  bool makeOutput(Kind kind, Output& output);
  void paint(GstSample* sample);
  GstElement* deinterlacerOf(GstElement* sink);
  GstElement* makeVideoSink();
  GstElement* makeTextSink();
  void feedText(GstSample* sample);
  void holdText();
  void releaseText();
  void discard(GstPad* pad);
  void watchTypeFinding(GstElement* typefind);
  static void onTypeHandled(GstElement* typefind, guint probability, GstCaps* caps, gpointer self);
  void endTypeFinding();
  void cancelFetch();
  bool isSourceSeekable() const;
  void limitVideoSize(GstElement* adaptiveDemux) const;
  void rememberSource(GstElement* source);
  void askForRange(GstElement* source) const;
  void noteAnswer(const GstStructure* answer);
  void takeInOrder(GstElement* typefind);
  static GstPadProbeReturn onSourceQuery(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  void rememberDownload(GstElement* downloadBuffer);
  static GstPadProbeReturn onDownloadRead(GstPad* pad, GstPadProbeInfo* info, gpointer self);

  // pipeline_inputs.cc
  struct Input;
  void watchInput(GstElement* element);
  static GstPadProbeReturn onInputData(GstPad* pad, GstPadProbeInfo* info, gpointer input);
  void makeRoomForTracks(GstPadProbeInfo* info);
  void holdEarlyEnd() const;
  GstPadProbeReturn orderEnds(Input& input, GstPadProbeInfo* info);
  bool keepEnd(GstElement* input);
  void forgetEnd(GstElement* input);
  void letKeptEndsPass();
  void goOnWithout(Input& input, GstStreamType type);

  // pipeline_report.cc
  void rememberAdaptiveDemux(GstElement* adaptiveDemux);
  GstElement* referenceTo(GstElement* const& element) const;
  void reportStore(StreamReport& out) const;
  int storedPercent(GstMessage* message);

  void reportUnplayable();

  // pipeline_tracks.cc
  static GstPadProbeReturn onOutputData(GstPad* pad, GstPadProbeInfo* info, gpointer arrival);
  static GstPadProbeReturn onManifestData(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  static void onStreamNotify(GstStreamCollection* collection, GstStream* stream, GParamSpec* what, gpointer self);
  void watchOutput(Kind kind, GstElement* queue);
  static GstPadProbeReturn onFetched(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  void watchSeeks(GstElement* demuxer);
  static GstPadProbeReturn onFlush(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  void restDownloads(bool rest);
  void watchFetching(GstElement* track);
  void watchManifest(GstElement* adaptiveDemux);
  void noteTrackOfPeriod(GstElement* track);
  static void endRemovedTracks(GstElement* adaptiveDemux);
  void handManifestOver(GstPad* demuxerPad);
  bool readManifest(const std::string& text);
  void noteAdaptiveDemux(GstElement* demuxer);
  void letFetchingBegin();
  void takeCollection(GstMessage* message);
  void takeSection(GstMessage* message);
  void keepCollectionLocked(GstStreamCollection* collection);
  void keepAnswers(const ComponentChoice& choice);
  static int onSelectStream(GstElement* decoder, GstStreamCollection* collection, GstStream* stream, gpointer self);
  void beginWith(GstObject* demuxer, const ComponentChoice& choice);
  void sendSelection(const std::vector<GstElement*>& receivers, const ComponentChoice& choice);
  void reportLocked();
  using TracksOfPeriods = std::map<long, std::map<std::string, std::shared_ptr<GstElement>>>;  ///< by number and name
  TracksOfPeriods tracksOfPeriods() const;
  void noteAnnouncedPeriodLocked();
  std::optional<long> periodToLeave() const;
  void letDemuxerFinish() const;
  void onDemuxerThread(const std::function<void()>& action, std::chrono::milliseconds patience) const;
  bool hasPeriods() const;
  std::optional<std::pair<std::int64_t, std::int64_t>> queryWindow() const;
  std::int64_t offPeriodEnd(std::int64_t place) const;
  bool sendSeek(double rate, std::int64_t target, GstSeekFlags flags);
  std::optional<double> noteSought(std::optional<double> seconds);
  std::optional<double> soughtSeconds() const;
  void reportPresented(Arrival& arrival, GstPad* pad);
  void tellPresented();
  void forgetDemuxer();
  void wakeDemuxer(unsigned track) const;
  void forgetCollections();

  // pipeline_protection.cc
  void watchEventInformation(GstElement* tsDemux);
  std::shared_ptr<KeySession> makeKeySession();
  void takeRatings(const DashManifest& manifest);
  void tellRatingsOf(GstSample* sample);
  void tellRatingsAt(std::int64_t positionNs);
  void askForLicences(const DashManifest& manifest);
  void fetchLicence(const LicenceOffer& offer);
  void answerContext(GstMessage* message);
  RightsError rightsError(KeyFault fault, const KeyId& id) const;

  void handle(GstMessage* message);
  void handleElementMessage(GstMessage* message);
  void handleMissingPlugin(const GstStructure& details);
  void handleHttpHeaders(const GstStructure& details);
  void handleError(GstMessage* message);
  void handleSelection(GstMessage* message);
  void handleStateChange(GstMessage* message);
  void reportAnswered();
  void reportPreroll();

  TaskLoop& m_loop;
  PipelineListener& m_listener;
  media::VideoSurface& m_surface;
  Components& m_components;
  SubtitleFeed& m_subtitles;
  const SourceSettings m_settings;
  const std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);  ///< queued messages hold it weakly

  BuildGate m_gate;
  StoreRoom m_room;
  GstElement* m_pipeline = nullptr;
  GstElement* m_decoder = nullptr;
  std::atomic<int> m_linked{0};  ///< audio and video outputs that have a stream
  std::atomic<bool> m_declaresDuration{false};
  std::atomic<bool> m_adaptive{false};
  std::atomic<bool> m_typeHandled{false};
  std::atomic<bool> m_sourceEnded{false};
  std::atomic<bool> m_hasRanges{true};
  std::atomic<bool> m_indexFirst{false};
  std::atomic<bool> m_comesInOrder{false};  ///< no other place can be asked for
  std::atomic<bool> m_endsPass{false};
  std::atomic<bool> m_inputsBegun{false};  ///< of an adaptive source: a buffer has passed since there are these inputs
  InputProgress m_progress;                ///< of a source that is not adaptive
  std::atomic<guint64> m_readEnd{0};       ///< of the download: behind what was read last
  std::atomic<bool> m_hasJumped{false};
  std::mutex m_keptEndsMutex;
  std::list<std::shared_ptr<GstElement>> m_keptEnds;  ///< guarded by m_keptEndsMutex: inputs whose end follows the first buffer
  std::atomic<bool> m_mediaArrived{false};            ///< something was fetched that could be taken apart
  std::atomic<bool> m_transportStream{false};
  std::atomic<bool> m_fragmented{false};
  std::atomic<bool> m_seeking{false};
  std::atomic<bool> m_demuxerLocked{false};  ///< for ever
  std::atomic<bool> m_flushing{false};       ///< an adaptive demuxer, for a seek
  std::atomic<bool> m_unseen{false};
  std::atomic<std::int64_t> m_lastFetchUs{0};
  FetchedMedia m_fetched;
  std::atomic<std::int64_t> m_demuxerMadeUs{0};
  std::atomic<bool> m_ending{false};
  std::atomic<guint32> m_flushOfSeek{GST_SEQNUM_INVALID};
  /// Held while something is sought or selected: the demuxer waits for both in each other's places.
  std::mutex m_steeringMutex;
  bool m_closing = false;  // guarded by m_steeringMutex
  std::mutex m_showMutex;  ///< a picture is drawn, or hidden, one after the other
  std::array<std::atomic<bool>, kComponentKinds.size()> m_shown = {true, true, true};
  std::array<Arrival, kComponentKinds.size()> m_arrivals;

  std::string m_manifestText;   ///< so far, on the thread that fetches it
  bool m_manifestRead = false;  ///< on the same thread

  mutable std::mutex m_trackMutex;
  std::vector<Presented> m_presented;  // guarded by m_trackMutex, like all below: not told yet
  SourceFacts m_facts;
  Streams m_streams;                                                   ///< of the newest collection
  std::size_t m_period = 0;                                            ///< of the newest collection
  std::array<std::string, kComponentKinds.size()> m_toSelect;          ///< stream ids of it, for a source that is not adaptive
  std::optional<double> m_soughtSeconds;                               ///< the target of a seek since the newest collection
  std::vector<std::pair<GstStreamCollection*, gulong>> m_collections;  ///< references, with the handlers connected to them
  bool m_refreshDue = false;
  std::unique_ptr<DownloadRest> m_downloadRest;                           ///< of the seek that is flushing
  mutable std::optional<std::pair<std::int64_t, std::int64_t>> m_window;  ///< the one learnt last, in nanoseconds
  std::vector<long> m_periodsBegun;                                       ///< numbers of those fetched, or about to be
  std::size_t m_periodsAnnounced = 0;         ///< how many of them are presented, were, or are about to be
  std::optional<std::size_t> m_periodSought;  ///< how many were begun with the one that a seek has begun anew
  std::vector<std::string> m_tracksOfPeriod;  ///< of the one begun last
  std::shared_ptr<GMainContext> m_demuxer;    ///< what the adaptive demuxer's own thread runs

  mutable std::mutex m_padMutex;
  Output m_outputs[3];                    // guarded by m_padMutex, index is Kind
  GstElement* m_typefind = nullptr;       // guarded by m_padMutex; a reference
  GstElement* m_source = nullptr;         // guarded by m_padMutex; a reference
  GstElement* m_download = nullptr;       // guarded by m_padMutex; a reference
  GstElement* m_adaptiveDemux = nullptr;  // guarded by m_padMutex; a reference

  const std::shared_ptr<KeySession> m_keys = makeKeySession();
  mutable std::mutex m_rightsMutex;
  RightsParty m_rightsParty;            // guarded by m_rightsMutex, like all below
  std::vector<RatedSpan> m_ratedSpans;  ///< empty for a source without ratings
  const RatedSpan* m_toldSpan = nullptr;

  // Control thread only.
  std::vector<std::unique_ptr<HttpFetch>> m_licenceFetches;
  int m_selected = 0;  ///< audio and video streams that the selection names
  bool m_answered = false;
  bool m_filling = true;  ///< the task loop's: too little is downloaded to play on
  bool m_prerollReported = false;
  bool m_backwards = false;
  bool m_textHeld = false;
};

}  // namespace mediamgmnt
