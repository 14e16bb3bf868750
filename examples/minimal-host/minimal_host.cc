// SPDX-License-Identifier: Apache-2.0
// The smallest host framework that the plugin runs in, and a program that uses it: it makes one object, sets its source, plays it
// to the end and prints the events. Everything of host/corvel_native.h is defined here, with nothing but the standard library.
// The exit status is 0 only when the play states came as they must.
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "examples/minimal-host/scripted_media_library.h"
#include "host/corvel_native.h"

// ---- Values -------------------------------------------------------------------------------------------------------------------

namespace {

/// Frees what the value owns and zeroes it: setters of text rows look at pointer and length only.
void clear(_CorvelNativeVariant& value) {
  if (value.details.type == CORVEL_STRING && value.string.owned != 0) std::free(const_cast<char*>(value.string.text));
  if (value.details.type == CORVEL_OBJECT) std::destroy_at(&value.object);
  std::construct_at(&value.string, _CorvelNativeString{nullptr, 0, 0});
  value.details.type = CORVEL_UNDEFINED;
}

void setText(_CorvelNativeVariant& out, const char* text, std::size_t length, bool copy) {
  char* owned = nullptr;
  if (text != nullptr && copy) {
    owned = static_cast<char*>(std::calloc(length + 1, 1));
    if (owned == nullptr) std::abort();
    std::memcpy(owned, text, length);
  }
  clear(out);
  out.details.type = CORVEL_STRING;
  out.string = {owned != nullptr ? owned : text, text != nullptr ? static_cast<std::uint32_t>(length) : 0,
                owned != nullptr ? 1U : 0U};
}

/// @p detach: borrowed texts are copied too.
void copyInto(const _CorvelNativeVariant& from, _CorvelNativeVariant& to, bool detach) {
  const CorvelNativeVariantDetails details = from.details;
  if (details.type == CORVEL_OBJECT) {
    cvnplUtil::set(from.object.object, to);
  } else if (details.type == CORVEL_STRING) {
    setText(to, from.string.text, from.string.length, detach || from.string.owned != 0);
  } else {
    const _CorvelNativeString bytes = from.string;
    clear(to);
    to.string = bytes;
  }
  to.details = details;
}

}  // namespace

_CorvelNativeVariant::_CorvelNativeVariant() : details{CORVEL_UNDEFINED, CORVEL_ORDINARY}, string{nullptr, 0, 0} {}

_CorvelNativeVariant::_CorvelNativeVariant(const _CorvelNativeVariant& other) : _CorvelNativeVariant() {
  copyInto(other, *this, false);
}

_CorvelNativeVariant& _CorvelNativeVariant::operator=(const _CorvelNativeVariant& other) {
  if (this != &other) copyInto(_CorvelNativeVariant(other), *this, false);
  return *this;
}

_CorvelNativeVariant::~_CorvelNativeVariant() { clear(*this); }

namespace cvnplUtil {

void set(bool value, _CorvelNativeVariant& out) {
  clear(out);
  out.details.type = CORVEL_BOOLEAN;
  out.boolean = value;
}

void set(int value, _CorvelNativeVariant& out) {
  clear(out);
  out.details.type = CORVEL_INTEGER;
  out.integer = value;
}

void set(unsigned long value, _CorvelNativeVariant& out) { set(static_cast<double>(value), out); }

void set(double value, _CorvelNativeVariant& out) {
  clear(out);
  out.details.type = CORVEL_DOUBLE;
  out.number = value;
}

void set(const char* text, _CorvelNativeVariant& out, bool copy) {
  setText(out, text, text == nullptr ? 0 : std::strlen(text), copy);
}

void set(const char* text, _CorvelNativeVariant& out, int length, bool copy) {
  setText(out, text, length < 0 ? 0 : static_cast<std::size_t>(length), copy);
}

void set(std::shared_ptr<CorvelNativePropertyBase> object, _CorvelNativeVariant& out) {
  clear(out);
  out.details.type = CORVEL_OBJECT;
  std::construct_at(&out.object, _CorvelNativeObject{std::move(object)});
}

}  // namespace cvnplUtil

// ---- Objects and their property values ----------------------------------------------------------------------------------------

namespace {

/// A stored value. A text is the plugin's own buffer: script reads what it holds at that moment.
using Stored = std::variant<bool, int, double, char*>;

Stored storedDefault(const _CorvelNativeVariant& value) {
  if (value.details.type == CORVEL_BOOLEAN) return value.boolean;
  if (value.details.type == CORVEL_INTEGER) return value.integer;
  if (value.details.type == CORVEL_DOUBLE) return value.number;
  return static_cast<char*>(nullptr);  // an empty text, or a slot for a handler
}

}  // namespace

