// SPDX-License-Identifier: Apache-2.0
// The player-thread half of the status words that need data from the library.
#include <cstring>

#include "plugin/av_control_plugin.h"

namespace status = mediamgmnt::status;

namespace {

constexpr int kUndefinedError = 2;  ///< the A/V Control object's code for an unidentified error

}  // namespace

void AVControlPlugin::handleDispatchEventFromCb(char const* message) {
  const auto current = player();
  if (current == nullptr) return;
  if (std::strcmp(message, status::kError) == 0) {
    int code = kUndefinedError;
    current->getLastErrorCode(code);
    setErrorProperty(code);
    m_stateMachine.onError();  // the page hears of the error through the change of state
  } else if (std::strcmp(message, status::kPlayPositionChanged) == 0) {
    const double pending = m_pendingSeek;
    if (pending != kNoPendingSeek) {
      m_stateMachine.onSeek(pending);
      m_pendingSeek = kNoPendingSeek;
      return;
    }
    double position = 0.0;
    if (!refreshCachedTime() || !getCachedTime(&position)) return;
    _CorvelNativeVariant argument;
    cvnplUtil::set(position, argument);
    dispatchEvent("onPlayPositionChanged", &argument, 1);
  } else if (std::strcmp(message, status::kPlaySpeedChanged) == 0) {
    double speed = 0.0;
    if (!current->getPlaySpeed(speed)) return;
    setSpeedProperty(speed);
    _CorvelNativeVariant argument;
    cvnplUtil::set(speed, argument);
    dispatchEvent("onPlaySpeedChanged", &argument, 1);
  } else if (std::strcmp(message, status::kDrmRightsError) == 0) {
    dispatchDrmRightsError();
  } else if (std::strcmp(message, status::kParentalRatingChange) == 0) {
    dispatchParentalRatingChange();
  } else if (std::strcmp(message, status::kParentalRatingError) == 0) {
    dispatchParentalRatingError();
  }
}
