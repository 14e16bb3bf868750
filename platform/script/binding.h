// SPDX-License-Identifier: Apache-2.0
// The native objects of one script context: makes and destroys plugin objects, and gives every native object its one script object.
// Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/pluginhost/shell.h"
#include "platform/script/script_class.h"

namespace script {

/// The rows of an object by name. The texts are the plugin library's, and stay as long as it is loaded.
struct Tables {
  std::vector<pluginhost::RowInfo> properties;
  std::vector<std::string_view> methods;
};

Tables tablesOf(const CorvelNativePropertyBase& object);

/// A rectangle on the video plane, any part of which may lie outside it.
struct PlaneWindow {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  /// As the media library writes it: "x|y|width|height|".
  std::string text() const;
};

class Binding : public ObjectWrapper {
 public:
  /// @p context must outlive the binding.
  Binding(JSGlobalContextRef context, std::shared_ptr<pluginhost::PluginLibrary> library);
  Binding(const Binding&) = delete;
  Binding& operator=(const Binding&) = delete;
  /// Destroys the plugin objects that are left. Script of the context that runs on finds objects without content.
  ~Binding() override;

  JSGlobalContextRef context() const { return m_context; }
  /// For functions that script may call when the binding has gone: points to null then.
  const std::shared_ptr<Binding*>& self() const { return m_self; }

  /// Makes a plugin object. @return its script object, or null when the library could not.
  JSObjectRef create();
  /// @return the plugin object, or null when there is none of that id in this context (any more).
  CorvelNativePluginBase* plugin(std::uint64_t id) const;
  std::size_t pluginCount() const { return m_plugins.size(); }
  /// The plugin objects of this context, oldest first.
  std::vector<CorvelNativePluginBase*> plugins() const;
  /// Where the page wants the object's window on the video plane. @return false for an unknown id and a refusal.
  bool setWindow(std::uint64_t id, const PlaneWindow& window);
  /// The windows that were set last, by the media library's handles of their objects.
  std::map<unsigned long, PlaneWindow> windows() const;
  /// What every plugin object has, for a page layer that must know before the first is made. @p tables must outlive the binding.
  void setKnownTables(const Tables* tables) { m_knownTables = tables; }
  const Tables* knownTables() const { return m_knownTables; }
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
  std::map<std::uint64_t, PlaneWindow> m_windows;  ///< of those in m_plugins that have one
  const Tables* m_knownTables = nullptr;
  KnownNumbers m_numbers;
  std::shared_ptr<WrapperLink> m_link;
  std::shared_ptr<Binding*> m_self;
  JSObjectRef m_engine;  ///< a script object that keeps all of the following from the collector
  Intrinsics m_intrinsics{};
  JSObjectRef m_known;     ///< script function (id) -> script object or undefined
  JSObjectRef m_remember;  ///< script function (id, object)
};

}  // namespace script
