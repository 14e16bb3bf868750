// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/settings_text.h"

#include <glib.h>

#include <cstdio>

#include "platform/browser/messages.h"

namespace browser {

namespace {

void appendUnit(std::string& out, unsigned unit) {
  char text[8];
  std::snprintf(text, sizeof text, "\\u%04x", unit & 0xFFFFU);
  out += text;
}

void appendCharacter(std::string& out, gunichar character) {
  if (character >= 0x20 && character < 0x7F && character != '"' && character != '\\') {
    out += static_cast<char>(character);
  } else if (character < 0x10000) {
    appendUnit(out, character);
  } else {
    appendUnit(out, 0xD800U + ((character - 0x10000) >> 10U));
    appendUnit(out, 0xDC00U + ((character - 0x10000) & 0x3FFU));
  }
}

void appendQuoted(std::string& out, const std::string& text) {
  char* const valid = g_utf8_make_valid(text.c_str(), -1);
  out += '"';
  for (const char* at = valid; *at != '\0'; at = g_utf8_next_char(at)) appendCharacter(out, g_utf8_get_char(at));
  out += '"';
  g_free(valid);
}

void appendMember(std::string& out, const char* name, const std::string& text) {
  out += out.empty() ? '{' : ',';
  appendQuoted(out, name);
  out += ':';
  appendQuoted(out, text);
}

}  // namespace

std::string settingsText(const std::map<std::string, std::string>& start) {
  const struct {
    const char* name;
    const char* from;
  } texts[] = {{"userAgent", kStartUserAgent},
               {"audioLanguages", kStartAudioLanguages},
               {"subtitleLanguages", kStartSubtitleLanguages},
               {"uiLanguages", kStartUiLanguages},
               {"country", kStartCountry}};
  std::string out;
  appendMember(out, "version", AVC_VERSION);
  for (const auto& [name, from] : texts) {
    const auto found = start.find(from);
    if (found != start.end()) appendMember(out, name, found->second);
  }
  out += '}';
  return out;
}

}  // namespace browser
