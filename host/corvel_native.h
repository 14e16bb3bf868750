// SPDX-License-Identifier: Apache-2.0
// The host framework as the plugin sees it: values, script tables, and the base classes of scriptable objects.
// Declarations only: a host framework defines all of it (libpluginsrequirements is the reference one).
#pragma once

#include <cstdint>
#include <memory>

#define CORVEL_API __attribute__((visibility("default")))

class CorvelNativePropertyBase;
class CorvelNativePluginBase;

/// Type codes of a value. The numbers are the framework's own and part of the interface.
enum CorvelNativeType : std::int32_t {
  CORVEL_UNDEFINED = 0,  ///< a default-constructed variant; script's undefined
  CORVEL_NO_VALUE = 1,   ///< script's null
  CORVEL_BOOLEAN = 2,
  CORVEL_INTEGER = 3,  ///< also every script number that is a whole 32-bit value
  CORVEL_DOUBLE = 5,   ///< every other script number
  CORVEL_STRING = 6,   ///< UTF-8, pointer and byte length
  CORVEL_OBJECT = 7,
  CORVEL_EVENT_HANDLER = 8,  ///< only in property tables: a slot for a script function
};

/// Access words of a property row.
enum CorvelNativeAccess : std::int32_t {
  CORVEL_PLUGIN_ONLY = -1,  ///< only the plugin writes it; the host ignores script writes
  CORVEL_ORDINARY = 0,
  CORVEL_ATTRIBUTE = 2,  ///< mirrors an attribute of the page's element
};

struct CorvelNativeVariantDetails {
  std::int32_t type;    ///< a CorvelNativeType
  std::int32_t access;  ///< a CorvelNativeAccess; meaningful in property tables only
};

/// A text as pointer and byte length, not necessarily NUL-terminated. A null pointer is a null text.
struct _CorvelNativeString {
  const char* text;
  std::uint32_t length;
  std::uint32_t owned;  ///< non-zero when the variant that holds it frees `text`; written by the host only
};

struct _CorvelNativeObject {
  std::shared_ptr<CorvelNativePropertyBase> object;
};

/// The framework's tagged value. `details.type` says which member of the union is alive; copying copies an owned text.
struct CORVEL_API _CorvelNativeVariant {
  CorvelNativeVariantDetails details;
  union {
    bool boolean;
    std::int32_t integer;
    double number;
    _CorvelNativeString string;
    _CorvelNativeObject object;
  };

  _CorvelNativeVariant();  ///< undefined, access 0, all value bytes zero
  _CorvelNativeVariant(const _CorvelNativeVariant& other);
  _CorvelNativeVariant& operator=(const _CorvelNativeVariant& other);
  ~_CorvelNativeVariant();
};

/// Writers of variants. Each releases the old value, sets type code and value and leaves the access word alone.
namespace cvnplUtil {
CORVEL_API void set(bool value, _CorvelNativeVariant& out);
CORVEL_API void set(int value, _CorvelNativeVariant& out);
CORVEL_API void set(unsigned long value, _CorvelNativeVariant& out);  ///< becomes a double: script has no wider integer
CORVEL_API void set(double value, _CorvelNativeVariant& out);
/// @p copy false borrows @p text, which must then outlive @p out. A null text stays a null text.
CORVEL_API void set(const char* text, _CorvelNativeVariant& out, bool copy);
CORVEL_API void set(const char* text, _CorvelNativeVariant& out, int length, bool copy);
CORVEL_API void set(std::shared_ptr<CorvelNativePropertyBase> object, _CorvelNativeVariant& out);
}  // namespace cvnplUtil

/// Thunks. False tells the host that the access failed; then `result` is not looked at. Thread: script.
using CorvelNativeGetter = bool (*)(CorvelNativePropertyBase* self, _CorvelNativeVariant* result);
using CorvelNativeSetter = bool (*)(CorvelNativePropertyBase* self, const _CorvelNativeVariant* value);
/// `args` always has at least one slot, zeroed when `argc` is 0.
using CorvelNativeFunction = bool (*)(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int argc,
                                      _CorvelNativeVariant* result);

