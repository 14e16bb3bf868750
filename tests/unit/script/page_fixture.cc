// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/script/page_fixture.h"

#include <gmock/gmock.h>

#include "platform/script/embedded.h"
#include "platform/script/native_api.h"

namespace {

/// Elements with attributes.
constexpr char kPage[] = R"((function (native, makeLayer) {
  class Element { constructor(type) { this.markup = new Map([['type', type]]); } }
  const layer = makeLayer(native, {
    prototypes: [Element.prototype], isElement: (value) => value instanceof Element, isConnected: () => true,
    localName: () => 'object', getAttribute: (element, name) => element.markup.has(name) ? element.markup.get(name) : null,
    setAttribute(element, name, text) { element.markup.set(name, text); layer.attributeChanged(element, name); },
    parameters: () => [], box: () => null, documentUrl: () => 'http://media.example/', resolveUrl: (text) => text, dispatch() {},
    reportError(error) { throw error; }, warn() {}, queueTask() {}, now: () => 0,
  });
  globalThis.makeObject = () => {
    const element = new Element('video/mp4');
    layer.inserted(element);
    return element;
  };
  globalThis.layer = layer;
}))";

}  // namespace

PageTest::PageTest() : ScriptTest(AVCONTROL_LIBRARY) {
  library().reset();
  setGlobal("native", script::makeNativeApi(binding()));
  const std::string page = std::string(kPage) + "(native, " + script::kAvElementSource + ")";
  EXPECT_EQ(eval(page), "undefined");
  EXPECT_EQ(eval("delete globalThis.native; globalThis.av = makeObject(); typeof av.play"), "function");
}

void PageTest::TearDown() {
  close();
  EXPECT_THAT(library().openHandles(), testing::IsEmpty());
  library().reset();
}
