// SPDX-License-Identifier: Apache-2.0
// What a script object of ours carries, and how a native function finds it. Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/script/script_class.h"

namespace script {

/// Every private datum of an object of ours begins with a mark: asking the engine for an object's class costs half a read.
enum class Mark : std::uint64_t { kInstance = 0x41564349'4E535431, kRow = 0x41564352'4F573031 };

struct Instance {
  Mark mark = Mark::kInstance;
  std::shared_ptr<NativeSlot> slot;
  const void* tableId = nullptr;
  std::shared_ptr<WrapperLink> link;
  int itemRow = -1;
  int lengthRow = -1;
  std::vector<std::optional<std::string>> given{};  ///< by row: the text that its direct reader gave last
};

/// @return null for an object of anybody else.
inline Instance* instanceOf(JSObjectRef object) {
  auto* instance = static_cast<Instance*>(JSObjectGetPrivate(object));
  return instance != nullptr && instance->mark == Mark::kInstance ? instance : nullptr;
}

/// A host value for script. In a window that has gone objects still answer, but nobody makes new ones: then an object is undefined.
JSValueRef resultFor(JSContextRef context, const Instance& instance, const _CorvelNativeVariant& value);

/// Calls a method row; undefined when it fails and when the native object has gone.
JSValueRef callRow(JSContextRef context, const Instance& instance, unsigned int row, const HostValues& arguments);

}  // namespace script
