// SPDX-License-Identifier: Apache-2.0
// What the pipeline listens in on for the sake of ratings and rights.
#include <algorithm>
#include <cstring>
#include <system_error>
#include <utility>

#include "platform/mediamgmnt/clear_key_decryptor.h"
#include "platform/mediamgmnt/content_choice.h"
#include "platform/mediamgmnt/event_information.h"
#include "platform/mediamgmnt/library_log.h"
#include "platform/mediamgmnt/licence.h"
#include "platform/mediamgmnt/pipeline.h"
#include "platform/mediamgmnt/rights_systems.h"
#include "platform/mediamgmnt/web_address.h"

namespace mediamgmnt {
namespace {

constexpr char kSystemContext[] = "drm-preferred-decryption-system-id";

GstPadProbeReturn feedReader(GstPad*, GstPadProbeInfo* info, gpointer reader) {
  GstBuffer* const buffer = GST_PAD_PROBE_INFO_BUFFER(info);
  GstMapInfo map;
  if (buffer == nullptr || !gst_buffer_map(buffer, &map, GST_MAP_READ)) return GST_PAD_PROBE_OK;
  static_cast<EventInformationReader*>(reader)->feed(map.data, map.size);
  gst_buffer_unmap(buffer, &map);
  return GST_PAD_PROBE_OK;
}

void deleteReader(gpointer reader) { delete static_cast<EventInformationReader*>(reader); }

/// The rights systems that the stream says may open it.
std::vector<std::string> systemsOf(GstMessage* message) {
  std::vector<std::string> systems;
  const GValue* const events = gst_structure_get_value(gst_message_get_structure(message), "stream-encryption-events");
  if (events == nullptr || !GST_VALUE_HOLDS_LIST(events)) return systems;
  for (guint i = 0; i < gst_value_list_get_size(events); ++i) {
    auto* const event = static_cast<GstEvent*>(g_value_get_boxed(gst_value_list_get_value(events, i)));
    const char* system = nullptr;
    if (event != nullptr) gst_event_parse_protection(event, &system, nullptr, nullptr);
    if (system != nullptr) systems.emplace_back(system);
  }
  return systems;
}

std::string resolved(const std::string& base, const std::string& reference) {
  char* const url = g_uri_resolve_relative(base.c_str(), reference.c_str(), G_URI_FLAGS_PARSE_RELAXED, nullptr);
  std::string out = url != nullptr ? url : "";
  g_free(url);
  return out;
}

}  // namespace

void Pipeline::watchEventInformation(GstElement* tsDemux) {
  GstPad* const pad = gst_element_get_static_pad(tsDemux, "sink");
  if (pad == nullptr) return;
  auto* const reader = new EventInformationReader(
      [this](std::vector<Rating> ratings) { m_listener.onRatings(RatingSource::Broadcast, std::move(ratings)); });
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, feedReader, reader, deleteReader);
  gst_object_unref(pad);
}

/// On the streaming thread, before anything of the presentation is fetched.
void Pipeline::takeRatings(const DashManifest& manifest) {
  std::vector<RatedSpan> spans = ratedSpans(manifest);
  const bool rated = std::any_of(spans.begin(), spans.end(), [](const RatedSpan& each) { return !each.ratings.empty(); });
  {
    std::lock_guard lock(m_rightsMutex);
    m_ratedSpans = rated ? std::move(spans) : std::vector<RatedSpan>();
    m_toldSpan = nullptr;
  }
  tellRatingsAt(0);
}

