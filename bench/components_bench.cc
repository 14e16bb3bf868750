// SPDX-License-Identifier: Apache-2.0
// What components cost: reading a record's text beside a plain copy of its fields, and a collection's "length" and "item" by the
// number of components that the media library lists. The library has its texts ready; one read of it is measured, too.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bench/quiet_media_library.h"
#include "components/component_records.h"
#include "platform/pluginhost/shell.h"

namespace {

constexpr char kVideo[] = "0|avc1.64001F|0|1|256|||0||1.777778|";
constexpr char kAudio[] = "1|mp4a.40.2|0|2|257|||0||Stereo|eng|0|2|";
constexpr char kSubtitle[] = "2|stpp.ttml.im1t|0|4|258|caption||0||Deutsch|deu|TTML|1|";

std::vector<std::string_view> fieldsOf(std::string_view record) {
  std::vector<std::string_view> fields;
  while (!record.empty()) {
    const std::size_t end = record.find('|');
    fields.push_back(record.substr(0, end));
    record.remove_prefix(end + 1);
  }
  return fields;
}

/// The least that anybody who wants the fields must do: they are known, and there is room for them.
void BM_CopyFields(benchmark::State& state, const char* record) {
  const std::vector<std::string_view> fields = fieldsOf(record);
  char room[256];
  for (auto _ : state) {
    char* to = room;
    for (const std::string_view field : fields) {
      std::memcpy(to, field.data(), field.size());
      to += field.size();
    }
    benchmark::DoNotOptimize(room);
    benchmark::ClobberMemory();
  }
}

/// The same with a block for each text, the record and its common record, as a record is laid out; all of them freed again.
void BM_CopyFieldsIntoBlocks(benchmark::State& state, const char* record, std::vector<std::size_t> texts) {
  const std::vector<std::string_view> fields = fieldsOf(record);
  std::vector<char*> blocks(texts.size());
  for (auto _ : state) {
    void* const common = std::calloc(1, sizeof(AVComponent));
    void* const own = std::calloc(1, sizeof(AVSubtitleComponent));
    benchmark::DoNotOptimize(common);
    benchmark::DoNotOptimize(own);
    for (std::size_t i = 0; i < texts.size(); ++i) {
      const std::string_view field = fields[texts[i]];
      blocks[i] = static_cast<char*>(std::malloc(field.size() + 1));
      std::memcpy(blocks[i], field.data(), field.size());
      blocks[i][field.size()] = '\0';
    }
    benchmark::ClobberMemory();
    for (char* const block : blocks) std::free(block);
    std::free(own);
    std::free(common);
  }
}

template <typename Record>
void BM_ReadRecord(benchmark::State& state, const char* record, Record* (*create)(char*), void (*destroy)(Record*)) {
  std::string text = record;
  for (auto _ : state) {
    Record* const made = create(text.data());
    if (made == nullptr) return state.SkipWithError("no record");
    benchmark::DoNotOptimize(made);
    destroy(made);
  }
}

BENCHMARK_CAPTURE(BM_CopyFields, video, kVideo);
BENCHMARK_CAPTURE(BM_CopyFieldsIntoBlocks, video, kVideo, {1, 5, 6, 8});
BENCHMARK_CAPTURE(BM_ReadRecord, video, kVideo, hlpCreateAVVideoComponent, hlpDestroyAVVideoComponent);
BENCHMARK_CAPTURE(BM_CopyFields, audio, kAudio);
BENCHMARK_CAPTURE(BM_CopyFieldsIntoBlocks, audio, kAudio, {1, 5, 6, 8, 9, 10});
BENCHMARK_CAPTURE(BM_ReadRecord, audio, kAudio, hlpCreateAVAudioComponent, hlpDestroyAVAudioComponent);
BENCHMARK_CAPTURE(BM_CopyFields, subtitle, kSubtitle);
BENCHMARK_CAPTURE(BM_CopyFieldsIntoBlocks, subtitle, kSubtitle, {1, 5, 6, 8, 9, 10, 11});
BENCHMARK_CAPTURE(BM_ReadRecord, subtitle, kSubtitle, hlpCreateAVSubtitleComponent, hlpDestroyAVSubtitleComponent);

/// An element over a library that lists so many audio components, and one of its collections.
class Listed {
 public:
  explicit Listed(int count) : m_events([] {}) {
    quiet::listAudio(count);
    if (!corvelCreatePlugin(&m_plugin)) std::abort();
  }
  Listed(const Listed&) = delete;
  Listed& operator=(const Listed&) = delete;
  ~Listed() { m_plugin->willBeDestroyed(); }

