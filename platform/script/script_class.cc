// SPDX-License-Identifier: Apache-2.0
#include "platform/script/script_class.h"

#include <charconv>
#include <string>
#include <utility>

#include "platform/pluginhost/shell.h"
#include "platform/script/instance.h"
#include "platform/script/js_text.h"

namespace script {

namespace {

struct Row {
  Mark mark = Mark::kRow;
  unsigned int index = 0;
  const void* tableId = nullptr;
};

// A row's function may be taken from its prototype and called on something else.
Instance* receiver(JSContextRef context, JSObjectRef self, const Row& row, JSValueRef* exception) {
  Instance* instance = self == nullptr ? nullptr : instanceOf(self);
  if (instance != nullptr && instance->tableId == row.tableId) return instance;
  *exception = makeError(context, "TypeError", "called on an object of another class");
  return nullptr;
}

const Row& rowOf(JSObjectRef function) { return *static_cast<Row*>(JSObjectGetPrivate(function)); }

JSValueRef readRow(JSContextRef context, JSObjectRef function, JSObjectRef self, size_t, const JSValueRef[],
                   JSValueRef* exception) {
  const Row& row = rowOf(function);
  const Instance* instance = receiver(context, self, row, exception);
  if (instance == nullptr || instance->slot->object == nullptr) return JSValueMakeUndefined(context);
  _CorvelNativeVariant value;
  if (!pluginhost::readProperty(*instance->slot->object, row.index, value)) return JSValueMakeUndefined(context);
  return resultFor(context, *instance, value);
}

JSValueRef writeRow(JSContextRef context, JSObjectRef function, JSObjectRef self, size_t argc, const JSValueRef argv[],
                    JSValueRef* exception) {
  const Row& row = rowOf(function);
  const Instance* instance = receiver(context, self, row, exception);
  if (instance == nullptr || instance->slot->object == nullptr || argc == 0) return JSValueMakeUndefined(context);
  const HostValues value(context, argv, 1, instance->link->numbers);
  pluginhost::writeProperty(*instance->slot->object, row.index, *value.data());  // a refused write is silent by contract
  return JSValueMakeUndefined(context);
}

JSValueRef callMethodRow(JSContextRef context, JSObjectRef function, JSObjectRef self, size_t argc, const JSValueRef argv[],
                         JSValueRef* exception) {
  const Row& row = rowOf(function);
  const Instance* instance = receiver(context, self, row, exception);
  if (instance == nullptr) return JSValueMakeUndefined(context);
  return callRow(context, *instance, row.index, HostValues(context, argv, argc, instance->link->numbers));
}

int readLength(const Instance& list) {
  _CorvelNativeVariant length;
  if (list.slot->object == nullptr) return 0;
  if (!pluginhost::readProperty(*list.slot->object, static_cast<unsigned int>(list.lengthRow), length)) return 0;
  if (length.details.type == CORVEL_DOUBLE) return static_cast<int>(length.number);
  return length.details.type == CORVEL_INTEGER ? length.integer : 0;
}

// @return the list index that a property name spells ("0", "12", not "01"), or -1.
int indexOf(JSStringRef name) {
  const std::size_t length = JSStringGetLength(name);
  if (length == 0 || length > 9) return -1;
  const JSChar* text = JSStringGetCharactersPtr(name);
  if (text[0] == '0' && length > 1) return -1;
  int index = 0;
  for (std::size_t i = 0; i < length; ++i) {
    if (text[i] < '0' || text[i] > '9') return -1;
    index = index * 10 + (text[i] - '0');
  }
  return index;
}

bool hasItem(JSContextRef, JSObjectRef object, JSStringRef name) {
  const int index = indexOf(name);
  const Instance* list = index < 0 ? nullptr : instanceOf(object);
  return list != nullptr && index < readLength(*list);
}

// Asked for names that hasItem took. The list may have become shorter since: then the item is undefined, and nothing throws.
JSValueRef getItem(JSContextRef context, JSObjectRef object, JSStringRef name, JSValueRef*) {
  const int index = indexOf(name);
  const Instance* list = index < 0 ? nullptr : instanceOf(object);
  if (list == nullptr) return nullptr;  // not ours: the ordinary look-up goes on
  const JSValueRef argument = JSValueMakeNumber(context, index);
  return callRow(context, *list, static_cast<unsigned int>(list->itemRow), HostValues(context, &argument, 1, list->link->numbers));
}

void listItems(JSContextRef, JSObjectRef object, JSPropertyNameAccumulatorRef names) {
  const Instance* list = instanceOf(object);
  const int length = list == nullptr ? 0 : readLength(*list);
  for (int i = 0; i < length; ++i) JSPropertyNameAccumulatorAddName(names, JsText(std::to_string(i)));
}

// Runs on the script thread. What it drops is at most a component or rating object: plugins are destroyed by their holder.
void dropInstance(JSObjectRef object) { delete static_cast<Instance*>(JSObjectGetPrivate(object)); }
void dropRow(JSObjectRef function) { delete static_cast<Row*>(JSObjectGetPrivate(function)); }

JSClassRef makeFunctionClass(const char* name, JSObjectCallAsFunctionCallback call) {
  JSClassDefinition definition = kJSClassDefinitionEmpty;
  definition.className = name;
  definition.callAsFunction = call;
  definition.finalize = dropRow;
  return JSClassCreate(&definition);
}

JSClassRef makeInstanceClass(bool list) {
  JSClassDefinition definition = kJSClassDefinitionEmpty;
  definition.className = list ? "AVCollection" : "AVControlObject";
  definition.finalize = dropInstance;
  if (list) {
    definition.hasProperty = hasItem;
    definition.getProperty = getItem;
    definition.getPropertyNames = listItems;
  }
  return JSClassCreate(&definition);
}

// Engine classes are shared by all contexts and live as long as the process.
JSClassRef getterClass() {
  static JSClassRef made = makeFunctionClass("Function", readRow);
  return made;
}
JSClassRef setterClass() {
  static JSClassRef made = makeFunctionClass("Function", writeRow);
  return made;
}
JSClassRef methodClass() {
  static JSClassRef made = makeFunctionClass("Function", callMethodRow);
  return made;
}
JSClassRef instanceClass(bool list) {
  static JSClassRef object = makeInstanceClass(false);
  static JSClassRef collection = makeInstanceClass(true);
  return list ? collection : object;
}

// Builds one prototype.
class PrototypeBuilder {
 public:
  PrototypeBuilder(JSContextRef context, const void* tableId, const Intrinsics& intrinsics)
      : m_context(context), m_tableId(tableId), m_intrinsics(intrinsics), m_prototype(JSObjectMake(context, nullptr, nullptr)) {}

