// SPDX-License-Identifier: Apache-2.0
// Finds the ratings of the present programme in a transport stream: GStreamer leaves the event information table aside, so it is
// read from the packets themselves.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/mediamgmnt/rating.h"

namespace mediamgmnt {

/// What the present event of an event information section says. @return nothing for a section that is cut short, damaged, of
/// another table, of the following event or not yet in force. @p section goes from the table id to its checksum.
struct PresentEvent {
  int service = 0;
  std::vector<Rating> ratings;
};
std::optional<PresentEvent> readPresentEvent(const std::uint8_t* section, std::size_t size);

/// Takes the stream in pieces of any size, in order; after a jump it finds its feet again. One thread at a time.
class EventInformationReader {
 public:
  /// Called with the ratings of the stream's own service whenever a present event was read.
  using Report = std::function<void(std::vector<Rating>)>;

  explicit EventInformationReader(Report report) : m_report(std::move(report)) {}

  void feed(const std::uint8_t* bytes, std::size_t size);

 private:
  /// Sections of one table, put together from packets.
  struct Assembly {
    std::vector<std::uint8_t> bytes;
    int counter = -1;
  };

  void takePacket(const std::uint8_t* packet);
  void takePayload(Assembly& assembly, const std::uint8_t* payload, std::size_t size, bool begins);
  void takeSections(Assembly& assembly);
  void takeSection(const std::vector<std::uint8_t>& section);

  const Report m_report;
  std::vector<std::uint8_t> m_rest;  ///< of a packet that the last piece cut
  Assembly m_programs;
  Assembly m_events;
  std::set<int> m_services;
};

}  // namespace mediamgmnt
