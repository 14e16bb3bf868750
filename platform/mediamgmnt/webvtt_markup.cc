// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/webvtt_markup.h"

#include <glib.h>

#include <charconv>
#include <cstdint>
#include <iterator>
#include <vector>

namespace mediamgmnt {
namespace {

constexpr std::string_view kColours[] = {"white", "lime", "cyan", "red", "yellow", "magenta", "blue", "black"};

struct Entity {
  std::string_view name;
  std::string_view text;
};
constexpr Entity kEntities[] = {{"amp", "&amp;"},   {"lt", "&lt;"}, {"gt", "&gt;"},          {"nbsp", "\xC2\xA0"},
                                {"quot", "&quot;"}, {"apos", "'"},  {"lrm", "\xE2\x80\x8E"}, {"rlm", "\xE2\x80\x8F"}};

void appendEscaped(char letter, std::string& out) {
  const auto code = static_cast<unsigned char>(letter);
  if (letter == '&') {
    out += "&amp;";
  } else if (letter == '<') {
    out += "&lt;";
  } else if (letter == '>') {
    out += "&gt;";
  } else if (letter == '"') {
    out += "&quot;";
  } else if (code >= ' ' || letter == '\t') {  // XML has no other control characters
    out += letter;
  }
}

bool isXmlLetter(std::uint32_t code) {
  return (code >= 0x20 && code < 0xD800) || (code >= 0xE000 && code <= 0xFFFD) || (code >= 0x10000 && code <= 0x10FFFF);
}

/// @return the length of the reference at the start of @p text that was taken, 0 when there is none.
std::size_t takeReference(std::string_view text, std::string& out) {
  const auto end = text.find(';');
  if (end == std::string_view::npos || end > 10) return 0;
  const std::string_view name = text.substr(1, end - 1);
  for (const Entity& each : kEntities) {
    if (name != each.name) continue;
    out += each.text;
    return end + 1;
  }
  if (name.size() < 2 || name[0] != '#') return 0;
  const bool hex = name[1] == 'x' || name[1] == 'X';
  const std::string_view digits = name.substr(hex ? 2 : 1);
  std::uint32_t code = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), code, hex ? 16 : 10);
  if (result.ec != std::errc() || result.ptr != digits.data() + digits.size() || !isXmlLetter(code)) return 0;
  out += "&#" + std::to_string(code) + ";";
  return end + 1;
}

std::string escapedAttribute(std::string_view text) {
  std::string out;
  for (const char each : text) appendEscaped(each, out);
  return out;
}

std::string colourAttributes(std::string_view classes) {
  std::string colour;
  std::string background;
  while (!classes.empty()) {
    const auto end = classes.find('.');
    std::string_view name = classes.substr(0, end);
    const bool isBackground = name.substr(0, 3) == "bg_";
    if (isBackground) name.remove_prefix(3);
    for (const std::string_view each : kColours) {
      if (name == each) (isBackground ? background : colour) = each;
    }
    classes = end == std::string_view::npos ? std::string_view() : classes.substr(end + 1);
  }
  std::string out;
  if (!colour.empty()) out += " tts:color=\"" + colour + "\"";
  if (!background.empty()) out += " tts:backgroundColor=\"" + background + "\"";
  return out;
}

/// The attributes of the span that a start tag stands for; none for a tag that says nothing that is shown.
std::string attributesOf(std::string_view tag) {
  const auto space = tag.find_first_of(" \t\n");
  const std::string_view head = tag.substr(0, space);
  const std::string_view rest = space == std::string_view::npos ? std::string_view() : tag.substr(space + 1);
  const auto dot = head.find('.');
  const std::string_view name = head.substr(0, dot);
  std::string out = dot == std::string_view::npos ? "" : colourAttributes(head.substr(dot + 1));
  if (name == "b") out += " tts:fontWeight=\"bold\"";
  if (name == "i") out += " tts:fontStyle=\"italic\"";
  if (name == "u") out += " tts:textDecoration=\"underline\"";
  if (name == "lang" && !rest.empty()) out += " xml:lang=\"" + escapedAttribute(rest) + "\"";
  return out;
}

class Writer {
 public:
  void startTag(std::string_view tag) {
    const std::string attributes = attributesOf(tag);
    m_open.push_back({std::string(tag.substr(0, tag.find_first_of(". \t\n"))), !attributes.empty()});
    if (!attributes.empty()) out += "<span" + attributes + ">";
  }
  /// Closes what is open inside as well; an end of what is not open says nothing.
  void endTag(std::string_view name) {
    std::size_t depth = m_open.size();
    while (depth > 0 && m_open[depth - 1].name != name) --depth;
    if (depth > 0) closeTo(depth - 1);
  }
  void closeTo(std::size_t depth) {
    for (; m_open.size() > depth; m_open.pop_back()) {
      if (m_open.back().isSpan) out += "</span>";
    }
  }

  std::string out;

 private:
  struct Open {
    std::string name;
    bool isSpan;
  };
  std::vector<Open> m_open;
};

bool isTimestamp(std::string_view tag) { return !tag.empty() && tag[0] >= '0' && tag[0] <= '9'; }

void write(std::string_view text, Writer& writer) {
  while (!text.empty()) {
    const char first = text.front();
    const auto end = first == '<' ? text.find('>') : std::string_view::npos;
    std::size_t taken = 1;
    if (end != std::string_view::npos) {
      const std::string_view tag = text.substr(1, end - 1);
      taken = end + 1;
      if (!tag.empty() && tag.front() == '/') {
        writer.endTag(tag.substr(1));
      } else if (!isTimestamp(tag)) {
        writer.startTag(tag);
      }
    } else if (const std::size_t reference = first == '&' ? takeReference(text, writer.out) : 0; reference > 0) {
      taken = reference;
    } else if (first == '\n') {
      writer.out += "<br/>";
    } else {
      appendEscaped(first, writer.out);
    }
    text.remove_prefix(taken);
  }
  writer.closeTo(0);
}

}  // namespace

std::string ttmlMarkupOf(std::string_view text) {
  char* const valid = g_utf8_make_valid(text.data(), static_cast<gssize>(text.size()));
  Writer writer;
  write(valid, writer);
  g_free(valid);
  return writer.out;
}

}  // namespace mediamgmnt
