// SPDX-License-Identifier: Apache-2.0
// The command line of avc-browser and its configuration file. Options of the command line win.
#pragma once

#include <string>
#include <vector>

#include "platform/browser/film.h"
#include "platform/browser/preferences.h"
#include "platform/shell/protection_options.h"

namespace browser {

inline constexpr int kExitFailed = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitTimeout = 3;

/// One thing to do with the loaded page, after the one before is done.
struct Step {
  enum class Kind { script, keys, wait, screenshot, status };
  Kind kind;
  std::string text;               ///< script: file; wait: expression; screenshot: file
  std::vector<std::string> keys;  ///< keys: names of the remote control's keys
  double seconds = 0;             ///< screenshot: not earlier than so long after the page was loaded
};

struct Options {
  std::string url;
  std::string mediaLibrary;  ///< empty: the default one
  std::string plugin;
  std::string traceFile;
  std::string filmFile;          ///< empty: none
  WindowPart filmPart;           ///< what of the window belongs into it
  std::string subtitleSettings;  ///< "VALUE:TEXT"; empty for none
  std::vector<Step> steps;
  double quitSeconds = 0;  ///< 0: never by itself
  int width = 1280;
  int height = 720;
  bool overlay = false;
  bool fullScreen = false;
  bool keepNothing = false;  ///< cookies and local storage end with the program
  bool sandbox = false;
  bool help = false;
  bool version = false;
  Preferences preferences;
  shell::ProtectionOptions protection;
};

/// Reads the command line and, for what it leaves open, the configuration file.
/// @return false, with one line in @p error that says how to mend it, for one that is wrong.
bool parseOptions(int argc, const char* const* argv, const std::string& configurationFile, Options& out, std::string& error);
/// An address as it is, a file as its file: address.
std::string addressOf(const std::string& urlOrFile);

}  // namespace browser
