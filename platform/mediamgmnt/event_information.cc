// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/event_information.h"

#include <algorithm>
#include <utility>

#include "platform/mediamgmnt/rating_schemes.h"

namespace mediamgmnt {
namespace {

// ISO/IEC 13818-1: packets and sections. ETSI EN 300 468: the event information table and its descriptors.
constexpr std::size_t kPacketSize = 188;
constexpr std::uint8_t kSync = 0x47;
constexpr int kProgramsPid = 0x0000;
constexpr int kEventsPid = 0x0012;
constexpr std::uint8_t kProgramsTable = 0x00;
constexpr std::uint8_t kPresentFollowingTable = 0x4E;  ///< of the stream that carries it
constexpr std::uint8_t kParentalRating = 0x55;
constexpr std::size_t kHeaderSize = 3;
constexpr std::size_t kChecksumSize = 4;
constexpr std::size_t kFirstEvent = 14;
constexpr std::size_t kEventHeader = 12;
constexpr std::size_t kRatingEntry = 4;

int bits12(const std::uint8_t* bytes) { return ((bytes[0] & 0x0F) << 8) | bytes[1]; }
int bits13(const std::uint8_t* bytes) { return ((bytes[0] & 0x1F) << 8) | bytes[1]; }
int bits16(const std::uint8_t* bytes) { return (bytes[0] << 8) | bytes[1]; }

constexpr std::array<std::uint32_t, 256> makeChecksumTable() {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < table.size(); ++i) {
    std::uint32_t value = i << 24U;
    for (int bit = 0; bit < 8; ++bit) value = (value << 1U) ^ ((value & 0x80000000U) != 0 ? 0x04C11DB7U : 0U);
    table[i] = value;
  }
  return table;
}

/// Of a section with its checksum: 0 when nothing was damaged on the way.
std::uint32_t checksum(const std::uint8_t* bytes, std::size_t size) {
  static constexpr auto kTable = makeChecksumTable();
  std::uint32_t value = 0xFFFFFFFFU;
  for (std::size_t i = 0; i < size; ++i) value = (value << 8U) ^ kTable[(value >> 24U) ^ bytes[i]];
  return value;
}

/// A long section of @p table that is in force and whole.
bool isSound(const std::uint8_t* section, std::size_t size, std::uint8_t table, std::size_t least) {
  if (size < least + kChecksumSize || section[0] != table) return false;
  if (kHeaderSize + static_cast<std::size_t>(bits12(section + 1)) != size) return false;
  const bool inForce = (section[5] & 1U) != 0;
  return inForce && checksum(section, size) == 0;
}

void readRatings(const std::uint8_t* entries, std::size_t size, std::vector<Rating>& ratings) {
  for (; size >= kRatingEntry; entries += kRatingEntry, size -= kRatingEntry) {
    const std::string country(reinterpret_cast<const char*>(entries), 3);
    if (auto rating = readDvbRating(country, entries[3])) ratings.push_back(std::move(*rating));
  }
}

std::vector<Rating> ratingsAmong(const std::uint8_t* descriptors, std::size_t size) {
  std::vector<Rating> ratings;
  while (size >= 2) {
    const std::size_t length = descriptors[1];
    if (length + 2 > size) break;
    if (descriptors[0] == kParentalRating) readRatings(descriptors + 2, length, ratings);
    descriptors += length + 2;
    size -= length + 2;
  }
  return ratings;
}

std::set<int> readServices(const std::uint8_t* section, std::size_t size) {
  std::set<int> services;
  for (std::size_t at = 8; at + 4 + kChecksumSize <= size; at += 4) {
    if (const int program = bits16(section + at); program != 0) services.insert(program);
  }
  return services;
}

bool isPacketStart(const std::vector<std::uint8_t>& bytes, std::size_t at) {
  return bytes[at] == kSync && (at + kPacketSize >= bytes.size() || bytes[at + kPacketSize] == kSync);
}

}  // namespace

