// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/webvtt.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <optional>
#include <utility>

#include "platform/mediamgmnt/webvtt_markup.h"
#include "platform/mediamgmnt/webvtt_region.h"

namespace mediamgmnt {
namespace {

constexpr std::string_view kArrow = "-->";
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// "\n", "\r\n" or "\r" end a line.
std::string_view takeLine(std::string_view& text) {
  const auto end = text.find_first_of("\r\n");
  const std::string_view line = text.substr(0, end);
  if (end == std::string_view::npos) {
    text = {};
    return line;
  }
  const bool pair = text.substr(end, 2) == "\r\n";
  text.remove_prefix(end + (pair ? 2 : 1));
  return line;
}

std::string_view trimmed(std::string_view text) {
  const auto first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// "01:02.500" or "00:01:02.500" in milliseconds.
std::optional<std::int64_t> timeOf(std::string_view text) {
  const auto point = text.find('.');
  if (point == std::string_view::npos || text.size() != point + 4) return std::nullopt;
  std::int64_t seconds = 0;
  int fields = 0;
  for (std::string_view rest = text.substr(0, point);; ++fields) {
    const auto colon = rest.find(':');
    const std::string_view field = rest.substr(0, colon);
    std::int64_t value = 0;
    const auto result = std::from_chars(field.data(), field.data() + field.size(), value);
    if (result.ec != std::errc() || result.ptr != field.data() + field.size() || value < 0 || value > 999999) return std::nullopt;
    seconds = seconds * 60 + value;
    if (colon == std::string_view::npos) break;
    rest.remove_prefix(colon + 1);
  }
  int thousandths = 0;
  const auto result = std::from_chars(text.data() + point + 1, text.data() + text.size(), thousandths);
  const bool whole = result.ec == std::errc() && result.ptr == text.data() + text.size() && thousandths >= 0;
  return whole && (fields == 1 || fields == 2) ? std::optional<std::int64_t>(seconds * 1000 + thousandths) : std::nullopt;
}

/// Adds a cue without a text. @return false, without one, when the line's times make no sense.
bool readTiming(std::string_view line, WebVttCues& out) {
  const auto arrow = line.find(kArrow);
  const std::string_view rest = trimmed(line.substr(arrow + kArrow.size()));
  const auto space = rest.find_first_of(" \t");
  const std::optional<std::int64_t> start = timeOf(trimmed(line.substr(0, arrow)));
  const std::optional<std::int64_t> end = timeOf(rest.substr(0, space));
  if (!start || !end || *end <= *start) return false;
  out.push_back({*start, *end, std::string(space == std::string_view::npos ? "" : trimmed(rest.substr(space))), {}});
  return true;
}

std::string clockOf(std::int64_t ms) {
  char text[32];
  std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld.%03lld", static_cast<long long>(ms / 3600000),
                static_cast<long long>(ms / 60000 % 60), static_cast<long long>(ms / 1000 % 60), static_cast<long long>(ms % 1000));
  return text;
}

constexpr char kHead[] =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<tt xmlns=\"http://www.w3.org/ns/ttml\" xmlns:tts=\"http://www.w3.org/ns/ttml#styling\" "
    "xmlns:ttp=\"http://www.w3.org/ns/ttml#parameter\" ttp:timeBase=\"media\" xml:lang=\"\">\n<head>\n<styling>\n"
    "<style xml:id=\"cue\" tts:color=\"white\" tts:backgroundColor=\"black\" tts:fontFamily=\"proportionalSansSerif\" "
    "tts:fontSize=\"100%\" tts:lineHeight=\"125%\"/>\n</styling>\n<layout>\n";

}  // namespace

WebVttCues readWebVtt(std::string_view text) {
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) text.remove_prefix(kByteOrderMark.size());
  WebVttCues cues;
  bool isOpen = false;  // the last one, which takes the lines that follow
  const auto dropEmpty = [&] {
    if (isOpen && cues.back().text.empty()) cues.pop_back();
    isOpen = false;
  };
  while (!text.empty()) {
    const std::string_view line = takeLine(text);
    if (line.find(kArrow) != std::string_view::npos) {
      dropEmpty();
      isOpen = readTiming(line, cues);
    } else if (line.empty()) {
      dropEmpty();
    } else if (isOpen) {
      std::string& lines = cues.back().text;
      if (!lines.empty()) lines += '\n';
      lines += line;
    }
  }
  dropEmpty();
  return cues;
}

std::string ttmlOf(const WebVttCues& cues) {
  std::string regions;
  std::string lines;
  std::vector<std::string> known;
  for (const WebVttCue& cue : cues) {
    const auto found = std::find(known.begin(), known.end(), cue.settings);
    std::string id = "r";
    id += std::to_string(found - known.begin());
    if (found == known.end()) {
      known.push_back(cue.settings);
      regions += "<region xml:id=\"" + id + "\"" + regionAttributesOf(cue.settings) + "/>\n";
    }
    lines += "<p region=\"" + id + "\" style=\"cue\" begin=\"" + clockOf(cue.start) + "\" end=\"" + clockOf(cue.end) + "\">" +
             ttmlMarkupOf(cue.text) + "</p>\n";
  }
  return kHead + regions + "</layout>\n</head>\n<body>\n<div>\n" + lines + "</div>\n</body>\n</tt>\n";
}

}  // namespace mediamgmnt
