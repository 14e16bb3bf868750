// SPDX-License-Identifier: Apache-2.0
// One window of a page, in the page's process: its script context with the element layer, the environment and its native objects.
// Main thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/pluginhost/shell.h"
#include "platform/script/binding.h"

namespace browser {

class FrameScript;

/// What a window asks of the process around it.
class FrameOwner {
 public:
  virtual ~FrameOwner() = default;
  virtual void print(const std::string& level, const std::string& text, const std::string& source, unsigned line) = 0;
  virtual void uncaught(const std::string& text, const std::string& source, unsigned line) = 0;
  /// flush() is due as soon as no script runs.
  virtual void wake() = 0;
  /// The window goes; the objects are to be destroyed as soon as no script runs.
  virtual void ended(FrameScript& frame) = 0;
  /// Do windows other than @p frame have objects?
  virtual bool othersHaveObjects(const FrameScript& frame) const = 0;
  /// Their objects may be elsewhere on the plane now.
  virtual void placeOthers(const FrameScript& frame) = 0;
  /// The objects of all windows are to be put one above the other as their elements are.
  virtual void stackObjects() = 0;
  /// @return the window whose global object is @p window, or null.
  virtual FrameScript* frameOf(JSObjectRef window) = 0;
  /// Does the viewer want subtitles?
  virtual bool subtitlesEnabled() const = 0;
};

class FrameScript {
 public:
  /// Installs everything before the page's first script. What is passed in must outlive the window.
  /// @p settings is a JSON text for the page side.
  FrameScript(FrameOwner& owner, JSGlobalContextRef context, std::shared_ptr<pluginhost::PluginLibrary> plugin,
              const script::Tables& tables, const std::string& settings);
  FrameScript(const FrameScript&) = delete;
  FrameScript& operator=(const FrameScript&) = delete;
  /// Destroys the native objects that are left. Never from inside a script.
  ~FrameScript();

  JSObjectRef window() const { return JSContextGetGlobalObject(m_context); }
  const script::Binding& binding() const { return *m_binding; }
  /// From here on no event reaches the window's script.
  void silence() { m_silent = true; }

  bool owns(std::uint64_t objectId) const { return m_binding->plugin(objectId) != nullptr; }
  void deliver(const pluginhost::Event& event);
  void flush();
  void tick();
  /// After its page has gone: gives back what the engine would keep of it.
  void forget() { call("forget", {}); }
  /// Looks at where its objects are.
  void placeObjects();
  std::size_t objectCount() const { return m_silent ? 0 : m_binding->pluginCount(); }
  bool hasObjects() const { return objectCount() > 0; }
  void destroyObjects() { m_binding->destroyAll(); }
  /// Where the page in the child window @p child begins; a script value: {x, y} or null.
  JSValueRef offsetOf(JSObjectRef child);
  /// Adds the media library's handles of its objects and of those in its frames, as their elements are painted, the highest first.
  /// Objects without a player are left out.
  void appendPlayers(std::vector<unsigned long>& out);

 private:
  using Arguments = std::span<const JSValueRef>;
  using HostFunction = JSValueRef (FrameScript::*)(Arguments arguments);

  JSObjectRef makeHost(const std::string& settings);
  JSObjectRef makeParts();
  void addHostFunction(JSObjectRef host, const char* name, std::size_t arguments, HostFunction function);
  JSValueRef compile(const char* name, const char* source);
  JSValueRef call(const char* name, const std::vector<JSValueRef>& arguments);
  void reportFault(JSValueRef exception);
  void appendPlayer(std::uint64_t objectId, std::vector<unsigned long>& out) const;

  std::string text(JSValueRef value) const;
  unsigned number(JSValueRef value) const;
  JSValueRef undefined() const { return JSValueMakeUndefined(m_context); }

  JSValueRef hostPrint(Arguments arguments);
  JSValueRef hostUncaught(Arguments arguments);
  JSValueRef hostWake(Arguments arguments);
  JSValueRef hostEnded(Arguments arguments);
  JSValueRef hostFrameOffset(Arguments arguments);
  JSValueRef hostOthersHaveObjects(Arguments arguments);
  JSValueRef hostPlaceOthers(Arguments arguments);
  JSValueRef hostSubtitlesEnabled(Arguments arguments);
  JSValueRef hostStackAll(Arguments arguments);

  FrameOwner& m_owner;
  JSGlobalContextRef m_context;
  std::unique_ptr<script::Binding> m_binding;
  JSObjectRef m_page = nullptr;
  std::shared_ptr<FrameScript*> m_self = std::make_shared<FrameScript*>(this);
  bool m_silent = false;
};

}  // namespace browser
