// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <sstream>

#include "tests/unit/shell/avc_run.h"

namespace {

using testing::Contains;
using testing::HasSubstr;

constexpr char kClip[] = R"(
  const e = document.body.appendChild(document.createElement('object'));
  e.type = 'video/mp4';
  e.data = 'http://media.example/clip?ms=50';
  e.onPlayStateChange = (state) => { if (state === 5) REACTION };
  e.play(1);
)";

std::vector<std::string> trace(const std::string& reaction) {
  const ScratchFolder folder;
  const std::string path = folder.path("trace.jsonl");
  const std::string script = std::regex_replace(std::string(kClip), std::regex("REACTION"), reaction);
  EXPECT_EQ(runText(script, {"--trace", path}).status, 0);
  std::istringstream text(readAll(path));
  std::vector<std::string> lines;
  for (std::string line; std::getline(text, line);) lines.push_back(line);
  return lines;
}

std::size_t indexOf(const std::vector<std::string>& lines, const std::string& part) {
  std::size_t at = 0;
  while (at < lines.size() && lines[at].find(part) == std::string::npos) ++at;
  EXPECT_LT(at, lines.size()) << part;
  return at;
}

TEST(AvcRunTrace, HoldsOneObjectALine) {
  const std::regex shape(R"(\{"time":\d+\.\d{6},"thread":\d+,"kind":"[a-z-]+","name":"\w+",.*"arguments":\[.*\].*,"result":.+\})");
  const auto lines = trace("{}");
  ASSERT_FALSE(lines.empty());
  for (const std::string& line : lines) EXPECT_TRUE(std::regex_match(line, shape)) << line;
  for (const char* kind : {"script-write", "script-call", "command", "callback", "event", "property-change", "close"}) {
    EXPECT_THAT(lines, Contains(HasSubstr("\"kind\":\"" + std::string(kind) + "\"")));
  }
}

// The handler still uses the object after it took it out of the document.
TEST(AvcRunTrace, AnObjectRemovedInItsHandlerGoesAfterTheHandlerReturned) {
  const auto lines = trace("{ e.remove(); e.setVolume(50); }");
  EXPECT_LT(indexOf(lines, "\"name\":\"setVolume\""), indexOf(lines, "\"kind\":\"close\""));
}

TEST(AvcRunTrace, ARemovedObjectThatChangesItsLooksIsNotMadeAnew) {
  const auto lines = trace("{ e.remove(); setTimeout(() => { e.className = 'gone'; e.style.display = 'none'; }, 20); }");
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [](const std::string& line) { return line.find("\"name\":\"openPlayer\"") != std::string::npos; }),
            1);
}

TEST(AvcRunTrace, OneThatIsNotWholeIsToldAndEndsWithOne) {
  const std::string script = "document.body.appendChild(document.createElement('object')).type = 'video/mp4';";
  const Outcome outcome = runText(script, {"--trace", "/dev/full"});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.err, "avc-run: the trace file /dev/full is not whole: No space left on device\n");
  EXPECT_EQ(runText(script + "exit(7)", {"--trace", "/dev/full"}).status, 7);
}

}  // namespace