  /// @p type null: the collection of all.
  std::shared_ptr<CorvelNativePropertyBase> collection(const int* type) {
    _CorvelNativeVariant argument;
    if (type != nullptr) cvnplUtil::set(*type, argument);
    _CorvelNativeVariant result;
    if (!pluginhost::callMethod(*m_plugin, "getComponents", &argument, 1, result)) std::abort();
    return result.object.object;
  }

 private:
  pluginhost::EventQueue m_events;
  std::shared_ptr<CorvelNativePluginBase> m_plugin;
};

constexpr int kAudioType = 1;

void reportReads(benchmark::State& state, unsigned long before) {
  state.counters["library_reads"] =
      benchmark::Counter(static_cast<double>(quiet::reads() - before), benchmark::Counter::kAvgIterations);
}

void BM_LibraryRead(benchmark::State& state) {
  quiet::listAudio(static_cast<int>(state.range(0)));
  char key[64];
  std::snprintf(key, sizeof key, "%s%d", mediamgmnt::property::kAudioItemPrefix, static_cast<int>(state.range(0)) - 1);
  char text[4096];
  for (auto _ : state) {
    benchmark::DoNotOptimize(getPlayerProperty(1, key, text, sizeof text));
    benchmark::ClobberMemory();
  }
}

void readLengths(benchmark::State& state, const int* type) {
  const auto count = static_cast<int>(state.range(0));
  Listed listed(count);
  const auto collection = listed.collection(type);
  const auto row = static_cast<unsigned int>(pluginhost::findProperty(*collection, "length"));
  const unsigned long before = quiet::reads();
  for (auto _ : state) {
    _CorvelNativeVariant length;
    if (!pluginhost::readProperty(*collection, row, length) || length.integer != count) return state.SkipWithError("wrong length");
  }
  reportReads(state, before);
}

void BM_Length(benchmark::State& state) { readLengths(state, &kAudioType); }
void BM_LengthOfAll(benchmark::State& state) { readLengths(state, nullptr); }

/// Each item in turn, as a page's loop does.
void BM_Item(benchmark::State& state) {
  const auto count = static_cast<int>(state.range(0));
  Listed listed(count);
  const auto collection = listed.collection(&kAudioType);
  const auto row = static_cast<unsigned int>(pluginhost::findMethod(*collection, "item"));
  const unsigned long before = quiet::reads();
  _CorvelNativeVariant index;
  int next = 0;
  for (auto _ : state) {
    cvnplUtil::set(next, index);
    next = next + 1 < count ? next + 1 : 0;
    _CorvelNativeVariant item;
    if (!pluginhost::callMethod(*collection, row, &index, 1, item)) return state.SkipWithError("no item");
  }
  reportReads(state, before);
}

BENCHMARK(BM_LibraryRead)->Arg(1)->Arg(1000);
BENCHMARK(BM_Length)->Arg(1)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(BM_LengthOfAll)->Arg(1)->Arg(10)->Arg(100)->Arg(1000);
BENCHMARK(BM_Item)->Arg(1)->Arg(10)->Arg(100)->Arg(1000);

}  // namespace

BENCHMARK_MAIN();
