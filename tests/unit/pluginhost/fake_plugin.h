// SPDX-License-Identifier: Apache-2.0
// A plugin class with a table of every kind of row, to try the host framework with. Also built into a library of its own.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/corvel_native.h"
#include "platform/pluginhost/shell.h"

/// What a setter was given.
struct SetterCall {
  std::string row;
  std::int32_t type;
  bool nullText;
  std::string text;
};

class FakePlugin : public CorvelNativePluginBase, public std::enable_shared_from_this<FakePlugin> {
 public:
  explicit FakePlugin(CorvelNativePropertyBase* parent = nullptr) : CorvelNativePluginBase(parent) {}
  ~FakePlugin() override {
    if (onDestroy) onDestroy();
  }

  using CorvelNativePropertyBase::install;
  int type() override { return 0; }
  bool install() override;
  int pluginType() override { return 77; }
  bool setWindowProperties(int, int, int, int) override { return false; }
  void willBeDestroyed() override { gone = true; }
  bool initPlugin() override { return true; }
  bool setDocumentUrl(const char*, unsigned int) override { return false; }

  std::vector<SetterCall> setterCalls;
  bool setterResult = true;
  int getterCalls = 0;
  bool gone = false;
  std::function<void()> insideThunk;  ///< run by the getter, setter and method thunks
  std::function<void()> onDestroy;
};

/// A scriptable object that is no plugin, without any rows.
class FakeScriptObject : public CorvelNativePropertyBase {
 public:
  FakeScriptObject() : CorvelNativePropertyBase(nullptr) {}
  using CorvelNativePropertyBase::install;
  int type() override { return 5; }
  bool install() override { return install(nullptr, 0, nullptr, 0); }
};

namespace fake {

_CorvelNativeVariant undefined();
_CorvelNativeVariant null();
_CorvelNativeVariant boolean(bool value);
_CorvelNativeVariant integer(int value);
_CorvelNativeVariant number(double value);
_CorvelNativeVariant text(const std::string& value);
_CorvelNativeVariant object(std::shared_ptr<CorvelNativePropertyBase> value);

/// "undefined", "null", "bool:1", "int:3", "double:1.5", "text:abc", "text:(null)", "object:null" or "object".
std::string shown(const _CorvelNativeVariant& value);
/// What script reads; "failed" when the access failed.
std::string read(CorvelNativePropertyBase& object, std::string_view name);

}  // namespace fake