struct CorvelNativeObjectState {
  CorvelNativeProperty* properties = nullptr;
  unsigned int propertyCount = 0;
  const CorvelNativeMethod* methods = nullptr;
  unsigned int methodCount = 0;

  std::mutex mutex;  ///< the plugin uses its values from any thread
  std::map<std::string, Stored, std::less<>> values;

  template <typename Value>
  bool get(const char* name, Value& out) {
    const std::lock_guard lock(mutex);
    const auto found = values.find(name);
    if (found == values.end() || !std::holds_alternative<Value>(found->second)) return false;
    out = std::get<Value>(found->second);
    return true;
  }

  template <typename Value>
  bool put(const char* name, Value value) {
    const std::lock_guard lock(mutex);
    const auto found = values.find(name);
    if (found == values.end() || !std::holds_alternative<Value>(found->second)) return false;
    found->second = value;
    return true;
  }
};

// The parent is not needed here, and it may be gone before its child.
CorvelNativePropertyBase::CorvelNativePropertyBase(CorvelNativePropertyBase*) : m_state(new CorvelNativeObjectState) {}
CorvelNativePropertyBase::~CorvelNativePropertyBase() { delete m_state; }
unsigned long CorvelNativePropertyBase::getNativePlayerHandle() { return 0; }
bool CorvelNativePropertyBase::getURLForMediaSynchroniser(char*&) { return false; }
bool CorvelNativePropertyBase::getPlayerType(char*&) { return false; }
int CorvelNativePropertyBase::getComponentNum() { return 0; }
bool CorvelNativePropertyBase::getComponentInfo(int, char*&) { return false; }
void CorvelNativePropertyBase::startOOBSubtitlePlayer(bool) {}
CorvelNativeObjectState* CorvelNativePropertyBase::state() const noexcept { return m_state; }

bool CorvelNativePropertyBase::install(CorvelNativeProperty* properties, unsigned int propertyCount,
                                       const CorvelNativeMethod* methods, unsigned int methodCount) {
  if ((properties == nullptr && propertyCount != 0) || (methods == nullptr && methodCount != 0)) return false;
  m_state->properties = properties;
  m_state->propertyCount = propertyCount;
  m_state->methods = methods;
  m_state->methodCount = methodCount;
  for (unsigned int i = 0; i < propertyCount; ++i) m_state->values[properties[i].name] = storedDefault(properties[i].defaultValue);
  return true;
}

bool CorvelNativePropertyBase::getProperty(const char* name, bool& out) { return m_state->get(name, out); }
bool CorvelNativePropertyBase::getProperty(const char* name, int& out) { return m_state->get(name, out); }
bool CorvelNativePropertyBase::getProperty(const char* name, double& out) { return m_state->get(name, out); }
bool CorvelNativePropertyBase::getProperty(const char* name, char*& out) { return m_state->get(name, out); }
bool CorvelNativePropertyBase::setProperty(const char* name, bool value) { return m_state->put(name, value); }
bool CorvelNativePropertyBase::setProperty(const char* name, int value) { return m_state->put(name, value); }
bool CorvelNativePropertyBase::setProperty(const char* name, double value) { return m_state->put(name, value); }
bool CorvelNativePropertyBase::setProperty(const char* name, char* text) { return m_state->put(name, text); }

// ---- Events -------------------------------------------------------------------------------------------------------------------

namespace {

struct Event {
  std::string name;
  std::vector<_CorvelNativeVariant> args;
};

/// The program's main loop has one source of work: this queue. Any thread fills it and none waits for the other side.
class EventQueue {
 public:
  void push(Event event) {
    const std::lock_guard lock(m_mutex);
    m_events.push_back(std::move(event));
    m_changed.notify_one();
  }

