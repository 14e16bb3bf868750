// SPDX-License-Identifier: Apache-2.0
// Record texts with random contents, and a second, plain reading of them to hold the plugin's reading against.
#pragma once

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "components/av_components.h"

namespace records {

/// The fields of a kind, in order: i integer, t text, b boolean, f fraction.
inline constexpr std::string_view kVideoFields = "itiiittbtf";
inline constexpr std::string_view kAudioFields = "itiiittbtttii";
inline constexpr std::string_view kSubtitleFields = "itiiittbtttti";
inline constexpr std::string_view kRatingFields = "ttiit";

/// The same numbers in every run: a failure repeats.
class Generator {
 public:
  explicit Generator(unsigned int seed) : m_random(seed) {}

  std::size_t below(std::size_t limit) { return std::uniform_int_distribution<std::size_t>(0, limit - 1)(m_random); }

  template <std::size_t N>
  std::string oneOf(const std::array<const char*, N>& texts) {
    return texts[below(N)];
  }

  /// One field without a separator.
  std::string field(char type) {
    if (type == 't') return text();
    return type == 'f' ? fraction() : number();
  }

  /// A whole record text of that kind; behind it sometimes more.
  std::string record(std::string_view types) {
    std::string out;
    for (const char type : types) out += field(type) + '|';
    if (below(4) == 0) out += text() + oneOf<3>({"", "|", "||"});
    return out;
  }

  /// The same with a blemish or several: a separator or a word inside a field, a field too few, an end that is missing.
  std::string blemished(std::string_view types) {
    std::string out = record(types);
    for (std::size_t count = 1 + below(3); count > 0 && !out.empty(); --count) blemish(out);
    return out;
  }

 private:
  std::string text() {
    static constexpr std::array<const char*, 16> kTexts{"",
                                                        "",
                                                        "(null)",
                                                        "(null)x",
                                                        "(NULL)",
                                                        "deu",
                                                        "avc",
                                                        "%s%n%d",
                                                        " a b ",
                                                        "\n\t",
                                                        "gr\xC3\xBC\xC3\x9F",
                                                        "\xE6\x97\xA5\xE6\x9C\xAC",
                                                        "\xF0\x9F\x8E\xAC",
                                                        "\xFF\xFE\x80",
                                                        "\x01",
                                                        "NOT_AVAILABL"};
    switch (below(8)) {
      case 0: return letters(below(30));
      case 1: return letters(below(600));
      case 2: return oneOf(kTexts) + oneOf(kTexts);
      default: return oneOf(kTexts);
    }
  }

  std::string letters(std::size_t length) {
    std::string out(length, ' ');
    for (char& letter : out) letter = static_cast<char>('a' + below(26));
    return out;
  }

  std::string number() {
    static constexpr std::array<const char*, 14> kNumbers{"",   "0",  "1",   "2",    "12abc", "abc",        " 7",
                                                          "-3", "+4", "1.9", "0x10", "1e3",   "2147483647", "-2147483648"};
    static constexpr std::array<const char*, 4> kHuge{"99999999999", "-99999999999", "99999999999999999999999",
                                                      "-99999999999999999999999"};
    if (below(20) == 0) return std::string(2100 + below(200), '0') + "5";  // longer than any scratch buffer
    if (below(10) == 0) return oneOf(kHuge);
    return below(2) == 0 ? std::to_string(below(70000)) : oneOf(kNumbers);
  }

  std::string fraction() {
    static constexpr std::array<const char*, 14> kFractions{"",    "1.78", "1.7777778", "-0.5", ".5",  "1.",  "1.5x",
                                                            "abc", " 2.5", "+3.5",      "1e2",  "inf", "0x8", "1e300"};
    return below(2) == 0 ? std::to_string(static_cast<double>(below(400000)) / 100000) : oneOf(kFractions);
  }

  void blemish(std::string& out) {
    const std::size_t at = below(out.size() + 1);
    switch (below(5)) {
      case 0: out.insert(at, "|"); break;
      case 1: out.insert(at, "NOT_AVAILABLE"); break;
      case 2: out.resize(at); break;
      case 3: out.erase(std::min(out.find('|', at), out.size() - 1), 1); break;
      case 4: out.insert(at, text()); break;
    }
  }

  std::mt19937 m_random;
};

/// The values of a record, each as a text, in the order of its fields.
using Values = std::vector<std::string>;

inline std::string printed(float ratio) {
  char text[64];
  std::snprintf(text, sizeof text, "%.9g", static_cast<double>(ratio));
  return text;
}

inline int saturated(const std::string& field) {
  const long value = std::strtol(field.c_str(), nullptr, 10);
  return static_cast<int>(std::clamp<long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

inline std::string plainValue(char type, const std::string& field) {
  switch (type) {
    case 'i': return std::to_string(saturated(field));
    case 'b': return saturated(field) != 0 ? "1" : "0";
    case 'f': return printed(static_cast<float>(std::strtod(field.c_str(), nullptr)));
    default: return field == "(null)" ? "" : field;
  }
}

/// What the format says, in plain strings. nullopt: there is no record in that text.
inline std::optional<Values> plainReading(const std::string& text, std::string_view types) {
  if (text.find("NOT_AVAILABLE") != std::string::npos) return std::nullopt;
  Values values;
  std::size_t start = 0;
  for (const char type : types) {
    const std::size_t end = text.find('|', start);
    if (end == std::string::npos) return std::nullopt;
    values.push_back(plainValue(type, text.substr(start, end - start)));
    start = end + 1;
  }
  return values;
}

inline Values valuesOf(const AVComponent& common) {
  return {std::to_string(common.type),
          common.encoding,
          std::to_string(common.encrypted),
          std::to_string(common.componentTag),
          std::to_string(common.pid),
          common.opaqueText1,
          common.opaqueText2,
          common.opaqueFlag ? "1" : "0",
          common.opaqueText3};
}

inline Values with(Values values, const Values& more) {
  values.insert(values.end(), more.begin(), more.end());
  return values;
}

inline Values valuesOf(const AVVideoComponent& video) { return with(valuesOf(*video.base), {printed(video.aspectRatio)}); }

inline Values valuesOf(const AVAudioComponent& audio) {
  return with(valuesOf(*audio.base),
              {audio.audioText, audio.language, std::to_string(audio.audioDescription), std::to_string(audio.audioChannels)});
}

inline Values valuesOf(const AVSubtitleComponent& subtitle) {
  return with(valuesOf(*subtitle.base),
              {subtitle.subtitleText1, subtitle.language, subtitle.subtitleText2, std::to_string(subtitle.hearingImpaired)});
}

}  // namespace records
