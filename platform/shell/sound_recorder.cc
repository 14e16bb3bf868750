// SPDX-License-Identifier: Apache-2.0
#include "platform/shell/sound_recorder.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <system_error>
#include <vector>

namespace shell {

namespace {

constexpr std::uint32_t kChannels = 2;
constexpr std::uint32_t kRate = 48000;
constexpr std::uint32_t kFrameBytes = kChannels * sizeof(std::int16_t);
constexpr std::size_t kHeaderBytes = 44;

/// A block that is due this near to the end of the one before follows it: clocks tremble, sound does not.
constexpr std::uint64_t kSeam = kRate / 10;

void put(std::array<unsigned char, kHeaderBytes>& header, std::size_t at, std::uint32_t value, std::size_t bytes) {
  for (std::size_t i = 0; i < bytes; ++i) header[at + i] = static_cast<unsigned char>(value >> (8 * i));
}

std::int16_t mixed(std::int16_t one, std::int16_t other) {
  using Limits = std::numeric_limits<std::int16_t>;
  return static_cast<std::int16_t>(std::clamp(one + other, int{Limits::min()}, int{Limits::max()}));
}

// A disc that fills up takes the first part, and says only of the next one why it takes no more.
bool writeAll(int file, const void* data, std::size_t bytes, off_t at) {
  const auto* const first = static_cast<const unsigned char*>(data);
  std::size_t done = 0;
  while (done < bytes) {
    const ssize_t written = pwrite(file, first + done, bytes - done, at + static_cast<off_t>(done));
    if (written < 0) return false;
    done += static_cast<std::size_t>(written);
  }
  return true;
}

off_t offsetOf(std::uint64_t frame) { return static_cast<off_t>(kHeaderBytes + frame * kFrameBytes); }

}  // namespace

std::unique_ptr<SoundRecorder> SoundRecorder::start(const MediaLibrary& media, const std::string& path, std::string& error) {
  const int file = open(path.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) {
    error = "cannot write the recording " + path + ": " + std::generic_category().message(errno);
    return nullptr;
  }
  std::unique_ptr<SoundRecorder> recorder(new SoundRecorder(media, file, path));
  if (media.tapSound(&SoundRecorder::onSound, recorder.get())) return recorder;
  error = "this media library lets nobody listen; leave --record-audio out or give another --media-library";
  return nullptr;
}

SoundRecorder::~SoundRecorder() { close(); }

bool SoundRecorder::finish(std::string& error) {
  close();
  if (m_failure == 0) return true;
  error = "the recording " + m_path + " is not whole: " + std::generic_category().message(m_failure);
  return false;
}

void SoundRecorder::close() {
  if (m_file < 0) return;
  m_media.tapSound(nullptr, nullptr);
  writeHeader();
  if (::close(std::exchange(m_file, -1)) != 0) rememberFailure();
}

void SoundRecorder::rememberFailure() {
  if (m_failure == 0) m_failure = errno;
}

void SoundRecorder::onSound(const MediaSound* sound, void* self) { static_cast<SoundRecorder*>(self)->write(*sound); }

std::uint64_t SoundRecorder::placeOf(const MediaSound& sound) const {
  const double seconds = std::chrono::duration<double>(Clock::now() - m_start).count();
  const auto due = static_cast<std::uint64_t>(seconds * kRate);
  const auto before = m_ends.find(sound.player);
  if (before == m_ends.end()) return due;
  const std::uint64_t gap = due > before->second ? due - before->second : before->second - due;
  return gap < kSeam ? before->second : std::max(due, before->second);
}

/// What cannot be written is missing from the recording, and the end tells so.
void SoundRecorder::write(const MediaSound& sound) {
  if (sound.channels != kChannels || sound.rate != kRate || sound.frames == 0) return;
  const std::lock_guard lock(m_mutex);
  const std::uint64_t place = placeOf(sound);
  std::vector<std::int16_t> samples(std::size_t{sound.frames} * kChannels);
  const ssize_t there = pread(m_file, samples.data(), samples.size() * sizeof(std::int16_t), offsetOf(place));
  if (there < 0) return rememberFailure();
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = mixed(samples[i], sound.samples[i]);
  if (!writeAll(m_file, samples.data(), samples.size() * sizeof(std::int16_t), offsetOf(place))) return rememberFailure();
  m_ends[sound.player] = place + sound.frames;
  m_frames = std::max(m_frames, place + sound.frames);
}

void SoundRecorder::writeHeader() {
  const auto bytes = static_cast<std::uint32_t>(std::min<std::uint64_t>(m_frames * kFrameBytes, UINT32_MAX - kHeaderBytes));
  std::array<unsigned char, kHeaderBytes> header{};
  std::memcpy(header.data(), "RIFF", 4);
  put(header, 4, bytes + kHeaderBytes - 8, 4);
  std::memcpy(header.data() + 8, "WAVEfmt ", 8);
  put(header, 16, 16, 4);  // bytes of the format that follows
  put(header, 20, 1, 2);   // plain samples
  put(header, 22, kChannels, 2);
  put(header, 24, kRate, 4);
  put(header, 28, kRate * kFrameBytes, 4);
  put(header, 32, kFrameBytes, 2);
  put(header, 34, 16, 2);  // bits a sample
  std::memcpy(header.data() + 36, "data", 4);
  put(header, 40, bytes, 4);
  if (!writeAll(m_file, header.data(), header.size(), 0)) rememberFailure();
}

}  // namespace shell
