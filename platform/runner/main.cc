// SPDX-License-Identifier: Apache-2.0
// avc-run: runs scripts against live A/V Control objects.
#include <glib.h>

#include <cstdio>

#include "platform/runner/script_runner.h"
#include "platform/shell/library_paths.h"
#include "platform/shell/sound_recorder.h"
#include "platform/shell/standard_streams.h"
#include "platform/shell/trace.h"

namespace runner {

namespace {

constexpr int kIdleWaitMilliseconds = 5000;

int fail(const std::string& error) {
  std::fprintf(stderr, "avc-run: %s\n", error.c_str());
  return kExitUsage;
}

std::string fileUrl(const std::string& path) {
  char* const absolute = g_canonicalize_filename(path.c_str(), nullptr);
  char* const url = g_filename_to_uri(absolute, nullptr, nullptr);
  std::string out = url == nullptr ? "" : url;
  g_free(url);
  g_free(absolute);
  return out;
}

bool readScripts(const std::vector<std::string>& paths, std::vector<Script>& out, std::string& error) {
  for (const std::string& path : paths) {
    out.push_back({path, ""});
    if (!readTextFile(path, out.back().text, error)) return false;
  }
  return true;
}

std::unique_ptr<shell::MediaLibrary> loadMediaLibrary(const Options& options, std::string& error) {
  const std::string path = options.mediaLibrary.empty() ? shell::defaultMediaLibraryPath() : options.mediaLibrary;
  auto library = shell::MediaLibrary::load(path, error);
  if (library == nullptr) error += "; give another one with --media-library";
  if (library == nullptr || options.snapshot.path.empty() || library->hasPlane()) return library;
  error = path + " has no video plane to take a snapshot of; leave --snapshot out or give another --media-library";
  return nullptr;
}

std::shared_ptr<pluginhost::PluginLibrary> loadPlugin(const Options& options, std::string& error) {
  auto library = pluginhost::PluginLibrary::load(options.plugin.empty() ? shell::defaultPluginPath() : options.plugin, error);
  if (library == nullptr) error += "; give another one with --plugin";
  return library;
}

// @return false, with a line for each on standard error, when what the run was to leave behind is not whole.
bool finishRecords(shell::Trace* trace, shell::SoundRecorder* recorder) {
  std::string error;
  const bool traced = trace == nullptr || trace->finish(error);
  if (!traced) fail(error);
  const bool recorded = recorder == nullptr || recorder->finish(error);
  if (!recorded) fail(error);
  return traced && recorded;
}

// Everything that the run needs goes in the reverse order: the objects, the plugin, the trace, the media library. The plugin stays
// until the media library is at rest: a callback that was on its way when its player closed still runs the plugin's code.
int runWith(const Options& options, const std::vector<Script>& scripts) {
  std::string error;
  const auto media = loadMediaLibrary(options, error);
  if (media == nullptr) return fail(error);
  if (!options.languages.empty() && !media->preferLanguages(options.languages)) {
    return fail("this media library does not ask for languages; leave --languages out or give another --media-library");
  }
  if (options.subtitleSettings && !media->changeSubtitleSettings(*options.subtitleSettings)) {
    return fail("this media library takes no subtitle settings; leave --subtitle-settings out or give another --media-library");
  }
  const auto recorder = options.recordingFile.empty() ? nullptr : shell::SoundRecorder::start(*media, options.recordingFile, error);
  if (!error.empty()) return fail(error);
  const auto trace = options.traceFile.empty() ? nullptr : shell::Trace::open(options.traceFile, error);
  if (!error.empty() || !options.protection.apply(*media, error)) return fail(error);
  const auto plugin = loadPlugin(options, error);
  if (plugin == nullptr) return fail(error);
  const std::string url = options.documentUrl.empty() ? fileUrl(options.scripts.front()) : options.documentUrl;
  int status = 0;
  {
    ScriptRunner runner(options, url, plugin, *media);
    status = runner.run(scripts);
  }
  if (!media->waitIdle(kIdleWaitMilliseconds)) std::fprintf(stderr, "avc-run: warning: the media library did not come to rest\n");
  const bool isWhole = finishRecords(trace.get(), recorder.get());
  return status == 0 && !isWhole ? kExitUncaught : status;
}

int runMain(int argc, char** argv) {
  Options options;
  std::string error;
  if (!parseOptions(argc, argv, options, error)) return fail(error);
  if (options.help) std::fputs(helpText().c_str(), stdout);
  if (options.version) std::fputs(versionText().c_str(), stdout);
  if (options.help || options.version) return 0;
  std::vector<Script> scripts;
  if (!readScripts(options.scripts, scripts, error)) return fail(error);
  return runWith(options, scripts);
}

}  // namespace

}  // namespace runner

int main(int argc, char** argv) {
  shell::openStandardStreams();
  return runner::runMain(argc, argv);
}
