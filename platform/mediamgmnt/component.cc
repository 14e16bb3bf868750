// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/component.h"

#include <cstdint>

#include "host/mediamgmnt.h"
#include "platform/mediamgmnt/number_text.h"

namespace mediamgmnt {
namespace {

/// A record must fit into the reader's buffer of 4096 bytes with all its texts.
constexpr std::size_t kLongestText = 512;

bool isContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

/// Cut between two characters of UTF-8.
void shorten(std::string& text) {
  if (text.size() <= kLongestText) return;
  std::size_t length = kLongestText;
  while (length > 0 && isContinuation(text[length])) --length;
  text.resize(length);
}

/// What a reader of records would take for a sign of its own is taken out, also when taking it out makes it anew.
std::string harmless(std::string_view text) {
  std::string clean;
  for (const char byte : text) {
    const bool control = static_cast<unsigned char>(byte) < 0x20U;
    clean += byte == '|' || control ? ' ' : byte;
  }
  constexpr std::string_view kSign = kNotAvailable;
  for (auto at = clean.find(kSign); at != std::string::npos; at = clean.find(kSign)) clean.erase(at, kSign.size());
  shorten(clean);
  return clean;
}

class Fields {
 public:
  Fields& add(std::string_view text) {
    m_text += harmless(text);
    m_text += '|';
    return *this;
  }
  Fields& add(int number) { return add(formatWhole(number)); }
  Fields& addFlag(bool flag) { return add(flag ? 1 : 0); }
  Fields& addNothing() { return add(std::string_view()); }
  std::string take() { return std::move(m_text); }

 private:
  std::string m_text;
};

Fields commonFields(const Component& component) {
  Fields fields;
  fields.add(static_cast<int>(component.kind))
      .add(component.encoding)
      .addFlag(component.encrypted)
      .add(component.tag)
      .add(component.pid)
      .add(component.generation)
      .addNothing()
      .addFlag(false)
      .addNothing();
  return fields;
}

}  // namespace

std::string recordOf(const Component& component) {
  Fields fields = commonFields(component);
  switch (component.kind) {
    case ComponentKind::Video: return fields.add(formatSpeed(component.aspectRatio)).take();
    case ComponentKind::Audio:
      return fields.add(component.label).add(component.language).addFlag(component.audioDescription).add(component.channels).take();
    case ComponentKind::Subtitle:
      return fields.add(component.label).add(component.language).addNothing().addFlag(component.hearingImpaired).take();
  }
  return {};
}

std::string selectionTextOf(const Component& component) {
  if (component.kind != ComponentKind::Subtitle) return recordOf(component);
  return commonFields(component).add(component.label).add(component.language).addFlag(component.hearingImpaired).take();
}

bool looksAlike(const Component& one, const Component& other) {
  Component same = other;
  same.generation = one.generation;
  if (one.channels == 0 || other.channels == 0) same.channels = one.channels;
  if (one.aspectRatio == 0 || other.aspectRatio == 0) same.aspectRatio = one.aspectRatio;
  return recordOf(one) == recordOf(same);
}

}  // namespace mediamgmnt