std::optional<PresentEvent> readPresentEvent(const std::uint8_t* section, std::size_t size) {
  if (!isSound(section, size, kPresentFollowingTable, kFirstEvent)) return std::nullopt;
  const bool isFollowing = section[6] != 0;
  if (isFollowing) return std::nullopt;
  PresentEvent present{bits16(section + 3), {}};
  const std::size_t end = size - kChecksumSize;
  if (kFirstEvent + kEventHeader > end) return present;  // nothing is on
  const std::size_t length = static_cast<std::size_t>(bits12(section + kFirstEvent + kEventHeader - 2));
  if (kFirstEvent + kEventHeader + length > end) return std::nullopt;
  present.ratings = ratingsAmong(section + kFirstEvent + kEventHeader, length);
  return present;
}

void EventInformationReader::feed(const std::uint8_t* bytes, std::size_t size) {
  m_rest.insert(m_rest.end(), bytes, bytes + size);
  std::size_t at = 0;
  while (at + kPacketSize <= m_rest.size()) {
    if (!isPacketStart(m_rest, at)) {
      ++at;
      continue;
    }
    takePacket(m_rest.data() + at);
    at += kPacketSize;
  }
  m_rest.erase(m_rest.begin(), m_rest.begin() + static_cast<std::ptrdiff_t>(at));
}

void EventInformationReader::takePacket(const std::uint8_t* packet) {
  const int pid = bits13(packet + 1);
  if (pid != kProgramsPid && pid != kEventsPid) return;
  const bool isDamaged = (packet[1] & 0x80U) != 0;
  const bool hasPayload = (packet[3] & 0x10U) != 0;
  if (isDamaged || !hasPayload) return;
  const bool hasAdaptation = (packet[3] & 0x20U) != 0;
  const std::size_t start = hasAdaptation ? 5 + std::size_t{packet[4]} : 4;
  if (start >= kPacketSize) return;
  Assembly& assembly = pid == kEventsPid ? m_events : m_programs;
  const int counter = packet[3] & 0x0F;
  if (counter == assembly.counter) return;  // sent twice
  if (counter != ((assembly.counter + 1) & 0x0F)) assembly.bytes.clear();
  assembly.counter = counter;
  takePayload(assembly, packet + start, kPacketSize - start, (packet[1] & 0x40U) != 0);
}

/// A payload in which sections begin starts with a pointer to the first of them; what is before it ends the last one.
void EventInformationReader::takePayload(Assembly& assembly, const std::uint8_t* payload, std::size_t size, bool begins) {
  if (!begins) {
    if (assembly.bytes.empty()) return;  // the end of something whose beginning was missed
    assembly.bytes.insert(assembly.bytes.end(), payload, payload + size);
    return takeSections(assembly);
  }
  const std::size_t first = 1 + std::size_t{payload[0]};
  if (first > size) return assembly.bytes.clear();
  if (!assembly.bytes.empty()) {
    assembly.bytes.insert(assembly.bytes.end(), payload + 1, payload + first);
    takeSections(assembly);
  }
  assembly.bytes.assign(payload + first, payload + size);
  takeSections(assembly);
}

void EventInformationReader::takeSections(Assembly& assembly) {
  constexpr std::uint8_t kStuffing = 0xFF;
  std::vector<std::uint8_t>& bytes = assembly.bytes;
  while (bytes.size() >= kHeaderSize && bytes[0] != kStuffing) {
    const std::size_t size = kHeaderSize + static_cast<std::size_t>(bits12(bytes.data() + 1));
    if (bytes.size() < size) return;
    takeSection({bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)});
    bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size));
  }
  if (!bytes.empty() && bytes[0] == kStuffing) bytes.clear();
}

void EventInformationReader::takeSection(const std::vector<std::uint8_t>& section) {
  if (isSound(section.data(), section.size(), kProgramsTable, 8)) m_services = readServices(section.data(), section.size());
  auto present = readPresentEvent(section.data(), section.size());
  if (!present) return;
  const bool isOurs = m_services.empty() || m_services.count(present->service) > 0;
  if (isOurs) m_report(std::move(present->ratings));
}

}  // namespace mediamgmnt
