// SPDX-License-Identifier: Apache-2.0
// The media library as the plugin sees it: ten functions, three callbacks, and the text vocabulary of commands, properties and
// status words. Declarations only: a media library (libmediamgmnt is the reference one) defines the functions.
//
// Common promises: handles are never 0 and never reused; no callback is made on the calling thread from inside one of the
// functions; callbacks of one handle are serial; every function may be called from any thread, also from a callback, and returns
// without waiting for the network or a pipeline. Positions and durations are milliseconds. Numbers use the C locale.
#pragma once

#include <cstddef>
#include <cstdint>

#define MEDIAMGMNT_API __attribute__((visibility("default")))

/// Kinds of text-track notification, with what `data` points at.
enum _TextTrackEventType : std::int32_t {
  TEXT_TRACK_ADD = 0,
  TEXT_TRACK_REMOVE = 1,
  TEXT_TRACK_CUE = 2,
  TTML_SUBTITLE = 3,       ///< a _TextTrackText
  TTML_SUBTITLE_FONT = 4,  ///< two _TextTrackText in a row
  TTML_SUBTITLE_SHOW = 5,
  TTML_SUBTITLE_HIDE = 6,
  TTML_SUBTITLE_CHANGE = 7,
};

/// A text owned by the media library, valid during the callback, not NUL-terminated.
struct _TextTrackText {
  const char* text;
  std::int32_t length;  ///< bytes
};

/// The viewer's subtitle settings, passed by value. The layout is part of the interface.
struct _SubtitleSettingsParams {
  std::int32_t value;
  char text[64];  ///< not necessarily NUL-terminated
  std::int32_t textLength;
};
static_assert(sizeof(_SubtitleSettingsParams) == 72);
static_assert(offsetof(_SubtitleSettingsParams, value) == 0);
static_assert(offsetof(_SubtitleSettingsParams, text) == 4);
static_assert(offsetof(_SubtitleSettingsParams, textLength) == 68);

enum AVComponentType : std::int32_t {
  AV_COMPONENT_TYPE_VIDEO = 0,
  AV_COMPONENT_TYPE_AUDIO = 1,
};

using MediaMessageCallback = void (*)(unsigned long handle, const char* message, void* user);
using MediaTextTrackCallback = void (*)(unsigned long handle, _TextTrackEventType type, void* data);
using MediaSubtitleSettingsCallback = void (*)(unsigned long handle, _SubtitleSettingsParams params);

extern "C" {
/// @return a new handle, 0 when there is none to be had. @p kind is always 1.
MEDIAMGMNT_API unsigned long openPlayer(int kind);
/// Never waits for a callback; none starts for the handle afterwards.
MEDIAMGMNT_API int closePlayer(unsigned long handle);
/// All of the following: non-zero for success, 0 for a refusal or an unknown handle. Texts are copied during the call.
MEDIAMGMNT_API int cmdPlayer(unsigned long handle, const char* command, const char* argument);
/// Writes a NUL-terminated text of at most @p size bytes, the NUL included; 0 leaves @p buffer's meaning undefined.
MEDIAMGMNT_API int getPlayerProperty(unsigned long handle, const char* key, char* buffer, int size);
MEDIAMGMNT_API int setPlayerProperty(unsigned long handle, const char* key, const char* value);
MEDIAMGMNT_API int registerCallback(unsigned long handle, MediaMessageCallback callback);
MEDIAMGMNT_API int registerTextTrackCallback(unsigned long handle, MediaTextTrackCallback callback);
MEDIAMGMNT_API int registerSubtitleSettingsChangedCallback(unsigned long handle, MediaSubtitleSettingsCallback callback);
/// Writes milliseconds; writes nothing when the position is not known.
MEDIAMGMNT_API int getOOBPlayerPosition(unsigned long handle, int* position);
/// Process-wide: the next presentation starts with the default component of that type.
MEDIAMGMNT_API int hbbSelectDefaultAVComponent(AVComponentType type);
}

