// SPDX-License-Identifier: Apache-2.0
// Getters and setters behind the property rows.
#include <limits>

#include "plugin/live_plugin.h"
#include "plugin/script_thunks.h"

namespace {

using TextSetter = bool (AVControlPlugin::*)(const char* text, unsigned int length);

/// A value that is no text reads as a null one.
_CorvelNativeString textOf(const _CorvelNativeVariant& value) {
  return value.details.type == CORVEL_STRING ? value.string : _CorvelNativeString{nullptr, 0, 0};
}

bool setText(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value, TextSetter setter) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr) return false;
  const _CorvelNativeString text = textOf(*value);
  if (text.text == nullptr || text.length == 0) return false;
  return (plugin->*setter)(text.text, text.length);
}

}  // namespace

bool getPlayPositionThunk(CorvelNativePropertyBase* self, _CorvelNativeVariant* result) {
  AVControlPlugin* const plugin = livePlugin(self);
  double position = -1.0;
  if (plugin == nullptr || !plugin->JS_GetPlayPositionProp(position)) return false;
  cvnplUtil::set(position, *result);
  return true;
}

bool getTtmlXmlPlayPositionThunk(CorvelNativePropertyBase* self, _CorvelNativeVariant* result) {
  AVControlPlugin* const plugin = livePlugin(self);
  int position = -1;
  if (plugin == nullptr || !plugin->JS_GetTtmlXmlPlayPositionProp(position)) return false;
  cvnplUtil::set(position, *result);
  return true;
}

bool getPlayTimeThunk(CorvelNativePropertyBase* self, _CorvelNativeVariant* result) {
  AVControlPlugin* const plugin = livePlugin(self);
  double duration = -1.0;
  if (plugin == nullptr || !plugin->JS_GetPlayTimeProp(duration)) return false;
  cvnplUtil::set(duration < 0 ? std::numeric_limits<double>::infinity() : duration, *result);
  return true;
}

bool getSpeedThunk(CorvelNativePropertyBase* self, _CorvelNativeVariant* result) {
  AVControlPlugin* const plugin = livePlugin(self);
  double speed = 0.0;
  if (plugin == nullptr || !plugin->JS_GetSpeedProp(speed)) return false;
  cvnplUtil::set(speed, *result);
  return true;
}

bool getErrorThunk(CorvelNativePropertyBase* self, _CorvelNativeVariant* result) {
  AVControlPlugin* const plugin = livePlugin(self);
  int code = -1;
  if (plugin == nullptr || !plugin->JS_GetErrorProp(code)) return false;
  if (code < 0) {
    result->details.type = CORVEL_NO_VALUE;
  } else {
    cvnplUtil::set(code, *result);
  }
  return true;
}

bool setDataThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr || value->details.type != CORVEL_STRING) return false;
  return plugin->JS_SetDataProp(value->string.text, value->string.length);
}

bool setWidthThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value) {
  return setText(self, value, &AVControlPlugin::JS_SetWidthParam);
}

bool setHeightThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value) {
  return setText(self, value, &AVControlPlugin::JS_SetHeightParam);
}

bool setTypeThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value) {
  return setText(self, value, &AVControlPlugin::JS_SetTypeParam);
}

bool setCacheThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr) return false;
  const _CorvelNativeString text = textOf(*value);
  return plugin->JS_SetCacheParam(text.text, text.length);
}

bool setLoopThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value) {
  return setText(self, value, &AVControlPlugin::JS_SetLoopParam);
}

bool setSubtitleParamThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value) {
  return setText(self, value, &AVControlPlugin::JS_SetSubtitleParam);
}

bool setPlayerTypeThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value) {
  return setText(self, value, &AVControlPlugin::JS_PlayerType);
}

bool setUserAgentThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value) {
  return setText(self, value, &AVControlPlugin::JS_SetUserAgent);
}

bool setNativeWindowSizeThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value) {
  return setText(self, value, &AVControlPlugin::JS_SetNativeWindowSize);
}

bool setNumOfSubtitlesThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value) {
  AVControlPlugin* const plugin = livePlugin(self);
  if (plugin == nullptr || value->details.type != CORVEL_INTEGER) return false;
  return plugin->JS_SetNumOfSubtitle(value->integer);
}
