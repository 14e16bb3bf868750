// SPDX-License-Identifier: Apache-2.0
#include "platform/script/known_numbers.h"

#include <cstdint>

namespace script {

// Protected: a reference that nothing else could come to stand for is what makes the comparison valid.
KnownNumbers::KnownNumbers(JSContextRef context) : m_context(context) {
  for (int number = 0; number < kNumbers; ++number) {
    const JSValueRef value = JSValueMakeNumber(context, number);
    JSValueProtect(context, value);
    std::size_t at = placeOf(value);
    while (m_places[at].value != nullptr) at = (at + 1) % kPlaces;
    m_places[at] = {value, number};
  }
}

KnownNumbers::~KnownNumbers() {
  for (const Place& place : m_places) {
    if (place.value != nullptr) JSValueUnprotect(m_context, place.value);
  }
}

int KnownNumbers::find(JSValueRef value) const {
  std::size_t at = placeOf(value);
  while (m_places[at].value != nullptr && m_places[at].value != value) at = (at + 1) % kPlaces;
  return m_places[at].number;
}

// Whatever a reference's bits are, their upper half of a product is spread well.
std::size_t KnownNumbers::placeOf(JSValueRef value) {
  const auto bits = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(value));
  return static_cast<std::size_t>((bits * 0x9E3779B97F4A7C15U) >> 54U) % kPlaces;
}

}  // namespace script