  void addProperty(const std::string& name, unsigned int index) {
    JSObjectRef descriptor = makeDescriptor(true);
    setProperty(m_context, descriptor, "get", makeFunction(getterClass(), index));
    setProperty(m_context, descriptor, "set", makeFunction(setterClass(), index));
    define(makeString(m_context, name), descriptor);
  }

  void addMethod(const std::string& name, unsigned int index) {
    JSObjectRef descriptor = makeDescriptor(true);
    setProperty(m_context, descriptor, "value", makeFunction(methodClass(), index));
    setProperty(m_context, descriptor, "writable", JSValueMakeBoolean(m_context, true));
    define(makeString(m_context, name), descriptor);
  }

  void addIteration() {
    JSObjectRef descriptor = makeDescriptor(false);
    setProperty(m_context, descriptor, "value", m_intrinsics.arrayValues);
    define(m_intrinsics.iterator, descriptor);
  }

  JSObjectRef prototype() const { return m_prototype; }

 private:
  JSObjectRef makeFunction(JSClassRef type, unsigned int index) const {
    JSObjectRef function = JSObjectMake(m_context, type, new Row{Mark::kRow, index, m_tableId});
    JSObjectSetPrototype(m_context, function, m_intrinsics.functionPrototype);  // call, apply and bind
    return function;
  }

