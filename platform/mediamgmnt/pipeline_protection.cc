// SPDX-License-Identifier: Apache-2.0
// What the pipeline listens in on for the sake of ratings and rights.
#include "platform/mediamgmnt/event_information.h"
#include "platform/mediamgmnt/pipeline.h"

namespace mediamgmnt {
namespace {

GstPadProbeReturn feedReader(GstPad*, GstPadProbeInfo* info, gpointer reader) {
  GstBuffer* const buffer = GST_PAD_PROBE_INFO_BUFFER(info);
  GstMapInfo map;
  if (buffer == nullptr || !gst_buffer_map(buffer, &map, GST_MAP_READ)) return GST_PAD_PROBE_OK;
  static_cast<EventInformationReader*>(reader)->feed(map.data, map.size);
  gst_buffer_unmap(buffer, &map);
  return GST_PAD_PROBE_OK;
}

void deleteReader(gpointer reader) { delete static_cast<EventInformationReader*>(reader); }

}  // namespace

void Pipeline::watchEventInformation(GstElement* tsDemux) {
  GstPad* const pad = gst_element_get_static_pad(tsDemux, "sink");
  if (pad == nullptr) return;
  auto* const reader = new EventInformationReader(
      [this](std::vector<Rating> ratings) { m_listener.onRatings(RatingSource::Broadcast, std::move(ratings)); });
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, feedReader, reader, deleteReader);
  gst_object_unref(pad);
}

}  // namespace mediamgmnt
