// SPDX-License-Identifier: Apache-2.0
#include "platform/shell/library_paths.h"

#include <filesystem>
#include <system_error>

namespace shell {

namespace {

std::string besideProgram(const char* file) {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  const std::filesystem::path root = program.parent_path().parent_path();
  const std::filesystem::path inTree = root / "lib" / file;
  const std::filesystem::path installed = root / AVC_INSTALL_LIBDIR / file;
  return std::filesystem::exists(installed, error) ? installed.string() : inTree.string();
}

}  // namespace

std::string defaultPluginPath() { return besideProgram("libavcontrol.so"); }
std::string defaultMediaLibraryPath() { return besideProgram("libmediamgmnt.so"); }

}  // namespace shell
