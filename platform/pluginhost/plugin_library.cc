// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "platform/pluginhost/object_registry.h"
#include "platform/pluginhost/shell.h"
#include "platform/pluginhost/table_index.h"

namespace pluginhost {
namespace {

using CreateFunction = decltype(&corvelCreatePlugin);

constexpr char kEntryPoint[] = "corvelCreatePlugin";

std::string oneLine(const char* message) {
  std::string line = message == nullptr ? "unknown reason" : message;
  std::replace(line.begin(), line.end(), '\n', ' ');
  return line;
}

}  // namespace

struct PluginLibrary::Impl {
  Impl(void* loaded, CreateFunction entry) : handle(loaded), create(entry) {}
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;
  /// The file stays for good while something may still need its code: a script object that outlived its plugin, or a plugin that
  /// ended on another thread, which may not have left its destructor yet.
  ~Impl() {
    if (needed || TableIndex::inUseFromFileOf(reinterpret_cast<const void*>(create))) return;
    dlclose(handle);
  }

  void* const handle;
  const CreateFunction create;
  std::atomic<bool> needed{false};
};

namespace {

/// What the shell's references to an object share: the object, then, outliving it, its library.
class Holder {
 public:
  Holder(std::shared_ptr<PluginLibrary> library, std::atomic<bool>& libraryNeeded, std::shared_ptr<CorvelNativePluginBase> object)
      : m_library(std::move(library)), m_libraryNeeded(libraryNeeded), m_id(objectId(*object)), m_object(std::move(object)) {}
  Holder(const Holder&) = delete;
  Holder& operator=(const Holder&) = delete;
  ~Holder() {
    m_object.reset();
    if (!ObjectRegistry::destroyedHere(m_id)) m_libraryNeeded = true;
  }

  CorvelNativePluginBase* object() const { return m_object.get(); }

 private:
  const std::shared_ptr<PluginLibrary> m_library;
  std::atomic<bool>& m_libraryNeeded;
  const std::uint64_t m_id;
  std::shared_ptr<CorvelNativePluginBase> m_object;
};

}  // namespace

PluginLibrary::PluginLibrary(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {}

PluginLibrary::~PluginLibrary() = default;

std::shared_ptr<PluginLibrary> PluginLibrary::load(const std::string& path, std::string& error) {
  if (path.empty()) {  // the loader would take it for the program itself
    error = "no plugin library named";
    return nullptr;
  }
  void* const handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): glibc keeps the text for each thread
    error = "cannot load the plugin library '" + path + "': " + oneLine(dlerror());
    return nullptr;
  }
  void* const entry = dlsym(handle, kEntryPoint);
  if (entry == nullptr) {
    dlclose(handle);
    error = "'" + path + "' is not a plugin library: it has no function " + kEntryPoint;
    return nullptr;
  }
  auto impl = std::make_unique<Impl>(handle, reinterpret_cast<CreateFunction>(entry));
  return std::shared_ptr<PluginLibrary>(new PluginLibrary(std::move(impl)));
}

std::shared_ptr<CorvelNativePluginBase> PluginLibrary::create() {
  std::shared_ptr<CorvelNativePluginBase> object;
  if (!m_impl->create(&object) || !object) return nullptr;
  const std::uint64_t id = objectId(*object);
  const auto holder = std::make_shared<Holder>(shared_from_this(), m_impl->needed, std::move(object));
  std::shared_ptr<CorvelNativePluginBase> shared(holder, holder->object());
  ObjectRegistry::adopt(id, shared);
  return shared;
}

}  // namespace pluginhost
