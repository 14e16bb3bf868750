// SPDX-License-Identifier: Apache-2.0
// Questions to the library, answered on the caller's thread.
#include "host/mediamgmnt.h"
#include "player/player.h"
#include "support/number_text.h"

namespace {

template <int kSize>
bool readNumber(unsigned long handle, const char* key, double& out) {
  char text[kSize];  // not cleared: the largest is 2 KiB, and pages ask often
  text[0] = '\0';
  if (getPlayerProperty(handle, key, text, kSize) == 0) return false;
  out = textToDouble(text);
  return true;
}

}  // namespace

bool Player::getDuration(double& out) { return readNumber<128>(m_handle, mediamgmnt::property::kDuration, out); }

bool Player::getPosition(double& out) { return readNumber<128>(m_handle, mediamgmnt::property::kPosition, out); }

bool Player::getPlaySpeed(double& out) { return readNumber<2048>(m_handle, mediamgmnt::property::kPlaySpeed, out); }

bool Player::getLastErrorCode(int& out) {
  char text[32] = "";
  if (getPlayerProperty(m_handle, mediamgmnt::property::kLastErrorCode, text, sizeof text) == 0) return false;
  out = textToInt(text);
  return true;
}
