// SPDX-License-Identifier: Apache-2.0
// Rows as functions of their own, and the arguments that are told by their reference, against native classes of the tests' own.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <thread>

#include "platform/script/known_numbers.h"
#include "platform/script/native_api.h"
#include "tests/unit/script/script_fixture.h"

namespace {

class DirectRowsTest : public ScriptTest {
 protected:
  DirectRowsTest() {
    setGlobal("plugin", binding().create());
    setGlobal("native", script::makeNativeApi(binding()));
    eval(R"(
      globalThis.rows = native.rows(native.id(plugin));
      globalThis.reader = (name) => native.reader(rows.properties.findIndex((row) => row.name === name));
      globalThis.textReader = (name) => native.textReader(rows.properties.findIndex((row) => row.name === name));
      globalThis.method = (name) => native.method(rows.methods.indexOf(name));
      globalThis.show = (read) => { const value = read.call(plugin); return value === read ? 'as before' : typeof value + ' ' + value; })");
  }

  CorvelNativePluginBase& object() { return *binding().plugins().front(); }
};

TEST_F(DirectRowsTest, ReadWhatTheAccessorsRead) {
  EXPECT_EQ(eval("rows.properties.filter((row, i) => row.type !== 8 && native.reader(i).call(plugin) !== plugin[row.name])"
                 ".map((row) => row.name).join()"),
            "");
  EXPECT_EQ(eval("show(reader('count'))"), "number 7");
  EXPECT_EQ(eval("show(reader('flag'))"), "boolean false");
  EXPECT_EQ(eval("show(reader('label'))"), "string first label");
  EXPECT_EQ(eval("show(reader('nothing'))"), "object null");
  EXPECT_EQ(eval("show(reader('broken'))"), "undefined undefined");
}

TEST_F(DirectRowsTest, ReadWhatAnotherThreadHasJustSet) {
  eval("globalThis.read = reader('count')");
  for (const int value : {1, -5, 2147483647}) {
    std::thread([&] { object().setProperty("count", value); }).join();

    EXPECT_EQ(eval("read.call(plugin)"), std::to_string(value));
  }
}

TEST_F(DirectRowsTest, TextsAreGivenOnce_UntilTheyChange) {
  eval("globalThis.read = textReader('title')");
  char buffer[16] = "one";
  object().setProperty("title", buffer);
  EXPECT_EQ(eval("show(read)"), "string one");
  EXPECT_EQ(eval("show(read)"), "as before");

  std::strcpy(buffer, "two");  // a bound text is what its buffer holds
  EXPECT_EQ(eval("show(read)"), "string two");
  char same[16] = "two";
  object().setProperty("title", same);
  EXPECT_EQ(eval("show(read)"), "as before");

  eval("plugin.title = 'by script'");
  EXPECT_EQ(eval("show(read) + ', ' + show(read)"), "string by script, as before");
  std::thread([&] { object().setProperty("title", buffer); }).join();
  EXPECT_EQ(eval("show(read)"), "string two");
  object().setProperty("title", static_cast<char*>(nullptr));
  EXPECT_EQ(eval("show(read) + '|' + show(read)"), "string |as before");
}

TEST_F(DirectRowsTest, TextsOfTwoObjectsAreApart) {
  setGlobal("other", binding().create());

  EXPECT_EQ(eval("const label = textReader('label'); label.call(plugin) + label.call(other)"), "first labelfirst label");
  EXPECT_EQ(eval("other.label = 'new'; (label.call(plugin) === label) + label.call(other)"), "truenew");
}

TEST_F(DirectRowsTest, NoTextIsNeverAsBefore) {
  auto teller = std::make_shared<TellingObject>();
  teller->install();
  setGlobal("teller", binding().wrap(teller));

  EXPECT_EQ(eval("const nullText = native.textReader(2); [nullText.call(teller), nullText.call(teller)].join('|')"), "|");
  EXPECT_EQ(eval("nullText.call(teller)"), "null");
}

TEST_F(DirectRowsTest, CallWithAnyNumberOfArguments) {
  EXPECT_EQ(eval("method('echo').call(plugin, 'x')"), "x");
  EXPECT_EQ(eval("method('echo').call(plugin, 'a', 2, null, 'd')"), "a");
  EXPECT_EQ(eval("method('firstSlot').call(plugin)"), "true");
  EXPECT_EQ(eval("method('firstSlot').call(plugin, 1)"), "false");
  EXPECT_EQ(eval("method('fail').call(plugin)"), "undefined");
}

TEST_F(DirectRowsTest, AreUndefined_ForEverythingElse) {
  for (const char* receiver :
       {"{}", "5", "undefined", "null", "native.create", "globalThis", "Symbol()", "[1, 2]", "reader('count')"}) {
    EXPECT_EQ(eval("[reader('count'), textReader('label'), method('echo')].map((run) => run.call(" + std::string(receiver) +
                   ", 1)).join('|')"),
              "||")
        << receiver;
  }
}

TEST_F(DirectRowsTest, AreUndefined_OnceTheObjectHasGone) {
  eval("globalThis.all = [reader('count'), textReader('label'), method('echo')]; all.forEach((run) => run.call(plugin, 1))");

  binding().destroy(pluginhost::objectId(object()));

  EXPECT_EQ(eval("all.map((run) => run.call(plugin, 1)).join('|')"), "||");
  unbind();
  EXPECT_EQ(eval("all.map((run) => run.call(plugin, 1)).join('|')"), "||");
}

TEST_F(DirectRowsTest, AreUndefined_OutsideTheTable) {
  EXPECT_EQ(eval("[native.reader(40).call(plugin), native.textReader(40).call(plugin), native.method(40).call(plugin)].join('|')"),
            "||");
  EXPECT_EQ(eval("[64, 1e9, 1e300, -1, NaN].map((row) => typeof native.reader(row)).join()"),
            "undefined,undefined,undefined,undefined,function");
}

/// The reads and calls that a trace mentions.
class Counter : public pluginhost::Observer {
 public:
  Counter() { pluginhost::setObserver(this); }
  ~Counter() override { pluginhost::setObserver(nullptr); }
  void propertyChanged(std::uint64_t, std::string_view, const _CorvelNativeVariant&) override {}
  void eventRaised(std::uint64_t, std::string_view, const _CorvelNativeVariant*, unsigned int) override {}
  void propertyRead(std::uint64_t, std::string_view name, bool, const _CorvelNativeVariant&) override {
    seen += std::string(name) + " ";
  }
  void propertyWritten(std::uint64_t, std::string_view, const _CorvelNativeVariant&, bool) override {}
  void methodCalled(std::uint64_t, std::string_view name, const _CorvelNativeVariant*, unsigned int, bool,
                    const _CorvelNativeVariant&) override {
    seen += std::string(name) + "() ";
  }

