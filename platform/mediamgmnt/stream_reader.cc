// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/stream_reader.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/mediamgmnt/codec_name.h"
#include "platform/mediamgmnt/language_code.h"

namespace mediamgmnt {
namespace {

struct UnrefCaps {
  void operator()(GstCaps* caps) const { gst_caps_unref(caps); }
};
struct UnrefTags {
  void operator()(GstTagList* tags) const { gst_tag_list_unref(tags); }
};
using Caps = std::unique_ptr<GstCaps, UnrefCaps>;
using Tags = std::unique_ptr<GstTagList, UnrefTags>;

constexpr std::string_view kRoleScheme = "urn:mpeg:dash:role:2011";

std::optional<ComponentKind> kindOf(GstStream* stream) {
  const GstStreamType type = gst_stream_get_stream_type(stream);
  if ((type & GST_STREAM_TYPE_VIDEO) != 0) return ComponentKind::Video;
  if ((type & GST_STREAM_TYPE_AUDIO) != 0) return ComponentKind::Audio;
  if ((type & GST_STREAM_TYPE_TEXT) != 0) return ComponentKind::Subtitle;
  return std::nullopt;
}

std::string idOf(GstStream* stream) {
  const char* const id = gst_stream_get_stream_id(stream);
  return id != nullptr ? id : "";
}

std::string textTag(const Tags& tags, const char* name) {
  gchar* text = nullptr;
  if (tags == nullptr || !gst_tag_list_get_string(tags.get(), name, &text)) return {};
  std::string value = text;
  g_free(text);
  return value;
}

int intField(const GstStructure& structure, const char* name) {
  int value = 0;
  gst_structure_get_int(&structure, name, &value);
  return value;
}

double ratioFromCaps(const GstStructure& structure) {
  const int width = intField(structure, "width");
  const int height = intField(structure, "height");
  if (width <= 0 || height <= 0) return 0;
  int numerator = 1;
  int denominator = 1;
  gst_structure_get_fraction(&structure, "pixel-aspect-ratio", &numerator, &denominator);
  return static_cast<double>(width) * numerator / (static_cast<double>(height) * std::max(denominator, 1));
}

bool isEncryptedType(const GstStructure& structure) {
  return std::strcmp(gst_structure_get_name(&structure), "application/x-cenc") == 0 ||
         std::strcmp(gst_structure_get_name(&structure), "application/x-cbcs") == 0;
}

void readCaps(GstStream* stream, Component& out) {
  const Caps caps(gst_stream_get_caps(stream));
  if (caps == nullptr || gst_caps_get_size(caps.get()) == 0) return;
  const GstStructure& structure = *gst_caps_get_structure(caps.get(), 0);
  out.encoding = codecName(caps.get());
  out.encrypted = isEncryptedType(structure);
  if (out.kind == ComponentKind::Audio) out.channels = intField(structure, "channels");
  if (out.kind == ComponentKind::Video) out.aspectRatio = ratioFromCaps(structure);
}

/// The roles that an MP4 file gives a track are in boxes that GStreamer hands on unread: version and flags, scheme, value.
void readKindBox(std::string_view box, Component& out) {
  const auto scheme = box.find(kRoleScheme);
  if (box.find("kind") == std::string_view::npos || scheme == std::string_view::npos) return;
  const std::string_view rest = box.substr(scheme + kRoleScheme.size() + 1);
  const std::string_view role = rest.substr(0, rest.find('\0'));
  if (role == "description") out.audioDescription = out.kind == ComponentKind::Audio;
  if (role == "caption") out.hearingImpaired = true;
  if (role == "main") out.isMain = true;
}

void readPrivateTags(const Tags& tags, Component& out) {
  constexpr char kPrivateTag[] = "private-qt-tag";
  for (guint i = 0; i < gst_tag_list_get_tag_size(tags.get(), kPrivateTag); ++i) {
    GstSample* sample = nullptr;
    if (!gst_tag_list_get_sample_index(tags.get(), kPrivateTag, i, &sample)) continue;
    GstBuffer* const buffer = gst_sample_get_buffer(sample);
    GstMapInfo map;
    if (buffer != nullptr && gst_buffer_map(buffer, &map, GST_MAP_READ)) {
      readKindBox({reinterpret_cast<const char*>(map.data), map.size}, out);
      gst_buffer_unmap(buffer, &map);
    }
    gst_sample_unref(sample);
  }
}

void readTags(GstStream* stream, Component& out) {
  const Tags tags(gst_stream_get_tags(stream));
  std::string language = textTag(tags, GST_TAG_LANGUAGE_CODE);
  if (language.empty()) language = textTag(tags, GST_TAG_LANGUAGE_NAME);  // where GStreamer does not know the code
  out.language = languageCode(language);
  out.label = textTag(tags, GST_TAG_TITLE);
  if (tags != nullptr) readPrivateTags(tags, out);
}

/// The number at the end of a stream's name: a track of an MP4 file, a place in a manifest, in hexadecimal a PID.
std::optional<int> numberAtEnd(std::string_view id, std::string_view digits, int base) {
  const auto last = id.find_last_not_of(digits);
  const std::string_view text = last == std::string_view::npos ? id : id.substr(last + 1);
  int number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number, base);
  return result.ec == std::errc() ? std::optional<int>(number) : std::nullopt;
}

std::optional<int> decimalAtEnd(std::string_view id) { return numberAtEnd(id, "0123456789", 10); }

bool isOfKind(const DashAdaptationSet& set, ComponentKind kind) {
  switch (kind) {
    case ComponentKind::Video: return set.contentType == "video";
    case ComponentKind::Audio: return set.contentType == "audio";
    case ComponentKind::Subtitle: return set.contentType == "text" || set.contentType == "application";
  }
  return false;
}

double ratioFromText(std::string_view text) {
  const auto colon = text.find(':');
  if (colon == std::string_view::npos) return 0;
  double width = 0;
  double height = 0;
  std::from_chars(text.data(), text.data() + colon, width);
  std::from_chars(text.data() + colon + 1, text.data() + text.size(), height);
  return width > 0 && height > 0 ? width / height : 0;
}

double ratioOf(const DashAdaptationSet& set) {
  const double written = ratioFromText(set.pictureAspectRatio);
  if (written > 0 || set.representations.empty()) return written;
  const DashRepresentation& first = set.representations.front();
  if (first.width <= 0 || first.height <= 0) return 0;
  const double sample = ratioFromText(first.sampleAspectRatio);
  return static_cast<double>(first.width) / first.height * (sample > 0 ? sample : 1);
}

std::string encodingOf(const DashAdaptationSet& set) {
  if (!set.codecs.empty()) return set.codecs.substr(0, set.codecs.find(','));
  if (set.mimeType == "application/ttml+xml") return "stpp";
  return set.mimeType == "text/vtt" ? "wvtt" : "";
}

const DashAdaptationSet* adaptationSetOf(const Component& component, const DashManifest& manifest, std::size_t period) {
  const std::optional<int> index = decimalAtEnd(component.streamId);
  if (!index || period >= manifest.periods.size()) return nullptr;
  const auto& sets = manifest.periods[period].adaptationSets;
  if (*index < 0 || static_cast<std::size_t>(*index) >= sets.size()) return nullptr;
  const DashAdaptationSet& set = sets[static_cast<std::size_t>(*index)];
  return isOfKind(set, component.kind) ? &set : nullptr;
}

/// Fonts lie where the period's media do; documents of a file of their own, where that does.
void applyAddresses(const DashManifest& manifest, const DashPeriod& period, const DashAdaptationSet& set, Component& out) {
  const std::string base = resolvedAddress(resolvedAddress(out.documentBase, manifest.baseUrl), period.baseUrl);
  out.documentBase = resolvedAddress(base, set.baseUrl);
  for (const DashFont& each : set.fonts) out.fonts.push_back({each.family, resolvedAddress(base, each.url)});
}

void applyDash(const DashManifest& manifest, std::size_t period, Component& out) {
  const DashAdaptationSet* const set = adaptationSetOf(out, manifest, period);
  if (set == nullptr) return;
  out.tag = set->id.value_or(decimalAtEnd(out.streamId).value_or(0));
  out.encrypted = set->isProtected();
  if (!encodingOf(*set).empty()) out.encoding = encodingOf(*set);
  if (!set->language.empty()) out.language = languageCode(set->language);
  if (!set->labels.empty()) out.label = set->labels.front().text;
  if (const int channels = audioChannelsOf(*set); channels > 0) out.channels = channels;
  if (const double ratio = ratioOf(*set); ratio > 0) out.aspectRatio = ratio;
  out.audioDescription = isAudioDescription(*set);
  out.hearingImpaired = isForHearingImpaired(*set);
  out.isMain = hasRole(*set, "main");
  if (out.kind == ComponentKind::Subtitle) applyAddresses(manifest, manifest.periods[period], *set, out);
}

bool isAudioCodec(std::string_view codec) {
  constexpr std::string_view kPrefixes[] = {"mp4a", "ac-3", "ec-3", "ac-4", "dts", "opus", "fLaC", "flac", "mp3"};
  return std::any_of(std::begin(kPrefixes), std::end(kPrefixes),
                     [=](std::string_view each) { return codec.substr(0, each.size()) == each; });
}

const char* hlsTypeOf(ComponentKind kind) {
  return kind == ComponentKind::Video ? "VIDEO" : kind == ComponentKind::Audio ? "AUDIO" : "SUBTITLES";
}

const HlsMedia* mediaOf(const Component& component, const HlsPlaylist& playlist) {
  const auto dash = component.streamId.find('-');
  if (dash == std::string::npos) return nullptr;
  const std::string_view name = std::string_view(component.streamId).substr(dash + 1);
  const auto found = std::find_if(playlist.media.begin(), playlist.media.end(), [&](const HlsMedia& each) {
    return each.name == name && each.type == hlsTypeOf(component.kind);
  });
  return found != playlist.media.end() ? &*found : nullptr;
}

/// Empty where there are several of a sound, and which of them is the track's remains open. A picture's comes before those of
/// subtitles.
std::string codecFrom(const HlsPlaylist& playlist, ComponentKind kind, const HlsMedia* media) {
  for (const HlsVariant& variant : playlist.variants) {
    if (media != nullptr && variant.groupOf(media->type) != media->groupId) continue;
    std::vector<std::string> codecs;
    std::copy_if(variant.codecs.begin(), variant.codecs.end(), std::back_inserter(codecs),
                 [=](const std::string& each) { return isAudioCodec(each) == (kind == ComponentKind::Audio); });
    if (codecs.size() == 1 || (kind == ComponentKind::Video && !codecs.empty())) return codecs.front();
  }
  return {};
}

/// @p place stands in for the number that HLS does not give its tracks.
void applyHls(const HlsPlaylist& playlist, int place, Component& out) {
  out.tag = place;
  out.encrypted = playlist.isEncrypted;
  const HlsMedia* const media = mediaOf(out, playlist);
  const std::string written = out.kind == ComponentKind::Subtitle ? "wvtt" : codecFrom(playlist, out.kind, media);
  if (!written.empty()) out.encoding = written;
  if (out.kind == ComponentKind::Video && out.aspectRatio == 0 && !playlist.variants.empty() &&
      playlist.variants.front().height > 0) {
    out.aspectRatio = static_cast<double>(playlist.variants.front().width) / playlist.variants.front().height;
  }
  if (media == nullptr) return;
  out.label = media->name;
  if (!media->language.empty()) out.language = languageCode(media->language);
  if (out.kind == ComponentKind::Audio && media->channels > 0) out.channels = media->channels;
  out.audioDescription = out.kind == ComponentKind::Audio && media->isAudioDescription();
  out.hearingImpaired = media->isForHearingImpaired();
  out.isMain = media->isDefault;
}

std::string languageOf(const ProgramMapStream& stream) {
  for (const auto* const entries : {&stream.languages, &stream.subtitles, &stream.teletext}) {
    if (!entries->empty()) return entries->front().code;
  }
  return {};
}

void applyProgramMap(const ProgramMap& map, Component& out) {
  const std::optional<int> pid = numberAtEnd(out.streamId, "0123456789abcdefABCDEF", 16);
  const auto found =
      std::find_if(map.streams.begin(), map.streams.end(), [&](const ProgramMapStream& each) { return pid == each.pid; });
  if (found == map.streams.end()) return;
  out.pid = found->pid;
  out.tag = found->componentTag.value_or(0);
  out.encrypted = out.encrypted || map.isScrambled || found->isScrambled;
  if (const std::string language = languageOf(*found); !language.empty()) out.language = languageCode(language);
  if (out.channels == 0) out.channels = found->channels;
  out.audioDescription = out.kind == ComponentKind::Audio && found->isAudioDescription();
  out.hearingImpaired = found->isForHearingImpairedViewers();
}

Component readComponent(GstStream* stream, ComponentKind kind) {
  Component component;
  component.kind = kind;
  component.stream = stream;
  component.streamId = idOf(stream);
  component.isMain = (gst_stream_get_stream_flags(stream) & GST_STREAM_FLAG_SELECT) != 0;
  readCaps(stream, component);
  readTags(stream, component);
  return component;
}

bool fits(const Streams& streams, const DashPeriod& period) {
  DashManifest one;
  one.periods.push_back(period);
  return std::all_of(streams.begin(), streams.end(), [&](GstStream* stream) {
    const std::optional<ComponentKind> kind = kindOf(stream);
    if (!kind) return true;
    const Component component = readComponent(stream, *kind);
    const DashAdaptationSet* const set = adaptationSetOf(component, one, 0);
    return set != nullptr && (set->language.empty() || languageCode(set->language) == component.language);
  });
}

}  // namespace

ComponentList readComponents(const Streams& streams, const SourceFacts& facts, std::size_t period) {
  ComponentList list;
  for (GstStream* const stream : streams) {
    const std::optional<ComponentKind> kind = kindOf(stream);
    if (!kind) continue;
    Component component = readComponent(stream, *kind);
    component.documentBase = facts.url;
    if (facts.dash) {
      applyDash(*facts.dash, period, component);
    } else if (facts.hls) {
      applyHls(*facts.hls, static_cast<int>(list.size()), component);
    } else if (facts.programMap) {
      applyProgramMap(*facts.programMap, component);
    } else {
      component.tag = decimalAtEnd(component.streamId).value_or(0);
    }
    list.push_back(std::move(component));
  }
  return list;
}

std::size_t periodOf(const Streams& streams, const DashManifest& manifest, std::size_t from) {
  for (std::size_t step = 0; step < manifest.periods.size(); ++step) {
    const std::size_t period = (from + step) % manifest.periods.size();
    if (fits(streams, manifest.periods[period])) return period;
  }
  return from;
}

}  // namespace mediamgmnt
