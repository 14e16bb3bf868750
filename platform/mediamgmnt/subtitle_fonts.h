// SPDX-License-Identifier: Apache-2.0
// Fonts that timed text asks for: those that a document brings or points at, and those that its manifest offers. Thread: any.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace mediamgmnt {

struct SubtitleFont {
  std::string family;
  std::string location;  ///< an absolute address, or a "data:" address that holds the font itself

  bool operator==(const SubtitleFont&) const = default;
};
using SubtitleFonts = std::vector<SubtitleFont>;

/// The fonts that @p document defines, in its order. Addresses are resolved against @p base. Nothing for what is not well-formed.
SubtitleFonts fontsDefinedIn(std::string_view document, const std::string& base);

/// Those of @p offered that @p document names.
SubtitleFonts fontsNamedIn(std::string_view document, const SubtitleFonts& offered);

/// @p reference as an absolute address; as it is when it cannot be resolved.
std::string resolvedAddress(const std::string& base, const std::string& reference);

}  // namespace mediamgmnt
