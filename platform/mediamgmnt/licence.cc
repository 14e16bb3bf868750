// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/licence.h"

#include <algorithm>
#include <cctype>
#include <functional>

namespace mediamgmnt {
namespace {

constexpr std::string_view kBase64Url = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

/// Without padding, as licences want it.
std::string encode(const KeyId& bytes) {
  std::string text;
  unsigned bits = 0;
  int count = 0;
  for (const std::uint8_t byte : bytes) {
    bits = (bits << 8U | byte) & 0xFFFFU;
    for (count += 8; count >= 6; count -= 6) text += kBase64Url[(bits >> static_cast<unsigned>(count - 6)) & 0x3FU];
  }
  if (count > 0) text += kBase64Url[(bits << static_cast<unsigned>(6 - count)) & 0x3FU];
  return text;
}

std::size_t base64Digit(char c) {
  if (c == '+') return 62;  // of the ordinary alphabet, which some servers use
  if (c == '/') return 63;
  return kBase64Url.find(c);
}

/// @return nothing for a text that is not 16 bytes.
std::optional<KeyId> decode(std::string_view text) {
  while (!text.empty() && text.back() == '=') text.remove_suffix(1);
  KeyId bytes{};
  std::size_t size = 0;
  unsigned bits = 0;
  int count = 0;
  for (const char c : text) {
    const std::size_t digit = base64Digit(c);
    if (digit == std::string_view::npos) return std::nullopt;
    bits = (bits << 6U | static_cast<unsigned>(digit)) & 0xFFFFU;
    count += 6;
    if (count < 8) continue;
    if (size == bytes.size()) return std::nullopt;
    count -= 8;
    bytes[size++] = static_cast<std::uint8_t>((bits >> static_cast<unsigned>(count)) & 0xFFU);
  }
  return size == bytes.size() ? std::optional<KeyId>(bytes) : std::nullopt;
}

/// Walks a JSON text once, without keeping it. Every function returns false for a text that is none.
class JsonWalker {
 public:
  explicit JsonWalker(std::string_view text) : m_rest(text) {}

  using Member = std::function<bool(const std::string& name)>;
  using Element = std::function<bool()>;

  /// @p take is called with each name and must walk over the value.
  bool object(const Member& take) {
    return sequence('{', '}', [&] {
      std::string name;
      return string(name) && accept(':') && take(name);
    });
  }

  /// @p take must walk over the element.
  bool array(const Element& take) { return sequence('[', ']', take); }

  /// Of escaped characters only those of one letter are taken for what they stand for.
  bool string(std::string& out) {
    if (!accept('"')) return false;
    for (out.clear(); !m_rest.empty(); out += take()) {
      if (m_rest.front() == '"') return accept('"');
      if (m_rest.front() == '\\') m_rest.remove_prefix(1);
      if (m_rest.empty()) break;
    }
    return false;
  }

  bool skip() {
    switch (peek()) {
      case '{': return object([this](const std::string&) { return skip(); });
      case '[': return array([this] { return skip(); });
      case '"': {
        std::string ignored;
        return string(ignored);
      }
      default: return word();
    }
  }

  bool atEnd() { return peek() == '\0' && m_rest.empty(); }
  char peek() {
    while (!m_rest.empty() && std::isspace(static_cast<unsigned char>(m_rest.front())) != 0) m_rest.remove_prefix(1);
    return m_rest.empty() ? '\0' : m_rest.front();
  }

 private:
  static constexpr int kDeepest = 32;

  char take() {
    const char c = m_rest.front();
    m_rest.remove_prefix(1);
    return c;
  }

  bool accept(char c) {
    if (peek() != c || m_rest.empty()) return false;
    m_rest.remove_prefix(1);
    return true;
  }

  bool sequence(char open, char close, const Element& take) {
    if (!accept(open) || ++m_depth > kDeepest) return false;
    if (!accept(close)) {
      do {
        if (!take()) return false;
      } while (accept(','));
      if (!accept(close)) return false;
    }
    --m_depth;
    return true;
  }

  /// A number, true, false, null.
  bool word() {
    const auto isPart = [](unsigned char c) { return std::isalnum(c) != 0 || c == '-' || c == '+' || c == '.'; };
    const auto end = std::find_if_not(m_rest.begin(), m_rest.end(), isPart);
    const auto size = static_cast<std::size_t>(end - m_rest.begin());
    m_rest.remove_prefix(size);
    return size > 0;
  }

  std::string_view m_rest;
  int m_depth = 0;
};

/// {"kty": "oct", "kid": "…", "k": "…"}
bool readKey(JsonWalker& json, KeyMap& keys) {
  std::string id;
  std::string key;
  const bool whole = json.object([&](const std::string& name) {
    if (json.peek() != '"') return json.skip();
    std::string ignored;
    return json.string(name == "kid" ? id : name == "k" ? key : ignored);
  });
  const auto idBytes = decode(id);
  const auto keyBytes = decode(key);
  if (whole && idBytes && keyBytes) keys[*idBytes] = *keyBytes;
  return whole;
}

}  // namespace

std::string licenceRequest(const std::vector<KeyId>& ids) {
  std::string list;
  for (const KeyId& id : ids) list += (list.empty() ? "\"" : ",\"") + encode(id) + "\"";
  return "{\"kids\":[" + list + "],\"type\":\"temporary\"}";
}

std::optional<KeyMap> readLicence(std::string_view text) {
  KeyMap keys;
  bool found = false;
  JsonWalker json(text);
  const bool whole = json.object([&](const std::string& name) {
    if (name != "keys" || json.peek() != '[') return json.skip();
    found = true;
    return json.array([&] { return json.peek() == '{' ? readKey(json, keys) : json.skip(); });
  });
  if (!whole || !found || !json.atEnd()) return std::nullopt;
  return keys;
}

}  // namespace mediamgmnt
