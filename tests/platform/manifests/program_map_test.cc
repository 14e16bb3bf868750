// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/program_map.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using mediamgmnt::ProgramMap;
using mediamgmnt::ProgramMapCoding;
using mediamgmnt::ProgramMapStream;
using mediamgmnt::readProgramMap;
using testing::SizeIs;

using Bytes = std::vector<std::uint8_t>;

Bytes descriptor(std::uint8_t tag, const Bytes& body) {
  Bytes bytes = {tag, static_cast<std::uint8_t>(body.size())};
  bytes.insert(bytes.end(), body.begin(), body.end());
  return bytes;
}

Bytes stream(std::uint8_t type, int pid, const std::vector<Bytes>& descriptors) {
  Bytes info;
  for (const Bytes& each : descriptors) info.insert(info.end(), each.begin(), each.end());
  Bytes bytes = {type, static_cast<std::uint8_t>(0xE0 | pid >> 8), static_cast<std::uint8_t>(pid), 0xF0,
                 static_cast<std::uint8_t>(info.size())};
  bytes.insert(bytes.end(), info.begin(), info.end());
  return bytes;
}

Bytes section(const Bytes& programInfo, const std::vector<Bytes>& streams) {
  Bytes bytes = {0x02, 0xB0, 0, 0x00, 0x2A, 0xC1, 0, 0, 0xE1, 0x00, 0xF0, static_cast<std::uint8_t>(programInfo.size())};
  bytes.insert(bytes.end(), programInfo.begin(), programInfo.end());
  for (const Bytes& each : streams) bytes.insert(bytes.end(), each.begin(), each.end());
  bytes.insert(bytes.end(), 4, 0);  // the checksum: whoever delivers a section has checked it
  const std::size_t length = bytes.size() - 3;
  bytes[1] = static_cast<std::uint8_t>(0xB0 | length >> 8);
  bytes[2] = static_cast<std::uint8_t>(length);
  return bytes;
}

std::optional<ProgramMap> read(const Bytes& bytes) { return readProgramMap(bytes.data(), bytes.size()); }

ProgramMapStream readOne(const std::vector<Bytes>& descriptors) {
  return read(section({}, {stream(0x06, 0x101, descriptors)}))->streams.at(0);
}

const Bytes kDescribedGerman = descriptor(0x0A, {'d', 'e', 'u', 3});

TEST(ProgramMapTest, ReadsStreamsInOrder) {
  const ProgramMap map =
      read(section({}, {stream(0x1B, 0x100, {}), stream(0x0F, 0x1ABC, {kDescribedGerman, descriptor(0x52, {17})})})).value();

  EXPECT_EQ(map.program, 42);
  ASSERT_THAT(map.streams, SizeIs(2));
  EXPECT_EQ(map.streams[0].pid, 0x100);
  EXPECT_EQ(map.streams[0].streamType, 0x1B);
  EXPECT_EQ(map.streams[0].componentTag, std::nullopt);
  EXPECT_EQ(map.streams[1].pid, 0x1ABC);
  EXPECT_EQ(map.streams[1].componentTag, 17);
  EXPECT_EQ(map.streams[1].languages.at(0).code, "deu");
  EXPECT_TRUE(map.streams[1].isAudioDescription());
}

TEST(ProgramMapTest, TellsTheKindsOfSoundApart) {
  EXPECT_FALSE(readOne({descriptor(0x0A, {'e', 'n', 'g', 0})}).isAudioDescription());
  EXPECT_FALSE(readOne({descriptor(0x0A, {'e', 'n', 'g', 2})}).isAudioDescription());
  EXPECT_TRUE(readOne({descriptor(0x0A, {'e', 'n', 'g', 2})}).isForHearingImpairedViewers());
  EXPECT_TRUE(readOne({descriptor(0x7F, {0x06, 1 << 2})}).isAudioDescription());
  EXPECT_TRUE(readOne({descriptor(0x7F, {0x06, 2 << 2})}).isForHearingImpairedViewers());
}