  /// Without a prototype, on which a page may have put members of these names.
  JSObjectRef makeDescriptor(bool isListed) const {
    JSObjectRef descriptor = JSObjectMake(m_context, nullptr, nullptr);
    JSObjectSetPrototype(m_context, descriptor, JSValueMakeNull(m_context));
    setProperty(m_context, descriptor, "enumerable", JSValueMakeBoolean(m_context, isListed));
    setProperty(m_context, descriptor, "configurable", JSValueMakeBoolean(m_context, isListed));
    return descriptor;
  }

  void define(JSValueRef name, JSObjectRef descriptor) const {
    const JSValueRef arguments[] = {m_prototype, name, descriptor};
    JSObjectCallAsFunction(m_context, m_intrinsics.defineProperty, nullptr, 3, arguments, nullptr);
  }

  JSContextRef m_context;
  const void* m_tableId;
  const Intrinsics& m_intrinsics;
  JSObjectRef m_prototype;
};

}  // namespace

JSValueRef resultFor(JSContextRef context, const Instance& instance, const _CorvelNativeVariant& value) {
  if (instance.link->wrapper != nullptr) return toScript(context, value, *instance.link->wrapper);
  if (value.details.type == CORVEL_OBJECT) return JSValueMakeUndefined(context);
  struct Nobody : ObjectWrapper {
    JSValueRef wrap(const std::shared_ptr<CorvelNativePropertyBase>&) override { return nullptr; }
  } nobody;
  return toScript(context, value, nobody);
}

JSValueRef callRow(JSContextRef context, const Instance& instance, unsigned int row, const HostValues& arguments) {
  if (instance.slot->object == nullptr) return JSValueMakeUndefined(context);
  _CorvelNativeVariant result;
  if (!pluginhost::callMethod(*instance.slot->object, row, arguments.data(), arguments.count(), result)) {
    return JSValueMakeUndefined(context);
  }
  return resultFor(context, instance, result);
}

const std::shared_ptr<CorvelNativePropertyBase>* nativeObject(JSContextRef context, JSValueRef value) {
  if (!JSValueIsObject(context, value)) return nullptr;
  JSObjectRef object = JSValueToObject(context, value, nullptr);
  const Instance* instance = object == nullptr ? nullptr : instanceOf(object);
  return instance == nullptr ? nullptr : &instance->slot->object;
}

ScriptClass::ScriptClass(JSContextRef context, const CorvelNativePropertyBase& sample, std::shared_ptr<WrapperLink> link,
                         const Intrinsics& intrinsics)
    : m_context(context),
      m_link(std::move(link)),
      m_tableId(pluginhost::tableId(sample)),
      m_itemRow(pluginhost::findMethod(sample, "item")),
      m_lengthRow(pluginhost::findProperty(sample, "length")) {
  if (m_lengthRow < 0) m_itemRow = -1;
  PrototypeBuilder builder(context, m_tableId, intrinsics);
  m_prototype = builder.prototype();
  JSValueProtect(context, m_prototype);
  unsigned int index = 0;
  for (const pluginhost::RowInfo& row : pluginhost::propertyRows(sample)) {
    // Handler slots hold script functions: those live on the script side, where the collector sees them.
    if (row.typeCode != CORVEL_EVENT_HANDLER) builder.addProperty(std::string(row.name), index);
    ++index;
  }
  index = 0;
  for (const std::string_view name : pluginhost::methodRows(sample)) builder.addMethod(std::string(name), index++);
  if (m_itemRow >= 0) builder.addIteration();
}

ScriptClass::~ScriptClass() { JSValueUnprotect(m_context, m_prototype); }

JSObjectRef ScriptClass::instantiate(const std::shared_ptr<NativeSlot>& slot) const {
  auto* instance = new Instance{Mark::kInstance, slot, m_tableId, m_link, m_itemRow, m_lengthRow};
  JSObjectRef object = JSObjectMake(m_context, instanceClass(m_itemRow >= 0), instance);
  JSObjectSetPrototype(m_context, object, m_prototype);
  return object;
}

}  // namespace script
