// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "platform/script/js_text.h"
#include "platform/script/native_api.h"
#include "platform/script/variant_values.h"
#include "tests/unit/script/script_fixture.h"

namespace {

class BindingTest : public ScriptTest {
 protected:
  BindingTest() {
    setGlobal("plugin", binding().create());
    auto teller = std::make_shared<TellingObject>();
    teller->install();
    setGlobal("teller", binding().wrap(teller));
  }

  std::uint64_t pluginId() {
    setGlobal("native", script::makeNativeApi(binding()));
    return std::stoull(eval("native.id(plugin)"));
  }
};

class EarlyPageTest : public ScriptTest {};

TEST_F(EarlyPageTest, GetsAtNoObject_WhateverItReplacesBeforeTheFirstOne) {
  eval(R"(
    globalThis.reached = [];
    globalThis.WeakRef = function (object) { reached.push(object); };
    for (const name of ['tell', 'item', 'get', 'set']) {
      Object.defineProperty(Object.prototype, name, {
        get() { return function () { reached.push(this); }; }, set(value) { reached.push(this, value); }, configurable: true });
    })");

  auto teller = std::make_shared<TellingObject>();
  teller->install();
  setGlobal("teller", binding().wrap(teller));
  auto list = std::make_shared<NumberList>();
  list->install();
  setGlobal("list", binding().wrap(list));

  EXPECT_EQ(eval("teller.tell('x') + list.length + typeof list.item(0)"), "6:1:x3number");
  EXPECT_EQ(eval("reached.length"), "0");
}

/// Wants much of the engine before it answers.
class GreedyWrapper : public script::ObjectWrapper {
 public:
  explicit GreedyWrapper(std::function<JSValueRef()> make) : m_make(std::move(make)) {}
  JSValueRef wrap(const std::shared_ptr<CorvelNativePropertyBase>&) override { return m_make(); }

