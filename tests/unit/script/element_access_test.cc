// SPDX-License-Identifier: Apache-2.0
// What an element answers, whoever changed the value and whatever the page has made of the engine's objects.
#include <gmock/gmock.h>

#include <cstring>
#include <thread>

#include "platform/pluginhost/shell.h"
#include "platform/script/js_text.h"
#include "tests/unit/script/page_fixture.h"

namespace {

class ElementAccessTest : public PageTest {};

TEST_F(ElementAccessTest, ReadsWhatAnotherThreadHasJustSet) {
  EXPECT_EQ(eval("av.playState"), "0");
  for (const int state : {2, 1, 6}) {
    std::thread([&] { object().setProperty("playState", state); }).join();

    EXPECT_EQ(eval("av.playState"), std::to_string(state));
  }
  object().setProperty("playState", 0);
}

/// The object is in the present state when script hears of the told one.
class ToldStateTest : public PageTest {
 protected:
  /// Script has become(STATE): the object goes on by itself, on a thread of its own.
  ToldStateTest() {
    s_object = &object();
    const JSObjectCallAsFunctionCallback become = [](JSContextRef context, JSObjectRef, JSObjectRef, std::size_t,
                                                     const JSValueRef arguments[], JSValueRef*) -> JSValueRef {
      const int state = static_cast<int>(JSValueToNumber(context, arguments[0], nullptr));
      std::thread([state] { s_object->setProperty("playState", state); }).join();
      return JSValueMakeUndefined(context);
    };
    const script::JsText name("become");
    JSObjectSetProperty(context(), JSContextGetGlobalObject(context()), name,
                        JSObjectMakeFunctionWithCallback(context(), name, become), 0, nullptr);
  }
  std::string heard(int present, int told, const std::string& handler = "seen.push(av.playState)") {
    object().setProperty("playState", present);
    eval("globalThis.seen = []; av.onPlayStateChange = (state) => { " + handler + "; }");
    tell(told);
    eval("seen.push(Object.hasOwn(av, 'playState') ? 'left behind' : av.playState)");
    return eval("seen.join()");
  }
  void tell(int state) {
    eval("layer.fire(" + std::to_string(pluginhost::objectId(object())) + ", 'onPlayStateChange', [" + std::to_string(state) +
         "])");
  }
  void TearDown() override {
    object().setProperty("playState", 0);
    PageTest::TearDown();
  }

