// SPDX-License-Identifier: Apache-2.0
// The native objects of one script context: makes and destroys plugin objects, and gives every native object its one script object.
// Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <cstdint>
#include <map>
#include <memory>

#include "platform/pluginhost/shell.h"
#include "platform/script/script_class.h"

namespace script {

class Binding : public ObjectWrapper {
 public:
  /// @p context must outlive the binding.
  Binding(JSGlobalContextRef context, std::shared_ptr<pluginhost::PluginLibrary> library);
  Binding(const Binding&) = delete;
  Binding& operator=(const Binding&) = delete;
  /// Destroys the plugin objects that are left.
  ~Binding() override;

  JSGlobalContextRef context() const { return m_context; }

  /// Makes a plugin object. @return its script object, or null when the library could not.
  JSObjectRef create();
  /// @return the plugin object, or null when there is none of that id in this context (any more).
  CorvelNativePluginBase* plugin(std::uint64_t id) const;
  std::size_t pluginCount() const { return m_plugins.size(); }
  /// willBeDestroyed, then release. Never from inside a script call of that object or its event. An unknown id does nothing.
  void destroy(std::uint64_t id);
  void destroyAll();

  /// The same native object gives the same script object as long as script holds it.
  JSValueRef wrap(const std::shared_ptr<CorvelNativePropertyBase>& object) override;

 private:
  const ScriptClass& classOf(const CorvelNativePropertyBase& object);
  JSObjectRef instantiate(std::uint64_t id, const std::shared_ptr<NativeSlot>& slot);

  JSGlobalContextRef m_context;
  std::shared_ptr<pluginhost::PluginLibrary> m_library;
  std::map<const void*, std::unique_ptr<ScriptClass>> m_classes;  ///< by table id
  std::map<std::uint64_t, std::shared_ptr<NativeSlot>> m_plugins;
  JSObjectRef m_known;     ///< script function (id) -> script object or undefined
  JSObjectRef m_remember;  ///< script function (id, object)
};

}  // namespace script
