// SPDX-License-Identifier: Apache-2.0
// The player's component selection: sent on the caller's thread, past the command queue.
#include <string>

#include "components/component_texts.h"
#include "host/mediamgmnt.h"
#include "player/player.h"

namespace command = mediamgmnt::command;

namespace {

constexpr int kLastComponentType = 10;  ///< of those that the library may know; what they mean is its own

bool send(unsigned long handle, const char* name, const std::string& argument) {
  return cmdPlayer(handle, name, argument.c_str()) != 0;
}

const char* selectCommand(int type) {
  switch (type) {
    case kVideoComponent: return command::kSelectVideoComponent;
    case kAudioComponent: return command::kSelectAudioComponent;
    case kSubtitleComponent: return command::kSelectSubtitleComponent;
    default: return nullptr;  // a record may carry any number
  }
}

const char* unselectCommand(int type) {
  switch (type) {
    case kVideoComponent: return command::kUnselectVideoComponent;
    case kAudioComponent: return command::kUnselectAudioComponent;
    case kSubtitleComponent: return command::kUnselectSubtitleComponent;
    default: return nullptr;
  }
}

bool sendByIndex(unsigned long handle, const char* name, int index) {
  return name != nullptr && send(handle, name, std::to_string(index));
}

bool sendByType(unsigned long handle, const char* name, int type) {
  return type >= 0 && type <= kLastComponentType && send(handle, name, std::to_string(type));
}

template <typename Record>
bool sendRecord(unsigned long handle, const char* name, const Record* record) {
  return record != nullptr && send(handle, name, selectionPayload(*record));
}

}  // namespace

bool Player::selectActiveComponentByIndex(int type, int index) { return sendByIndex(m_handle, selectCommand(type), index); }

bool Player::unselectActiveComponentByIndex(int type, int index) { return sendByIndex(m_handle, unselectCommand(type), index); }

bool Player::selectDefaultComponent(int type) { return sendByType(m_handle, command::kSelectDefaultComponent, type); }

bool Player::unselectDefaultComponent(int type) { return sendByType(m_handle, command::kUnselectComponentByType, type); }

bool Player::selectActiveComponent(AVVideoComponent* component) {
  return sendRecord(m_handle, command::kSelectComponent, component);
}

bool Player::selectActiveComponent(AVAudioComponent* component) {
  return sendRecord(m_handle, command::kSelectComponent, component);
}

bool Player::selectActiveComponent(AVSubtitleComponent* component) {
  return sendRecord(m_handle, command::kSelectComponent, component);
}

bool Player::unselectActiveComponent(AVVideoComponent* component) {
  return sendRecord(m_handle, command::kUnselectComponent, component);
}

bool Player::unselectActiveComponent(AVAudioComponent* component) {
  return sendRecord(m_handle, command::kUnselectComponent, component);
}

bool Player::unselectActiveComponent(AVSubtitleComponent* component) {
  return sendRecord(m_handle, command::kUnselectComponent, component);
}
