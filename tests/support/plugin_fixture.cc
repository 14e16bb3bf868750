// SPDX-License-Identifier: Apache-2.0
#include "tests/support/plugin_fixture.h"

#include <algorithm>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "plugin/av_control_plugin.h"

namespace fixture {

_CorvelNativeVariant undefined() { return {}; }

_CorvelNativeVariant noValue() {
  _CorvelNativeVariant value;
  value.details.type = CORVEL_NO_VALUE;
  return value;
}

_CorvelNativeVariant boolean(bool value) {
  _CorvelNativeVariant variant;
  cvnplUtil::set(value, variant);
  return variant;
}

_CorvelNativeVariant integer(int value) {
  _CorvelNativeVariant variant;
  cvnplUtil::set(value, variant);
  return variant;
}

_CorvelNativeVariant number(double value) {
  _CorvelNativeVariant variant;
  cvnplUtil::set(value, variant);
  return variant;
}

_CorvelNativeVariant text(std::string_view value) {
  _CorvelNativeVariant variant;
  const char* const start = value.empty() ? "" : value.data();
  cvnplUtil::set(start, variant, static_cast<int>(value.size()), true);
  return variant;
}

_CorvelNativeVariant ownCopy(const _CorvelNativeVariant& value) {
  _CorvelNativeVariant copy = value;  // of a borrowed text: borrowed too
  if (value.details.type != CORVEL_STRING) return copy;
  cvnplUtil::set(value.string.text, copy, static_cast<int>(value.string.length), true);
  return copy;
}

std::string shown(const _CorvelNativeVariant& value) {
  std::ostringstream out;
  switch (value.details.type) {
    case CORVEL_UNDEFINED: return "undefined";
    case CORVEL_NO_VALUE: return "novalue";
    case CORVEL_BOOLEAN: return value.boolean ? "bool:true" : "bool:false";
    case CORVEL_INTEGER: return "int:" + std::to_string(value.integer);
    case CORVEL_DOUBLE: out << "double:" << value.number; return out.str();
    case CORVEL_STRING:
      if (value.string.text == nullptr) return "string:(null)";
      return "string:" + std::string(value.string.text, value.string.length);
    case CORVEL_OBJECT: return value.object.object ? "object" : "object:(null)";
    default: return "type " + std::to_string(value.details.type);
  }
}

std::string shown(const Entry& entry) {
  if (entry.kind == Entry::Kind::kPropertyChange) return entry.name + "=" + shown(entry.args.front());
  std::string line = entry.name + "(";
  for (const auto& arg : entry.args) {
    if (&arg != &entry.args.front()) line += ", ";
    line += shown(arg);
  }
  return line + ")";
}

std::vector<Entry> HostLog::entries() const {
  std::lock_guard lock(m_mutex);
  return m_entries;
}

std::optional<Entry> HostLog::waitFor(const std::function<bool(const Entry&)>& wanted, std::chrono::milliseconds deadline) {
  std::unique_lock lock(m_mutex);
  std::optional<Entry> found;
  m_changed.wait_for(lock, deadline, [&] {
    const auto entry = std::find_if(m_entries.begin(), m_entries.end(), wanted);
    if (entry != m_entries.end()) found = *entry;
    return found.has_value();
  });
  return found;
}

void HostLog::clear() {
  std::lock_guard lock(m_mutex);
  m_entries.clear();
}

void HostLog::setHook(std::function<void(const Entry&)> hook) {
  std::lock_guard lock(m_mutex);
  m_hook = std::move(hook);
}

void HostLog::propertyChanged(std::uint64_t objectId, std::string_view name, const _CorvelNativeVariant& value) {
  add({Entry::Kind::kPropertyChange, objectId, std::string(name), {ownCopy(value)}, std::this_thread::get_id()});
}

void HostLog::eventRaised(std::uint64_t objectId, std::string_view name, const _CorvelNativeVariant* args, unsigned int count) {
  std::vector<_CorvelNativeVariant> copies;
  std::transform(args, args + count, std::back_inserter(copies), ownCopy);
  add({Entry::Kind::kEvent, objectId, std::string(name), std::move(copies), std::this_thread::get_id()});
}

void HostLog::add(Entry entry) {
  std::function<void(const Entry&)> hook;
  {
    std::lock_guard lock(m_mutex);
    m_entries.push_back(entry);
    hook = m_hook;
    m_changed.notify_all();
  }
  if (hook) hook(entry);
}

std::optional<_CorvelNativeVariant> TestPlugin::read(std::string_view name) const {
  _CorvelNativeVariant value;
  if (!pluginhost::readProperty(*base, name, value)) return std::nullopt;
  return value;
}

bool TestPlugin::write(std::string_view name, const _CorvelNativeVariant& value) const {
  return pluginhost::writeProperty(*base, name, value);
}

std::optional<_CorvelNativeVariant> TestPlugin::call(std::string_view name, const std::vector<_CorvelNativeVariant>& args) const {
  _CorvelNativeVariant result;
  const auto* first = args.empty() ? nullptr : args.data();
  if (!pluginhost::callMethod(*base, name, first, static_cast<unsigned int>(args.size()), result)) return std::nullopt;
  return result;
}

std::string TestPlugin::readShown(std::string_view name) const {
  const auto value = read(name);
  return value ? shown(*value) : "failed";
}

std::string TestPlugin::callShown(std::string_view name, const std::vector<_CorvelNativeVariant>& args) const {
  const auto value = call(name, args);
  return value ? shown(*value) : "failed";
}

void Gate::open() const {
  std::lock_guard lock(m_state->mutex);
  m_state->open = true;
  m_state->changed.notify_all();
}

bool Gate::wait(std::chrono::milliseconds deadline) const {
  std::unique_lock lock(m_state->mutex);
  return m_state->changed.wait_for(lock, deadline, [this] { return m_state->open; });
}

PluginTest::PluginTest() : m_log(std::make_unique<HostLog>()) {
  library().reset();
  pluginhost::setObserver(m_log.get());
  m_queue = std::make_unique<pluginhost::EventQueue>([] {});
}

PluginTest::~PluginTest() {
  m_queue.reset();
  pluginhost::setObserver(nullptr);
}

void PluginTest::TearDown() {
  log().setHook({});
  library().clearHooks();
  for (const auto& plugin : m_made) plugin->willBeDestroyed();
  m_made.clear();
  EXPECT_TRUE(library().openHandles().empty()) << "a player was left open";
  library().reset();
}

TestPlugin PluginTest::makePlugin() {
  TestPlugin plugin;
  const unsigned long before = library().lastHandle();
  EXPECT_TRUE(corvelCreatePlugin(&plugin.base));
  if (!plugin.base) throw std::runtime_error("no plugin object");
  plugin.id = pluginhost::objectId(*plugin.base);
  const unsigned long after = library().lastHandle();
  plugin.handle = after == before ? 0 : after;
  m_made.push_back(plugin.base);
  return plugin;
}

void PluginTest::destroy(TestPlugin& plugin) {
  plugin.base->willBeDestroyed();
  drop(plugin);
}

void PluginTest::drop(TestPlugin& plugin) {
  forget(plugin);
  plugin.base.reset();
}

void PluginTest::forget(const TestPlugin& plugin) {
  m_made.erase(std::remove(m_made.begin(), m_made.end(), plugin.base), m_made.end());
}

TestPlugin PluginTest::makePluginWithSource() {
  TestPlugin plugin = makePlugin();
  EXPECT_TRUE(plugin.write("data", text("http://media.example/a.mp4")));
  EXPECT_TRUE(library().waitForCall(fakes::isWrite("INPUT", "http://media.example/a.mp4")));
  return plugin;
}

TestPlugin PluginTest::makeReadyPlugin() {
  TestPlugin plugin = makePluginWithSource();
  EXPECT_TRUE(library().fireAndWait(plugin.handle, "READY_TO_PLAY"));
  return plugin;
}

void PluginTest::drainWorker(const TestPlugin& plugin) {
  const auto player = AVControlPlugin::cast(plugin.base.get())->player();
  ASSERT_NE(player, nullptr);
  // The command carries its own text, so that no earlier command can be taken for it; the player borrows the text.
  const std::string& mark = m_marks.emplace_back("mark " + std::to_string(m_marks.size()));
  const auto giveUp = std::chrono::steady_clock::now() + kDeadline;
  bool queued = player->setLoopParam(mark.c_str());
  while (!queued && std::chrono::steady_clock::now() < giveUp) {
    std::this_thread::yield();  // the queue is full; the worker is about to make room
    queued = player->setLoopParam(mark.c_str());
  }
  ASSERT_TRUE(library().waitForCall(fakes::isWrite("LOOP", mark))) << "the worker did not get to the end of its queue";
}

std::vector<std::string> PluginTest::events(const TestPlugin& plugin) const {
  std::vector<std::string> lines;
  for (const Entry& entry : m_log->entries()) {
    if (entry.objectId == plugin.id && entry.kind == Entry::Kind::kEvent) lines.push_back(shown(entry));
  }
  return lines;
}

std::vector<std::string> PluginTest::entries(const TestPlugin& plugin) const {
  std::vector<std::string> lines;
  for (const Entry& entry : m_log->entries()) {
    if (entry.objectId == plugin.id) lines.push_back(shown(entry));
  }
  return lines;
}

bool PluginTest::waitForEvent(const TestPlugin& plugin, const std::string& shownEvent, std::chrono::milliseconds deadline) {
  return waitForEntry(plugin, shownEvent, deadline).has_value();
}

std::optional<Entry> PluginTest::waitForEntry(const TestPlugin& plugin, const std::string& shownEntry,
                                              std::chrono::milliseconds deadline) {
  const auto wanted = [&](const Entry& entry) { return entry.objectId == plugin.id && shown(entry) == shownEntry; };
  return log().waitFor(wanted, deadline);
}

std::vector<std::string> PluginTest::drainEvents() {
  std::vector<std::string> lines;
  m_queue->drain([&](CorvelNativePluginBase& object, const pluginhost::Event& event) {
    lines.push_back(shown(Entry{Entry::Kind::kEvent, pluginhost::objectId(object), event.name, event.args, {}}));
  });
  return lines;
}

}  // namespace fixture
