// SPDX-License-Identifier: Apache-2.0
// The script tables: what a page sees of the object, row by row. The process-wide mutexes stand behind them: the table is built
// first.
#include "components/component_thunks.h"
#include "plugin/av_control_plugin.h"
#include "plugin/script_thunks.h"
#include "statemachine/play_states.h"

namespace {

_CorvelNativeVariant empty(CorvelNativeType type, CorvelNativeAccess access) {
  _CorvelNativeVariant value;
  value.details = {type, access};
  return value;
}

_CorvelNativeVariant textRow(CorvelNativeAccess access) {
  _CorvelNativeVariant value = empty(CORVEL_STRING, access);
  value.string = {"", 0, 0};
  return value;
}

_CorvelNativeVariant intRow(CorvelNativeAccess access, int number) {
  _CorvelNativeVariant value = empty(CORVEL_INTEGER, access);
  value.integer = number;
  return value;
}

_CorvelNativeVariant doubleRow(CorvelNativeAccess access, double number) {
  _CorvelNativeVariant value = empty(CORVEL_DOUBLE, access);
  value.number = number;
  return value;
}

/// An integer value under a double type code: deliberate, and equal to 0.0 since all value bytes are zero.
_CorvelNativeVariant intUnderDoubleRow(CorvelNativeAccess access, int number) {
  _CorvelNativeVariant value = empty(CORVEL_DOUBLE, access);
  value.integer = number;
  return value;
}

_CorvelNativeVariant boolRow(CorvelNativeAccess access, bool flag) {
  _CorvelNativeVariant value = empty(CORVEL_BOOLEAN, access);
  value.boolean = flag;
  return value;
}

_CorvelNativeVariant handlerRow() { return empty(CORVEL_EVENT_HANDLER, CORVEL_ORDINARY); }

constexpr CorvelNativeAccess kReadOnly = CORVEL_PLUGIN_ONLY;
constexpr CorvelNativeAccess kOrdinary = CORVEL_ORDINARY;
constexpr CorvelNativeAccess kAttribute = CORVEL_ATTRIBUTE;

}  // namespace

CorvelNativeProperty AVControlPlugin::sm_properties[] = {
    {"data", 0, textRow(kOrdinary), nullptr, setDataThunk},
    {"playPosition", 0, doubleRow(kReadOnly, 0.0), getPlayPositionThunk, nullptr},
    {"ttmlXmlPlayPosition", 0, intRow(kReadOnly, 0), getTtmlXmlPlayPositionThunk, nullptr},
    {"playTime", 0, intUnderDoubleRow(kReadOnly, 0), getPlayTimeThunk, nullptr},
    {"playState", 0, intRow(kReadOnly, AVControlStoppedState::id()), nullptr, nullptr},
    {"error", 0, intRow(kReadOnly, 0), getErrorThunk, nullptr},
    {"speed", 0, doubleRow(kReadOnly, 1.0), getSpeedThunk, nullptr},
    {"nrTracks", 0, intRow(kReadOnly, 0), nullptr, nullptr},
    {"currentTrackIndex", 0, intRow(kOrdinary, 0), nullptr, nullptr},
    {"onFocus", 0, handlerRow(), nullptr, nullptr},
    {"onPlayStateChange", 0, handlerRow(), nullptr, nullptr},
    {"onPlayPositionChanged", 0, handlerRow(), nullptr, nullptr},
    {"onPlaySpeedChanged", 0, handlerRow(), nullptr, nullptr},
    {"onFullScreenChange", 0, handlerRow(), nullptr, nullptr},
    {"onSelectedComponentChanged", 0, handlerRow(), nullptr, nullptr},
    {"onDRMRightsError", 0, handlerRow(), nullptr, nullptr},
    {"onParentalRatingChange", 0, handlerRow(), nullptr, nullptr},
    {"onParentalRatingError", 0, handlerRow(), nullptr, nullptr},
    {"persist", 0, boolRow(kOrdinary, false), nullptr, nullptr},
    {"COMPONENT_TYPE_VIDEO", 0, intRow(kReadOnly, 0), nullptr, nullptr},
    {"COMPONENT_TYPE_AUDIO", 0, intRow(kReadOnly, 0), nullptr, nullptr},
    {"COMPONENT_TYPE_SUBTITLE", 0, intRow(kReadOnly, 0), nullptr, nullptr},
    {"numOfSubtitles", 0, intRow(kOrdinary, 0), nullptr, setNumOfSubtitlesThunk},
    {"enableSubtitles", 0, intRow(kOrdinary, 0), nullptr, nullptr},
    {"width", 0, textRow(kAttribute), nullptr, setWidthThunk},
    {"height", 0, textRow(kAttribute), nullptr, setHeightThunk},
    {"type", 0, textRow(kAttribute), nullptr, setTypeThunk},
    {"cache", 0, textRow(kAttribute), nullptr, setCacheThunk},
    {"loop", 0, textRow(kAttribute), nullptr, setLoopThunk},
    {"subParamAttr", 0, textRow(kOrdinary), nullptr, setSubtitleParamThunk},
    {"playerType", 0, textRow(kOrdinary), nullptr, setPlayerTypeThunk},
    {"userAgent", 0, textRow(kAttribute), nullptr, setUserAgentThunk},
    {"nativeWindowSize", 0, textRow(kAttribute), nullptr, setNativeWindowSizeThunk},
};
const unsigned int AVControlPlugin::sm_prop_length = sizeof sm_properties / sizeof sm_properties[0];

const CorvelNativeMethod AVControlPlugin::sm_methods[] = {
    {"play", playThunk},
    {"stop", stopThunk},
    {"seek", seekThunk},
    {"setVolume", setVolumeThunk},
    {"next", nextThunk},
    {"previous", previousThunk},
    {"getSinkProtocolInfo", getSinkProtocolInfoThunk},
    {"getTransportStateVariables", getTransportStateVariablesThunk},
    {"setTransportStateVariables", setTransportStateVariablesThunk},
    {"focus", focusThunk},
    {"queue", queueThunk},
    {"getComponents", getComponentsThunk},
    {"getCurrentActiveComponents", getCurrentActiveComponentsThunk},
    {"selectComponent", selectComponentThunk},
    {"unselectComponent", unselectComponentThunk},
};
const unsigned int AVControlPlugin::sm_met_length = sizeof sm_methods / sizeof sm_methods[0];

AVControlMutex AVControlPlugin::the_mutex("AVControlPlugin");
AVControlMutex AVControlPlugin::plugin_handler_mutex("PluginHandler");
std::map<unsigned long, AVControlPlugin*> AVControlPlugin::m_mmlib_player_map;
RenewThreads AVControlPlugin::sm_renewThreads;

bool AVControlPlugin::dispatch(const char* event, _CorvelNativeVariant* args, unsigned int argc) {
  return dispatchEvent(event, args, argc);
}
