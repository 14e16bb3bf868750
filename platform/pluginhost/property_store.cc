// SPDX-License-Identifier: Apache-2.0
#include "platform/pluginhost/property_store.h"

#include <bit>
#include <utility>

namespace pluginhost {
namespace {

std::uint64_t bitsOf(bool value) { return value ? 1 : 0; }
std::uint64_t bitsOf(std::int32_t value) { return static_cast<std::uint32_t>(value); }
std::uint64_t bitsOf(double value) { return std::bit_cast<std::uint64_t>(value); }
std::uint64_t bitsOf(char* text) { return reinterpret_cast<std::uintptr_t>(text); }

std::uint64_t defaultBits(const _CorvelNativeVariant& value) {
  switch (value.details.type) {
    case CORVEL_BOOLEAN: return bitsOf(value.boolean);
    case CORVEL_INTEGER: return bitsOf(value.integer);
    case CORVEL_DOUBLE: return bitsOf(value.number);
    default: return 0;
  }
}

bool hasText(const _CorvelNativeVariant& value) {
  return value.details.type == CORVEL_STRING && value.string.text != nullptr && value.string.length > 0;
}

}  // namespace

void PropertyStore::reset(const CorvelNativeProperty* rows, unsigned int count) {
  m_slots = std::make_unique<Slot[]>(count);
  for (unsigned int row = 0; row < count; ++row) {
    const _CorvelNativeVariant& value = rows[row].defaultValue;
    m_slots[row].bits.store(defaultBits(value), std::memory_order_relaxed);
    if (hasText(value)) keepText(row, std::string(value.string.text, value.string.length));
  }
}

bool PropertyStore::boolean(unsigned int row) const { return m_slots[row].bits.load(std::memory_order_acquire) != 0; }

std::int32_t PropertyStore::integer(unsigned int row) const {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(m_slots[row].bits.load(std::memory_order_acquire)));
}

double PropertyStore::number(unsigned int row) const {
  return std::bit_cast<double>(m_slots[row].bits.load(std::memory_order_acquire));
}

void PropertyStore::setBoolean(unsigned int row, bool value) { m_slots[row].bits.store(bitsOf(value), std::memory_order_release); }

void PropertyStore::setInteger(unsigned int row, std::int32_t value) {
  m_slots[row].bits.store(bitsOf(value), std::memory_order_release);
}

void PropertyStore::setNumber(unsigned int row, double value) { m_slots[row].bits.store(bitsOf(value), std::memory_order_release); }

char* PropertyStore::textLocked(const Slot& slot) const {
  if (slot.own) return slot.own->data();
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the address was stored as bits, so that all kinds of values share one atomic
  return reinterpret_cast<char*>(static_cast<std::uintptr_t>(slot.bits.load(std::memory_order_relaxed)));
}

char* PropertyStore::text(unsigned int row) const {
  const std::lock_guard lock(m_textMutex);
  return textLocked(m_slots[row]);
}

void PropertyStore::bindText(unsigned int row, char* text) {
  const std::lock_guard lock(m_textMutex);
  m_slots[row].own.reset();
  m_slots[row].bits.store(bitsOf(text), std::memory_order_relaxed);
}

void PropertyStore::keepText(unsigned int row, std::string text) {
  auto own = std::make_unique<std::string>(std::move(text));
  const std::lock_guard lock(m_textMutex);
  m_slots[row].own = std::move(own);
}

void PropertyStore::readText(unsigned int row, _CorvelNativeVariant& out) const {
  const std::lock_guard lock(m_textMutex);
  const Slot& slot = m_slots[row];
  const char* const text = textLocked(slot);
  if (text == nullptr || (!slot.own && *text == '\0')) {
    cvnplUtil::set("", out, false);  // the common case needs no memory
    return;
  }
  if (slot.own) {
    cvnplUtil::set(text, out, static_cast<int>(slot.own->size()), true);
    return;
  }
  cvnplUtil::set(text, out, true);
}

}  // namespace pluginhost
