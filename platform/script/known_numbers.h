// SPDX-License-Identifier: Apache-2.0
// Small whole numbers that a call's argument is told to be by its reference alone. Asking the engine for a number's value takes and
// gives back its lock, which costs as much as the call. Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <array>
#include <cstddef>

namespace script {

/// Lives as long as its context at most.
class KnownNumbers {
 public:
  explicit KnownNumbers(JSContextRef context);
  KnownNumbers(const KnownNumbers&) = delete;
  KnownNumbers& operator=(const KnownNumbers&) = delete;
  ~KnownNumbers();

  /// @return the number that @p value is, or -1 when it is none of those, or told otherwise by the engine: then ask the engine.
  int find(JSValueRef value) const;

 private:
  static constexpr int kNumbers = 256;
  static constexpr std::size_t kPlaces = 1024;  ///< a power of two, four times as many: nearly every search ends at its first place
  static std::size_t placeOf(JSValueRef value);

  struct Place {
    JSValueRef value = nullptr;
    int number = -1;
  };
  JSContextRef m_context;
  std::array<Place, kPlaces> m_places{};
};

}  // namespace script
