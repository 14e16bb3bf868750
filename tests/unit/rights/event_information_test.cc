// SPDX-License-Identifier: Apache-2.0
// The reader of ratings in transport streams, on packets made here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/mediamgmnt/event_information.h"

using mediamgmnt::EventInformationReader;
using mediamgmnt::Rating;
using mediamgmnt::readPresentEvent;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Bytes = std::vector<std::uint8_t>;
using Entries = std::vector<std::pair<std::string, std::uint8_t>>;

void append(Bytes& bytes, std::initializer_list<unsigned> more) {
  for (const unsigned each : more) bytes.push_back(static_cast<std::uint8_t>(each));
}

/// Bit by bit, as the standard writes it down.
void appendChecksum(Bytes& bytes) {
  std::uint32_t value = 0xFFFFFFFFU;
  for (const std::uint8_t byte : bytes) {
    for (int bit = 7; bit >= 0; --bit) {
      const bool flip = ((value >> 31U) & 1U) != ((static_cast<unsigned>(byte) >> static_cast<unsigned>(bit)) & 1U);
      value = (value << 1U) ^ (flip ? 0x04C11DB7U : 0U);
    }
  }
  append(bytes, {value >> 24U, (value >> 16U) & 0xFFU, (value >> 8U) & 0xFFU, value & 0xFFU});
}

struct Event {
  unsigned service = 1;
  unsigned number = 0;  ///< 1: the following event
  unsigned table = 0x4E;
  bool inForce = true;
  bool hasEvent = true;
};

Bytes eventSection(const Entries& entries, const Event& event = {}, unsigned fillers = 0) {
  Bytes descriptors;
  for (unsigned i = 0; i < fillers; ++i) {
    append(descriptors, {0x4D, 40});
    descriptors.insert(descriptors.end(), 40, 'x');
  }
  append(descriptors, {0x55, static_cast<unsigned>(entries.size() * 4)});
  for (const auto& [country, code] : entries) {
    descriptors.insert(descriptors.end(), country.begin(), country.end());
    descriptors.push_back(code);
  }
  const auto loop = static_cast<unsigned>(descriptors.size());
  const unsigned length = 11 + (event.hasEvent ? 12 + loop : 0) + 4;
  Bytes section;
  append(section, {event.table, 0xF0U | (length >> 8U), length & 0xFFU, event.service >> 8U, event.service & 0xFFU,
                   0xC0U | (event.inForce ? 1U : 0U), event.number, 1, 0, 1, 0, 1, 1, event.table});
  if (event.hasEvent) {
    append(section, {0, 1, 0xE0, 0, 0, 0, 0, 1, 0, 0, 0x80U | (loop >> 8U), loop & 0xFFU});
    section.insert(section.end(), descriptors.begin(), descriptors.end());
  }
  appendChecksum(section);
  return section;
}

Bytes programSection(unsigned service) {
  Bytes section;
  append(section, {0x00, 0xB0, 13, 0, 1, 0xC1, 0, 0, service >> 8U, service & 0xFFU, 0xE1, 0x00});
  appendChecksum(section);
  return section;
}

/// The packets that carry a section.
Bytes packets(unsigned pid, const Bytes& section, unsigned counter = 0) {
  Bytes payload{0};
  payload.insert(payload.end(), section.begin(), section.end());
  Bytes out;
  for (std::size_t at = 0; at < payload.size(); at += 184, ++counter) {
    append(out, {0x47, (at == 0 ? 0x40U : 0U) | (pid >> 8U), pid & 0xFFU, 0x10U | (counter & 0x0FU)});
    const std::size_t count = std::min<std::size_t>(184, payload.size() - at);
    out.insert(out.end(), payload.begin() + static_cast<std::ptrdiff_t>(at),
               payload.begin() + static_cast<std::ptrdiff_t>(at + count));
    out.resize((out.size() + 187) / 188 * 188, 0xFF);
  }
  return out;
}

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

constexpr unsigned kEvents = 0x12;

class EventInformationTest : public ::testing::Test {
 protected:
  void feed(const Bytes& bytes) { reader.feed(bytes.data(), bytes.size()); }

  std::vector<std::string> reports;  ///< "DE 16, GB 18" each
  EventInformationReader reader{[this](const std::vector<Rating>& ratings) {
    std::string line;
    for (const Rating& rating : ratings) line += (line.empty() ? "" : ", ") + rating.region + " " + rating.name;
    reports.push_back(line);
  }};
};

TEST_F(EventInformationTest, ReportsThePresentEvent) {
  feed(packets(kEvents, eventSection({{"DEU", 13}, {"GBR", 15}})));

  EXPECT_THAT(reports, ElementsAre("DE 16, GB 18"));
}

