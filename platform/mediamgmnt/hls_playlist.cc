// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/hls_playlist.h"

#include <algorithm>
#include <charconv>
#include <map>

namespace mediamgmnt {
namespace {

constexpr std::string_view kFirstLine = "#EXTM3U";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

using Attributes = std::map<std::string, std::string, std::less<>>;

bool takePrefix(std::string_view& text, std::string_view prefix) {
  if (text.substr(0, prefix.size()) != prefix) return false;
  text.remove_prefix(prefix.size());
  return true;
}

/// The text up to @p end, which is passed over; all of it without one.
std::string_view takeUpTo(std::string_view& text, char end) {
  const auto length = std::min(text.find(end), text.size());
  const std::string_view taken = text.substr(0, length);
  text.remove_prefix(std::min(length + 1, text.size()));
  return taken;
}

std::string_view takeLine(std::string_view& text) {
  std::string_view line = takeUpTo(text, '\n');
  while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.remove_suffix(1);
  return line;
}

/// NAME=value or NAME="value", separated by commas; a comma inside quotes separates nothing.
Attributes readAttributes(std::string_view text) {
  Attributes attributes;
  while (!text.empty()) {
    std::string_view name = takeUpTo(text, '=');
    while (!name.empty() && (name.front() == ' ' || name.front() == ',')) name.remove_prefix(1);
    const bool quoted = takePrefix(text, "\"");
    const std::string_view value = takeUpTo(text, quoted ? '"' : ',');
    if (quoted) takeUpTo(text, ',');
    attributes.emplace(name, value);
  }
  return attributes;
}

std::string valueOf(const Attributes& attributes, std::string_view name) {
  const auto found = attributes.find(name);
  return found != attributes.end() ? found->second : std::string();
}

int leadingNumber(std::string_view text) {
  int number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc() ? number : 0;
}

std::vector<std::string> listOf(std::string_view text) {
  std::vector<std::string> items;
  while (!text.empty()) {
    std::string_view item = takeUpTo(text, ',');
    while (!item.empty() && item.front() == ' ') item.remove_prefix(1);
    if (!item.empty()) items.emplace_back(item);
  }
  return items;
}

HlsMedia readMedia(const Attributes& attributes) {
  HlsMedia media;
  media.type = valueOf(attributes, "TYPE");
  media.groupId = valueOf(attributes, "GROUP-ID");
  media.name = valueOf(attributes, "NAME");
  media.language = valueOf(attributes, "LANGUAGE");
  media.uri = valueOf(attributes, "URI");
  media.characteristics = listOf(valueOf(attributes, "CHARACTERISTICS"));
  media.channels = std::max(leadingNumber(valueOf(attributes, "CHANNELS")), 0);
  media.isDefault = valueOf(attributes, "DEFAULT") == "YES";
  media.isAutoSelected = valueOf(attributes, "AUTOSELECT") == "YES";
  media.isForced = valueOf(attributes, "FORCED") == "YES";
  return media;
}

HlsVariant readVariant(const Attributes& attributes) {
  HlsVariant variant;
  variant.bandwidth = leadingNumber(valueOf(attributes, "BANDWIDTH"));
  const std::string size = valueOf(attributes, "RESOLUTION");
  variant.width = leadingNumber(size);
  const auto by = size.find('x');
  if (by != std::string::npos) variant.height = leadingNumber(std::string_view(size).substr(by + 1));
  variant.codecs = listOf(valueOf(attributes, "CODECS"));
  variant.audioGroup = valueOf(attributes, "AUDIO");
  variant.videoGroup = valueOf(attributes, "VIDEO");
  variant.subtitleGroup = valueOf(attributes, "SUBTITLES");
  return variant;
}

bool namesKey(const Attributes& attributes) {
  const std::string method = valueOf(attributes, "METHOD");
  return !method.empty() && method != "NONE";
}

bool hasCharacteristic(const HlsMedia& media, std::string_view name) {
  return std::find(media.characteristics.begin(), media.characteristics.end(), name) != media.characteristics.end();
}

}  // namespace

bool HlsMedia::isAudioDescription() const { return hasCharacteristic(*this, "public.accessibility.describes-video"); }

bool HlsMedia::isForHearingImpaired() const {
  return hasCharacteristic(*this, "public.accessibility.describes-music-and-sound") ||
         hasCharacteristic(*this, "public.accessibility.transcribes-spoken-dialog");
}

std::string HlsVariant::groupOf(std::string_view type) const {
  if (type == "AUDIO") return audioGroup;
  if (type == "VIDEO") return videoGroup;
  return type == "SUBTITLES" ? subtitleGroup : std::string();
}

std::optional<HlsPlaylist> readHlsPlaylist(std::string_view text) {
  takePrefix(text, kByteOrderMark);
  if (takeLine(text) != kFirstLine) return std::nullopt;
  HlsPlaylist playlist;
  bool variantOpen = false;
  while (!text.empty()) {
    std::string_view line = takeLine(text);
    if (takePrefix(line, "#EXT-X-MEDIA:")) {
      playlist.media.push_back(readMedia(readAttributes(line)));
    } else if (takePrefix(line, "#EXT-X-STREAM-INF:")) {
      playlist.variants.push_back(readVariant(readAttributes(line)));
      variantOpen = true;
    } else if (takePrefix(line, "#EXT-X-KEY:") || takePrefix(line, "#EXT-X-SESSION-KEY:")) {
      playlist.isEncrypted = playlist.isEncrypted || namesKey(readAttributes(line));
    } else if (variantOpen && !line.empty() && line.front() != '#') {
      playlist.variants.back().uri = line;
      variantOpen = false;
    }
  }
  return playlist;
}

}  // namespace mediamgmnt
