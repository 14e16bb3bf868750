// SPDX-License-Identifier: Apache-2.0
// Values of options that several shells take, as their users write them. Thread: any.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/shell/media_library.h"

namespace shell {

/// Read without the process's locale: "1.5" is one and a half everywhere. @return false for anything but 0 and more.
AVCSHELL_API bool parseSeconds(std::string_view text, double& out);

struct PictureFile {
  std::string path;
  std::optional<double> seconds;
};

/// "FILE.png" or "FILE.png@SECONDS". @return false, with one line in @p error that begins with the option's @p name, for anything
/// else.
AVCSHELL_API bool readPictureFile(const std::string& name, const std::string& value, PictureFile& out, std::string& error);

/// ISO 639-2 codes, "deu,eng". @return false, with one line in @p error that begins with the option's @p name, for anything else.
AVCSHELL_API bool checkLanguages(const std::string& name, const std::string& value, std::string& error);

}  // namespace shell
