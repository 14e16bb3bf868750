// SPDX-License-Identifier: Apache-2.0
// What the reference media library tells a shell of a player beside the properties of host/mediamgmnt.h, for status displays:
// further keys for getPlayerProperty. Whole numbers as text, refused (0) where there is nothing to tell. Thread: any; no read waits
// for the pipeline, so the numbers are those of the read before.
#pragma once

namespace mediamgmnt::report {

inline constexpr char kPrefix[] = "REPORT.";
inline constexpr char kWindow[] = "REPORT.WINDOW";  ///< the "x|y|width|height|" at which pictures are placed by now
inline constexpr char kBuffered[] =
    "REPORT.BUFFERED";  ///< milliseconds of media that are here and not presented yet; DASH, HLS, and files that are kept
inline constexpr char kMediaRate[] = "REPORT.MEDIA_RATE";      ///< bits a second of what is presented
inline constexpr char kLineRate[] = "REPORT.LINE_RATE";        ///< bits a second that the line has carried lately; adaptive sources
inline constexpr char kPictures[] = "REPORT.PICTURES";         ///< shown since the source was opened
inline constexpr char kDropped[] = "REPORT.PICTURES_DROPPED";  ///< came too late to be shown, since then

}  // namespace mediamgmnt::report
