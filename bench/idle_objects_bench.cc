// SPDX-License-Identifier: Apache-2.0
// Time and memory of idle objects, by their number. Memory is the growth of the process's resident pages without those of the
// players' worker threads: a thread's stack is counted apart, with objects that hold only such a thread.
#include <benchmark/benchmark.h>
#include <pthread.h>
#include <semaphore.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <vector>

#include "host/corvel_native.h"
#include "platform/pluginhost/shell.h"

namespace {

double residentBytes() {
  long total = 0;
  long resident = 0;
  FILE* const file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr) return 0;
  if (std::fscanf(file, "%ld %ld", &total, &resident) != 2) resident = 0;
  std::fclose(file);
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE));
}

void BM_IdleObjects(benchmark::State& state) {
  pluginhost::EventQueue events([] {});
  double bytes = 0;
  for (auto _ : state) {
    const double before = residentBytes();
    std::vector<std::shared_ptr<CorvelNativePluginBase>> objects(static_cast<std::size_t>(state.range(0)));
    for (auto& object : objects) {
      if (!corvelCreatePlugin(&object)) state.SkipWithError("no plugin object");
    }
    bytes = std::max(bytes, residentBytes() - before);  // later rounds reuse what the first one took
    state.PauseTiming();
    for (auto& object : objects) object->willBeDestroyed();
    objects.clear();
    state.ResumeTiming();
  }
  state.counters["KiB_per_object"] = bytes / 1024 / static_cast<double>(state.range(0));
}
BENCHMARK(BM_IdleObjects)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Iterations(3)->UseRealTime();

void* waitThread(void* semaphore) {
  sem_wait(static_cast<sem_t*>(semaphore));
  return nullptr;
}

/// What the threads alone cost: as many, waiting as an idle player's worker does.
void BM_IdleThreads(benchmark::State& state) {
  double bytes = 0;
  for (auto _ : state) {
    sem_t end;
    sem_init(&end, 0, 0);
    const double before = residentBytes();
    std::vector<pthread_t> threads(static_cast<std::size_t>(state.range(0)));
    for (auto& thread : threads) pthread_create(&thread, nullptr, waitThread, &end);
    bytes = std::max(bytes, residentBytes() - before);  // later rounds reuse what the first one took
    state.PauseTiming();
    for (std::size_t i = 0; i < threads.size(); ++i) sem_post(&end);
    for (const auto thread : threads) pthread_join(thread, nullptr);
    sem_destroy(&end);
    state.ResumeTiming();
  }
  state.counters["KiB_per_thread"] = bytes / 1024 / static_cast<double>(state.range(0));
}
BENCHMARK(BM_IdleThreads)->Arg(1)->Arg(10)->Arg(100)->Arg(1000)->Iterations(3)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
