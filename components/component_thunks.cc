// SPDX-License-Identifier: Apache-2.0
#include "components/component_thunks.h"

#include "components/integer_argument.h"
#include "plugin/live_plugin.h"

namespace {

CorvelNativePropertyBase* objectOf(const _CorvelNativeVariant& value) {
  return value.details.type == CORVEL_OBJECT ? value.object.object.get() : nullptr;
}

}  // namespace

bool getComponentsThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc,
                        _CorvelNativeVariant* result) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr) return false;
  if (argc == 0 || args[0].details.type == CORVEL_UNDEFINED) {
    cvnplUtil::set(plugin->JS_GetAllComponents(), *result);
    return true;
  }
  if (args[0].details.type != CORVEL_INTEGER) return false;
  cvnplUtil::set(plugin->JS_GetComponents(args[0].integer), *result);
  return true;
}

bool getCurrentActiveComponentsThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int /*argc*/,
                                     _CorvelNativeVariant* result) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr) return false;
  cvnplUtil::set(plugin->JS_GetCurrentActiveComponents(integerOf(args[0])), *result);
  return true;
}

bool selectComponentThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int /*argc*/,
                          _CorvelNativeVariant* /*result*/) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr) return false;
  if (args[0].details.type == CORVEL_INTEGER) {
    plugin->JS_SelectDefaultComponent(args[0].integer);
    return true;
  }
  CorvelNativePropertyBase* const object = objectOf(args[0]);
  if (object == nullptr) return false;
  plugin->JS_SelectComponent(object);
  return true;
}

bool unselectComponentThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int /*argc*/,
                            _CorvelNativeVariant* /*result*/) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr) return false;
  if (args[0].details.type == CORVEL_INTEGER) {
    plugin->JS_UnselectDefaultComponent(args[0].integer);
    return true;
  }
  CorvelNativePropertyBase* const object = objectOf(args[0]);
  if (object == nullptr) return false;
  plugin->JS_UnselectComponent(object);
  return true;
}
