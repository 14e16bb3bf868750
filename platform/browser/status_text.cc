// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/status_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>

#include "host/mediamgmnt.h"
#include "platform/mediamgmnt/media_report.h"
#include "platform/pluginhost/shell.h"

namespace browser {

namespace {

constexpr std::array kStates = {"stopped", "playing", "paused", "connecting", "buffering", "finished", "error"};
constexpr std::array kErrors = {"format not supported",
                                "cannot connect, or the connection was lost",
                                "unidentified error",
                                "insufficient resources",
                                "content corrupt or invalid",
                                "content not available",
                                "not available at this position"};
constexpr std::size_t kAddressShown = 70;

template <std::size_t kCount>
const char* wordFor(const std::array<const char*, kCount>& words, int value) {
  return value >= 0 && static_cast<std::size_t>(value) < kCount ? words[static_cast<std::size_t>(value)] : "unknown";
}

double number(CorvelNativePropertyBase& object, std::string_view name) {
  _CorvelNativeVariant value;
  if (!pluginhost::readProperty(object, name, value)) return 0;
  if (value.details.type == CORVEL_INTEGER) return value.integer;
  return value.details.type == CORVEL_DOUBLE && std::isfinite(value.number) ? value.number : 0;
}

std::string text(CorvelNativePropertyBase& object, std::string_view name) {
  _CorvelNativeVariant value;
  if (!pluginhost::readProperty(object, name, value) || value.details.type != CORVEL_STRING || value.string.text == nullptr)
    return "";
  return {value.string.text, value.string.length};
}

std::string format(const char* pattern, double first, double second = 0) {
  char out[64];
  std::snprintf(out, sizeof out, pattern, first, second);
  return out;
}

// How many components of a type there are, and the language of the present one.
std::string components(CorvelNativePropertyBase& object, int type, const char* name) {
  _CorvelNativeVariant argument;
  cvnplUtil::set(type, argument);
  _CorvelNativeVariant all;
  if (!pluginhost::callMethod(object, "getComponents", &argument, 1, all) || all.details.type != CORVEL_OBJECT) return "";
  const int count = static_cast<int>(number(*all.object.object, "length"));
  std::string out = format("%.0f ", count) + name;
  _CorvelNativeVariant active;
  if (!pluginhost::callMethod(object, "getCurrentActiveComponents", &argument, 1, active) || active.details.type != CORVEL_OBJECT)
    return out;
  _CorvelNativeVariant first;
  cvnplUtil::set(0, argument);
  const bool any = number(*active.object.object, "length") > 0 &&
                   pluginhost::callMethod(*active.object.object, "item", &argument, 1, first) &&
                   first.details.type == CORVEL_OBJECT;
  const std::string language = any ? text(*first.object.object, "language") : "";
  return language.empty() ? out : out + " (" + language + ")";
}

// What the media library tells beside the plugin; another library may tell nothing.
std::optional<double> reported(unsigned long player, const char* key) {
  char text[32];
  double value = 0;
  if (getPlayerProperty(player, key, text, sizeof text) == 0) return std::nullopt;
  const auto [stop, error] = std::from_chars(text, text + std::strlen(text), value);
  return error == std::errc() ? std::optional(value) : std::nullopt;
}

std::string streaming(unsigned long player) {
  namespace report = mediamgmnt::report;
  constexpr double kMillion = 1e6;
  std::string out;
  const auto add = [&](const char* key, const char* pattern, double unit) {
    const std::optional<double> value = reported(player, key);
    if (value) out += (out.empty() ? "  " : "   ") + format(pattern, *value / unit);
  };
  add(report::kBuffered, "%.1f s stored", 1000);
  add(report::kMediaRate, "%.2f Mbit/s", kMillion);
  add(report::kLineRate, "of %.2f that the line carries", kMillion);
  add(report::kPictures, "%.0f pictures", 1);
  add(report::kDropped, "%.0f dropped", 1);
  return out.empty() ? out : out + "\n";
}

std::string endOf(const std::string& address) {
  if (address.size() <= kAddressShown) return address;
  std::size_t from = address.size() - kAddressShown;
  while (from < address.size() && (static_cast<unsigned char>(address[from]) & 0xC0U) == 0x80U) ++from;  // not within a character
  return "…" + address.substr(from);
}

}  // namespace

std::string describeObject(CorvelNativePluginBase& object) {
  int state = 0;
  object.getProperty("playState", state);
  _CorvelNativeVariant error;
  const bool failed = pluginhost::readProperty(object, "error", error) && error.details.type == CORVEL_INTEGER;
  std::string out = std::string(wordFor(kStates, state)) +
                    format("   %.1f of %.1f s", number(object, "playPosition") / 1000, number(object, "playTime") / 1000) +
                    format("   %gx", number(object, "speed")) + "   " + text(object, "type") + "\n";
  out += "  " + endOf(text(object, "data")) + "\n";
  out += "  " + components(object, 0, "video") + "   " + components(object, 1, "audio") + "   " +
         components(object, 2, "subtitles") + "\n";
  out += streaming(object.getNativePlayerHandle());
  if (failed) out += std::string("  last error: ") + wordFor(kErrors, error.integer) + "\n";
  return out;
}

}  // namespace browser
