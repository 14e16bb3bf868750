// SPDX-License-Identifier: Apache-2.0
// Components as a page uses them, over a media library and a page that describe them in any words. The first line of an input is
// what the library answers to every read; each further line is a subtitle that the page describes itself.
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/fuzz_element.h"
#include "fuzz/quiet_media_library.h"

namespace {

using ScriptObject = std::shared_ptr<CorvelNativePropertyBase>;

constexpr int kIndices[] = {0, 1, 2, 9, 10, std::numeric_limits<int>::max()};
constexpr std::size_t kLongestRecord = 4095;

ScriptObject call(CorvelNativePropertyBase& object, const char* method, const _CorvelNativeVariant& argument) {
  _CorvelNativeVariant result;
  if (!pluginhost::callMethod(object, method, &argument, 1, result) || result.details.type != CORVEL_OBJECT) return nullptr;
  return result.object.object;
}

ScriptObject call(CorvelNativePropertyBase& object, const char* method, int argument) {
  _CorvelNativeVariant value;
  cvnplUtil::set(argument, value);
  return call(object, method, value);
}

/// Every row, and of a text every byte.
void readRows(CorvelNativePropertyBase& component) {
  for (const pluginhost::RowInfo& row : pluginhost::propertyRows(component)) {
    _CorvelNativeVariant value;
    fuzz::require(pluginhost::readProperty(component, row.name, value), "every row of a component can be read");
    if (value.details.type != CORVEL_STRING) continue;
    const std::string text(value.string.text, value.string.length);
    fuzz::require(text.find('|') == std::string::npos, "a text ends where its field ends");
    fuzz::require(text.size() <= kLongestRecord, "a text is no longer than what the library may say");
  }
}

void useCollection(AVControlPlugin& plugin, const ScriptObject& collection, std::vector<ScriptObject>& kept) {
  if (collection == nullptr) return;
  kept.push_back(collection);
  _CorvelNativeVariant length;
  fuzz::require(pluginhost::readProperty(*collection, "length", length), "a length can be read");
  for (const int index : kIndices) {
    const ScriptObject component = call(*collection, "item", index);
    if (component == nullptr) continue;
    readRows(*component);
    _CorvelNativeVariant argument;
    cvnplUtil::set(component, argument);
    call(plugin, "selectComponent", argument);
    call(plugin, "unselectComponent", argument);
    kept.push_back(component);
  }
}

void askAboutSubtitles(AVControlPlugin& plugin) {
  for (int index = -2; index < 13; ++index) {
    char* text = nullptr;
    if (!plugin.getComponentInfo(index, text)) continue;
    const std::unique_ptr<char, decltype(&std::free)> owned(text, &std::free);
    fuzz::require(std::string(text).size() < 1024, "a described subtitle fits its buffer");
  }
}

/// What script keeps when the element is gone is empty, or shows what it had.
void useWhatIsKept(const std::vector<ScriptObject>& kept) {
  for (const ScriptObject& object : kept) {
    if (pluginhost::findMethod(*object, "item") < 0) {
      readRows(*object);
      continue;
    }
    _CorvelNativeVariant length;
    fuzz::require(pluginhost::readProperty(*object, "length", length) && length.integer == 0,
                  "a collection without element is empty");
    fuzz::require(call(*object, "item", 0) == nullptr, "and has no items");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  std::istringstream lines(std::string(reinterpret_cast<const char*>(bytes), size));
  std::string line;
  std::getline(lines, line);
  fuzz::setAnswer(line);
  std::vector<ScriptObject> kept;
  {
    fuzz::Element element;
    int described = 0;
    for (; std::getline(lines, line) && described < 12; ++described) {
      element.write("numOfSubtitles", described + 1);
      element.write("subParamAttr", line);
    }
    for (int type = -1; type < 4; ++type) {
      useCollection(element.plugin(), call(element.plugin(), "getComponents", type), kept);
      useCollection(element.plugin(), call(element.plugin(), "getCurrentActiveComponents", type), kept);
    }
    useCollection(element.plugin(), call(element.plugin(), "getComponents", _CorvelNativeVariant()), kept);
    askAboutSubtitles(element.plugin());
  }
  useWhatIsKept(kept);
  return 0;
}