  std::string seen;
};

TEST_F(DirectRowsTest, AreAllSeenByAnObserver) {
  const Counter counter;

  eval(
      "const label = textReader('label'); label.call(plugin); label.call(plugin); reader('count').call(plugin);"
      "method('echo').call(plugin, 1)");

  EXPECT_EQ(counter.seen, "label label count echo() ");
}

TEST_F(DirectRowsTest, NumbersArriveAsTheyAre) {
  EXPECT_EQ(eval("const echo = method('echo'); const wrong = []; for (let i = -300; i < 600; i += 0.5) if (echo.call(plugin, i) "
                 "!== i) wrong.push(i);"
                 "wrong.join()"),
            "");
  EXPECT_EQ(eval("Object.is(echo.call(plugin, -0), 0)"), "true");  // a whole number has no negative zero
  EXPECT_EQ(eval("echo.call(plugin, new Float64Array([50])[0]) + echo.call(plugin, 25 * 2)"), "100");
}

TEST_F(DirectRowsTest, SmallNumbersAreKnown) {
  const script::KnownNumbers numbers(context());
  int known = 0;
  for (int i = 0; i < 256; ++i) known += numbers.find(JSValueMakeNumber(context(), i)) == i ? 1 : 0;

  EXPECT_EQ(known, 256);
  EXPECT_EQ(numbers.find(JSValueMakeNumber(context(), 256)), -1);
  EXPECT_EQ(numbers.find(JSValueMakeNumber(context(), -1)), -1);
  EXPECT_EQ(numbers.find(JSValueMakeNumber(context(), 0.5)), -1);
  EXPECT_EQ(numbers.find(JSValueMakeBoolean(context(), true)), -1);
  EXPECT_EQ(numbers.find(JSValueMakeNull(context())), -1);
  EXPECT_EQ(numbers.find(JSContextGetGlobalObject(context())), -1);
}

}  // namespace
