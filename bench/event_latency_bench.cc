// SPDX-License-Identifier: Apache-2.0
// How long a status word takes to its event handler, and a command to the media library, each beside the bare mechanism it rests
// on: a semaphore hand-over to another thread, and a wake-up of the main loop.
#include <benchmark/benchmark.h>
#include <glib.h>
#include <semaphore.h>

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include "bench/quiet_media_library.h"
#include "host/corvel_native.h"
#include "platform/pluginhost/shell.h"
#include "player/player.h"

namespace {

/// Wakes the default main context, as a shell does, and runs the work there.
class MainLoopWake {
 public:
  explicit MainLoopWake(std::function<void()> work) : m_work(std::move(work)) {}

  void wake() {
    GSource* const source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source,
        [](gpointer self) -> gboolean {
          static_cast<MainLoopWake*>(self)->m_work();
          return G_SOURCE_REMOVE;
        },
        this, nullptr);
    g_source_attach(source, nullptr);
    g_source_unref(source);
  }

 private:
  std::function<void()> m_work;
};

/// A thread that plays the media library: does one thing each time it is asked.
class Sender {
 public:
  explicit Sender(std::function<void()> work) : m_work(std::move(work)) {
    sem_init(&m_ask, 0, 0);
    m_thread = std::thread([this] { run(); });
  }
  ~Sender() {
    m_end = true;
    sem_post(&m_ask);
    m_thread.join();
    sem_destroy(&m_ask);
  }
  void ask() { sem_post(&m_ask); }

 private:
  void run() {
    for (;;) {
      sem_wait(&m_ask);
      if (m_end) return;
      m_work();
    }
  }

  std::function<void()> m_work;
  std::atomic<bool> m_end{false};
  sem_t m_ask;
  std::thread m_thread;
};

/// Runs the main loop until @p arrived, which the loop's own work sets.
void runUntil(bool& arrived) {
  while (!arrived) g_main_context_iteration(nullptr, TRUE);
  arrived = false;
}

/// The floor: library thread -> semaphore -> worker thread -> main loop.
void BM_BareHandOverToMainLoop(benchmark::State& state) {
  bool arrived = false;
  MainLoopWake loop([&arrived] { arrived = true; });
  Sender worker([&loop] { loop.wake(); });
  Sender library([&worker] { worker.ask(); });
  for (auto _ : state) {
    library.ask();
    runUntil(arrived);
  }
}
BENCHMARK(BM_BareHandOverToMainLoop)->UseRealTime();

/// The same way through the plugin: a status word that goes through the player's queue, its query, and the event queue.
void BM_StatusWordToHandler(benchmark::State& state) {
  bool arrived = false;
  pluginhost::EventQueue* queue = nullptr;
  MainLoopWake loop([&] {
    queue->drain([&arrived](CorvelNativePluginBase&, const pluginhost::Event& event) {
      if (event.name == "onPlaySpeedChanged") arrived = true;
    });
  });
  pluginhost::EventQueue events([&loop] { loop.wake(); });
  queue = &events;
  std::shared_ptr<CorvelNativePluginBase> plugin;
  if (!corvelCreatePlugin(&plugin)) state.SkipWithError("no plugin object");
  const unsigned long handle = plugin->getNativePlayerHandle();
  {
    Sender library([handle] { quiet::sendWord(handle, mediamgmnt::status::kPlaySpeedChanged); });
    for (auto _ : state) {
      library.ask();
      runUntil(arrived);
    }
  }
  plugin->willBeDestroyed();
}
BENCHMARK(BM_StatusWordToHandler)->UseRealTime();

sem_t g_seekArrived;

/// The floor: one semaphore hand-over to a worker and one back.
void BM_BareHandOverToWorker(benchmark::State& state) {
  sem_init(&g_seekArrived, 0, 0);
  {
    Sender worker([] { sem_post(&g_seekArrived); });
    for (auto _ : state) {
      worker.ask();
      sem_wait(&g_seekArrived);
    }
  }
  sem_destroy(&g_seekArrived);
}
BENCHMARK(BM_BareHandOverToWorker)->UseRealTime();

/// A command on the player's queue until the media library's command, and one hand-over back.
void BM_QueuedCommandToLibrary(benchmark::State& state) {
  sem_init(&g_seekArrived, 0, 0);
  quiet::onSeek([] { sem_post(&g_seekArrived); });
  {
    Player player(openPlayer(1), nullptr);
    for (auto _ : state) {
      if (!player.seek(1000.0)) state.SkipWithError("the command was refused");
      sem_wait(&g_seekArrived);
    }
  }
  quiet::onSeek(nullptr);
  sem_destroy(&g_seekArrived);
}
BENCHMARK(BM_QueuedCommandToLibrary)->UseRealTime();

/// A script's seek() until the media library's command, and one hand-over back. It goes through the row, the state machine and a
/// duration query on its way to the queue.
void BM_ScriptSeekToLibrary(benchmark::State& state) {
  sem_init(&g_seekArrived, 0, 0);
  quiet::onSeek([] { sem_post(&g_seekArrived); });
  std::shared_ptr<CorvelNativePluginBase> plugin;
  if (!corvelCreatePlugin(&plugin)) state.SkipWithError("no plugin object");
  const auto seek = static_cast<unsigned int>(pluginhost::findMethod(*plugin, "seek"));
  _CorvelNativeVariant position;
  cvnplUtil::set(1000, position);
  _CorvelNativeVariant result;
  for (auto _ : state) {
    pluginhost::callMethod(*plugin, seek, &position, 1, result);
    sem_wait(&g_seekArrived);
  }
  quiet::onSeek(nullptr);
  plugin->willBeDestroyed();
  plugin.reset();
  sem_destroy(&g_seekArrived);
}
BENCHMARK(BM_ScriptSeekToLibrary)->UseRealTime();

void readRow(benchmark::State& state, const char* name) {
  std::shared_ptr<CorvelNativePluginBase> plugin;
  if (!corvelCreatePlugin(&plugin)) state.SkipWithError("no plugin object");
  const auto row = static_cast<unsigned int>(pluginhost::findProperty(*plugin, name));
  _CorvelNativeVariant value;
  for (auto _ : state) benchmark::DoNotOptimize(pluginhost::readProperty(*plugin, row, value));
  plugin->willBeDestroyed();
}

/// Through the host alone, no script engine: a stored row and one that asks the library.
void BM_HostReadsStoredRow(benchmark::State& state) { readRow(state, "playState"); }
BENCHMARK(BM_HostReadsStoredRow);
void BM_HostReadsQueriedRow(benchmark::State& state) { readRow(state, "speed"); }
BENCHMARK(BM_HostReadsQueriedRow);

}  // namespace

BENCHMARK_MAIN();
