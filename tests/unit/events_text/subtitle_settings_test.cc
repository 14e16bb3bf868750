// SPDX-License-Identifier: Apache-2.0
// The viewer's subtitle settings, from the media library's record to the script event.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "plugin/av_control_plugin.h"
#include "tests/support/script_object.h"

using fixture::TestPlugin;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class SubtitleSettingsTest : public fixture::PluginTest {
 protected:
  SubtitleSettingsTest() { log().clear(); }

  /// The text field is filled to its last byte: nothing but the length ends it.
  static _SubtitleSettingsParams settings(int value, const std::string& text, int length) {
    _SubtitleSettingsParams params;
    params.value = value;
    std::memset(params.text, '#', sizeof params.text);
    std::memcpy(params.text, text.data(), text.size());
    params.textLength = length;
    return params;
  }

  void deliver(const _SubtitleSettingsParams& params) { EXPECT_TRUE(library().fireSettingsAndWait(plugin.handle, params)); }

  TestPlugin plugin = makePlugin();
};

TEST_F(SubtitleSettingsTest, AreForwarded) {
  deliver(settings(1, "deu", 3));
  deliver(settings(-7, "deu", 2));

  EXPECT_THAT(drainEvents(),
              ElementsAre("onSubtitleSettingsChanged(int:1, string:deu)", "onSubtitleSettingsChanged(int:-7, string:de)"))
      << "the host has copies of its own: both records are gone by now";
}

TEST_F(SubtitleSettingsTest, AreForwarded_WithAnEmptyText) {
  deliver(settings(1, "deu", 0));

  EXPECT_THAT(drainEvents(), ElementsAre("onSubtitleSettingsChanged(int:1, string:)"));
}

TEST_F(SubtitleSettingsTest, TextMayLackItsLastByte) {
  deliver(settings(1, std::string(63, 't') + "u", 63));

  EXPECT_THAT(drainEvents(), ElementsAre("onSubtitleSettingsChanged(int:1, string:" + std::string(63, 't') + ")"));
}

TEST_F(SubtitleSettingsTest, TextIsNeverReadPastTheRecord) {
  const std::string whole(64, 't');

  for (const int length : {64, 65, 2147483647}) {
    deliver(settings(1, whole, length));
    EXPECT_THAT(drainEvents(), ElementsAre("onSubtitleSettingsChanged(int:1, string:" + whole + ")")) << length;
  }
  for (const int length : {-1, -2147483647}) {
    deliver(settings(1, whole, length));
    EXPECT_THAT(drainEvents(), ElementsAre("onSubtitleSettingsChanged(int:1, string:)")) << length;
  }
}

TEST_F(SubtitleSettingsTest, AreRaisedOnTheLibrarysThread_WithoutTheGlobalLock) {
  AVControlPlugin::the_mutex.lock(0);
  deliver(settings(1, "deu", 3));
  AVControlPlugin::the_mutex.unlock(0);

  const auto raised = log().entries();
  ASSERT_EQ(raised.size(), 1U);
  EXPECT_EQ(raised[0].thread, library().dispatcherThread(plugin.handle));
}

TEST_F(SubtitleSettingsTest, AreDropped_AfterTheElementIsGone) {
  const unsigned long handle = plugin.handle;
  destroy(plugin);
  log().clear();

  EXPECT_TRUE(library().invokeSettings(handle, settings(1, "deu", 3)));

  EXPECT_THAT(log().entries(), IsEmpty());
}

}  // namespace
