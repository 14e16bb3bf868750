// SPDX-License-Identifier: Apache-2.0
// In-band subtitle material on its way to the page, which renders it, and the hooks of a page-side subtitle player.
#include <cstdio>

#include "plugin/av_control_plugin.h"
#include "statemachine/play_states.h"

namespace {

/// By value of _TextTrackEventType.
constexpr const char* kTypeNames[] = {"TEXT_TRACK_ADD",     "TEXT_TRACK_REMOVE",  "TEXT_TRACK_CUE",     "TTML_SUBTITLE",
                                      "TTML_SUBTITLE_FONT", "TTML_SUBTITLE_SHOW", "TTML_SUBTITLE_HIDE", "TTML_SUBTITLE_CHANGE"};

/// The texts stay the media library's; the host copies them.
void setCounted(const _TextTrackText& text, _CorvelNativeVariant& out) { cvnplUtil::set(text.text, out, text.length, false); }

}  // namespace

void AVControlPlugin::subtitleReceivedWrapper(unsigned long handle, _TextTrackEventType type, void* data) {
  const auto plugin = pinPlugin(handle);
  if (plugin != nullptr) plugin->handleTextTrackCallback(type, data);
}

void AVControlPlugin::handleTextTrackCallback(_TextTrackEventType type, void* data) {
  const auto index = static_cast<unsigned int>(type);
  if (index >= sizeof kTypeNames / sizeof kTypeNames[0]) return;
  std::fprintf(stderr, "received command %s", kTypeNames[index]);  // no newline: deliberate
  std::fflush(stderr);
  _CorvelNativeVariant args[2];
  switch (type) {
    case TEXT_TRACK_ADD:
    case TEXT_TRACK_REMOVE:
    case TEXT_TRACK_CUE: break;
    case TTML_SUBTITLE: {
      const auto* const document = static_cast<const _TextTrackText*>(data);
      if (document == nullptr || document->length == 0) break;
      setCounted(*document, args[0]);
      dispatchEvent("onInBandSubtitleData", args, 1);
      break;
    }
    case TTML_SUBTITLE_FONT: {
      const auto* const texts = static_cast<const _TextTrackText*>(data);
      if (texts == nullptr || texts[0].length == 0 || texts[1].length == 0) break;
      setCounted(texts[0], args[0]);
      setCounted(texts[1], args[1]);
      dispatchEvent("onSubtitleFontFamily", args, 2);
      break;
    }
    case TTML_SUBTITLE_SHOW:
    case TTML_SUBTITLE_HIDE:
      cvnplUtil::set(type == TTML_SUBTITLE_SHOW, args[0]);
      dispatchEvent("onInBandSubtitleShowHide", args, 1);
      break;
    case TTML_SUBTITLE_CHANGE: dispatchEvent("onInBandSubtitleChange", nullptr, 0); break;
  }
}

void AVControlPlugin::startOOBSubtitlePlayer(bool start) {
  _CorvelNativeVariant argument;
  cvnplUtil::set(start, argument);
  dispatchEvent("onStartStopSubtitlePlayer", &argument, 1);
  if (!start || getPlayState() == AVControlPlayingState::id()) return;
  // Past the state machine, deliberately: the page is told that playback runs while the subtitle player is active.
  setPlayStateProperty(AVControlPlayingState::id());
  cvnplUtil::set(AVControlPlayingState::id(), argument);
  dispatchEvent("onPlayStateChange", &argument, 1);
}

bool AVControlPlugin::JS_GetTtmlXmlPlayPositionProp(int& position) {
  int known = -1;
  getOOBPlayerPosition(m_handle, &known);
  position = known;
  return true;
}
