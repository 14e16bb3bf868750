// SPDX-License-Identifier: Apache-2.0
// What script does with an object that a plugin handed out: reads its rows and calls its methods by name.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/pluginhost/shell.h"
#include "tests/support/plugin_fixture.h"

namespace fixture {

using ScriptObject = std::shared_ptr<CorvelNativePropertyBase>;

/// The value as PluginTest shows values; "failed" for a failed access.
inline std::string readShown(const ScriptObject& object, std::string_view name) {
  _CorvelNativeVariant value;
  return pluginhost::readProperty(*object, name, value) ? shown(value) : "failed";
}

inline bool callMethod(const ScriptObject& object, std::string_view name, const std::vector<_CorvelNativeVariant>& args,
                       _CorvelNativeVariant& result) {
  const auto* const first = args.empty() ? nullptr : args.data();
  return pluginhost::callMethod(*object, name, first, static_cast<unsigned int>(args.size()), result);
}

/// The object that collection.item(index) gives; null when the call fails.
inline ScriptObject itemOf(const ScriptObject& collection, const _CorvelNativeVariant& index) {
  _CorvelNativeVariant result;
  if (!callMethod(collection, "item", {index}, result) || result.details.type != CORVEL_OBJECT) return nullptr;
  return result.object.object;
}

inline ScriptObject itemOf(const ScriptObject& collection, int index) { return itemOf(collection, integer(index)); }

/// The object that a method of the plugin gives; null when it gives null or fails.
inline ScriptObject objectFrom(const TestPlugin& plugin, std::string_view method,
                               const std::vector<_CorvelNativeVariant>& args = {}) {
  const auto result = plugin.call(method, args);
  return result && result->details.type == CORVEL_OBJECT ? result->object.object : nullptr;
}

inline _CorvelNativeVariant objectArgument(ScriptObject object) {
  _CorvelNativeVariant value;
  cvnplUtil::set(std::move(object), value);
  return value;
}

/// "name type access default [getter] [setter]" of each row, in table order.
inline std::vector<std::string> shownRows(const CorvelNativeProperty* rows, unsigned int count) {
  std::vector<std::string> lines;
  for (unsigned int i = 0; i < count; ++i) {
    const CorvelNativeProperty& row = rows[i];
    std::string line = std::string(row.name) + " " + std::to_string(row.defaultValue.details.type) + " " +
                       std::to_string(row.defaultValue.details.access) + " " + shown(row.defaultValue);
    if (row.reserved != 0) line += " reserved";
    if (row.getter != nullptr) line += " getter";
    if (row.setter != nullptr) line += " setter";
    lines.push_back(line);
  }
  return lines;
}

}  // namespace fixture
