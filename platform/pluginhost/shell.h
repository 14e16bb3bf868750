// SPDX-License-Identifier: Apache-2.0
// The side of the host framework that a shell uses: load a plugin library, make objects, read, write and call their rows, receive
// their events on the shell's own main loop. Everything here belongs to the script thread unless it says otherwise.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/corvel_native.h"

namespace pluginhost {

/// A loaded plugin library. Objects keep it loaded; the file is unloaded when the last object and the last reference are gone.
class CORVEL_API PluginLibrary : public std::enable_shared_from_this<PluginLibrary> {
 public:
  /// @return null, with one line in @p error that says what is wrong, when the file cannot be loaded or is not a plugin library.
  static std::shared_ptr<PluginLibrary> load(const std::string& path, std::string& error);
  PluginLibrary(const PluginLibrary&) = delete;
  PluginLibrary& operator=(const PluginLibrary&) = delete;
  ~PluginLibrary();

  /// Makes one object. @return null when the library could not.
  std::shared_ptr<CorvelNativePluginBase> create();

 private:
  struct Impl;
  explicit PluginLibrary(std::unique_ptr<Impl> impl);
  std::unique_ptr<Impl> m_impl;
};

/// Tells objects apart for the whole life of the process; never 0, never reused. Thread: any.
CORVEL_API std::uint64_t objectId(const CorvelNativePropertyBase& object);

struct RowInfo {
  std::string_view name;
  std::int32_t typeCode;  ///< a CorvelNativeType
  std::int32_t access;    ///< a CorvelNativeAccess
  bool hasGetter;
  bool hasSetter;
};

/// An object's tables, in table order. The index of a row is its position here, and is what the calls below take.
/// Objects of one class have the same rows, so a shell may bind the index once per class (see tableId).
CORVEL_API std::vector<RowInfo> propertyRows(const CorvelNativePropertyBase& object);
CORVEL_API std::vector<std::string_view> methodRows(const CorvelNativePropertyBase& object);
/// The address of the installed property table: equal for objects whose rows are equal; null before install.
CORVEL_API const void* tableId(const CorvelNativePropertyBase& object);
/// @return the index, or -1.
CORVEL_API int findProperty(const CorvelNativePropertyBase& object, std::string_view name);
CORVEL_API int findMethod(const CorvelNativePropertyBase& object, std::string_view name);

/// Script's read. @return false when the access failed (script sees undefined). A text in @p out is owned by @p out or stays valid
/// until the next call on this object; a text row at its default reads as "" (pointer to an empty text, length 0).
CORVEL_API bool readProperty(CorvelNativePropertyBase& object, unsigned int row, _CorvelNativeVariant& out);
/// Script's write. @return false when it was refused or ignored.
CORVEL_API bool writeProperty(CorvelNativePropertyBase& object, unsigned int row, const _CorvelNativeVariant& value);
/// Script's call. @p args may be null when @p argc is 0. @return false when the call failed (script sees undefined).
CORVEL_API bool callMethod(CorvelNativePropertyBase& object, unsigned int row, const _CorvelNativeVariant* args, unsigned int argc,
                           _CorvelNativeVariant& result);

/// By name, for tools and tests. An unknown name is false.
CORVEL_API bool readProperty(CorvelNativePropertyBase& object, std::string_view name, _CorvelNativeVariant& out);
CORVEL_API bool writeProperty(CorvelNativePropertyBase& object, std::string_view name, const _CorvelNativeVariant& value);
CORVEL_API bool callMethod(CorvelNativePropertyBase& object, std::string_view name, const _CorvelNativeVariant* args,
                           unsigned int argc, _CorvelNativeVariant& result);

/// Gives an object a value that has no row (the shells introduce "fullScreen" this way); it is read and written by the plugin's
/// getProperty and setProperty like a row's.
CORVEL_API void introduceProperty(CorvelNativePropertyBase& object, const char* name, bool value);
CORVEL_API bool readIntroduced(CorvelNativePropertyBase& object, const char* name, bool& out);

/// One raised event: its own copies of everything.
struct Event {
  std::uint64_t objectId;
  std::string name;
  std::vector<_CorvelNativeVariant> args;
};

/// Collects the events of all objects of the process and hands them out on the shell's thread.
/// Make it before the first object and keep it until the last is gone; one at a time.
class CORVEL_API EventQueue {
 public:
  /// @p wake is called from any thread when the queue turns from empty to not empty. It must not block and must not call back here:
  /// it asks the shell's main loop to call drain() soon.
  explicit EventQueue(std::function<void()> wake);
  EventQueue(const EventQueue&) = delete;
  EventQueue& operator=(const EventQueue&) = delete;
  ~EventQueue();

  /// Hands out all events that are queued now, in order, with no lock held; those raised meanwhile wait for the next wake.
  /// Events of objects that are gone are dropped. The object stays alive during its handler.
  void drain(const std::function<void(CorvelNativePluginBase& object, const Event& event)>& handler);
  /// Thread: any.
  bool empty() const;

 private:
  struct Impl;
  std::unique_ptr<Impl> m_impl;
};

/// Watches everything that crosses the host, for a trace. Calls come from any thread and must not call back into the host.
class CORVEL_API Observer {
 public:
  virtual ~Observer() = default;
  virtual void propertyChanged(std::uint64_t objectId, std::string_view name, const _CorvelNativeVariant& value) = 0;
  virtual void eventRaised(std::uint64_t objectId, std::string_view name, const _CorvelNativeVariant* args, unsigned int count) = 0;
  virtual void propertyRead(std::uint64_t objectId, std::string_view name, bool ok, const _CorvelNativeVariant& value) = 0;
  virtual void propertyWritten(std::uint64_t objectId, std::string_view name, const _CorvelNativeVariant& value, bool ok) = 0;
  virtual void methodCalled(std::uint64_t objectId, std::string_view name, const _CorvelNativeVariant* args, unsigned int argc,
                            bool ok, const _CorvelNativeVariant& result) = 0;
};
/// Null for none (the default). Set it before the first object is made. Waits for calls of the one before that are running, so it
/// may be destroyed then. Never from inside such a call.
CORVEL_API void setObserver(Observer* observer);

}  // namespace pluginhost
