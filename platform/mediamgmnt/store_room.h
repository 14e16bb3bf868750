// SPDX-License-Identifier: Apache-2.0
// How much the decoder's queue of all streams takes before whoever brings more has to wait.
#pragma once

#include <gst/gst.h>

#include <mutex>
#include <optional>

namespace mediamgmnt {

/// Of an element with a "decodebin3" in it; while that has no queue, nothing is done. Threads: any.
class StoreRoom {
 public:
  StoreRoom() = default;
  StoreRoom(const StoreRoom&) = delete;
  StoreRoom& operator=(const StoreRoom&) = delete;
  ~StoreRoom();

  /// @param bounded what the decoder itself sets, or else enough for the ends of all streams.
  void bound(GstElement* decoder, bool bounded);
  /// Nobody has to wait until the next close().
  void open(GstElement* decoder);
  void close();

 private:
  struct Limits {
    gboolean interleaved;
    guint64 timeNs;
    guint bytes;
  };

  static void write(GstElement* store, const Limits& limits);

  std::mutex m_mutex;
  bool m_bounded = true;         // guarded by m_mutex, like all below
  GstElement* m_open = nullptr;  ///< a reference
  std::optional<Limits> m_kept;  ///< for the close
};

}  // namespace mediamgmnt
