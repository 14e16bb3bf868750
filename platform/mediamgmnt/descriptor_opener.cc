// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/descriptor_opener.h"

#include <glib.h>

#include <system_error>
#include <utility>

#include "platform/mediamgmnt/content_choice.h"
#include "platform/mediamgmnt/library_log.h"
#include "platform/mediamgmnt/web_address.h"

namespace mediamgmnt {
namespace {

/// A portal has no reason to send a television further than this.
constexpr std::size_t kMostDescriptors = 5;

/// Portals write addresses with blanks and brackets in them, which the web takes as they are meant.
std::string resolved(const std::string& base, const std::string& reference) {
  char* const url = g_uri_resolve_relative(base.c_str(), reference.c_str(), G_URI_FLAGS_PARSE_RELAXED, nullptr);
  std::string out = url != nullptr ? url : "";
  g_free(url);
  return out;
}

ResolvedContent resolve(const ContentChoice& choice, const std::string& base) {
  ResolvedContent content;
  content.url = resolved(base, choice.url->url);
  content.mimeType = choice.url->mimeType;
  content.title = choice.item->title;
  content.contentId = choice.item->contentId;
  content.ratings = choice.item->ratings;
  if (choice.rights != nullptr) content.rights = *choice.rights;
  if (!content.rights.contentId.empty()) content.contentId = content.rights.contentId;
  if (content.rights.systemId.empty()) content.rights.systemId = choice.url->drmSystemId;
  return content;
}

}  // namespace

DescriptorOpener::DescriptorOpener(TaskLoop& loop, std::string userAgent, Done done)
    : m_loop(loop), m_userAgent(std::move(userAgent)), m_done(std::move(done)) {}

void DescriptorOpener::open(const std::string& url) {
  m_url = url;
  if (!isWebAddress(url)) return fail(Failure::FormatNotSupported, "it is not on the web");
  if (!m_visited.insert(url).second) return fail(Failure::CorruptContent, "it leads back to itself");
  if (m_visited.size() > kMostDescriptors) return fail(Failure::CorruptContent, "it is one too many in a row");
  fetch(url);
}

void DescriptorOpener::fetch(const std::string& url) {
  try {
    m_fetch = std::make_unique<HttpFetch>(m_loop, FetchRequest{url, m_userAgent, {}, kLargestDescriptor},
                                          [this](const FetchReply& reply) { onReply(reply); });
  } catch (const std::system_error&) {
    fail(Failure::InsufficientResources, "there is no thread to fetch it");
  }
}

void DescriptorOpener::onReply(const FetchReply& reply) {
  if (reply.failure) return fail(*reply.failure, reply.problem);
  std::string problem;
  const std::optional<ContentDescriptor> descriptor = readContentDescriptor(reply.body, problem);
  if (!descriptor) return fail(Failure::CorruptContent, problem);
  follow(*descriptor, reply.url);
}

void DescriptorOpener::follow(const ContentDescriptor& descriptor, const std::string& base) {
  const ContentChoice choice = chooseContent(descriptor);
  if (choice.verdict == ChoiceVerdict::NothingPlayable) return fail(Failure::CorruptContent, "it names nothing playable");
  const ResolvedContent content = resolve(choice, base);
  if (choice.verdict == ChoiceVerdict::NoRights) return finish({Failure::NoRights, content});
  if (!isWebAddress(content.url)) return fail(Failure::CorruptContent, "what it names is not on the web");
  if (isDescriptorType(content.mimeType)) return open(content.url);
  finish({std::nullopt, content});
}

/// Without what follows the path: that may hold what lets a viewer in.
void DescriptorOpener::fail(Failure failure, const std::string& problem) {
  logLine("no descriptor at " + m_url.substr(0, m_url.find('?')) + ": " + problem);
  finish({failure, {}});
}

/// From the loop, so that the opener may go away in it.
void DescriptorOpener::finish(DescriptorOutcome outcome) {
  m_loop.post([done = m_done, alive = std::weak_ptr<bool>(m_alive), outcome = std::move(outcome)] {
    if (!alive.expired()) done(outcome);
  });
}

}  // namespace mediamgmnt
