// SPDX-License-Identifier: Apache-2.0
// The options about parental limits and keys.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "platform/shell/protection_options.h"
#include "tests/unit/shell/avc_run.h"

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr char kId[] = "00112233445566778899aabbccddeeff";
constexpr char kSecret[] = "0123456789abcdef0123456789abcdef";

void expectRefused(const Outcome& outcome, const std::string& words) {
  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.err, HasSubstr(words));
  EXPECT_THAT(outcome.err, Not(HasSubstr(kSecret)));
}

TEST(ProtectionOptions, AreInTheHelp) {
  const Outcome help = runAvc({"--help"});
  for (const char* option : {"--parental-limit AGE", "--parental-country CC", "--clearkey KID:KEY", "--clearkey-file FILE"}) {
    EXPECT_THAT(help.out, HasSubstr(option));
  }
}

TEST(ProtectionOptions, AgesAndCountriesThatAreNoneAreRefused) {
  for (const char* age : {"old", "-1", "12.5", "100", "12 "}) {
    expectRefused(runAvc({std::string("--parental-limit=") + age, "x.js"}), "--parental-limit needs an age");
  }
  for (const char* country : {"Germany", "D", "D1"}) {
    expectRefused(runAvc({std::string("--parental-country=") + country, "x.js"}), "--parental-country needs two letters");
  }
  expectRefused(runAvc({"--parental-limit"}), "option --parental-limit needs a value");
}

TEST(ProtectionOptions, KeysThatAreNoneAreRefused_AndNotShown) {
  const std::string secret = kSecret;
  for (const std::string& key :
       {secret, ":" + secret, std::string(kId) + ":" + secret + "0", "12:" + secret, std::string(kId) + ":xyz"}) {
    expectRefused(runAvc({"--clearkey", key, "x.js"}), "--clearkey needs KID:KEY");
  }
}

TEST(ProtectionOptions, KeyFilesThatCannotBeReadAreRefused) {
  const ScratchFolder folder;
  expectRefused(runAvc({"--clearkey-file", folder.path("none"), "x.js"}),
                "--clearkey-file: cannot read " + folder.path("none") + ": No such file or directory;");
  expectRefused(runAvc({"--clearkey-file", "/", "x.js"}), "--clearkey-file: cannot read /: Is a directory;");
  const std::string file =
      folder.write("keys", "# two keys\n" + std::string(kId) + ":" + kSecret + "\n\nnonsense:" + kSecret + "\n");
  expectRefused(runAvc({"--clearkey-file", file, "x.js"}), "line 4 of " + file);
}

/// The scripted media library has neither.
TEST(ProtectionOptions, ALibraryWithoutThemIsRefused) {
  expectRefused(runText("", {"--parental-limit", "12"}), "the media library takes no parental limit");
  expectRefused(runText("", {"--parental-country", "de"}), "the media library takes no parental limit");
  expectRefused(runText("", {"--clearkey", std::string(kId) + ":" + kSecret}), "the media library takes no keys");
  const Outcome script = runText("console.log(setParentalLimit(12), setParentalLimit(null))");
  EXPECT_EQ(script.out, "false false\n");
}

TEST(ProtectionOptions, AnotherProcessTakesThemOver) {
  shell::ProtectionOptions given;
  std::string error;
  const std::string key = std::string(kId) + ":" + kSecret;
  ASSERT_TRUE(given.read("--parental-limit", "0", error) && given.read("--parental-country", "de", error) &&
              given.read("--clearkey", key, error));
  shell::ProtectionOptions taken;
  ASSERT_TRUE(taken.unpack(given.packed(), error)) << error;
  EXPECT_EQ(taken.parentalLimit(), 0);
  EXPECT_EQ(taken.parentalCountry(), "de");
  EXPECT_THAT(taken.packed(), HasSubstr("--clearkey=" + key + "\n"));
}

TEST(ProtectionOptions, NothingIsTakenOverAsNothing) {
  shell::ProtectionOptions taken;
  std::string error;
  EXPECT_TRUE(taken.unpack(shell::ProtectionOptions().packed(), error));
  EXPECT_EQ(taken.parentalLimit(), std::nullopt);
  EXPECT_EQ(taken.packed(), "");
}

TEST(ProtectionOptions, WhatIsNoHandoverIsRefused) {
  for (const char* before : {"", "--trace=", "--parental-limit=", "--clearkey="}) {
    shell::ProtectionOptions taken;
    std::string error;
    EXPECT_FALSE(taken.unpack(std::string(before) + kSecret + "\n", error)) << before;
    EXPECT_NE(error, "");
  }
}

}  // namespace
