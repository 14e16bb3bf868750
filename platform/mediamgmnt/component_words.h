// SPDX-License-Identifier: Apache-2.0
// The commands and property keys about components, taken apart. Thread: any.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/mediamgmnt/components.h"

namespace mediamgmnt {

struct SelectionCommand {
  bool select = true;
  std::optional<ComponentKind> kind;  ///< none: by record
  std::optional<std::size_t> index;   ///< none: the default, or the whole kind
  std::string record;
};

/// @return nothing for another command, and for an argument that is no index, no type or no text.
std::optional<SelectionCommand> parseSelection(std::string_view name, std::string_view argument);

/// @return false when the components refuse it.
bool apply(const SelectionCommand& command, Components& components);

struct ComponentQuery {
  ComponentKind kind = ComponentKind::Video;
  bool active = false;
  std::optional<std::size_t> index;  ///< none: the length is asked for
};

/// @return nothing for another key.
std::optional<ComponentQuery> parseComponentQuery(std::string_view key);

}  // namespace mediamgmnt