 private:
  std::function<JSValueRef()> m_make;
};

TEST_F(EarlyPageTest, HearsAllOfAnEvent_ThoughTheEngineCollectsBetweenItsArguments) {
  constexpr int kTexts = 300;
  std::vector<_CorvelNativeVariant> values(kTexts + 1);
  for (int i = 0; i < kTexts; ++i)
    cvnplUtil::set(("text number " + std::to_string(i)).c_str(), values[static_cast<std::size_t>(i)], true);
  cvnplUtil::set(std::make_shared<TellingObject>(), values.back());
  GreedyWrapper wrapper([this] {
    collect();
    return script::makeString(context(), eval("Array.from({ length: 1000 }, (_, i) => 'another ' + i)[999]"));
  });

  setGlobal("list", script::toScriptList(context(), values, wrapper));

  EXPECT_EQ(eval("list.slice(0, -1).filter((each, i) => each !== 'text number ' + i).length + '/' + list.length"), "0/301");
}

struct Conversion {
  const char* script;
  const char* told;
};

class ArgumentTest : public BindingTest, public testing::WithParamInterface<Conversion> {};

TEST_P(ArgumentTest, ReachesTheMethodAs) {
  EXPECT_EQ(eval("teller.tell(" + std::string(GetParam().script) + ")"), GetParam().told);
}

INSTANTIATE_TEST_SUITE_P(Values, ArgumentTest,
                         testing::Values(Conversion{"undefined", "0"}, Conversion{"null", "1"}, Conversion{"true", "2:true"},
                                         Conversion{"false", "2:false"}, Conversion{"5", "3:5"}, Conversion{"5.0", "3:5"},
                                         Conversion{"-0", "3:0"}, Conversion{"2147483647", "3:2147483647"},
                                         Conversion{"-2147483648", "3:-2147483648"}, Conversion{"2147483648", "5"},
                                         Conversion{"1.5", "5"}, Conversion{"NaN", "5"}, Conversion{"Infinity", "5"},
                                         Conversion{"'text'", "6:4:text"}, Conversion{"''", "6:0:"},
                                         Conversion{"'gr\\u00fc\\u00dfe \\ud83d\\ude00'",
                                                    "6:12:gr\xC3\xBC\xC3\x9F"
                                                    "e \xF0\x9F\x98\x80"},
                                         Conversion{"'a\\0b'.length === 3 ? 'a\\0b'.slice(0, 1) : ''", "6:1:a"},
                                         Conversion{"teller", "7:object"}, Conversion{"{}", "7:null"}, Conversion{"[]", "7:null"},
                                         Conversion{"function () {}", "7:null"}, Conversion{"Symbol()", "0"},
                                         Conversion{"teller.tell", "7:null"}, Conversion{"", ""},
                                         Conversion{"1, 'b', null, 4", "3:1|6:1:b|1|3:4"}));

TEST_F(BindingTest, ReadsEveryKindOfRow) {
  EXPECT_EQ(eval("typeof plugin.count + plugin.count"), "number7");
  EXPECT_EQ(eval("typeof plugin.speed + plugin.speed"), "number1");
  EXPECT_EQ(eval("typeof plugin.flag + plugin.flag"), "booleanfalse");
  EXPECT_EQ(eval("typeof plugin.label + plugin.label"), "stringfirst label");
  EXPECT_EQ(eval("plugin.title === ''"), "true");
  EXPECT_EQ(eval("plugin.nothing"), "null");
  EXPECT_EQ(eval("plugin.broken"), "undefined");
  EXPECT_EQ(eval("plugin.answer"), "42");
  EXPECT_EQ(eval("teller.infinite"), "Infinity");
  EXPECT_EQ(eval("teller.nullText"), "null");
  EXPECT_EQ(eval("teller.malformed"), "a\xEF\xBF\xBDz");
}

TEST_F(BindingTest, WritesRows_AndIgnoresWhatIsRefused) {
  EXPECT_EQ(eval("plugin.level = 9; plugin.level"), "9");
  EXPECT_EQ(eval("'use strict'; plugin.count = 9; plugin.count"), "7");
  EXPECT_EQ(eval("'use strict'; plugin.broken = 9; plugin.broken"), "undefined");
}

TEST_F(BindingTest, CallsMethods) {
  EXPECT_EQ(eval("plugin.echo('x')"), "x");
  EXPECT_EQ(eval("plugin.fail()"), "undefined");
  EXPECT_EQ(eval("plugin.firstSlot()"), "true");
  EXPECT_EQ(eval("plugin.nullObject()"), "null");
  EXPECT_EQ(eval("plugin.echo.call(plugin, 4) + plugin.echo.apply(plugin, [5])"), "9");
  EXPECT_EQ(eval("typeof plugin.echo"), "function");
}

TEST_F(BindingTest, LeavesHandlerSlotsToScript) {
  EXPECT_EQ(eval("plugin.onThing"), "undefined");
  EXPECT_EQ(eval("plugin.onThing = 5; plugin.onThing"), "5");
}

TEST_F(BindingTest, SharesOnePrototypeInAClass) {
  setGlobal("other", binding().create());
  EXPECT_EQ(eval("Object.getPrototypeOf(plugin) === Object.getPrototypeOf(other)"), "true");
  EXPECT_EQ(eval("Object.getPrototypeOf(plugin) === Object.getPrototypeOf(teller)"), "false");
  EXPECT_EQ(eval("Object.keys(Object.getPrototypeOf(teller)).sort().join()"), "infinite,malformed,nullText,tell");
}

TEST_F(BindingTest, GivesANativeObjectOneScriptObject) {
  EXPECT_EQ(eval("plugin.echo(teller) === teller"), "true");
  EXPECT_EQ(eval("const made = plugin.child(); plugin.echo(made) === made && plugin.child() !== made"), "true");
  collect();
  EXPECT_EQ(eval("made.mark = 1; plugin.echo(made).mark"), "1");
}

TEST_F(BindingTest, ShowsItsObjectsToNothingThatAPageHasReplaced) {
  eval(R"js(globalThis.seen = 0;
    const spy = (original) => function (...parameters) { seen += 1; return Reflect.apply(original, this, parameters); };
    for (const prototype of [Map.prototype, WeakRef.prototype, Object.getPrototypeOf(new Map().entries())]) {
      for (const name of Object.getOwnPropertyNames(prototype)) {
        const descriptor = Object.getOwnPropertyDescriptor(prototype, name);
        if (name === 'constructor') continue;
        for (const part of ['get', 'value']) if (typeof descriptor[part] === 'function') descriptor[part] = spy(descriptor[part]);
        Object.defineProperty(prototype, name, descriptor);
      }
    })js");

  for (int i = 0; i < 100; ++i) binding().create();  // some are swept
  setGlobal("fresh", binding().create());

  EXPECT_EQ(eval("fresh.echo(fresh) === fresh"), "true");
  EXPECT_EQ(eval("seen"), "0");
}

TEST_F(BindingTest, ThrowsATypeError_OnAnotherReceiver) {
  const std::string read = "Object.getOwnPropertyDescriptor(Object.getPrototypeOf(plugin), 'count').get";
  for (const char* receiver : {"{}", "teller", "5", "undefined", "plugin.echo", "globalThis"}) {
    EXPECT_THAT(eval(read + ".call(" + receiver + ")"), testing::StartsWith("threw TypeError")) << receiver;
    EXPECT_THAT(eval("plugin.echo.call(" + std::string(receiver) + ", 1)"), testing::StartsWith("threw TypeError")) << receiver;
  }
}

TEST_F(BindingTest, ReadsUndefined_AfterTheObjectWasDestroyed) {
  const std::uint64_t id = pluginId();

  binding().destroy(id);
  binding().destroy(id);

  EXPECT_EQ(binding().plugin(id), nullptr);
  EXPECT_EQ(eval("plugin.count"), "undefined");
  EXPECT_EQ(eval("plugin.level = 3; plugin.level"), "undefined");
  EXPECT_EQ(eval("plugin.echo(1)"), "undefined");
  EXPECT_EQ(eval("native.id(plugin)"), "undefined");
  EXPECT_EQ(eval("teller.tell(plugin)"), "7:null");
}

TEST_F(BindingTest, ReleasesObjectsThatScriptDropped) {
  TellingObject::destroyed = 0;
  for (int i = 0; i < 200; ++i) {
    auto object = std::make_shared<TellingObject>();
    object->install();
    setGlobal("dropped", binding().wrap(object));
  }

  close();

  EXPECT_EQ(TellingObject::destroyed, 201);
}

/// A page that asks for a component again and again gets a fresh object each time: they must not pile up.
TEST_F(BindingTest, ReleasesObjectsThatScriptDropped_WhileItGoesOn) {
  TellingObject::destroyed = 0;
  for (int i = 0; i < 1000; ++i) {
    auto object = std::make_shared<TellingObject>();
    object->install();
    setGlobal("dropped", binding().wrap(object));
  }
  eval("dropped = null");

  collect();

  EXPECT_GT(TellingObject::destroyed, 900);
  EXPECT_EQ(eval("teller.tell(5)"), "3:5");
}

TEST_F(BindingTest, IndexesALike) {
  auto list = std::make_shared<NumberList>();
  list->install();
  setGlobal("list", binding().wrap(list));

  EXPECT_EQ(eval("list.length"), "3");
  EXPECT_EQ(eval("list[0] + ' ' + list[2] + ' ' + list.item(1)"), "0 20 10");
  EXPECT_EQ(eval("list[3] + ' ' + list[-1] + ' ' + list['01'] + ' ' + list['1 ']"), "undefined undefined undefined undefined");
  EXPECT_EQ(eval("[...list].join() + Array.from(list).length + Array.prototype.map.call(list, (x) => x + 1).join()"),
            "0,10,2031,11,21");
  EXPECT_EQ(eval("let sum = 0; for (const value of list) sum += value; sum"), "30");
  EXPECT_EQ(eval("(2 in list) + ' ' + (3 in list) + ' ' + ('item' in list)"), "true false true");
  EXPECT_EQ(eval("Object.keys(list).join()"), "0,1,2");
  EXPECT_EQ(eval("plugin.echo(list) === list"), "true");

  list->length = -1;

  EXPECT_EQ(eval("list[0] + ' ' + [...list].length + ' ' + list.length"), "undefined 0 -1");
}

/// The media may change between the two questions that one access asks, and in the middle of a loop.
TEST_F(BindingTest, ReadsUndefined_WhereAListGetsShorterMeanwhile) {
  auto list = std::make_shared<NumberList>();
  list->install();
  setGlobal("list", binding().wrap(list));

  list->lostAtARead = 3;
  EXPECT_EQ(eval("list[0]"), "undefined");

  list->length = 3;
  list->lostAtARead = 1;
  EXPECT_EQ(eval("const seen = []; for (const value of list) seen.push(value); seen.join()"), "0");
}

TEST_F(BindingTest, OffersTheNativeApi) {
  const std::uint64_t id = pluginId();
  setGlobal("id", JSValueMakeNumber(context(), static_cast<double>(id)));

  EXPECT_EQ(
      eval("native.rows(id).properties.length + ' ' + native.rows(id).properties[0].name + ' ' + native.rows(id).methods.join()"),
      "16 title echo,fail,firstSlot,nullObject,child");
  EXPECT_EQ(eval("native.flag(id, 'fullScreen')"), "undefined");
  EXPECT_EQ(eval("native.setFlag(id, 'fullScreen', true); native.flag(id, 'fullScreen')"), "true");
  EXPECT_EQ(eval("native.storedNumber(id, 'count')"), "7");
  EXPECT_EQ(eval("native.storedText(id, 'label')"), "first label");
  EXPECT_EQ(eval("native.storedText(id, 'title')"), "");
  EXPECT_EQ(eval("native.compile('1 + 1')"), "2");
  EXPECT_THAT(eval("native.compile('1 +')"), testing::StartsWith("threw SyntaxError"));
  EXPECT_THAT(eval("native.flag(id)"), testing::StartsWith("threw TypeError"));
  EXPECT_EQ(eval("native.destroy(id); native.rows(id)"), "undefined");
  EXPECT_EQ(eval("native.setWindow(999, 0, 0, 1, 1)"), "false");
}

TEST_F(BindingTest, TellsTheRowsOfAllObjects_WhenTheyAreKnown) {
  const std::uint64_t id = pluginId();
  EXPECT_EQ(eval("native.rows(0)"), "undefined");

  const script::Tables tables = script::tablesOf(*binding().plugin(id));
  binding().setKnownTables(&tables);

  EXPECT_EQ(eval("native.rows(0).properties.length + ' ' + native.rows(0).methods.join()"),
            "16 echo,fail,firstSlot,nullObject,child");
}

TEST_F(BindingTest, ListsItsPluginsOldestFirst) {
  const std::uint64_t first = pluginId();
  setGlobal("second", binding().create());

  const std::vector<CorvelNativePluginBase*> plugins = binding().plugins();

  ASSERT_EQ(plugins.size(), 2U);
  EXPECT_EQ(pluginhost::objectId(*plugins[0]), first);
  EXPECT_EQ(std::to_string(pluginhost::objectId(*plugins[1])), eval("native.id(second)"));
}

TEST_F(BindingTest, LeavesScriptWithHarmlessObjects_WhenItHasGone) {
  pluginId();
  eval(
      "child = plugin.child(); tell = teller.tell; setter = Object.getOwnPropertyDescriptor(Object.getPrototypeOf(plugin), "
      "'count').set");

  unbind();

  EXPECT_EQ(eval("[plugin.count, plugin.child(), native.create(), native.rows(0), native.id(plugin)].join('|')"), "||||");
  EXPECT_EQ(eval("plugin.count = 3; setter.call(plugin, 4); native.destroy(1); 'alive'"), "alive");
  EXPECT_EQ(eval("tell.call(teller, 5)"), "3:5");  // an object that its holder did not destroy answers with values
  collect();
  EXPECT_EQ(eval("plugin.echo('x')"), "undefined");
}

}  // namespace
