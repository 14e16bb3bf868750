// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/program_map.h"

#include <algorithm>
#include <span>

namespace mediamgmnt {
namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::uint8_t kTableId = 0x02;
constexpr std::size_t kHeaderSize = 12;
constexpr std::size_t kStreamHeaderSize = 5;
constexpr std::size_t kChecksumSize = 4;

enum Tag : std::uint8_t {
  kConditionalAccess = 0x09,
  kLanguage = 0x0A,
  kStreamIdentifier = 0x52,
  kTeletext = 0x56,
  kSubtitling = 0x59,
  kAc3 = 0x6A,
  kEnhancedAc3 = 0x7A,
  kDts = 0x7B,
  kAac = 0x7C,
  kExtension = 0x7F,
};

enum ExtensionTag : std::uint8_t { kSupplementaryAudio = 0x06, kAc4 = 0x15, kOpus = 0x80 };

/// Subtitling types 0x20 to 0x26, teletext type 5: for the hard of hearing.
bool isHearingImpairedSubtitling(int type) { return type >= 0x20 && type <= 0x26; }
constexpr int kTeletextHearingImpaired = 5;

unsigned lower12Bits(Bytes bytes, std::size_t at) { return (bytes[at] & 0x0FU) << 8U | bytes[at + 1]; }
int lower13Bits(Bytes bytes, std::size_t at) { return static_cast<int>((bytes[at] & 0x1FU) << 8U | bytes[at + 1]); }

std::string threeLetters(Bytes bytes) { return {reinterpret_cast<const char*>(bytes.data()), 3}; }

/// Entries of @p entrySize bytes: three letters and one byte that begins with the type, of which @p typeShift bits are no part.
std::vector<ProgramMapLanguage> readLanguages(Bytes body, std::size_t entrySize, unsigned typeShift) {
  std::vector<ProgramMapLanguage> found;
  for (; body.size() >= entrySize; body = body.subspan(entrySize)) {
    found.push_back({threeLetters(body), static_cast<int>(body[3] >> typeShift)});
  }
  return found;
}

/// An AC-3 descriptor's component type: its lowest three bits count the channels, roughly.
int channelsOfComponentType(std::uint8_t type) {
  constexpr int kChannels[] = {1, 2, 2, 2, 6, 8, 0, 0};  // mono, 1+1, stereo, surround in stereo, multichannel, more than 5.1
  return kChannels[type & 0x07U];
}

void readDolby(Bytes body, ProgramMapCoding coding, ProgramMapStream& stream) {
  stream.coding = coding;
  constexpr std::uint8_t kHasComponentType = 0x80;
  if (body.size() >= 2 && (body[0] & kHasComponentType) != 0) stream.channels = channelsOfComponentType(body[1]);
}

void readSupplementaryAudio(Bytes body, ProgramMapStream& stream) {
  if (body.size() < 2) return;
  const unsigned classification = body[1] >> 2U & 0x1FU;
  stream.describesVideo = classification == 1;
  stream.forHearingImpaired = classification == 2;
  const bool hasLanguage = (body[1] & 0x01U) != 0;
  if (hasLanguage && body.size() >= 5 && stream.languages.empty()) stream.languages.push_back({threeLetters(body.subspan(2)), 0});
}

void readExtension(Bytes body, ProgramMapStream& stream) {
  if (body.empty()) return;
  switch (body[0]) {
    case kSupplementaryAudio: return readSupplementaryAudio(body, stream);
    case kAc4: stream.coding = ProgramMapCoding::Ac4; return;
    case kOpus: stream.coding = ProgramMapCoding::Opus; return;
    default: return;  // says nothing that a page could see
  }
}

void readDescriptor(std::uint8_t tag, Bytes body, ProgramMapStream& stream) {
  switch (tag) {
    case kConditionalAccess: stream.isScrambled = true; return;
    case kLanguage: stream.languages = readLanguages(body, 4, 0); return;
    case kStreamIdentifier:
      if (!body.empty()) stream.componentTag = body[0];
      return;
    case kTeletext: stream.teletext = readLanguages(body, 5, 3); return;
    case kSubtitling: stream.subtitles = readLanguages(body, 8, 0); return;
    case kAc3: return readDolby(body, ProgramMapCoding::Ac3, stream);
    case kEnhancedAc3: return readDolby(body, ProgramMapCoding::EnhancedAc3, stream);
    case kDts: stream.coding = ProgramMapCoding::Dts; return;
    case kAac: stream.coding = ProgramMapCoding::Aac; return;
    case kExtension: return readExtension(body, stream);
    default: return;  // says nothing that a page could see
  }
}

void readDescriptors(Bytes bytes, ProgramMapStream& stream) {
  while (bytes.size() >= 2) {
    const std::size_t length = std::min<std::size_t>(bytes[1], bytes.size() - 2);
    readDescriptor(bytes[0], bytes.subspan(2, length), stream);
    bytes = bytes.subspan(2 + length);
  }
}

}  // namespace

bool ProgramMapStream::isAudioDescription() const {
  return describesVideo || std::any_of(languages.begin(), languages.end(),
                                       [](const ProgramMapLanguage& each) { return each.type == kAudioTypeVisuallyImpaired; });
}

bool ProgramMapStream::isForHearingImpairedViewers() const {
  const auto has = [](const std::vector<ProgramMapLanguage>& entries, auto matches) {
    return std::any_of(entries.begin(), entries.end(), [&](const ProgramMapLanguage& each) { return matches(each.type); });
  };
  return forHearingImpaired || has(subtitles, isHearingImpairedSubtitling) ||
         has(teletext, [](int type) { return type == kTeletextHearingImpaired; }) ||
         has(languages, [](int type) { return type == kAudioTypeHearingImpaired; });
}

std::optional<ProgramMap> readProgramMap(const std::uint8_t* section, std::size_t size) {
  const Bytes whole(section, section != nullptr ? size : 0);
  if (whole.size() < kHeaderSize || whole[0] != kTableId) return std::nullopt;
  const std::size_t length = lower12Bits(whole, 1) + 3;
  if (length < kHeaderSize + kChecksumSize || length > whole.size()) return std::nullopt;
  Bytes rest = whole.subspan(kHeaderSize, length - kHeaderSize - kChecksumSize);

  ProgramMap map;
  map.program = whole[3] << 8 | whole[4];
  const std::size_t programInfo = std::min<std::size_t>(lower12Bits(whole, 10), rest.size());
  ProgramMapStream ofAll;
  readDescriptors(rest.first(programInfo), ofAll);
  map.isScrambled = ofAll.isScrambled;
  rest = rest.subspan(programInfo);

  while (rest.size() >= kStreamHeaderSize) {
    ProgramMapStream stream;
    stream.streamType = rest[0];
    stream.pid = lower13Bits(rest, 1);
    const std::size_t info = std::min<std::size_t>(lower12Bits(rest, 3), rest.size() - kStreamHeaderSize);
    readDescriptors(rest.subspan(kStreamHeaderSize, info), stream);
    rest = rest.subspan(kStreamHeaderSize + info);
    map.streams.push_back(std::move(stream));
  }
  return map;
}

}  // namespace mediamgmnt
