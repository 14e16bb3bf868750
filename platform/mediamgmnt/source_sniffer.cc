// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/source_sniffer.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace mediamgmnt {
namespace {

constexpr std::size_t kBoxHead = 8;  // size and type
constexpr char kDashType[] = "application/dash+xml";
constexpr char kDashCaps[] = "application/dash+xml";
constexpr char kHlsCaps[] = "application/x-hls";
constexpr char kMp4Caps[] = "video/quicktime, variant=(string)iso";
constexpr char kTsCaps[] = "video/mpegts, systemstream=(boolean)true, packetsize=(int)188";

bool isXmlLike(std::string_view bytes) {
  const auto start = bytes.find_first_not_of("\xEF\xBB\xBF \t\r\n");
  return start != std::string_view::npos && bytes[start] == '<';
}

bool isHtml(std::string_view bytes) {
  std::string lower(bytes.substr(0, 512));
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower.find("<html") != std::string::npos || lower.find("<!doctype html") != std::string::npos;
}

bool isPlaylist(std::string_view bytes) { return bytes.substr(0, 7) == "#EXTM3U"; }

bool isMp4(std::string_view bytes) {
  if (bytes.size() < 8) return false;
  constexpr std::array<std::string_view, 7> kFirstBoxes = {"ftyp", "moov", "mdat", "free", "skip", "styp", "wide"};
  return std::find(kFirstBoxes.begin(), kFirstBoxes.end(), bytes.substr(4, 4)) != kFirstBoxes.end();
}

bool isTransportStream(std::string_view bytes) { return bytes.size() > 188 && bytes[0] == 0x47 && bytes[188] == 0x47; }

/// The MIME type in lower case, without parameters.
std::string bareType(std::string_view mimeType) {
  std::string bare(mimeType.substr(0, mimeType.find(';')));
  while (!bare.empty() && std::isspace(static_cast<unsigned char>(bare.back()))) bare.pop_back();
  std::transform(bare.begin(), bare.end(), bare.begin(), [](unsigned char c) { return std::tolower(c); });
  return bare;
}

bool isOneOf(std::string_view value, std::initializer_list<std::string_view> names) {
  return std::find(names.begin(), names.end(), value) != names.end();
}

bool isHlsType(std::string_view type) {
  return isOneOf(type, {"application/vnd.apple.mpegurl", "application/x-mpegurl", "audio/mpegurl", "audio/x-mpegurl"});
}

std::size_t bigEndian(std::string_view fourBytes) {
  std::size_t number = 0;
  for (const char byte : fourBytes.substr(0, 4)) number = number << 8 | static_cast<unsigned char>(byte);
  return number;
}

}  // namespace

bool isFragmentedMp4(std::string_view firstBytes) {
  const std::string_view bytes = firstBytes.substr(0, kSniffBytes);
  return isMp4(bytes) && (bytes.find("mvex") != std::string_view::npos || bytes.find("moof") != std::string_view::npos);
}

bool hasWholeIndexFirst(std::string_view firstBytes) {
  std::string_view rest = firstBytes.substr(0, kSniffBytes);
  if (!isMp4(rest) || isFragmentedMp4(rest)) return false;
  while (rest.size() >= kBoxHead) {
    const std::string_view type = rest.substr(4, 4);
    if (type == "moov") return true;
    const std::size_t size = bigEndian(rest);
    if (type == "mdat" || size < kBoxHead || size > rest.size()) return false;
    rest.remove_prefix(size);
  }
  return false;
}

bool isAdaptiveType(std::string_view declaredMimeType) {
  const std::string type = bareType(declaredMimeType);
  return type == kDashType || isHlsType(type);
}

std::string capsToForce(std::string_view firstBytes, std::string_view declaredMimeType) {
  const std::string_view bytes = firstBytes.substr(0, kSniffBytes);
  if (isXmlLike(bytes) && bytes.find("<MPD") != std::string_view::npos) return kDashCaps;

  const std::string type = bareType(declaredMimeType);
  if (type == kDashType && isXmlLike(bytes) && !isHtml(bytes)) return kDashCaps;
  if (isHlsType(type) && isPlaylist(bytes)) return kHlsCaps;
  if (isOneOf(type, {"video/mp4", "audio/mp4"}) && isMp4(bytes)) return kMp4Caps;
  if (isOneOf(type, {"video/mpeg", "video/mp2t", "video/vnd.dlna.mpeg-tts"}) && isTransportStream(bytes)) return kTsCaps;
  return {};
}

}  // namespace mediamgmnt
