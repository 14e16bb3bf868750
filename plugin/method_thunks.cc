// SPDX-License-Identifier: Apache-2.0
// The functions behind the method rows; those of the components stand with the components.
#include <cmath>
#include <limits>

#include "components/integer_argument.h"
#include "plugin/live_plugin.h"
#include "plugin/script_thunks.h"

namespace {

constexpr int kOutOfRange = -1;  ///< a volume that no volume can be

int roundedVolume(double volume) {
  const double raised = volume + 0.5;
  if (!(raised > std::numeric_limits<int>::min() && raised < std::numeric_limits<int>::max())) return kOutOfRange;
  return static_cast<int>(raised);
}

}  // namespace

bool playThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc, _CorvelNativeVariant* result) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr) return false;
  double speed = 1.0;
  if (argc > 0 && args[0].details.type == CORVEL_INTEGER) {
    speed = args[0].integer;
  } else if (argc > 0 && args[0].details.type == CORVEL_DOUBLE) {
    speed = args[0].number;
  } else if (argc > 0) {
    return true;  // deliberate: the call is handled, nothing plays, the result stays undefined
  }
  cvnplUtil::set(plugin->JS_Play(speed), *result);
  return true;
}

bool stopThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* /*args*/, unsigned int /*argc*/,
               _CorvelNativeVariant* result) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr) return false;
  cvnplUtil::set(plugin->JS_Stop(), *result);
  return true;
}

bool seekThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int /*argc*/,
               _CorvelNativeVariant* result) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr) return false;
  // The first slot is there also without an argument; it then holds 0.
  const double position = args[0].details.type == CORVEL_DOUBLE ? args[0].number : integerOf(args[0]);
  cvnplUtil::set(plugin->JS_Seek(position), *result);
  return true;
}

bool setVolumeThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int /*argc*/,
                    _CorvelNativeVariant* result) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr) return false;
  const int volume = args[0].details.type == CORVEL_DOUBLE ? roundedVolume(args[0].number) : integerOf(args[0]);
  cvnplUtil::set(plugin->JS_SetVolume(volume), *result);
  return true;
}

// The next five are refused, each on its own: a page finds the methods and gets undefined.

bool nextThunk(CorvelNativePropertyBase*, const _CorvelNativeVariant*, unsigned int, _CorvelNativeVariant*) { return false; }

bool previousThunk(CorvelNativePropertyBase*, const _CorvelNativeVariant*, unsigned int, _CorvelNativeVariant*) { return false; }

bool getSinkProtocolInfoThunk(CorvelNativePropertyBase*, const _CorvelNativeVariant*, unsigned int, _CorvelNativeVariant*) {
  return false;
}

bool getTransportStateVariablesThunk(CorvelNativePropertyBase*, const _CorvelNativeVariant*, unsigned int, _CorvelNativeVariant*) {
  return false;
}

bool setTransportStateVariablesThunk(CorvelNativePropertyBase*, const _CorvelNativeVariant*, unsigned int, _CorvelNativeVariant*) {
  return false;
}

bool focusThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* /*args*/, unsigned int /*argc*/,
                _CorvelNativeVariant* /*result*/) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr) return false;
  plugin->JS_Focus();
  return true;
}

bool queueThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int /*argc*/,
                _CorvelNativeVariant* result) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr) return false;
  // Whatever holds no text (null among it) reads as a null text and empties the queue.
  const bool isText = args[0].details.type == CORVEL_STRING;
  cvnplUtil::set(plugin->JS_Queue(isText ? args[0].string.text : nullptr, isText ? args[0].string.length : 0), *result);
  return true;
}
