// SPDX-License-Identifier: Apache-2.0
// A moment without downloads: the threads on which GStreamer fetches over HTTP are made to wait.
#pragma once

#include <memory>

namespace mediamgmnt {

/// While it lives, each of these threads waits at a place where it has taken up all that was queued for it before, and where
/// nothing that it brought is still to be handed over. It ends by itself soon: what the demuxer does meanwhile may want to fetch.
/// There is one at a time in a process; making another one waits. Thread: any but theirs.
class DownloadRest {
 public:
  DownloadRest();
  ~DownloadRest();
  DownloadRest(const DownloadRest&) = delete;
  DownloadRest& operator=(const DownloadRest&) = delete;

 private:
  struct Round;
  std::shared_ptr<Round> m_round;
};

}  // namespace mediamgmnt
