// SPDX-License-Identifier: Apache-2.0
#include <dlfcn.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/pluginhost/shell.h"
#include "tests/unit/pluginhost/fake_plugin.h"

namespace {

using pluginhost::Event;
using pluginhost::EventQueue;
using pluginhost::PluginLibrary;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

bool isLoaded(const char* path) {
  void* const handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
  if (handle != nullptr) dlclose(handle);
  return handle != nullptr;
}

std::shared_ptr<PluginLibrary> loadFake() {
  std::string error;
  auto library = PluginLibrary::load(FAKE_PLUGIN_LIBRARY, error);
  EXPECT_NE(library, nullptr) << error;
  return library;
}

std::string errorOf(const std::string& path) {
  std::string error;
  EXPECT_EQ(PluginLibrary::load(path, error), nullptr);
  EXPECT_THAT(error, Not(HasSubstr("\n")));
  return error;
}

TEST(PluginLibraryTest, SaysThatTheFileIsMissing) {
  const std::string error = errorOf("/nonexistent/libnothing.so");

  EXPECT_THAT(error, HasSubstr("/nonexistent/libnothing.so"));
  EXPECT_THAT(error, HasSubstr("No such file"));
}

TEST(PluginLibraryTest, SaysThatTheFileIsNoLibrary) {
  const auto path = std::filesystem::temp_directory_path() / ("not_a_library_" + std::to_string(getpid()) + ".so");
  std::ofstream(path) << std::string(4096, 'x');

  const std::string error = errorOf(path);
  std::filesystem::remove(path);

  EXPECT_THAT(error, HasSubstr(path.string()));
  EXPECT_THAT(error, HasSubstr("invalid ELF header"));
}

TEST(PluginLibraryTest, SaysThatTheEntryPointIsMissing) {
  const std::string error = errorOf(FAKE_OTHER_LIBRARY);

  EXPECT_THAT(error, HasSubstr("is not a plugin library"));
  EXPECT_THAT(error, HasSubstr("corvelCreatePlugin"));
  EXPECT_FALSE(isLoaded(FAKE_OTHER_LIBRARY));
}

TEST(PluginLibraryTest, SaysWhichFunctionNobodyHas) {
  EXPECT_THAT(errorOf(FAKE_INCOMPLETE_LIBRARY), HasSubstr("functionThatNobodyHas"));
}

TEST(PluginLibraryTest, RefusesAnEmptyPath) { EXPECT_EQ(errorOf(""), "no plugin library named"); }

TEST(PluginLibraryTest, GivesNull_WhenTheLibraryMakesNoObject) {
  std::string error;
  const auto library = PluginLibrary::load(FAKE_REFUSING_LIBRARY, error);
  ASSERT_NE(library, nullptr) << error;

  EXPECT_EQ(library->create(), nullptr);
}

TEST(PluginLibraryTest, MakesObjectsThatWork) {
  const auto library = loadFake();

  const auto object = library->create();

  ASSERT_NE(object, nullptr);
  EXPECT_EQ(object->pluginType(), 77);
  EXPECT_EQ(fake::read(*object, "answer"), "int:42");
  EXPECT_TRUE(object->setProperty("count", 5));
  EXPECT_EQ(fake::read(*object, "count"), "int:5");
}

TEST(PluginLibraryTest, EventsRaisedDuringTheMakingArrive) {
  EventQueue queue([] {});
  const auto library = loadFake();
  const auto object = library->create();
  std::vector<std::string> names;

  queue.drain([&](CorvelNativePluginBase& raisedBy, const Event& event) {
    EXPECT_EQ(&raisedBy, object.get());
    names.push_back(event.name);
  });

  EXPECT_THAT(names, ElementsAre("onMade"));
}

TEST(PluginLibraryTest, ObjectStaysAliveDuringItsHandler) {
  EventQueue queue([] {});
  const auto library = loadFake();
  auto object = library->create();
  bool destroyed = false;
  static_cast<FakePlugin&>(*object).onDestroy = [&destroyed] { destroyed = true; };
  object->dispatchEvent("onSecond", nullptr, 0);
  std::vector<std::string> names;

  queue.drain([&](CorvelNativePluginBase& raisedBy, const Event& event) {
    object.reset();
    names.push_back(event.name);
    EXPECT_FALSE(destroyed);
    EXPECT_EQ(raisedBy.pluginType(), 77);
  });

  EXPECT_TRUE(destroyed);
  EXPECT_THAT(names, ElementsAre("onMade")) << "the second event was its object's no more";
}

TEST(PluginLibraryTest, FileIsUnloaded_WithTheLastReference) {
  auto library = loadFake();
  EXPECT_TRUE(isLoaded(FAKE_PLUGIN_LIBRARY));

  library.reset();

  EXPECT_FALSE(isLoaded(FAKE_PLUGIN_LIBRARY));
}

TEST(PluginLibraryTest, ObjectsKeepTheFileLoaded) {
  auto object = loadFake()->create();
  auto another = object;

  object.reset();
  EXPECT_TRUE(isLoaded(FAKE_PLUGIN_LIBRARY));
  EXPECT_EQ(another->pluginType(), 77);
  another.reset();

  EXPECT_FALSE(isLoaded(FAKE_PLUGIN_LIBRARY));
}

TEST(PluginLibraryTest, FileIsUnloaded_WhenAllOfItEndsOnAnotherThread) {
  auto object = loadFake()->create();

  std::thread([last = std::move(object)]() mutable { last.reset(); }).join();

  EXPECT_FALSE(isLoaded(FAKE_PLUGIN_LIBRARY));
}

/// The fake plugin library under a name of its own, for tests that leave it loaded.
class PluginLibraryCopyTest : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::copy_file(FAKE_PLUGIN_LIBRARY, m_path);
    std::string error;
    m_library = PluginLibrary::load(m_path, error);
    ASSERT_NE(m_library, nullptr) << error;
  }
  void TearDown() override { std::filesystem::remove(m_path); }

  const std::string m_path = std::filesystem::temp_directory_path() / ("plugin_copy_" + std::to_string(getpid()) + ".so");
  std::shared_ptr<PluginLibrary> m_library;
};

// A callback of the media library may hold the plugin for longer than the shell does. The last instructions of the destructor
// that it runs may not be over when the host learns of it, so the file stays.
TEST_F(PluginLibraryCopyTest, FileStays_WhenSomebodyElseReleasesThePluginLast) {
  auto object = m_library->create();
  auto pin = static_cast<FakePlugin&>(*object).shared_from_this();
  m_library.reset();

  object.reset();
  std::thread([last = std::move(pin)]() mutable { last.reset(); }).join();

  EXPECT_TRUE(isLoaded(m_path.c_str()));
}

// A page may keep a collection of a plugin that is gone.
TEST_F(PluginLibraryCopyTest, FileStays_WhileAScriptObjectOutlivesThePlugin) {
  auto object = m_library->create();
  _CorvelNativeVariant child;
  ASSERT_TRUE(pluginhost::callMethod(*object, "child", nullptr, 0, child));
  m_library.reset();

  object.reset();

  EXPECT_TRUE(isLoaded(m_path.c_str()));
  EXPECT_EQ(fake::read(*child.object.object, "answer"), "int:42");
}

TEST(PluginLibraryTest, LoadsAgainAndAgain) {
  for (int round = 0; round < 20; ++round) {
    auto object = loadFake()->create();
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(pluginhost::findProperty(*object, "answer"), 8);
    object.reset();
    EXPECT_FALSE(isLoaded(FAKE_PLUGIN_LIBRARY));
  }
}

}  // namespace