/// Before the picture is drawn: periods may be fetched long before they are shown.
void Pipeline::tellRatingsOf(GstSample* sample) {
  GstBuffer* const buffer = gst_sample_get_buffer(sample);
  const GstSegment* const segment = gst_sample_get_segment(sample);
  if (buffer == nullptr || segment == nullptr || !GST_BUFFER_PTS_IS_VALID(buffer)) return;
  const guint64 position = gst_segment_to_stream_time(segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
  if (GST_CLOCK_TIME_IS_VALID(position)) tellRatingsAt(static_cast<std::int64_t>(position));
}

void Pipeline::tellRatingsAt(std::int64_t positionNs) {
  std::vector<Rating> ratings;
  {
    std::lock_guard lock(m_rightsMutex);
    if (m_ratedSpans.empty()) return;
    const RatedSpan* const span = &spanAt(m_ratedSpans, positionNs);
    if (std::exchange(m_toldSpan, span) == span) return;
    ratings = span->ratings;
  }
  m_listener.onRatings(RatingSource::Manifest, std::move(ratings));
}

std::shared_ptr<KeySession> Pipeline::makeKeySession() {
  return std::make_shared<KeySession>([this](KeyFault fault, const KeyId& id) {
    m_loop.post([this, alive = std::weak_ptr<bool>(m_alive), fault, id] {
      if (!alive.expired()) m_listener.onRightsMissing(rightsError(fault, id));
    });
  });
}

/// On the streaming thread, before anything encrypted can come: who needs a key then finds that a licence is on its way.
void Pipeline::askForLicences(const DashManifest& manifest) {
  const RightsParty party = rightsParty(manifest);
  const std::string issuer = party.issuerUrl.empty() ? "" : resolved(m_settings.url, party.issuerUrl);
  {
    std::lock_guard lock(m_rightsMutex);
    if (!party.systemId.empty()) m_rightsParty = {party.systemId, issuer};
  }
  for (LicenceOffer& offer : licenceOffers(manifest)) {
    const auto isKnown = [](const KeyId& id) { return ClearKeyStore::instance().find(id).has_value(); };
    if (std::all_of(offer.keyIds.begin(), offer.keyIds.end(), isKnown)) continue;
    offer.url = resolved(m_settings.url, offer.url);
    m_keys->expectLicence();
    m_loop.post([this, alive = std::weak_ptr<bool>(m_alive), offer = std::move(offer)] {
      if (!alive.expired()) fetchLicence(offer);
    });
  }
}

void Pipeline::fetchLicence(const LicenceOffer& offer) {
  const std::string place = offer.url.substr(0, offer.url.find('?'));
  const auto done = [keys = m_keys, place](const FetchReply& reply) {
    const std::optional<KeyMap> licence = reply.failure ? std::nullopt : readLicence(reply.body);
    if (!licence) logLine("no licence from " + place + ": " + (reply.failure ? reply.problem : "the answer is none"));
    keys->licenceCame(licence.value_or(KeyMap{}));
  };
  try {
    FetchRequest request{offer.url, m_settings.userAgent, licenceRequest(offer.keyIds), kLargestLicence};
    if (isWebAddress(offer.url)) {
      m_licenceFetches.push_back(std::make_unique<HttpFetch>(m_loop, std::move(request), done));
      return;
    }
    done({Failure::FormatNotSupported, "it is not on the web", {}, {}});
  } catch (const std::system_error&) {
    done({Failure::InsufficientResources, "there is no thread to fetch it", {}, {}});
  }
}

/// On the thread that asks. Content that only names foreign systems plays all the same when its key was given.
void Pipeline::answerContext(GstMessage* message) {
  const char* type = nullptr;
  if (!gst_message_parse_context_type(message, &type) || std::strcmp(type, kSystemContext) != 0) return;
  const std::vector<std::string> systems = systemsOf(message);
  if (systems.empty()) return;
  auto system = std::find_if(systems.begin(), systems.end(), [](const std::string& each) { return isClearKeySystem(each); });
  if (system == systems.end())
    system = std::find_if(systems.begin(), systems.end(), [](const auto& each) { return isTakenUp(each); });
  if (system == systems.end()) system = systems.begin();
  {
    std::lock_guard lock(m_rightsMutex);
    if (m_rightsParty.systemId.empty()) m_rightsParty.systemId = "urn:uuid:" + *system;
  }
  if (!isTakenUp(*system)) return m_keys->report(KeyFault::Missing, {});
  GstContext* const context = gst_context_new(kSystemContext, FALSE);
  gst_structure_set(gst_context_writable_structure(context), "decryption-system-id", G_TYPE_STRING, system->c_str(), nullptr);
  gst_element_set_context(GST_ELEMENT(GST_MESSAGE_SRC(message)), context);
  gst_context_unref(context);
}

std::optional<RightsError> Pipeline::doubtfulRights() const {
  const std::optional<KeyId> id = m_keys->unproven();
  return id ? std::optional<RightsError>(rightsError(KeyFault::Wrong, *id)) : std::nullopt;
}

RightsError Pipeline::rightsError(KeyFault fault, const KeyId& id) const {
  std::lock_guard lock(m_rightsMutex);
  const int state = fault == KeyFault::Missing ? RightsError::kNoLicence : RightsError::kInvalidLicence;
  return {state, id == KeyId{} ? "" : keyIdText(id), m_rightsParty.systemId, m_rightsParty.issuerUrl};
}

}  // namespace mediamgmnt
