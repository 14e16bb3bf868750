// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/component_words.h"

#include <array>
#include <charconv>

#include "host/mediamgmnt.h"

namespace mediamgmnt {
namespace {

struct IndexedCommand {
  std::string_view name;
  bool select;
  ComponentKind kind;
};

constexpr std::array kIndexedCommands = {
    IndexedCommand{command::kSelectVideoComponent, true, ComponentKind::Video},
    IndexedCommand{command::kSelectAudioComponent, true, ComponentKind::Audio},
    IndexedCommand{command::kSelectSubtitleComponent, true, ComponentKind::Subtitle},
    IndexedCommand{command::kUnselectVideoComponent, false, ComponentKind::Video},
    IndexedCommand{command::kUnselectAudioComponent, false, ComponentKind::Audio},
    IndexedCommand{command::kUnselectSubtitleComponent, false, ComponentKind::Subtitle},
};

struct QueryKey {
  std::string_view length;
  std::string_view itemPrefix;
  ComponentKind kind;
  bool active;
};

constexpr std::array kQueryKeys = {
    QueryKey{property::kVideoLength, property::kVideoItemPrefix, ComponentKind::Video, false},
    QueryKey{property::kAudioLength, property::kAudioItemPrefix, ComponentKind::Audio, false},
    QueryKey{property::kSubtitleLength, property::kSubtitleItemPrefix, ComponentKind::Subtitle, false},
    QueryKey{property::kActiveVideoLength, property::kActiveVideoItemPrefix, ComponentKind::Video, true},
    QueryKey{property::kActiveAudioLength, property::kActiveAudioItemPrefix, ComponentKind::Audio, true},
    QueryKey{property::kActiveSubtitleLength, property::kActiveSubtitleItemPrefix, ComponentKind::Subtitle, true},
};

/// Digits and nothing else.
std::optional<std::size_t> wholeNumber(std::string_view text) {
  std::size_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = result.ec == std::errc() && result.ptr == text.data() + text.size();
  return whole ? std::optional<std::size_t>(number) : std::nullopt;
}

std::optional<SelectionCommand> byType(bool select, std::string_view argument) {
  const std::optional<std::size_t> type = wholeNumber(argument);
  if (!type || *type >= kComponentKinds.size()) return std::nullopt;
  return SelectionCommand{select, kComponentKinds[*type], std::nullopt, {}};
}

std::optional<SelectionCommand> byRecord(bool select, std::string_view argument) {
  if (argument.empty()) return std::nullopt;
  return SelectionCommand{select, std::nullopt, std::nullopt, std::string(argument)};
}

bool applyByRecord(const SelectionCommand& command, Components& components) {
  return command.select ? components.select(command.record) : components.unselect(command.record);
}

bool applyByIndex(const SelectionCommand& command, Components& components) {
  return command.select ? components.select(*command.kind, *command.index) : components.unselect(*command.kind, *command.index);
}

}  // namespace

std::optional<SelectionCommand> parseSelection(std::string_view name, std::string_view argument) {
  if (name == command::kSelectDefaultComponent) return byType(true, argument);
  if (name == command::kUnselectComponentByType) return byType(false, argument);
  if (name == command::kSelectComponent) return byRecord(true, argument);
  if (name == command::kUnselectComponent) return byRecord(false, argument);
  for (const IndexedCommand& each : kIndexedCommands) {
    if (each.name != name) continue;
    const std::optional<std::size_t> index = wholeNumber(argument);
    return index ? std::optional<SelectionCommand>({each.select, each.kind, index, {}}) : std::nullopt;
  }
  return std::nullopt;
}

bool apply(const SelectionCommand& command, Components& components) {
  if (!command.kind) return applyByRecord(command, components);
  if (command.index) return applyByIndex(command, components);
  if (command.select) {
    components.selectDefault(*command.kind);
  } else {
    components.unselect(*command.kind);
  }
  return true;
}

std::optional<ComponentQuery> parseComponentQuery(std::string_view key) {
  for (const QueryKey& each : kQueryKeys) {
    if (key == each.length) return ComponentQuery{each.kind, each.active, std::nullopt};
    if (key.substr(0, each.itemPrefix.size()) != each.itemPrefix) continue;
    const std::optional<std::size_t> index = wholeNumber(key.substr(each.itemPrefix.size()));
    return index ? std::optional<ComponentQuery>({each.kind, each.active, index}) : std::nullopt;
  }
  return std::nullopt;
}

}  // namespace mediamgmnt