TEST(ProgramMapTest, TakesTheLanguageOfSupplementaryAudioWhenThereIsNoOther) {
  EXPECT_EQ(readOne({descriptor(0x7F, {0x06, 1 << 2 | 1, 'f', 'r', 'a'})}).languages.at(0).code, "fra");
  EXPECT_EQ(readOne({kDescribedGerman, descriptor(0x7F, {0x06, 1 << 2 | 1, 'f', 'r', 'a'})}).languages.at(0).code, "deu");
}

TEST(ProgramMapTest, ReadsCodingAndChannels) {
  EXPECT_EQ(readOne({descriptor(0x6A, {0x80, 0x44})}).coding, ProgramMapCoding::Ac3);
  EXPECT_EQ(readOne({descriptor(0x6A, {0x80, 0x44})}).channels, 6);
  EXPECT_EQ(readOne({descriptor(0x7A, {0x80, 0xC2})}).coding, ProgramMapCoding::EnhancedAc3);
  EXPECT_EQ(readOne({descriptor(0x7A, {0x80, 0xC2})}).channels, 2);
  EXPECT_EQ(readOne({descriptor(0x6A, {0x00})}).channels, 0);
  EXPECT_EQ(readOne({descriptor(0x7B, {})}).coding, ProgramMapCoding::Dts);
  EXPECT_EQ(readOne({descriptor(0x7C, {0x51})}).coding, ProgramMapCoding::Aac);
  EXPECT_EQ(readOne({descriptor(0x7F, {0x15})}).coding, ProgramMapCoding::Ac4);
  EXPECT_EQ(readOne({}).coding, ProgramMapCoding::Unknown);
}

TEST(ProgramMapTest, ReadsSubtitles) {
  const ProgramMapStream both = readOne({descriptor(0x59, {'e', 'n', 'g', 0x10, 0, 1, 0, 1, 'd', 'e', 'u', 0x20, 0, 2, 0, 2})});
  const ProgramMapStream teletext = readOne({descriptor(0x56, {'d', 'e', 'u', 5 << 3 | 1, 0x50})});

  ASSERT_THAT(both.subtitles, SizeIs(2));
  EXPECT_EQ(both.subtitles[1].code, "deu");
  EXPECT_TRUE(both.isForHearingImpairedViewers());
  EXPECT_EQ(teletext.teletext.at(0).type, 5);
  EXPECT_TRUE(teletext.isForHearingImpairedViewers());
  EXPECT_FALSE(readOne({descriptor(0x59, {'e', 'n', 'g', 0x10, 0, 1, 0, 1})}).isForHearingImpairedViewers());
}

TEST(ProgramMapTest, SeesScrambling) {
  const Bytes access = descriptor(0x09, {0x06, 0x04, 0xE1, 0x00});

  EXPECT_TRUE(read(section(access, {}))->isScrambled);
  EXPECT_FALSE(read(section({}, {}))->isScrambled);
  EXPECT_TRUE(readOne({access}).isScrambled);
}

TEST(ProgramMapTest, RefusesWhatIsNoProgramMap) {
  Bytes other = section({}, {});
  other[0] = 0x00;

  EXPECT_FALSE(read(other));
  EXPECT_FALSE(readProgramMap(nullptr, 100));
}

TEST(ProgramMapTest, EveryCutOfASectionIsRefused) {
  const Bytes whole = section({}, {stream(0x0F, 0x101, {kDescribedGerman}), stream(0x06, 0x102, {descriptor(0x7F, {0x06, 5})})});
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const Bytes cut(whole.begin(),
                    whole.begin() + static_cast<std::ptrdiff_t>(length));  // its own block: a read past it is noticed
    EXPECT_FALSE(read(cut)) << length;
  }
}

TEST(ProgramMapTest, LengthsThatLieDoNotReachOutside) {
  const Bytes whole = section(descriptor(0x0A, {'x'}), {stream(0x0F, 0x101, {kDescribedGerman})});
  for (std::size_t at = 10; at < whole.size(); ++at) {
    Bytes changed = whole;
    changed[at] = 0xFF;
    EXPECT_TRUE(read(changed)) << at;
  }
}

}  // namespace
