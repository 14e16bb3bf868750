// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>
#include <chrono>

#include "tests/unit/shell/avc_run.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

void expectRefused(const Outcome& outcome, const std::string& words) {
  EXPECT_EQ(outcome.status, 2);
  EXPECT_EQ(outcome.out, "");
  EXPECT_THAT(outcome.err, StartsWith("avc-run: "));
  EXPECT_THAT(outcome.err, HasSubstr(words));
  EXPECT_EQ(std::count(outcome.err.begin(), outcome.err.end(), '\n'), 1) << outcome.err;
}

TEST(AvcRunOptions, HelpAndVersionEndWithZero) {
  const Outcome help = runAvc({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_THAT(help.out, StartsWith("Usage: avc-run"));
  for (const char* option : {"--document-url", "--timeout", "--snapshot", "--trace", "--record-audio", "--languages",
                             "--subtitle-settings", "--quiet", "--media-library", "--plugin"}) {
    EXPECT_THAT(help.out, HasSubstr(option));
  }
  const Outcome version = runAvc({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_THAT(version.out, testing::ContainsRegex("^avc-run [0-9]+\\.[0-9]+"));
}

TEST(AvcRunOptions, WrongCommandLinesAreRefusedWithOneLine) {
  expectRefused(runAvc({}), "no script given");
  expectRefused(runAvc({"--colour"}), "unknown option --colour");
  expectRefused(runAvc({"--trace"}), "option --trace needs a value");
  expectRefused(runAvc({"--quiet=1", "x.js"}), "--quiet takes no value");
  for (const char* seconds : {"0", "-1", "soon", "1e3", "2s"}) {
    expectRefused(runAvc({std::string("--timeout=") + seconds, "x.js"}), "--timeout needs a number of seconds above 0");
  }
}

TEST(AvcRunOptions, WrongSubtitleSettingsAreRefusedWithOneLine) {
  for (const std::string& settings :
       {std::string("large"), std::string(":large"), std::string("1.5:large"), "1:" + std::string(65, 'x')}) {
    expectRefused(runAvc({"--subtitle-settings", settings, "x.js"}),
                  "--subtitle-settings needs a number, a colon and at most 64 bytes");
  }
}

TEST(AvcRunOptions, DocumentAddressesThatAreNoneAreRefusedWithOneLine) {
  for (const std::string address : {"foo", "/app/", "//host/app/", "http:", "http:///app/", "https://:8080/", "http://host/an app/",
                                    "http://[::1/", "file:///an app/"}) {
    expectRefused(runText("", {"--document-url", address}),
                  "--document-url needs an address such as http://host/app/, not \"" + address + "\"");
  }
}

TEST(AvcRunOptions, DocumentAddressesAreTheDocuments) {
  for (const std::string address : {"http://host", "HTTPS://[::1]:8080/app/?a=%20#b", "file:///app/index.html"}) {
    const Outcome outcome = runText("console.log(document.URL)", {"--document-url", address});
    EXPECT_EQ(outcome.out, address + "\n") << outcome.err;
    EXPECT_EQ(outcome.status, 0);
  }
}

TEST(AvcRunOptions, FilesOfOtherKindsAreRefusedWithOneLine) {
  for (const std::string name : {"a.jpg", "a.png@x", "a.png@-1", "a.png@", "a.jpg@1", "@1"}) {
    expectRefused(runAvc({"--snapshot", name, "x.js"}),
                  "--snapshot needs the name of a .png file, and perhaps @SECONDS behind it, not \"" + name + "\"");
  }
  expectRefused(runAvc({"--record-audio", "heard.mp3", "x.js"}), "--record-audio needs the name of a .wav file, not \"heard.mp3\"");
}

TEST(AvcRunOptions, LanguagesThatAreNoneAreRefusedWithOneLine) {
  for (const std::string list : {"german", ",", "deu,", "de", "DEU", "deu, eng"}) {
    expectRefused(runAvc({"--languages", list, "x.js"}),
                  "--languages needs codes of three small letters, such as deu,eng, not \"" + list + "\"");
  }
}

TEST(AvcRunOptions, UnreadableScriptsAreRefused) {
  expectRefused(runScripted({"no-such-script.js"}), "no-such-script.js");
  expectRefused(runScripted({"pages"}), "cannot read the file");
}

TEST(AvcRunOptions, LibrariesThatCannotServeAreRefused) {
  const ScratchFolder folder;
  const std::string script = folder.write("a.js", "");
  const std::string missing = folder.path("libmissing.so");
  expectRefused(runAvc({"--media-library", missing, script}), missing);
  expectRefused(runAvc({"--media-library", OTHER_LIBRARY, script}), "is no media library");
  expectRefused(runScripted({"--plugin", missing, script}), missing);
}

TEST(AvcRunOptions, ARecordingThatCannotBeWrittenIsRefused) {
  expectRefused(runText("", {"--record-audio", "/no such folder/heard.wav"}), "cannot write the recording");
}

TEST(AvcRunOptions, AMediaLibraryWithoutSoundOrLanguagesIsTold) {
  const ScratchFolder folder;
  expectRefused(runText("", {"--record-audio", folder.path("heard.wav")}), "lets nobody listen");
  expectRefused(runText("", {"--languages", "deu"}), "does not ask for languages");
}

TEST(AvcRunOptions, ATraceFileThatCannotBeWrittenIsRefused) {
  expectRefused(runText("", {"--trace", "/no such folder/trace.jsonl"}), "cannot write the trace file");
}

TEST(AvcRunStatus, IsTheScriptsOwn) {
  EXPECT_EQ(runText("").status, 0);
  EXPECT_EQ(runText("exit(17); console.log('never')").status, 17);
  const Outcome thrown = runText("throw new Error('out of cheese')");
  EXPECT_EQ(thrown.status, 1);
  EXPECT_THAT(thrown.err, HasSubstr("uncaught Error: out of cheese"));
  const Outcome rejected = runText("Promise.reject(new Error('no promise'))");
  EXPECT_EQ(rejected.status, 1);
  EXPECT_THAT(rejected.err, HasSubstr("unhandled rejection: Error: no promise"));
}

TEST(AvcRunStatus, TheTimeOutEndsAScriptThatWaitsAndOneThatDoesNotReturn) {
  for (const char* script : {"setInterval(() => {}, 10)", "for (;;) {}", "setTimeout(() => { for (;;) {} }, 10)"}) {
    const Outcome outcome = runText(script, {"--timeout", "0.3"});
    EXPECT_EQ(outcome.status, 3) << script;
    EXPECT_EQ(outcome.err, "avc-run: time-out: the run was not over after 0.3 s; give a longer --timeout or call exit()\n");
  }
}

TEST(AvcRunStatus, ErrorsAreToldWithThePlaceThatIsKnown) {
  EXPECT_THAT(runText("\n  null.x").err, testing::ContainsRegex("script\\.js:2:[0-9]+: uncaught TypeError"));
  EXPECT_THAT(runText("\nlet = ;").err, testing::ContainsRegex("script\\.js:2: uncaught SyntaxError"));
}

TEST(AvcRunStatus, TellsOfTheSignalThatEndedTheRun) {
  for (const char* script : {"console.log('up'); setInterval(() => {}, 10)", "console.log('up'); for (;;) {}"}) {
    EXPECT_EQ(interruptText(script, "up\n", SIGINT).status, 130) << script;
    EXPECT_EQ(interruptText(script, "up\n", SIGTERM).status, 143) << script;
  }
}

TEST(AvcRunStatus, ASignalEndsAScriptThatDoesNotReturnSoon) {
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(interruptText("console.log('up'); for (;;) {}", "up\n", SIGINT).status, 130);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8));
}

TEST(AvcRunOptions, QuietKeepsWarningsAndErrors) {
  const std::string script = "console.log('l'); console.info('i'); console.warn('w'); console.error('e')";
  EXPECT_EQ(runText(script).out, "l\ni\n");
  const Outcome quiet = runText(script, {"--quiet"});
  EXPECT_EQ(quiet.out, "");
  EXPECT_EQ(quiet.err, "warning: w\ne\n");
}

TEST(AvcRunOptions, RelativeSourcesAreResolvedAgainstTheDocument) {
  const Outcome outcome =
      runText("const e = document.createElement('object'); e.type = 'video/mp4'; e.data = '../a.mp4'; console.log(e.data)",
              {"--document-url", "https://other.example/one/two/page.html"});
  EXPECT_EQ(outcome.out, "https://other.example/one/a.mp4\n");
  EXPECT_EQ(outcome.status, 0);
}

}  // namespace
