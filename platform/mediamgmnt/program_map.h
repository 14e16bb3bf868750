// SPDX-License-Identifier: Apache-2.0
// What the program map table of a transport stream says about its tracks. Plain data, no playback. Thread: any.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace mediamgmnt {

/// The audio types of the ISO 639 language descriptor.
inline constexpr int kAudioTypeHearingImpaired = 2;
inline constexpr int kAudioTypeVisuallyImpaired = 3;

/// An entry of an ISO 639 language, a subtitling or a teletext descriptor.
struct ProgramMapLanguage {
  std::string code;  ///< three letters, as written
  int type = 0;      ///< audio type, subtitling type or teletext type
};

enum class ProgramMapCoding { Unknown, Ac3, EnhancedAc3, Ac4, Dts, Aac, Opus };

struct ProgramMapStream {
  int pid = 0;
  int streamType = 0;
  std::optional<int> componentTag;
  ProgramMapCoding coding = ProgramMapCoding::Unknown;  ///< as descriptors tell for private streams
  int channels = 0;                                     ///< as an AC-3 or AAC descriptor tells; 0 when unknown
  bool isScrambled = false;                             ///< names a conditional access system
  bool describesVideo = false;                          ///< a supplementary audio descriptor says so
  bool forHearingImpaired = false;                      ///< a supplementary audio descriptor says so
  std::vector<ProgramMapLanguage> languages;
  std::vector<ProgramMapLanguage> subtitles;
  std::vector<ProgramMapLanguage> teletext;

  bool isAudioDescription() const;
  bool isForHearingImpairedViewers() const;
};

struct ProgramMap {
  int program = 0;
  bool isScrambled = false;
  std::vector<ProgramMapStream> streams;
};

/// @param section the whole section, from the table id on. @return nothing when it is no program map or is cut short.
std::optional<ProgramMap> readProgramMap(const std::uint8_t* section, std::size_t size);

}  // namespace mediamgmnt
