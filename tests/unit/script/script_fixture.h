// SPDX-License-Identifier: Apache-2.0
// A script context with a binding, and native objects to bind.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/script/binding.h"
#include "platform/script/event_pump.h"

/// Tells what a method was given, and has a row of each kind that a getter can answer with.
class TellingObject : public CorvelNativePropertyBase {
 public:
  TellingObject() : CorvelNativePropertyBase(nullptr) {}
  ~TellingObject() override { ++destroyed; }
  using CorvelNativePropertyBase::install;
  int type() override { return 100; }
  bool install() override;

  static int destroyed;
};

/// A list of numbers: "length" and "item".
class NumberList : public CorvelNativePropertyBase {
 public:
  NumberList() : CorvelNativePropertyBase(nullptr) {}
  using CorvelNativePropertyBase::install;
  int type() override { return 9; }
  bool install() override;

  int length = 3;       ///< may be negative, as a list without a source says it
  int lostAtARead = 0;  ///< how much shorter each read of "length" leaves it
};

class ScriptTest : public testing::Test {
 protected:
  explicit ScriptTest(const char* pluginLibrary = FAKE_PLUGIN_LIBRARY);
  ~ScriptTest() override;

  /// Evaluates an expression; its value as a text, or "threw " and the exception.
  std::string eval(const std::string& source);
  void setGlobal(const char* name, JSValueRef value);
  void collect();
  script::Binding& binding() { return *m_binding; }
  JSGlobalContextRef context() { return m_context; }
  /// Ends what binds the native objects while the context stays, as in a window that has gone and is still referred to.
  void unbind() { m_binding.reset(); }
  /// Ends the context while the fixture stays.
  void close();

  std::vector<pluginhost::Event> events;
  std::function<void(const pluginhost::Event&)> onEvent;

 private:
  std::optional<script::EventPump> m_pump;
  JSGlobalContextRef m_context;
  std::optional<script::Binding> m_binding;
};