  /// @return false when no event came before the deadline.
  bool pop(Event& out, std::chrono::steady_clock::time_point deadline) {
    std::unique_lock lock(m_mutex);
    if (!m_changed.wait_until(lock, deadline, [this] { return !m_events.empty(); })) return false;
    out = std::move(m_events.front());
    m_events.pop_front();
    return true;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<Event> m_events;
};

EventQueue& events() {
  static EventQueue queue;
  return queue;
}

}  // namespace

CorvelNativePluginBase::CorvelNativePluginBase(CorvelNativePropertyBase* parent) : CorvelNativePropertyBase(parent) {}
CorvelNativePluginBase::~CorvelNativePluginBase() = default;

CorvelNativePluginBase* CorvelNativePluginBase::cast(CorvelNativePropertyBase* object) {
  return object != nullptr && object->type() == 0 ? static_cast<CorvelNativePluginBase*>(object) : nullptr;
}

bool CorvelNativePluginBase::dispatchEvent(const char* name, const _CorvelNativeVariant* args, unsigned int count) {
  if (name == nullptr || (args == nullptr && count != 0)) return false;
  Event event{name, std::vector<_CorvelNativeVariant>(count)};
  for (unsigned int i = 0; i < count; ++i) copyInto(args[i], event.args[i], true);  // the sender's texts end with its call
  events().push(std::move(event));
  return true;
}

// ---- What a script engine would do --------------------------------------------------------------------------------------------

namespace {

/// Script's `object.name = text`, for rows with a setter.
bool writeText(CorvelNativePropertyBase& object, std::string_view name, const char* text) {
  const CorvelNativeObjectState& state = *object.state();
  for (unsigned int i = 0; i < state.propertyCount; ++i) {
    const CorvelNativeProperty& row = state.properties[i];
    if (row.name != name || row.setter == nullptr) continue;
    _CorvelNativeVariant value;
    cvnplUtil::set(text, value, false);
    return row.setter(&object, &value);
  }
  return false;
}

/// Script's `object.name(number)`.
bool callWithNumber(CorvelNativePropertyBase& object, std::string_view name, int number) {
  const CorvelNativeObjectState& state = *object.state();
  for (unsigned int i = 0; i < state.methodCount; ++i) {
    if (state.methods[i].name != name) continue;
    _CorvelNativeVariant argument;
    cvnplUtil::set(number, argument);
    _CorvelNativeVariant result;
    return state.methods[i].function(&object, &argument, 1, &result) && result.details.type == CORVEL_BOOLEAN && result.boolean;
  }
  return false;
}

std::string shown(const _CorvelNativeVariant& value) {
  switch (value.details.type) {
    case CORVEL_BOOLEAN: return value.boolean ? "true" : "false";
    case CORVEL_INTEGER: return std::to_string(value.integer);
    case CORVEL_DOUBLE: return std::to_string(value.number);
    case CORVEL_STRING:
      return value.string.text == nullptr ? "null" : "\"" + std::string(value.string.text, value.string.length) + "\"";
    case CORVEL_OBJECT: return "object";
    default: return "undefined";
  }
}

void print(const Event& event) {
  std::string line = event.name + "(";
  for (std::size_t i = 0; i < event.args.size(); ++i) line += (i == 0 ? "" : ", ") + shown(event.args[i]);
  std::puts((line + ")").c_str());
}

constexpr int kFinished = 5;
constexpr int kSpeedChanges = 2;  ///< to 1 when it plays, to 0 when it has ended

/// Prints the events until the media has ended. @return the play states in their order.
/// The states come from the library's thread and the speeds from the player's own, so the last speed may follow the last state.
std::vector<int> statesUntilFinished() {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  std::vector<int> states;
  int speedChanges = 0;
  Event event;
  while ((states.empty() || states.back() != kFinished || speedChanges < kSpeedChanges) && events().pop(event, deadline)) {
    print(event);
    if (event.name == "onPlaySpeedChanged") ++speedChanges;
    if (event.name == "onPlayStateChange") states.push_back(event.args.at(0).integer);
  }
  return speedChanges == kSpeedChanges ? states : std::vector<int>{};
}

int fail(const char* reason) {
  std::fprintf(stderr, "minimal_host: %s\n", reason);
  return 1;
}

int playToTheEnd(CorvelNativePluginBase& object) {
  constexpr char kPage[] = "http://app.example/index.html";
  object.setDocumentUrl(kPage, sizeof(kPage) - 1);
  object.setWindowProperties(0, 0, 1280, 720);
  if (!writeText(object, "data", "http://media.example/film.mp4")) return fail("the source was refused");
  if (!callWithNumber(object, "play", 1)) return fail("play was refused");
  scriptedMediaBegin();
  // Connecting, the library is ready (7 is no state but is reported as one), buffering, playing, finished.
  const std::vector<int> expected{3, 7, 4, 1, kFinished};
  return statesUntilFinished() == expected ? 0 : fail("the play states did not come as 3, 7, 4, 1, 5 with two changes of speed");
}

}  // namespace

int main() {
  std::shared_ptr<CorvelNativePluginBase> object;
  if (!corvelCreatePlugin(&object)) return fail("the plugin made no object");
  const int result = playToTheEnd(*object);
  object->willBeDestroyed();  // always before the last reference goes
  object.reset();
  return result;
}
