// SPDX-License-Identifier: Apache-2.0
// The base of every scriptable object: its tables, and the plugin's own access to its property values.
#include "host/corvel_native.h"
#include "platform/pluginhost/object_state.h"
#include "platform/pluginhost/observer.h"

namespace {

template <typename Value>
void reportChange(const CorvelNativeObjectState& state, const char* name, const Value& value) {
  const pluginhost::Watch watch;
  if (!watch) return;
  _CorvelNativeVariant copy;
  cvnplUtil::set(value, copy);
  watch->propertyChanged(state.id, name, copy);
}

void reportChange(const CorvelNativeObjectState& state, const char* name, const char* text) {
  const pluginhost::Watch watch;
  if (!watch) return;
  _CorvelNativeVariant borrowed;
  cvnplUtil::set(text, borrowed, false);
  watch->propertyChanged(state.id, name, borrowed);
}

}  // namespace

CorvelNativePropertyBase::CorvelNativePropertyBase(CorvelNativePropertyBase* parent)
    : m_state(new CorvelNativeObjectState(parent)) {}

CorvelNativePropertyBase::~CorvelNativePropertyBase() { delete m_state; }

unsigned long CorvelNativePropertyBase::getNativePlayerHandle() { return 0; }

bool CorvelNativePropertyBase::getURLForMediaSynchroniser(char*&) { return false; }

bool CorvelNativePropertyBase::getPlayerType(char*&) { return false; }

int CorvelNativePropertyBase::getComponentNum() { return 0; }

bool CorvelNativePropertyBase::getComponentInfo(int, char*&) { return false; }

void CorvelNativePropertyBase::startOOBSubtitlePlayer(bool) {}

bool CorvelNativePropertyBase::install(CorvelNativeProperty* properties, unsigned int propertyCount,
                                       const CorvelNativeMethod* methods, unsigned int methodCount) {
  return m_state->install({properties, propertyCount, methods, methodCount});
}

bool CorvelNativePropertyBase::getProperty(const char* name, bool& out) {
  if (name == nullptr) return false;
  if (const int row = m_state->findRow(name, CORVEL_BOOLEAN); row >= 0) {
    out = m_state->store.boolean(row);
    return true;
  }
  const auto introduced = m_state->introduced(name);
  if (introduced) out = *introduced;
  return introduced.has_value();
}

bool CorvelNativePropertyBase::getProperty(const char* name, int& out) {
  const int row = name == nullptr ? -1 : m_state->findRow(name, CORVEL_INTEGER);
  if (row < 0) return false;
  out = m_state->store.integer(row);
  return true;
}

bool CorvelNativePropertyBase::getProperty(const char* name, double& out) {
  const int row = name == nullptr ? -1 : m_state->findRow(name, CORVEL_DOUBLE);
  if (row < 0) return false;
  out = m_state->store.number(row);
  return true;
}

bool CorvelNativePropertyBase::getProperty(const char* name, char*& out) {
  const int row = name == nullptr ? -1 : m_state->findRow(name, CORVEL_STRING);
  if (row < 0) return false;
  out = m_state->store.text(row);
  return true;
}

bool CorvelNativePropertyBase::setProperty(const char* name, bool value) {
  if (name == nullptr) return false;
  const int row = m_state->findRow(name, CORVEL_BOOLEAN);
  if (row < 0 && !m_state->setIntroduced(name, value)) return false;
  if (row >= 0) m_state->store.setBoolean(row, value);
  reportChange(*m_state, name, value);
  return true;
}

bool CorvelNativePropertyBase::setProperty(const char* name, int value) {
  const int row = name == nullptr ? -1 : m_state->findRow(name, CORVEL_INTEGER);
  if (row < 0) return false;
  m_state->store.setInteger(row, value);
  reportChange(*m_state, name, value);
  return true;
}

bool CorvelNativePropertyBase::setProperty(const char* name, double value) {
  const int row = name == nullptr ? -1 : m_state->findRow(name, CORVEL_DOUBLE);
  if (row < 0) return false;
  m_state->store.setNumber(row, value);
  reportChange(*m_state, name, value);
  return true;
}

bool CorvelNativePropertyBase::setProperty(const char* name, char* text) {
  const int row = name == nullptr ? -1 : m_state->findRow(name, CORVEL_STRING);
  if (row < 0) return false;
  m_state->store.bindText(row, text);
  reportChange(*m_state, name, static_cast<const char*>(text));
  return true;
}

CorvelNativeObjectState* CorvelNativePropertyBase::state() const noexcept { return m_state; }
