// SPDX-License-Identifier: Apache-2.0
// The seam between the plugin and the media library that was loaded: a table of its functions, and who watches.
#pragma once

#include <shared_mutex>
#include <string_view>

#include "host/mediamgmnt.h"
#include "platform/mediamgmnt/media_plane.h"
#include "platform/mediamgmnt/media_sound.h"

namespace shell {

struct MediaFunctions {
  unsigned long (*openPlayer)(int);
  int (*closePlayer)(unsigned long);
  int (*cmdPlayer)(unsigned long, const char*, const char*);
  int (*getPlayerProperty)(unsigned long, const char*, char*, int);
  int (*setPlayerProperty)(unsigned long, const char*, const char*);
  int (*registerCallback)(unsigned long, MediaMessageCallback);
  int (*registerTextTrackCallback)(unsigned long, MediaTextTrackCallback);
  int (*registerSubtitleSettingsChangedCallback)(unsigned long, MediaSubtitleSettingsCallback);
  int (*getOOBPlayerPosition)(unsigned long, int*);
  int (*hbbSelectDefaultAVComponent)(AVComponentType);
  // what a library may lack
  int (*planeSnapshot)(unsigned char*, unsigned int);
  int (*planeExport)(MediaPlaneExport*);
  unsigned long (*planeFrames)();
  void (*planeArrange)(const unsigned long*, unsigned int);
  int (*setParentalLimit)(int, const char*);
  int (*addClearKey)(const char*, const char*);
  int (*waitIdle)(int);
  void (*tapSound)(MediaSoundTap, void*);
  int (*preferLanguages)(int, const char*);
  int (*changeSubtitleSettings)(const _SubtitleSettingsParams*);
};

/// Watches the seam. Calls come from any thread and must not call the media functions.
class SeamObserver {
 public:
  virtual ~SeamObserver() = default;
  /// A null text is one that does not exist. @p handle is 0 for a call that has none.
  virtual void mediaCall(unsigned long handle, std::string_view kind, std::string_view name, const char* argument, bool ok,
                         const char* result) = 0;
  virtual void mediaCallback(unsigned long handle, std::string_view kind, std::string_view name) = 0;
};

/// Null while no library is loaded. Thread: any.
const MediaFunctions* mediaFunctions();
/// Main thread, while no player exists.
void setMediaFunctions(const MediaFunctions* functions);

/// A watched call: the observer stays until the end of this object's life. Thread: any.
class SeamWatch {
 public:
  SeamWatch();
  explicit operator bool() const { return m_observer != nullptr; }
  SeamObserver* operator->() const { return m_observer; }

 private:
  std::shared_lock<std::shared_mutex> m_lock;
  SeamObserver* m_observer = nullptr;
};

/// Costs one atomic read. Thread: any.
bool isSeamWatched();
/// Waits for watched calls that are running. Main thread, never from inside one.
void setSeamObserver(SeamObserver* observer);

}  // namespace shell
