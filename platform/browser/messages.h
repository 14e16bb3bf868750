// SPDX-License-Identifier: Apache-2.0
// What the window's process and the page's process tell each other. Names and GVariant types in one place.
#pragma once

namespace browser {

/// Given to the extension when it is loaded: a dictionary of texts by the names below.
inline constexpr char kStartType[] = "a{ss}";
inline constexpr char kStartMediaLibrary[] = "media-library";
inline constexpr char kStartPlugin[] = "plugin";
inline constexpr char kStartTrace[] = "trace";  ///< "" for none
inline constexpr char kStartUserAgent[] = "user-agent";
inline constexpr char kStartAudioLanguages[] = "audio-languages";
inline constexpr char kStartSubtitleLanguages[] = "subtitle-languages";
inline constexpr char kStartUiLanguages[] = "ui-languages";
inline constexpr char kStartCountry[] = "country";
inline constexpr char kStartSubtitleSettings[] = "subtitle-settings";  ///< "" for none
inline constexpr char kStartProtection[] = "protection";               ///< limits and keys, as ProtectionOptions packs them

// From the page's process.
inline constexpr char kMessagePlane[] = "plane";  ///< memory and tick descriptors; bytes of the memory
inline constexpr char kPlaneType[] = "(u)";
inline constexpr char kMessageConsole[] = "console";  ///< level, text, source, line
inline constexpr char kConsoleType[] = "(sssu)";
inline constexpr char kMessageUncaught[] = "uncaught";  ///< text, source, line
inline constexpr char kUncaughtType[] = "(ssu)";
inline constexpr char kMessageFailed[] = "failed";  ///< a library cannot be loaded; why
inline constexpr char kFailedType[] = "(s)";

// From the window's process; all are answered by a message of the same name.
inline constexpr char kMessageEnd[] = "end";  ///< destroy all objects and come to rest; answered by whether it did
inline constexpr char kEndType[] = "(b)";
inline constexpr char kMessageSubtitles[] =
    "subtitles";                                 ///< the viewer's settings; answered by whether the media library takes them
inline constexpr char kSubtitlesType[] = "(s)";  ///< "VALUE:TEXT"
inline constexpr char kSubtitlesTakenType[] = "(b)";
inline constexpr char kMessageSettled[] = "settled";  ///< answered by whether all video is where the page wants it by now
inline constexpr char kSettledType[] = "(b)";
inline constexpr char kMessageStatus[] = "status";  ///< what the objects do now
inline constexpr char kStatusType[] = "(s)";        ///< the lines of the overlay

}  // namespace browser
