// SPDX-License-Identifier: Apache-2.0
// The base of plugin objects: identity and events.
#include <utility>

#include "host/corvel_native.h"
#include "platform/pluginhost/event_sink.h"
#include "platform/pluginhost/object_registry.h"
#include "platform/pluginhost/object_state.h"
#include "platform/pluginhost/observer.h"

namespace {

/// A copy that borrows nothing: the sender's texts end with its call.
void copyDetached(const _CorvelNativeVariant& from, _CorvelNativeVariant& to) {
  const bool text = from.details.type == CORVEL_STRING;
  if (text) {
    cvnplUtil::set(from.string.text, to, static_cast<int>(from.string.length), true);
    return;
  }
  to = from;
}

}  // namespace

CorvelNativePluginBase::CorvelNativePluginBase(CorvelNativePropertyBase* parent) : CorvelNativePropertyBase(parent) {
  pluginhost::ObjectRegistry::add(state()->id, this);
}

CorvelNativePluginBase::~CorvelNativePluginBase() { pluginhost::ObjectRegistry::remove(state()->id); }

CorvelNativePluginBase* CorvelNativePluginBase::cast(CorvelNativePropertyBase* object) {
  return object != nullptr && object->type() == 0 ? static_cast<CorvelNativePluginBase*>(object) : nullptr;
}

bool CorvelNativePluginBase::dispatchEvent(const char* name, const _CorvelNativeVariant* args, unsigned int count) {
  if (name == nullptr) return false;
  if (args == nullptr && count != 0) return false;
  if (const pluginhost::Watch watch; watch) watch->eventRaised(state()->id, name, args, count);
  pluginhost::Event event{state()->id, name, std::vector<_CorvelNativeVariant>(count)};
  for (unsigned int i = 0; i < count; ++i) copyDetached(args[i], event.args[i]);
  return pluginhost::enqueueEvent(std::move(event));
}
