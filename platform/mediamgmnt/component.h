// SPDX-License-Identifier: Apache-2.0
// One track of a presentation as pages see it, and its text form. Plain data. Thread: any.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/mediamgmnt/subtitle_fonts.h"

namespace mediamgmnt {

/// The numbers are the component types of the commands.
enum class ComponentKind { Video = 0, Audio = 1, Subtitle = 2 };
inline constexpr std::array kComponentKinds = {ComponentKind::Video, ComponentKind::Audio, ComponentKind::Subtitle};
constexpr std::size_t indexOf(ComponentKind kind) { return static_cast<std::size_t>(kind); }

struct Component {
  ComponentKind kind = ComponentKind::Video;
  const void* stream = nullptr;  ///< tells streams apart, also those of the same name in two periods; never looked into
  std::string streamId;          ///< the name by which the pipeline selects it
  std::string encoding;
  bool encrypted = false;
  int tag = 0;
  int pid = 0;
  std::string label;
  std::string language;  ///< three letters
  bool audioDescription = false;
  bool hearingImpaired = false;
  int channels = 0;
  double aspectRatio = 0;
  SubtitleFonts fonts;       ///< offered for its documents
  std::string documentBase;  ///< what addresses in its documents are relative to
  bool isMain = false;       ///< the source marks it as the one to begin with
  std::string generation;    ///< of the list that it is in: "" in a source's first
};

using ComponentList = std::vector<Component>;

/// The record: every field followed by "|". No text in it can be taken for a separator or for "not available".
std::string recordOf(const Component& component);

/// The form in which a selection by record names it: subtitles without their second text.
std::string selectionTextOf(const Component& component);

/// The same track to a viewer, be it in another list, and as far as is known of both.
bool looksAlike(const Component& one, const Component& other);

}  // namespace mediamgmnt
