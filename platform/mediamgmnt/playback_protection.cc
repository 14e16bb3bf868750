// SPDX-License-Identifier: Apache-2.0
// What a playback does with descriptors, rights and ratings.
#include <utility>

#include "platform/mediamgmnt/content_choice.h"
#include "platform/mediamgmnt/playback.h"
#include "platform/mediamgmnt/rating_schemes.h"

namespace mediamgmnt {
namespace {

std::vector<Rating> ratingsOf(const ResolvedContent& content) {
  std::vector<Rating> ratings;
  for (const DescriptorRating& each : content.ratings) ratings.push_back(readRating(each.scheme, each.value, each.region));
  return ratings;
}

}  // namespace

bool Playback::mustResolve() const { return !m_content && !m_settings.url.empty() && isDescriptorType(m_settings.declaredType); }

/// @p url is a descriptor's, as far as is known.
void Playback::resolve(const std::string& url) {
  if (m_descriptorOpener == nullptr) {
    m_descriptorOpener = std::make_unique<DescriptorOpener>(m_loop, m_settings.userAgent,
                                                            [this](const DescriptorOutcome& outcome) { onDescriptor(outcome); });
  }
  m_resolving = true;
  m_loop.cancel(std::exchange(m_connectTimer, 0));
  armConnectWatchdog();
  m_descriptorOpener->open(url);
}

void Playback::onDescriptor(const DescriptorOutcome& outcome) {
  m_loop.cancel(std::exchange(m_connectTimer, 0));
  m_resolving = false;
  const ResolvedContent& content = outcome.content;
  if (outcome.failure == Failure::NoRights) {
    return tellMissingRights({RightsError::kNoLicence, content.contentId, content.rights.systemId, content.rights.issuerUrl});
  }
  if (outcome.failure) return fail(*outcome.failure);
  m_content = content;
  m_guard.setContent(content.contentId, content.rights.systemId);
  m_guard.setRatings(RatingSource::Descriptor, ratingsOf(content));
  sayRatings();
  openPipeline();
  pauseWhatIsBlocked();
}

/// What was opened as media turns out to be a descriptor.
void Playback::onDescriptorServed() {
  const std::string url = m_content ? m_content->url : m_settings.url;
  m_content.reset();
  m_pipeline.reset();
  m_loop.cancel(std::exchange(m_connectTimer, 0));
  m_loop.cancel(std::exchange(m_tickTimer, 0));
  if (m_next) m_startPosition = m_next->target;
  resolve(url);
}

/// A descriptor knows its content by the name that the portal gave it; only where it says nothing the stream is asked.
void Playback::onRightsMissing(const RightsError& error) {
  RightsError told = error;
  if (m_content && !m_content->contentId.empty()) told.contentId = m_content->contentId;
  if (m_content && !m_content->rights.systemId.empty()) told.systemId = m_content->rights.systemId;
  if (m_content && !m_content->rights.issuerUrl.empty()) told.issuerUrl = m_content->rights.issuerUrl;
  tellMissingRights(told);
}

/// What a wrong key makes of a coding that cannot be tried looks like any other failure, or like nothing at all.
/// @return true when the failure has been told as one of the rights.
bool Playback::blamesKeys() {
  if (m_pipeline == nullptr || m_timesKnown) return false;
  const std::optional<RightsError> error = m_pipeline->doubtfulRights();
  if (error) onRightsMissing(*error);
  return error.has_value();
}

void Playback::tellMissingRights(const RightsError& error) {
  m_protection.setRightsError(error);
  fail(Failure::NoRights);
}

void Playback::onRatings(RatingSource source, std::vector<Rating> ratings) { m_guard.setRatings(source, std::move(ratings)); }

void Playback::judgeRatings() {
  m_guard.judge();
  tellRatings();
}

void Playback::tellRatings() {
  sayRatings();
  pauseWhatIsBlocked();
}

void Playback::sayRatings() {
  const char* const word = m_guard.takeWord();
  if (word != nullptr) m_voice.say(word);
}

/// What must not be shown is not played either: the page finds it paused, and may play on once it is told that nothing blocks.
void Playback::pauseWhatIsBlocked() {
  if (m_guard.isBlocked() && m_wish == Wish::Play) pause();
}

}  // namespace mediamgmnt
