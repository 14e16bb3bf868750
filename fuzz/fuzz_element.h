// SPDX-License-Identifier: Apache-2.0
// One element for one input: made as a host makes it, used through its script rows, and proven gone at the end.
#pragma once

#include <memory>
#include <string>

#include "platform/pluginhost/shell.h"
#include "plugin/av_control_plugin.h"

namespace fuzz {

/// Thread: the fuzzer's. Ends the process with a message when something is wrong.
class Element {
 public:
  Element();
  Element(const Element&) = delete;
  Element& operator=(const Element&) = delete;
  ~Element();

  AVControlPlugin& plugin() { return *m_plugin; }
  /// Script's write of a text. The text is not NUL-terminated, and the byte behind it is out of bounds.
  bool write(const char* row, const std::string& text);
  bool write(const char* row, int value);
  bool call(const char* row, const std::string& text);
  bool call(const char* row, double number);
  /// The stored text of a row; "" where it is null.
  std::string read(const char* row);
  /// The number of the current state; ends the process unless exactly one state is current.
  int state();

 private:
  std::shared_ptr<AVControlPlugin> m_plugin;
};

/// Ends the process when @p holds is false.
void require(bool holds, const char* what);

}  // namespace fuzz