TEST_F(EventInformationTest, ReportsAnEventWithoutRatings_AndNoEvent) {
  feed(packets(kEvents, eventSection({})));
  feed(packets(kEvents, eventSection({}, {.hasEvent = false}), 1));

  EXPECT_THAT(reports, ElementsAre("", ""));
}

TEST_F(EventInformationTest, LeavesOutTheUndefinedCode) {
  feed(packets(kEvents, eventSection({{"DEU", 0}, {"GBR", 1}})));

  EXPECT_THAT(reports, ElementsAre("GB 4"));
}

TEST_F(EventInformationTest, PassesOverWhatIsNotPresent) {
  feed(packets(kEvents, eventSection({{"DEU", 13}}, {.number = 1})));
  feed(packets(kEvents, eventSection({{"DEU", 13}}, {.table = 0x4F}), 1));
  feed(packets(kEvents, eventSection({{"DEU", 13}}, {.inForce = false}), 2));
  feed(packets(0x13, eventSection({{"DEU", 13}})));

  EXPECT_THAT(reports, IsEmpty());
}

TEST_F(EventInformationTest, PassesOverOtherServices) {
  feed(packets(0, programSection(7)) + packets(kEvents, eventSection({{"DEU", 13}}, {.service = 8})) +
       packets(kEvents, eventSection({{"DEU", 3}}, {.service = 7}), 1));

  EXPECT_THAT(reports, ElementsAre("DE 6"));
}

TEST_F(EventInformationTest, TakesPiecesOfAnySize) {
  const Bytes stream = packets(0x100, Bytes(100, 'v')) + packets(kEvents, eventSection({{"DEU", 13}}, {}, 10)) +
                       packets(0x100, Bytes(100, 'v')) + packets(kEvents, eventSection({{"DEU", 3}}), 3);
  for (const std::size_t piece : {1U, 7U, 187U, 189U, 1000U}) {
    reports.clear();
    EventInformationReader fresh{[this](const std::vector<Rating>& ratings) { reports.push_back(ratings.at(0).name); }};
    for (std::size_t at = 0; at < stream.size(); at += piece) fresh.feed(stream.data() + at, std::min(piece, stream.size() - at));
    EXPECT_THAT(reports, ElementsAre("16", "6")) << piece;
  }
}

TEST_F(EventInformationTest, FindsItsFeetAgain) {
  feed(Bytes(500, 0x47));
  feed(Bytes(77, 'x') + packets(kEvents, eventSection({{"DEU", 13}})) + packets(0x100, {}));

  EXPECT_THAT(reports, ElementsAre("DE 16"));
}

TEST_F(EventInformationTest, DropsASectionThatLostAPacket) {
  const Bytes whole = packets(kEvents, eventSection({{"DEU", 13}}, {}, 10));
  ASSERT_EQ(whole.size(), 188U * 3);
  feed(Bytes(whole.begin(), whole.begin() + 188) + Bytes(whole.begin() + 376, whole.end()));
  feed(packets(kEvents, eventSection({{"DEU", 3}}), 3));

  EXPECT_THAT(reports, ElementsAre("DE 6"));
}

TEST_F(EventInformationTest, ReadsAPacketThatIsSentTwiceOnce) {
  const Bytes packet = packets(kEvents, eventSection({{"DEU", 13}}));
  feed(packet + packet);

  EXPECT_THAT(reports, ElementsAre("DE 16"));
}

TEST(PresentEventTest, RefusesEverySectionThatIsCutOrDamaged) {
  const Bytes section = eventSection({{"DEU", 13}});
  ASSERT_TRUE(readPresentEvent(section.data(), section.size()));

  for (std::size_t size = 0; size < section.size(); ++size) {
    const Bytes cut(section.begin(), section.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_FALSE(readPresentEvent(cut.data(), cut.size())) << size;
  }
  for (std::size_t at = 0; at < section.size(); ++at) {
    Bytes damaged = section;
    damaged[at] ^= 0x10U;
    EXPECT_FALSE(readPresentEvent(damaged.data(), damaged.size())) << at;
  }
}

/// The checksum is right; the lengths inside are not.
TEST(PresentEventTest, StaysInside_WhenLengthsLie) {
  const auto withByte = [](std::size_t at, std::uint8_t value) {
    Bytes section = eventSection({{"DEU", 13}});
    section.resize(section.size() - 4);
    section[at] = value;
    appendChecksum(section);
    return readPresentEvent(section.data(), section.size());
  };
  constexpr std::size_t kLoopLength = 25;
  constexpr std::size_t kDescriptorLength = 27;

  EXPECT_FALSE(withByte(kLoopLength, 0xFF));
  const auto withoutRatings = withByte(kDescriptorLength, 200);
  ASSERT_TRUE(withoutRatings);
  EXPECT_THAT(withoutRatings->ratings, IsEmpty());
}

}  // namespace