/// The vocabulary, in one place for both sides.
namespace mediamgmnt {

namespace command {
inline constexpr char kPlay[] = "PLAY";  ///< argument: speed, "%.2f"
inline constexpr char kStop[] = "STOP";
inline constexpr char kStopBroadcast[] = "STOPBROADCAST";
inline constexpr char kPause[] = "PAUSE";
inline constexpr char kSeek[] = "SEEK";                                  ///< argument: milliseconds, "%.2f"
inline constexpr char kSetWindowProperties[] = "SET_WINDOW_PROPERTIES";  ///< argument: "x|y|width|height|"
inline constexpr char kSelectVideoComponent[] = "SELECT_VIDEO_COMPONENT";
inline constexpr char kSelectAudioComponent[] = "SELECT_AUDIO_COMPONENT";
inline constexpr char kSelectSubtitleComponent[] = "SELECT_SUBTITLE_COMPONENT";
inline constexpr char kUnselectVideoComponent[] = "UNSELECT_VIDEO_COMPONENT";
inline constexpr char kUnselectAudioComponent[] = "UNSELECT_AUDIO_COMPONENT";
inline constexpr char kUnselectSubtitleComponent[] = "UNSELECT_SUBTITLE_COMPONENT";
inline constexpr char kSelectComponent[] = "SELECT_COMPONENT";
inline constexpr char kUnselectComponent[] = "UNSELECT_COMPONENT";
inline constexpr char kSelectDefaultComponent[] = "SELECT_DEFAULT_COMPONENT";
inline constexpr char kUnselectComponentByType[] = "UNSELECT_COMPONENT_BY_TYPE";
}  // namespace command

namespace property {
// written
inline constexpr char kInput[] = "INPUT";
inline constexpr char kForcedFormat[] = "FORCED_FORMAT";  ///< a MIME type
inline constexpr char kUserAgent[] = "USER_AGENT";
inline constexpr char kNativeWindowSize[] = "NATIVE_WINDOW_SIZE";
inline constexpr char kLoop[] = "LOOP";
inline constexpr char kCached[] = "CACHED";
// read
inline constexpr char kDuration[] = "DURATION";
inline constexpr char kPosition[] = "POSITION";
inline constexpr char kPlaySpeed[] = "PLAY_SPEED";
inline constexpr char kLastErrorCode[] = "LAST_ERR_CODE";
inline constexpr char kDrmErrorState[] = "DRM_ERROR_STATE";
inline constexpr char kDrmContentId[] = "DRM_CONTENT_ID";
inline constexpr char kDrmSystemId[] = "DRM_SYSTEM_ID";
inline constexpr char kDrmRightsIssuerUrl[] = "DRM_RIGHTS_ISSUER_URL";
inline constexpr char kParentalDrmContentId[] = "PARENTAL_DRM_CONTENT_ID";
inline constexpr char kParentalDrmSystemId[] = "PARENTAL_DRM_SYSTEM_ID";
inline constexpr char kParentalBlocked[] = "PARENTAL_BLOCKED";
inline constexpr char kParentalRatingLength[] = "PARENTAL_RATING.LENGTH";
inline constexpr char kParentalRatingItemPrefix[] = "PARENTAL_RATING.ITEM.";
inline constexpr char kAudioLength[] = "AUDIO_COMPONENT.LENGTH";
inline constexpr char kVideoLength[] = "VIDEO_COMPONENT.LENGTH";
inline constexpr char kSubtitleLength[] = "SUBTITLE_COMPONENT.LENGTH";
inline constexpr char kActiveAudioLength[] = "ACTIVE_AUDIO_COMPONENT.LENGTH";
inline constexpr char kActiveVideoLength[] = "ACTIVE_VIDEO_COMPONENT.LENGTH";
inline constexpr char kActiveSubtitleLength[] = "ACTIVE_SUBTITLE_COMPONENT.LENGTH";
inline constexpr char kAudioItemPrefix[] = "AUDIO_COMPONENT.ITEM.";
inline constexpr char kVideoItemPrefix[] = "VIDEO_COMPONENT.ITEM.";
inline constexpr char kSubtitleItemPrefix[] = "SUBTITLE_COMPONENT.ITEM.";
inline constexpr char kActiveAudioItemPrefix[] = "ACTIVE_AUDIO_COMPONENT.ITEM.";
inline constexpr char kActiveVideoItemPrefix[] = "ACTIVE_VIDEO_COMPONENT.ITEM.";
inline constexpr char kActiveSubtitleItemPrefix[] = "ACTIVE_SUBTITLE_COMPONENT.ITEM.";
}  // namespace property

/// Status words of the message callback.
namespace status {
inline constexpr char kFinished[] = "FINISHED";
inline constexpr char kStopped[] = "STOPPED";
inline constexpr char kError[] = "ERROR";
inline constexpr char kPlaying[] = "PLAYING";
inline constexpr char kPaused[] = "PAUSED";
inline constexpr char kBuffering[] = "BUFFERING";
inline constexpr char kBufferReady[] = "BUFFER_READY";
inline constexpr char kPlayPositionChanged[] = "PLAY_POSITION_CHANGED";
inline constexpr char kPlaySpeedChanged[] = "PLAY_SPEED_CHANGED";
inline constexpr char kReadyToPlay[] = "READY_TO_PLAY";
inline constexpr char kConnected[] = "CONNECTED";
inline constexpr char kDrmRightsError[] = "ON_DRM_RIGHTS_ERROR";
inline constexpr char kParentalRatingChange[] = "ON_PARENTAL_RATING_CHANGE";
inline constexpr char kParentalRatingError[] = "ON_PARENTAL_RATING_ERROR";
inline constexpr char kSelectedVideoChanged[] = "SELECTED_VIDEO_COMPONENT_CHANGED";
inline constexpr char kSelectedAudioChanged[] = "SELECTED_AUDIO_COMPONENT_CHANGED";
inline constexpr char kSelectedSubtitleChanged[] = "SELECTED_SUBTITLE_COMPONENT_CHANGED";
}  // namespace status

/// In place of a record: there is none.
inline constexpr char kNotAvailable[] = "NOT_AVAILABLE";

}  // namespace mediamgmnt
