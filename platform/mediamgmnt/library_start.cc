// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/library_start.h"

#include <gst/gst.h>
#include <gst/mpegts/mpegts.h>

#include <array>
#include <atomic>
#include <future>
#include <mutex>

#include "platform/mediamgmnt/body_guard.h"
#include "platform/mediamgmnt/clear_key_decryptor.h"
#include "platform/mediamgmnt/foreign_elements.h"
#include "platform/mediamgmnt/http_fetch.h"
#include "platform/mediamgmnt/thread_ledger.h"
#include "platform/mediamgmnt/ttml_passthrough.h"
#include "platform/mediamgmnt/webvtt_element.h"

namespace mediamgmnt {
namespace {

/// In the order in which a presentation needs them.
constexpr std::array kElementsToLoad = {
    "uridecodebin3",      "urisourcebin", "filesrc",        "souphttpsrc", "typefind",       "parsebin",    "decodebin3",
    "multiqueue",         "qtdemux",      "h264parse",      "aacparse",    "avdec_h264",     "avdec_aac",   "appsink",
    "fakesink",           "queue",        "downloadbuffer", "dashdemux2",  "mpegaudioparse", "tsdemux",     "hlsdemux2",
    "streamsynchronizer", "videoconvert", "audioconvert",   "queue2",      "identity",       "deinterlace",
};

struct LibraryStart {
  std::once_flag begun;
  std::promise<bool> started;
  std::shared_future<bool> result = started.get_future().share();
  std::atomic<bool> ending{false};
};

/// Never destroyed: the background thread may outlive the process's static objects.
LibraryStart& libraryStart() {
  static LibraryStart* const instance = new LibraryStart;
  return *instance;
}

/// Making one element loads its plugin and sets up its class, which is most of the time that the first presentation would spend.
void loadElement(const char* name) {
  GstElement* const element = gst_element_factory_make(name, nullptr);
  if (element == nullptr) return;  // a presentation that needs it will say so
  gst_object_unref(gst_object_ref_sink(element));
}

void startLibrary() {
  const bool started = gst_init_check(nullptr, nullptr, nullptr) != FALSE && registerTtmlPassThrough() && registerWebVttElement() &&
                       registerClearKeyDecryptor();
  if (started) {
    gst_mpegts_initialize();
    keepForeignElementsOut();
    guardCancelledBodies();
    prepareFetching();
  }
  libraryStart().started.set_value(started);
  if (!started) return;
  for (const char* const name : kElementsToLoad) {
    if (libraryStart().ending) return;
    loadElement(name);
  }
}

}  // namespace

void beginLibraryStart() {
  std::call_once(libraryStart().begun, [] { startListedThread(kLibraryThreads, startLibrary); });
}

bool waitForLibraryStart() {
  beginLibraryStart();
  return libraryStart().result.get();
}

void endLibraryStart() { libraryStart().ending = true; }

}  // namespace mediamgmnt
