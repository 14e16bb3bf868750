// SPDX-License-Identifier: Apache-2.0
// The player's component queries: the library is asked on the caller's thread, past the command queue.
#include "components/component_records.h"
#include "player/indexed_property.h"
#include "player/player.h"

namespace property = mediamgmnt::property;

namespace {

template <typename Record>
bool readRecord(unsigned long handle, const char* prefix, int index, Record* (*create)(char*), Record*& out) {
  char text[indexed_property::kItemSize] = {};
  if (!indexed_property::readItem(handle, prefix, index, text)) return false;
  out = create(text);
  return true;
}

}  // namespace

bool Player::getAudioComponentLength(bool active, int& out) {
  return indexed_property::readNumber(m_handle, active ? property::kActiveAudioLength : property::kAudioLength, out);
}

bool Player::getVideoComponentLength(bool active, int& out) {
  return indexed_property::readNumber(m_handle, active ? property::kActiveVideoLength : property::kVideoLength, out);
}

bool Player::getSubtitleComponentLength(bool active, int& out) {
  return indexed_property::readNumber(m_handle, active ? property::kActiveSubtitleLength : property::kSubtitleLength, out);
}

bool Player::getAudioComponentItem(bool active, int index, AVAudioComponent*& out) {
  const char* const prefix = active ? property::kActiveAudioItemPrefix : property::kAudioItemPrefix;
  return readRecord(m_handle, prefix, index, hlpCreateAVAudioComponent, out);
}

bool Player::getVideoComponentItem(bool active, int index, AVVideoComponent*& out) {
  const char* const prefix = active ? property::kActiveVideoItemPrefix : property::kVideoItemPrefix;
  return readRecord(m_handle, prefix, index, hlpCreateAVVideoComponent, out);
}

bool Player::getSubtitleComponentItem(bool active, int index, AVSubtitleComponent*& out) {
  const char* const prefix = active ? property::kActiveSubtitleItemPrefix : property::kSubtitleItemPrefix;
  return readRecord(m_handle, prefix, index, hlpCreateAVSubtitleComponent, out);
}