 private:
  static inline CorvelNativePluginBase* s_object = nullptr;
};

TEST_F(ToldStateTest, IsWhatAHandlerReads_WhileTheEventOfALaterOneIsToCome) {
  for (const int last : {1, 5, 6}) {
    const std::string after = "," + std::to_string(last);
    EXPECT_EQ(heard(last, 3), "3" + after);
    EXPECT_EQ(heard(last, 4), "4" + after);
    EXPECT_EQ(heard(last, 2), "2" + after);
    EXPECT_EQ(heard(last, last), std::to_string(last) + after);
  }
}

TEST_F(ToldStateTest, OfAStopOrASourceThatIsReadyIsConnecting) {
  for (const int told : {0, 7}) EXPECT_EQ(heard(6, told), "3,6");
}

TEST_F(ToldStateTest, IsThePresentOne_OnTheWayToTheNext) {
  for (const int told : {0, 3, 5, 7}) EXPECT_EQ(heard(4, told), "4,4");
}

TEST_F(ToldStateTest, GivesWayToWhatTheHandlerDoes) {
  object().setProperty("playState", 0);
  eval("av.data = 'http://media.example/film.mp4'");

  EXPECT_EQ(heard(5, 4, "seen.push(av.playState); av.play(1); seen.push(av.playState)"), "4,3,3");
}

TEST_F(ToldStateTest, IsWhatAHandlerReads_WhenTheObjectGoesOnMeanwhile) {
  for (const int present : {3, 4, 2}) {
    EXPECT_EQ(heard(present, 4, "seen.push(av.playState); become(6); seen.push(av.playState)"), std::to_string(present) + ",4,6");
  }
  EXPECT_EQ(heard(3, 7, "become(1); seen.push(av.playState); become(2); seen.push(av.playState)"), "3,2,2");
}

TEST_F(ToldStateTest, EndsWithItsHandler_WhateverThatDoesToTheElement) {
  object().setProperty("playState", 6);
  eval("globalThis.seen = []");
  eval("av.onPlayStateChange = () => { seen.push(av.playState); Object.freeze(av); }");
  tell(4);
  eval("seen.push(av.playState)");
  EXPECT_EQ(eval("seen.join()"), "4,6");
}

TEST_F(ToldStateTest, NeedsNothingThatAPageMayHaveReplaced) {
  eval("globalThis.kept = { ...Object.getOwnPropertyDescriptors(Reflect) }");
  eval("Reflect.defineProperty = Reflect.deleteProperty = () => { throw new Error('replaced'); }");
  const std::string seen = heard(6, 4);
  eval("Object.defineProperties(Reflect, kept)");
  EXPECT_EQ(seen, "4,6");
}

TEST_F(ToldStateTest, CannotBeWrittenAndNeedsNoExtensibleElement) {
  EXPECT_EQ(heard(6, 4, "av.playState = 9; seen.push(av.playState)"), "4,6");
  eval("Object.preventExtensions(av)");
  EXPECT_EQ(heard(6, 4), "6,6");
}

TEST_F(ElementAccessTest, ReadsWhatABoundTextHoldsNow) {
  char buffer[8] = "one";
  object().setProperty("data", buffer);
  EXPECT_EQ(eval("av.data + av.data"), "oneone");

  std::strcpy(buffer, "two");

  EXPECT_EQ(eval("av.data + av.data"), "twotwo");
  object().setProperty("data", static_cast<char*>(nullptr));
  EXPECT_EQ(eval("av.data === '' && av.data === ''"), "true");
}

TEST_F(ElementAccessTest, ReadsTheTextsThatThePageWrites) {
  EXPECT_EQ(eval("av.width = '320'; const before = av.width; av.width = '640'; [before, av.width, av.width].join()"),
            "320,640,640");
  EXPECT_EQ(eval("const other = makeObject(); other.width = '160'; [av.width, other.width].join()"), "640,160");
}

TEST_F(ElementAccessTest, CallsWithAnyNumberOfArguments) {
  EXPECT_EQ(eval("[av.setVolume(0), av.setVolume(50), av.setVolume(101), av.setVolume(102), av.setVolume(256)].join()"),
            "true,true,true,false,false");
  EXPECT_EQ(eval("[av.setVolume(-1), av.setVolume(50.4), av.setVolume(1e300), av.setVolume(), av.setVolume(50, 1, 2)].join()"),
            "false,true,false,true,true");
  EXPECT_EQ(eval("[av.next(), av.previous(1), av.focus(1, 2, 3)].join('|')"), "||");
}

TEST_F(ElementAccessTest, IsUndefined_OnceTheObjectHasGone) {
  EXPECT_EQ(eval("[av.playState, av.data, av.persist, av.setVolume(5)].join('|')"), "0||false|true");

  unbind();

  EXPECT_EQ(eval("[av.playState, av.playPosition, av.data, av.persist, av.setVolume(5), av.next()].join('|')"), "|||||");
  EXPECT_EQ(eval("typeof av.data"), "undefined");
}

TEST_F(ElementAccessTest, IsTheValueOfTheObjectOnly_WhateverThePageReplaces) {
  eval(R"(
    globalThis.reached = [];
    const spy = function (...values) { reached.push(this, ...values); return 'forged'; };
    for (const type of [Function, WeakMap, Map, Object, Array]) {
      for (const name of Object.getOwnPropertyNames(type.prototype)) {
        const { configurable, value } = Object.getOwnPropertyDescriptor(type.prototype, name);
        if (name !== 'constructor' && configurable && typeof value === 'function') {
          Object.defineProperty(type.prototype, name, { value: spy, configurable: true, writable: true });
        }
      }
    }
    Reflect.apply = spy;
    Array.prototype[Symbol.iterator] = spy;
    for (const name of ['data', 'width', 'playState', 'call']) {
      Object.defineProperty(Object.prototype, name, { get: spy, set: spy, configurable: true });
    })");

  const std::string read =
      eval("reached.length = 0; '' + av.playState + av.data + av.width + av.persist + av.setVolume(50) + av.next(1)");
  EXPECT_EQ(read, "0falsetrueundefined");
  EXPECT_EQ(eval("'' + av.playState + av.data + av.width + av.setVolume(50, 1, 2)"), "0true");
  EXPECT_EQ(eval("reached.length"), "0");
}

}  // namespace
