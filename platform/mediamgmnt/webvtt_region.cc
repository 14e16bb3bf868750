// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/webvtt_region.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace mediamgmnt {
namespace {

/// A line's height, of that of the picture.
constexpr double kLinePercent = 16.0 / 3;

/// Nobody should have to read at the picture's very edge.
constexpr double kBottomMargin = 5;

struct Settings {
  std::optional<double> line;  ///< percent, or a number of lines
  bool lineIsPercent = false;
  std::string_view lineAlign = "start";
  std::optional<double> position;
  std::string_view positionAlign;
  double size = 100;
  std::string_view align = "center";
  std::string_view vertical;
};

struct Box {
  double x = 0;
  double y = 0;
  double width = 100;
  double height = 100;
  const char* displayAlign = "after";
};

struct Value {
  double number = 0;
  bool isPercent = false;
};

std::optional<Value> valueOf(std::string_view text) {
  const bool percent = !text.empty() && text.back() == '%';
  if (percent) text.remove_suffix(1);
  Value value{0, percent};
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value.number, std::chars_format::fixed);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size()) return std::nullopt;
  if (percent && (value.number < 0 || value.number > 100)) return std::nullopt;
  return value;
}

void readSetting(std::string_view name, std::string_view value, Settings& out) {
  const auto comma = value.find(',');
  const std::string_view first = value.substr(0, comma);
  const std::string_view second = comma == std::string_view::npos ? std::string_view() : value.substr(comma + 1);
  const std::optional<Value> number = valueOf(first);
  if (name == "vertical") out.vertical = value;
  if (name == "align") out.align = value == "middle" ? "center" : value;
  if (name == "size" && number && number->isPercent) out.size = number->number;
  if (name == "position" && number && number->isPercent) {
    out.position = number->number;
    out.positionAlign = second;
  }
  if (name == "line" && number) {
    out.line = number->number;
    out.lineIsPercent = number->isPercent;
    if (!second.empty()) out.lineAlign = second;
  }
}

Settings readSettings(std::string_view text) {
  Settings settings;
  while (!text.empty()) {
    const auto end = text.find_first_of(" \t");
    const std::string_view word = text.substr(0, end);
    const auto colon = word.find(':');
    if (colon != std::string_view::npos) readSetting(word.substr(0, colon), word.substr(colon + 1), settings);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
  }
  return settings;
}

bool isAtStart(std::string_view align) { return align == "start" || align == "left" || align == "line-left"; }
bool isAtEnd(std::string_view align) { return align == "end" || align == "right" || align == "line-right"; }

void placeAcross(const Settings& settings, Box& box) {
  const std::string_view align = settings.positionAlign.empty() ? settings.align : settings.positionAlign;
  const double natural = isAtStart(align) ? 0 : isAtEnd(align) ? 100 : 50;
  const double position = settings.position.value_or(natural);
  if (isAtStart(align)) {
    box.x = position;
    box.width = std::min(settings.size, 100 - position);
  } else if (isAtEnd(align)) {
    box.width = std::min(settings.size, position);
    box.x = position - box.width;
  } else {
    box.width = std::min(settings.size, 2 * std::min(position, 100 - position));
    box.x = position - box.width / 2;
  }
}

/// From the top for lines counted from there, to the bottom edge for those counted from there and for a cue without a line.
void placeDown(const Settings& settings, Box& box) {
  if (!settings.line || (!settings.lineIsPercent && *settings.line < 0)) {
    const double below = settings.line ? (-*settings.line - 1) * kLinePercent : 0;
    box.height = std::max(100 - kBottomMargin - below, kLinePercent);
    return;
  }
  const double line = std::min(settings.lineIsPercent ? *settings.line : *settings.line * kLinePercent, 100 - kLinePercent);
  if (settings.lineAlign == "end") {
    box.height = std::max(line, kLinePercent);
  } else if (settings.lineAlign == "center") {
    const double half = std::min(line, 100 - line);
    box.y = line - half;
    box.height = 2 * half;
    box.displayAlign = "center";
  } else {
    box.y = line;
    box.height = 100 - line;
    box.displayAlign = "before";
  }
}

std::string percent(double value) {
  const long long hundredths = std::llround(value * 100);
  std::string text = std::to_string(hundredths / 100);
  if (hundredths % 100 != 0) {
    text += '.';
    text.append(std::to_string(hundredths % 100 + 100), 1);
  }
  text += '%';
  return text;
}

const char* textAlignOf(std::string_view align) {
  for (const char* const known : {"start", "end", "left", "right"}) {
    if (align == known) return known;
  }
  return "center";
}

}  // namespace

std::string regionAttributesOf(std::string_view text) {
  const Settings settings = readSettings(text);
  Box box;
  placeAcross(settings, box);
  placeDown(settings, box);
  std::string out = " tts:origin=\"" + percent(box.x) + " " + percent(box.y) + "\" tts:extent=\"" + percent(box.width) + " " +
                    percent(box.height) + "\" tts:displayAlign=\"" + box.displayAlign + "\" tts:textAlign=\"" +
                    textAlignOf(settings.align) + "\"";
  if (settings.vertical == "rl") out += " tts:writingMode=\"tbrl\"";
  if (settings.vertical == "lr") out += " tts:writingMode=\"tblr\"";
  return out;
}

}  // namespace mediamgmnt
