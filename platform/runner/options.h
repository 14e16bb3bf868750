// SPDX-License-Identifier: Apache-2.0
// The command line of avc-run.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/mediamgmnt.h"
#include "platform/shell/option_values.h"
#include "platform/shell/protection_options.h"

namespace runner {

inline constexpr int kExitUncaught = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitTimeout = 3;

struct Options {
  std::vector<std::string> scripts;
  std::vector<std::string> scriptArguments;  ///< what follows "--"
  std::string mediaLibrary;                  ///< empty: the default one
  std::string plugin;
  std::string documentUrl;
  std::string traceFile;
  std::string recordingFile;
  std::string languages;
  std::optional<_SubtitleSettingsParams> subtitleSettings;
  shell::PictureFile snapshot;  ///< without a path: none; without seconds: at the end
  double timeoutSeconds = 0;    ///< 0: none
  shell::ProtectionOptions protection;
  bool quiet = false;
  bool help = false;
  bool version = false;
};

/// @return false, with one line in @p error that says how to mend it, for a command line that is wrong.
bool parseOptions(int argc, const char* const* argv, Options& out, std::string& error);
std::string helpText();
std::string versionText();

}  // namespace runner