/// One row of a property table. No getter: the host answers from the stored value. No setter: the host stores what script writes
/// (unless the access word is CORVEL_PLUGIN_ONLY).
struct CorvelNativeProperty {
  const char* name;
  std::uintptr_t reserved;  ///< the plugin leaves it zero; the host may use it
  _CorvelNativeVariant defaultValue;
  CorvelNativeGetter getter;
  CorvelNativeSetter setter;
};

struct CorvelNativeMethod {
  const char* name;
  CorvelNativeFunction function;
};

/// A host's own data of one object; opaque, so that a host can be replaced without a change to the plugin.
struct CorvelNativeObjectState;

/// Base of every scriptable object. The order of the virtual operations is part of the interface.
class CORVEL_API CorvelNativePropertyBase {
 public:
  /// @p parent is kept as a plain pointer and never dereferenced after its object's life.
  explicit CorvelNativePropertyBase(CorvelNativePropertyBase* parent);
  CorvelNativePropertyBase(const CorvelNativePropertyBase&) = delete;
  CorvelNativePropertyBase& operator=(const CorvelNativePropertyBase&) = delete;
  virtual ~CorvelNativePropertyBase();

  virtual int type() = 0;      ///< object-type number; 0 is a plugin
  virtual bool install() = 0;  ///< registers the class's tables with the four-argument install
  virtual unsigned long getNativePlayerHandle();
  virtual bool getURLForMediaSynchroniser(char*& out);
  virtual bool getPlayerType(char*& out);
  virtual int getComponentNum();
  virtual bool getComponentInfo(int index, char*& out);
  virtual void startOOBSubtitlePlayer(bool start);

  /// Registers the tables, which must outlive the object. @return false when a table is null but its count is not 0.
  bool install(CorvelNativeProperty* properties, unsigned int propertyCount, const CorvelNativeMethod* methods,
               unsigned int methodCount);

  /// Stored property values. Thread: any. They never run thunks and ignore the access word.
  /// @return false when there is no row of that name (then `out` is left alone) or its type differs.
  /// A text is bound: the host keeps the pointer (null allowed) and reads the buffer whenever script reads the property, so the
  /// plugin keeps the buffer alive until it sets another. A text row still at its empty default reads as null.
  bool getProperty(const char* name, bool& out);
  bool getProperty(const char* name, int& out);
  bool getProperty(const char* name, double& out);
  bool getProperty(const char* name, char*& out);
  bool setProperty(const char* name, bool value);
  bool setProperty(const char* name, int value);
  bool setProperty(const char* name, double value);
  bool setProperty(const char* name, char* text);

  CorvelNativeObjectState* state() const noexcept;  ///< for the host that made it

 private:
  CorvelNativeObjectState* m_state;
};

/// Base of a plugin: the object behind one element of a page.
class CORVEL_API CorvelNativePluginBase : public CorvelNativePropertyBase {
 public:
  explicit CorvelNativePluginBase(CorvelNativePropertyBase* parent);
  ~CorvelNativePluginBase() override;

  virtual int pluginType() = 0;
  virtual bool setWindowProperties(int x, int y, int width, int height) = 0;  ///< pixels of the 1280x720 plane
  virtual void willBeDestroyed() = 0;  ///< script thread, never from inside a thunk or an event
  virtual bool initPlugin() = 0;
  virtual bool setDocumentUrl(const char* url, unsigned int length) = 0;

  /// @return the object when its type() is 0, else null; null for null.
  static CorvelNativePluginBase* cast(CorvelNativePropertyBase* object);

  /// Raises a script event. Thread: any. Copies the name and the arguments before it returns, never runs script on this stack and
  /// never waits for the script thread. Order is kept per calling thread. Names without a property row are accepted.
  bool dispatchEvent(const char* name, const _CorvelNativeVariant* args, unsigned int count);
};

/// The plugin library's one exported function: makes one A/V Control object. Thread: script.
/// @return false when the object could not be made. An object without a player (no resources) is made all the same.
/// A host destroys all objects before it unloads the library.
extern "C" CORVEL_API bool corvelCreatePlugin(std::shared_ptr<CorvelNativePluginBase>* out);
