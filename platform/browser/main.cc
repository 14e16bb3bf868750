// SPDX-License-Identifier: Apache-2.0
// avc-browser: shows HbbTV applications as a television does.
#include <gtk/gtk.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

#include "platform/browser/browser.h"
#include "platform/browser/configuration_file.h"
#include "platform/browser/help_text.h"
#include "platform/browser/options.h"
#include "platform/shell/standard_streams.h"

namespace browser {

namespace {

int fail(const std::string& error) {
  std::fprintf(stderr, "avc-browser: %s\n", error.c_str());
  return kExitUsage;
}

// One that OpenGL may use.
bool hasGraphicsCard() {
  if (g_getenv("LIBGL_ALWAYS_SOFTWARE") != nullptr) return false;
  std::error_code problem;
  for (std::filesystem::directory_iterator at("/dev/dri", problem), end; !problem && at != end; at.increment(problem)) {
    const std::string node = at->path().string();
    if (node.starts_with("/dev/dri/renderD") && access(node.c_str(), R_OK | W_OK) == 0) return true;
  }
  return false;
}

void prepareEngine() {
  // With these it paints without transparency, and no video is to be seen.
  for (const char* name : {"WEBKIT_DISABLE_DMABUF_RENDERER", "WEBKIT_DISABLE_COMPOSITING_MODE"}) g_unsetenv(name);
  // OpenGL without a card is not safe to use from several threads at once, as the engine does to paint, and slower than painting
  // without it.
  if (!hasGraphicsCard()) g_setenv("WEBKIT_SKIA_ENABLE_CPU_RENDERING", "1", FALSE);
  // Nobody to tell: without a session bus the toolkit would only complain.
  if (g_getenv("DBUS_SESSION_BUS_ADDRESS") == nullptr) g_setenv("NO_AT_BRIDGE", "1", FALSE);
  // Every player brings a dozen threads, and the C library of the page's process would give each an arena of its own as long as
  // there are few. What the threads of one page leave in theirs, those of the next use again only when the arenas are the same.
  g_setenv("MALLOC_ARENA_MAX", "2", FALSE);
}

bool canWrite(const std::string& file) {
  std::FILE* const out = std::fopen(file.c_str(), "we");
  return out != nullptr && std::fclose(out) == 0;
}

int runMain(int argc, char** argv) {
  Options options;
  std::string error;
  if (!parseOptions(argc, argv, defaultConfigurationFile(), options, error)) return fail(error);
  if (options.help) std::fputs(helpText().c_str(), stdout);
  if (options.version) std::fputs(versionText().c_str(), stdout);
  if (options.help || options.version) return 0;
  if (!options.traceFile.empty() && !canWrite(options.traceFile)) return fail("cannot write the trace file " + options.traceFile);
  std::unique_ptr<Film> film;
  if (!options.filmFile.empty()) film = Film::open(options.filmFile, options.filmPart, error);
  if (!error.empty()) return fail(error);
  prepareEngine();
  if (!gtk_init_check(nullptr, nullptr)) return fail("no display; without one, start it with xvfb-run -a");
  setlocale(LC_NUMERIC, "C");  // NOLINT(concurrency-mt-unsafe): the toolkit has just set it; nobody reads numbers yet
  Browser browser(options, std::move(film));
  error = browser.wrongStep();
  return error.empty() ? browser.run() : fail(error);
}

}  // namespace

}  // namespace browser

int main(int argc, char** argv) {
  shell::openStandardStreams();
  return browser::runMain(argc, argv);
}
