// SPDX-License-Identifier: Apache-2.0
// Decides from the first bytes of a source, and from the type that the page declared, what must be said about its format
// beforehand.
#pragma once

#include <string>
#include <string_view>

namespace mediamgmnt {

/// How many bytes of a source are looked at.
inline constexpr std::size_t kSniffBytes = 4096;

/// @return the caps to force, as text; empty when GStreamer's own type finding is to decide.
///
/// A DASH manifest whose root tag is long is taken for plain XML by GStreamer 1.22 and then neither plays nor fails, so it is
/// recognised here. The declared MIME type only decides where the content does not contradict it: a page that declares MP4 for what
/// is no MP4 at all gets "format not supported", not "corrupt".
std::string capsToForce(std::string_view firstBytes, std::string_view declaredMimeType);

/// Says whether an MP4 file keeps its media in fragments.
bool isFragmentedMp4(std::string_view firstBytes);

/// Says whether an MP4 file begins with the index of all its media, so that nothing behind them is needed to play it.
bool hasWholeIndexFirst(std::string_view firstBytes);

/// Says whether the declared MIME type is that of a manifest or playlist.
bool isAdaptiveType(std::string_view declaredMimeType);

}  // namespace mediamgmnt
