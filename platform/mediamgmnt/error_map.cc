// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/error_map.h"

#include <gst/gst.h>

namespace mediamgmnt {
namespace {

constexpr unsigned int kRangeNotSatisfiable = 416;  // RFC 9110, 15.5.17

Failure connectionFailure(const FailureContext& context) {
  return context.connected ? Failure::ConnectionLost : Failure::CannotConnect;
}

/// So a server answers the request for all of a file that has no bytes.
bool isEmptyFile(const FailureContext& context) {
  return context.fromSource && !context.mediaArrived && context.httpStatus == kRangeNotSatisfiable;
}

/// GStreamer has a code of its own for a few of these only.
bool isRefused(int code, const FailureContext& context) {
  if (code == GST_RESOURCE_ERROR_NOT_FOUND || code == GST_RESOURCE_ERROR_NOT_AUTHORIZED) return true;
  return context.httpStatus >= 400 && context.httpStatus < 500;
}

Failure classifyResource(int code, const FailureContext& context) {
  if (isEmptyFile(context)) return Failure::FormatNotSupported;
  // A missing segment of a presentation that has begun: the content is there, this place of it is not.
  if (isRefused(code, context) && context.fromAdaptiveDemux && context.mediaArrived) return Failure::NotAvailableAtPosition;
  if (isRefused(code, context)) return Failure::ContentNotAvailable;
  switch (code) {
    case GST_RESOURCE_ERROR_NO_SPACE_LEFT: return Failure::InsufficientResources;
    default: return connectionFailure(context);
  }
}

Failure classifyStream(int code, const FailureContext& context) {
  switch (code) {
    case GST_STREAM_ERROR_TYPE_NOT_FOUND:
    case GST_STREAM_ERROR_WRONG_TYPE:
    case GST_STREAM_ERROR_CODEC_NOT_FOUND: return Failure::FormatNotSupported;
    case GST_STREAM_ERROR_DECODE:
    case GST_STREAM_ERROR_ENCODE:
    case GST_STREAM_ERROR_DEMUX:
    case GST_STREAM_ERROR_MUX:
    case GST_STREAM_ERROR_FORMAT: return Failure::CorruptContent;
    case GST_STREAM_ERROR_FAILED:
      // "Internal data stream error": from the source it is the connection, further down it is what was received.
      if (context.fromSource) return connectionFailure(context);
      return context.connected ? Failure::CorruptContent : Failure::CannotConnect;
    default: return Failure::Unidentified;
  }
}

}  // namespace

int errorCodeOf(Failure failure) {
  switch (failure) {
    case Failure::FormatNotSupported: return 0;
    case Failure::CannotConnect:
    case Failure::ConnectionLost: return 1;
    case Failure::Unidentified:
    case Failure::NoRights: return 2;
    case Failure::InsufficientResources: return 3;
    case Failure::CorruptContent: return 4;
    case Failure::ContentNotAvailable: return 5;
    case Failure::NotAvailableAtPosition: return 6;
  }
  return 2;
}

Failure classifyError(const GError& error, const FailureContext& context) {
  if (error.domain == GST_RESOURCE_ERROR) return classifyResource(error.code, context);
  if (error.domain == GST_STREAM_ERROR) return classifyStream(error.code, context);
  if (error.domain == GST_CORE_ERROR && error.code == GST_CORE_ERROR_MISSING_PLUGIN) return Failure::FormatNotSupported;
  return Failure::Unidentified;
}

}  // namespace mediamgmnt
