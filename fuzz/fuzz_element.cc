// SPDX-License-Identifier: Apache-2.0
#include "fuzz/fuzz_element.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

namespace fuzz {
namespace {

/// One for the process: it must be there before the first object and stay until the last is gone.
pluginhost::EventQueue& events() {
  static pluginhost::EventQueue queue([] {});
  return queue;
}

/// A value that borrows a buffer of exactly the text's size, so that a read past its end is seen.
class BorrowedText {
 public:
  explicit BorrowedText(const std::string& text) : m_bytes(text.begin(), text.end()) {
    m_bytes.shrink_to_fit();
    const char* const start = m_bytes.empty() ? "" : m_bytes.data();
    cvnplUtil::set(start, m_value, static_cast<int>(m_bytes.size()), false);
  }
  const _CorvelNativeVariant& value() const { return m_value; }

 private:
  std::vector<char> m_bytes;
  _CorvelNativeVariant m_value;
};

}  // namespace

void require(bool holds, const char* what) {
  if (holds) {
    return;
  }
  std::fprintf(stderr, "does not hold: %s\n", what);
  std::abort();
}

Element::Element() {
  events();
  m_plugin = AVControlPlugin::create();
}

Element::~Element() {
  const std::weak_ptr<AVControlPlugin> gone = m_plugin;
  m_plugin->willBeDestroyed();
  m_plugin.reset();
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (!gone.expired()) {  // a renewal may hold it for a moment; its release has nothing to wait on
    require(std::chrono::steady_clock::now() < deadline, "the element is released in the end");
    std::this_thread::yield();
  }
  events().drain([](CorvelNativePluginBase&, const pluginhost::Event&) {});
}

bool Element::write(const char* row, const std::string& text) {
  const BorrowedText borrowed(text);
  return pluginhost::writeProperty(*m_plugin, row, borrowed.value());
}

bool Element::write(const char* row, int value) {
  _CorvelNativeVariant variant;
  cvnplUtil::set(value, variant);
  return pluginhost::writeProperty(*m_plugin, row, variant);
}

bool Element::call(const char* row, const std::string& text) {
  const BorrowedText borrowed(text);
  _CorvelNativeVariant result;
  return pluginhost::callMethod(*m_plugin, row, &borrowed.value(), 1, result) && result.boolean;
}

bool Element::call(const char* row, double number) {
  _CorvelNativeVariant argument;
  cvnplUtil::set(number, argument);
  _CorvelNativeVariant result;
  return pluginhost::callMethod(*m_plugin, row, &argument, 1, result) && result.boolean;
}

std::string Element::read(const char* row) {
  _CorvelNativeVariant value;
  require(pluginhost::readProperty(*m_plugin, row, value), "a text row can be read");
  return value.string.text != nullptr ? std::string(value.string.text, value.string.length) : std::string();
}

int Element::state() {
  int current = -1;
  for (int id = 0; id <= 6; ++id) {
    if (m_plugin->stateMachine().isCurrentState(id)) {
      current = id;
    }
  }
  require(current != -1, "a state is current");
  return current;
}

}  // namespace fuzz
