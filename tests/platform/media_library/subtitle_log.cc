// SPDX-License-Identifier: Apache-2.0
#include "subtitle_log.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <stdexcept>

namespace {

std::mutex mutex;
std::condition_variable changed;
std::map<unsigned long, Notices> logs;  // guarded by mutex

std::string textOf(const _TextTrackText& text) { return {text.text, static_cast<std::size_t>(text.length)}; }

void onTextTrack(unsigned long handle, _TextTrackEventType type, void* data) {
  char position[64] = "-1";
  getPlayerProperty(handle, "POSITION", position, sizeof position);
  const auto* const texts = static_cast<const _TextTrackText*>(data);
  Notice notice{type, "", "", std::atof(position)};
  if (type == TTML_SUBTITLE || type == TTML_SUBTITLE_FONT) notice.first = textOf(texts[0]);
  if (type == TTML_SUBTITLE_FONT) notice.second = textOf(texts[1]);
  std::lock_guard lock(mutex);
  if (const auto log = logs.find(handle); log != logs.end()) log->second.push_back(std::move(notice));
  changed.notify_all();
}

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.good()) << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

SubtitleLog::SubtitleLog(const TestPlayer& player) : m_handle(player.handle()) {
  std::lock_guard lock(mutex);
  logs[m_handle];
  EXPECT_NE(registerTextTrackCallback(m_handle, onTextTrack), 0);
}

SubtitleLog::~SubtitleLog() {
  std::lock_guard lock(mutex);
  logs.erase(m_handle);
}

Notices SubtitleLog::notices() const {
  std::lock_guard lock(mutex);
  return logs[m_handle];
}

Notices SubtitleLog::documents() const {
  Notices all = notices();
  std::erase_if(all, [](const Notice& each) { return each.type != TTML_SUBTITLE; });
  return all;
}

std::string SubtitleLog::signals() const {
  std::string text;
  for (const Notice& each : notices()) {
    if (each.type == TTML_SUBTITLE_SHOW) text += " SHOW";
    if (each.type == TTML_SUBTITLE_HIDE) text += " HIDE";
    if (each.type == TTML_SUBTITLE_CHANGE) text += " CHANGE";
    if (each.type == TTML_SUBTITLE_FONT) text += " FONT";
    EXPECT_GE(each.type, TTML_SUBTITLE) << "tracks and cues are not announced";
  }
  return text.empty() ? text : text.substr(1);
}

void SubtitleLog::forget() {
  std::lock_guard lock(mutex);
  logs[m_handle].clear();
}

void SubtitleLog::waitFor(const std::function<bool(const SubtitleLog&)>& condition, const char* what) const {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(40);
  while (!condition(*this)) {
    std::unique_lock lock(mutex);
    if (changed.wait_until(lock, std::min(deadline, std::chrono::steady_clock::now() + std::chrono::milliseconds(20))) ==
            std::cv_status::timeout &&
        std::chrono::steady_clock::now() > deadline) {
      throw std::runtime_error(std::string("waited in vain for ") + what + ": " + std::to_string(logs[m_handle].size()) +
                               " notices");
    }
  }
}

void SubtitleLog::waitForDocuments(std::size_t count) const {
  waitFor([count](const SubtitleLog& log) { return log.documents().size() >= count; }, "documents");
}

void SubtitleLog::waitForDocumentAt(const Samples& samples, double position) const {
  const Sample* const sample = sampleAt(samples, position);
  ASSERT_NE(sample, nullptr) << position;
  waitFor(
      [sample](const SubtitleLog& log) {
        const Notices documents = log.documents();
        return !documents.empty() && documents.back().first == sample->text;
      },
      "the document of the place");
}

Samples samplesOf(const std::string& set, const std::string& language) {
  const std::string folder = AVC_SAMPLE_MEDIA "/" + set + "text/";
  std::ifstream index(folder + language + ".txt");
  EXPECT_TRUE(index.good()) << folder << language;
  Samples samples;
  Sample sample;
  for (std::string file; index >> sample.start >> sample.end >> file;) {
    sample.text = readFile(folder + file);
    samples.push_back(sample);
  }
  return samples;
}

const Sample* sampleAt(const Samples& samples, double position) {
  for (const Sample& each : samples) {
    if (position >= each.start && position < each.end) return &each;
  }
  return nullptr;
}
