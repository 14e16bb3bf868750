// SPDX-License-Identifier: Apache-2.0
// Writes what a loudspeaker would play to a WAV file.
#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "platform/shell/media_library.h"

namespace shell {

/// Records from its making to its end, in real time: silence where nothing plays, all players mixed. 48 kHz, stereo, 16 bit.
///
/// Sources that are opened meanwhile play to the file in place of a device. The file is whole once the recorder has gone.
/// Threads: made and destroyed on the main thread, before the first and after the last player; fed by the media library's threads.
class AVCSHELL_API SoundRecorder {
 public:
  /// @return null, with one line in @p error, when the file cannot be written or the media library lets nobody listen.
  static std::unique_ptr<SoundRecorder> start(const MediaLibrary& media, const std::string& path, std::string& error);
  SoundRecorder(const SoundRecorder&) = delete;
  SoundRecorder& operator=(const SoundRecorder&) = delete;
  ~SoundRecorder();

  /// Ends it. @return false, with one line in @p error, when the file lacks something that was to be written.
  bool finish(std::string& error);

 private:
  using Clock = std::chrono::steady_clock;

  SoundRecorder(const MediaLibrary& media, int file, std::string path) : m_media(media), m_path(std::move(path)), m_file(file) {}
  static void onSound(const MediaSound* sound, void* self);
  void write(const MediaSound& sound);
  std::uint64_t placeOf(const MediaSound& sound) const;
  void writeHeader();
  void close();
  void rememberFailure();

  const MediaLibrary& m_media;
  const std::string m_path;
  int m_file;  // -1: closed
  const Clock::time_point m_start = Clock::now();
  std::mutex m_mutex;
  std::map<unsigned long, std::uint64_t> m_ends;  // guarded by m_mutex; frames, of each player's sound so far
  std::uint64_t m_frames = 0;                     // guarded by m_mutex
  int m_failure = 0;                              // guarded by m_mutex; the system's number of the first one
};

}  // namespace shell
