// SPDX-License-Identifier: Apache-2.0
// From the address of a content-access-streaming descriptor to the address of the media that it stands for.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>

#include "platform/mediamgmnt/content_descriptor.h"
#include "platform/mediamgmnt/error_map.h"
#include "platform/mediamgmnt/http_fetch.h"
#include "platform/mediamgmnt/task_loop.h"

namespace mediamgmnt {

/// What a descriptor says about the media that were chosen.
struct ResolvedContent {
  std::string url;
  std::string mimeType;  ///< may be empty
  std::string title;
  std::string contentId;  ///< the rights system's where there is one, else the item's
  DescriptorRights rights;
  std::vector<DescriptorRating> ratings;
};

struct DescriptorOutcome {
  std::optional<Failure> failure;
  ResolvedContent content;  ///< also with Failure::NoRights: whose rights are missing
};

/// Fetches, reads and chooses; a descriptor that names another one is followed, but not in circles. A failure that lies in the
/// descriptor leaves one line in the log.
///
/// Threads: the control thread. @p done is called once for each open(), from the loop, unless the opener goes away before.
class DescriptorOpener {
 public:
  using Done = std::function<void(const DescriptorOutcome&)>;

  DescriptorOpener(TaskLoop& loop, std::string userAgent, Done done);

  /// Again with another address when what was chosen turned out to be a descriptor too.
  void open(const std::string& url);

 private:
  void onReply(const FetchReply& reply);
  void follow(const ContentDescriptor& descriptor, const std::string& base);
  void fetch(const std::string& url);
  void fail(Failure failure, const std::string& problem);
  void finish(DescriptorOutcome outcome);

  TaskLoop& m_loop;
  const std::string m_userAgent;
  const Done m_done;
  std::set<std::string> m_visited;
  std::string m_url;
  std::unique_ptr<HttpFetch> m_fetch;
  const std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);  ///< queued outcomes hold it weakly
};

}  // namespace mediamgmnt
