// SPDX-License-Identifier: Apache-2.0
// Content-access-streaming descriptors as sources.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

#include "host/mediamgmnt.h"
#include "sample_server.h"
#include "test_player.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::internal::CaptureStderr;
using ::testing::internal::GetCapturedStderr;

namespace {

constexpr char kType[] = "application/vnd.oipf.ContentAccessStreaming+xml";

std::string descriptorUrl(const std::string& name) { return SampleServer::instance().url("rights/" + name + ".cas"); }

class DescriptorTest : public testing::Test {
 protected:
  DescriptorTest() { m_player.set("FORCED_FORMAT", kType); }

  void playDescriptor(const std::string& name) {
    m_player.load(descriptorUrl(name));
    m_player.command("PLAY", "1.00");
  }

  TestPlayer m_player;
};

TEST_F(DescriptorTest, PlaysWhatItNames_WithTheUsualWords) {
  playDescriptor("mp4");

  EXPECT_THAT(m_player.wordsUntil("PLAY_SPEED_CHANGED"),
              ElementsAre("READY_TO_PLAY", "CONNECTED", "BUFFER_READY", "PLAYING", "PLAY_SPEED_CHANGED"));
  EXPECT_EQ(m_player.get("DURATION"), "4000");
}

TEST_F(DescriptorTest, PlaysAgainAfterAStop) {
  playDescriptor("mp4");
  m_player.wordsUntil("PLAY_SPEED_CHANGED");
  m_player.command("STOP");
  m_player.wordsUntil("PLAY_POSITION_CHANGED");
  m_player.forget();

  m_player.command("PLAY", "1.00");

  EXPECT_THAT(without(m_player.wordsUntil("PLAY_SPEED_CHANGED"), "PLAY_POSITION_CHANGED"),
              ElementsAre("BUFFER_READY", "PLAYING", "PLAY_SPEED_CHANGED"));
}

TEST_F(DescriptorTest, StartsWhereItWasAskedTo) {
  m_player.load(descriptorUrl("mp4"));
  m_player.command("SEEK", "2000.00");
  m_player.command("PLAY", "1.00");

  m_player.wordsUntil("PLAY_SPEED_CHANGED");

  EXPECT_GE(m_player.number("POSITION"), 2000);
}

TEST_F(DescriptorTest, StaysPaused_WhenThatIsAskedForMeanwhile) {
  playDescriptor("mp4");
  m_player.command("PAUSE");

  m_player.wordsUntil("CONNECTED");
  EXPECT_TRUE(TestPlayer::eventually([this] { return m_player.get("DURATION") == "4000"; }));
  EXPECT_EQ(count(m_player.words(), "PLAYING"), 0);
  EXPECT_EQ(count(m_player.words(), "PAUSED"), 1);
}

TEST_F(DescriptorTest, StopsWhileItIsFetched) {
  m_player.load(SampleServer::instance().url("fault/hang/rights/mp4.cas"));
  m_player.command("PLAY", "1.00");
  m_player.command("STOP");

  EXPECT_THAT(m_player.wordsUntil("PLAY_POSITION_CHANGED"), ElementsAre("READY_TO_PLAY", "STOPPED", "PLAY_POSITION_CHANGED"));
}

TEST_F(DescriptorTest, GivesWayToTheNextSourceWhileItIsFetched) {
  m_player.load(SampleServer::instance().url("fault/hang/rights/mp4.cas"));
  m_player.command("PLAY", "1.00");
  m_player.set("FORCED_FORMAT", "video/mp4");
  m_player.forget();

  m_player.start(SampleServer::instance().url("short/two.mp4"));

  EXPECT_EQ(count(m_player.words(), "ERROR"), 0);
}

TEST_F(DescriptorTest, ClosesWhileItIsFetched) {
  m_player.load(SampleServer::instance().url("fault/hang/rights/mp4.cas"));
  m_player.command("PLAY", "1.00");

  m_player.close();
}

TEST_F(DescriptorTest, TellsWhichRightsAreMissing_ThenFails) {
  playDescriptor("foreign-rights");

  EXPECT_THAT(m_player.wordsUntil("ERROR"), ElementsAre("READY_TO_PLAY", "ON_DRM_RIGHTS_ERROR", "ERROR"));
  EXPECT_EQ(m_player.get("DRM_ERROR_STATE"), "0");
  EXPECT_EQ(m_player.get("DRM_CONTENT_ID"), "cid:7");
  EXPECT_EQ(m_player.get("DRM_SYSTEM_ID"), "urn:dvb:casystemid:19219");
  EXPECT_EQ(m_player.get("DRM_RIGHTS_ISSUER_URL"), "http://issuer.example/rights?id=7");
  EXPECT_EQ(m_player.get("LAST_ERR_CODE"), "2");

  m_player.set("FORCED_FORMAT", "");
  m_player.forget();
  m_player.start(SampleServer::instance().url("short/two.mp4"));
  EXPECT_EQ(m_player.get("DRM_ERROR_STATE"), std::nullopt) << "nothing is wrong with the rights of the next source";
}

struct BadDescriptor {
  const char* name;
  const char* reason;
};

/// Keeps the tests' names free of addresses.
void PrintTo(const BadDescriptor& descriptor, std::ostream* out) { *out << descriptor.name; }

class BadDescriptorTest : public DescriptorTest, public testing::WithParamInterface<BadDescriptor> {};

TEST_P(BadDescriptorTest, FailsWithOneLineThatSaysWhy) {
  CaptureStderr();
  playDescriptor(GetParam().name);
  m_player.wordsUntil("ERROR", 40);
  const std::string log = GetCapturedStderr();

  EXPECT_EQ(m_player.get("LAST_ERR_CODE"), "4");
  EXPECT_EQ(count(m_player.words(), "ERROR"), 1);
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 1) << log;
  EXPECT_THAT(log, HasSubstr(GetParam().reason));
}

INSTANTIATE_TEST_SUITE_P(
    Descriptors, BadDescriptorTest,
    testing::Values(BadDescriptor{"loop", "leads back to itself"}, BadDescriptor{"loop-a", "leads back to itself"},
                    BadDescriptor{"loop-unsaid", "leads back to itself"}, BadDescriptor{"unplayable", "names nothing playable"},
                    BadDescriptor{"local-file", "not on the web"}, BadDescriptor{"no-url", "names nothing playable"},
                    BadDescriptor{"cut", "no well-formed XML"}, BadDescriptor{"binary", "no well-formed XML"},
                    BadDescriptor{"large", "larger than 256 KiB"}, BadDescriptor{"huge", "larger than 256 KiB"},
                    BadDescriptor{"bomb", "declares entities"}, BadDescriptor{"outside", "declares entities"}),
    [](const auto& info) {
      std::string name = info.param.name;
      std::erase(name, '-');
      return name;
    });

}  // namespace
