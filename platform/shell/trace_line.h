// SPDX-License-Identifier: Apache-2.0
// Builds one line of a trace: a JSON object. Independent of the process's locale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "host/corvel_native.h"

namespace shell {

class TraceLine {
 public:
  /// Begins with the monotonic time in seconds, the thread's number, and what happened.
  TraceLine(std::string_view kind, std::string_view name);

  TraceLine& number(std::string_view key, std::uint64_t value);
  TraceLine& boolean(std::string_view key, bool value);
  TraceLine& text(std::string_view key, std::string_view value);
  TraceLine& null(std::string_view key);
  TraceLine& value(std::string_view key, const _CorvelNativeVariant& value);
  TraceLine& values(std::string_view key, const _CorvelNativeVariant* values, unsigned int count);
  /// A list of one text, or an empty one for null.
  TraceLine& argument(std::string_view key, const char* text);

  /// The whole line with its line end. Nothing can be added afterwards.
  const std::string& finish();

 private:
  void key(std::string_view name);
  void quote(std::string_view text);
  void append(double number);
  void append(const _CorvelNativeVariant& value);

  std::string m_out;
};

}  // namespace shell
