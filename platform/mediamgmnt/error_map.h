// SPDX-License-Identifier: Apache-2.0
// What can go wrong in a playback, and the error code that the page sees for it.
#pragma once

#include <glib.h>

namespace mediamgmnt {

enum class Failure {
  FormatNotSupported,
  CannotConnect,
  ConnectionLost,
  Unidentified,
  InsufficientResources,
  CorruptContent,
  ContentNotAvailable,
  NotAvailableAtPosition,
  NoRights,  ///< the page hears of the rights before it hears of the error
};

/// The code of the A/V Control object's "error" property.
int errorCodeOf(Failure failure);

/// Where in the pipeline an error came from, and how far playback had come.
struct FailureContext {
  bool fromSource = false;         ///< posted by the element that reads the URL itself
  bool fromAdaptiveDemux = false;  ///< posted by the element that fetches segments
  bool connected = false;          ///< the source has answered
  bool mediaArrived = false;       ///< something was fetched that could be taken apart
  unsigned int httpStatus = 0;     ///< with which the server refused, where that is known
};

/// Makes sense of an error that the pipeline posted.
Failure classifyError(const GError& error, const FailureContext& context);

}  // namespace mediamgmnt
