// SPDX-License-Identifier: Apache-2.0
// How far the media reach that an adaptive source has fetched. Its demuxer takes what has come apart and hands it on; this looks at
// the times of what it hands on, for GStreamer 1.22 answers neither query nor property about it.
#pragma once

#include <gst/gst.h>

#include <array>
#include <cstdint>
#include <mutex>
#include <optional>

namespace mediamgmnt {

/// Threads: any; a call takes a lock for a few instructions, and none is held while GStreamer is asked.
class FetchedMedia {
 public:
  /// Looks at what comes to a track of the source. Must outlive its streaming threads.
  void watch(GstElement* track);
  /// A seek throws everything away.
  void forget();
  /// @return milliseconds from @p positionNs to where the shortest of sound and picture ends, which is the end of what can be
  /// presented; nothing when nothing is known of them.
  std::optional<long long> millisecondsFrom(std::int64_t positionNs) const;

 private:
  /// What has come of sound, or of the picture. One track at a time is fetched of each.
  struct Reach {
    const GstPad* track = nullptr;  ///< told apart only
    std::int64_t edgeNs = 0;
    bool backwards = false;
    bool complete = false;
  };

  static GstPadProbeReturn onData(GstPad* pad, GstPadProbeInfo* info, gpointer self);
  void noteBuffer(GstPad* pad, GstBuffer* buffer);
  void noteEnd(GstPad* pad);

  mutable std::mutex m_mutex;
  std::array<Reach, 2> m_reaches;  // guarded by m_mutex; picture, sound
};

}  // namespace mediamgmnt
