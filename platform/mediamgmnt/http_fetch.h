// SPDX-License-Identifier: Apache-2.0
// Fetches one small document over HTTP: a descriptor, a licence. Media never come this way.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/mediamgmnt/error_map.h"
#include "platform/mediamgmnt/task_loop.h"

namespace mediamgmnt {

/// Registers the HTTP library's types and sets up their classes. GLib locks itself up when two threads do that at once, one setting
/// up a class that needs a type which the other is registering: so it is done before there are others. Thread: the one that starts
/// the library.
void prepareFetching();

struct FetchRequest {
  std::string url;
  std::string userAgent;  ///< empty: the HTTP library's own
  std::string jsonBody;   ///< not empty: is sent by POST
  std::size_t largest = 0;
};

struct FetchReply {
  std::optional<Failure> failure;
  std::string problem;  ///< for the log, when there is a failure
  std::string url;      ///< after redirections
  std::string body;
};

/// One transfer, on a thread of its own that ends with it, made with GNOME's HTTP library as the media's requests are. It begins
/// once the library has started.
///
/// Threads: construction and destruction on the thread of the loop, on which @p done is called once, never after destruction.
/// Destruction cancels and does not wait.
class HttpFetch {
 public:
  using Done = std::function<void(const FetchReply&)>;

  /// Throws std::system_error when the system gives no thread.
  HttpFetch(TaskLoop& loop, FetchRequest request, Done done);
  HttpFetch(const HttpFetch&) = delete;
  HttpFetch& operator=(const HttpFetch&) = delete;
  ~HttpFetch();

 private:
  class Transfer;
  std::shared_ptr<Transfer> m_transfer;
};

}  // namespace mediamgmnt
