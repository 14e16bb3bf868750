// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/clear_key_decryptor.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/mediamgmnt/key_trial.h"
#include "platform/mediamgmnt/rights_systems.h"
#include "platform/mediamgmnt/sample_cipher.h"

namespace mediamgmnt {
namespace {

using mediamgmnt::KeySession;

constexpr std::size_t kSubsampleEntry = 6;

/// Everything of an element that is C++: GStreamer hands out its own part as zeroed memory.
struct Decryptor {
  std::shared_ptr<KeySession> keys;
  SampleCipher cipher;
  CipherScheme scheme = CipherScheme::Cenc;  ///< of the streaming thread, like all below
  std::optional<KeyId> keyId;
  ContentKey key{};
  GstCaps* clearCaps = nullptr;        ///< a reference
  std::unique_ptr<KeyTrial> trial;     ///< while it is not known whether the key fits
  std::vector<GstBuffer*> held;        ///< decrypted, kept back until then: nobody sees what a wrong key makes; references
  bool condemned = false;              ///< there is no key, or it does not fit, and that is told: nothing more goes on
  std::atomic<bool> cancelled{false};  ///< flushing, or going down

  ~Decryptor() {
    drop();
    gst_caps_replace(&clearCaps, nullptr);
  }

  void drop() {
    for (GstBuffer* const buffer : held) gst_buffer_unref(buffer);
    held.clear();
    trial.reset();
  }
};

std::vector<std::uint8_t> bytesOf(const GstStructure& info, const char* field) {
  const GValue* const value = gst_structure_get_value(&info, field);
  if (value == nullptr || !GST_VALUE_HOLDS_BUFFER(value)) return {};
  GstBuffer* const buffer = gst_value_get_buffer(value);
  if (buffer == nullptr) return {};
  std::vector<std::uint8_t> bytes(gst_buffer_get_size(buffer));
  bytes.resize(gst_buffer_extract(buffer, 0, bytes.data(), bytes.size()));
  return bytes;
}

unsigned numberOf(const GstStructure& info, const char* field) {
  guint value = 0;
  gst_structure_get_uint(&info, field, &value);
  return value;
}

bool isEncrypted(const GstStructure& info) {
  gboolean encrypted = FALSE;
  return gst_structure_get_boolean(&info, "encrypted", &encrypted) && encrypted;
}

std::optional<KeyId> keyIdOf(const GstStructure& info) {
  const std::vector<std::uint8_t> bytes = bytesOf(info, "kid");
  KeyId id{};
  if (bytes.size() != id.size()) return std::nullopt;
  std::copy(bytes.begin(), bytes.end(), id.begin());
  return id;
}

std::size_t bigEndian(const std::uint8_t* bytes, std::size_t count) {
  std::size_t value = 0;
  for (std::size_t i = 0; i < count; ++i) value = value << 8U | bytes[i];
  return value;
}

std::vector<Subsample> subsamplesOf(const GstStructure& info) {
  const std::vector<std::uint8_t> table = bytesOf(info, "subsamples");
  const std::size_t count = std::min<std::size_t>(numberOf(info, "subsample_count"), table.size() / kSubsampleEntry);
  std::vector<Subsample> parts(count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint8_t* const entry = table.data() + i * kSubsampleEntry;
    parts[i] = {bigEndian(entry, 2), bigEndian(entry + 2, 4)};
  }
  return parts;
}

SampleProtection protectionOf(const GstStructure& info, CipherScheme scheme) {
  SampleProtection protection;
  protection.scheme = scheme;
  std::vector<std::uint8_t> iv = bytesOf(info, "iv");
  if (iv.empty()) iv = bytesOf(info, "constant_iv");
  std::copy_n(iv.begin(), std::min(iv.size(), protection.iv.size()), protection.iv.begin());
  protection.subsamples = subsamplesOf(info);
  protection.cryptBlocks = numberOf(info, "crypt_byte_block");
  protection.skipBlocks = numberOf(info, "skip_byte_block");
  return protection;
}

/// What is kept back goes nowhere: let through with the next event, it reaches outputs that are not set up, which GStreamer 1.22
/// crashes over.
void condemn(Decryptor& state, KeyFault fault, const KeyId& id) {
  state.condemned = true;
  state.drop();
  state.keys->report(fault, id);
}

/// @return false when there is no key; that has been reported then, unless nobody wants to know.
bool takeKey(Decryptor& state, const KeyId& id) {
  if (state.condemned || state.keys == nullptr) return false;
  if (state.keyId == id) return true;
  const std::optional<ContentKey> key = state.keys->find(id, state.cancelled);
  if (!key) {
    if (!state.cancelled) condemn(state, KeyFault::Missing, id);
    return false;
  }
  state.keyId = id;
  state.key = *key;
  if (!state.keys->isProven(id) && state.clearCaps != nullptr) state.trial = KeyTrial::begin(state.clearCaps);
  return true;
}

/// @return false when the key does not fit, which has been reported then.
bool passesTrial(Decryptor& state, GstBuffer* buffer) {
  const bool isDelta = GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DELTA_UNIT);
  const bool canBeTried = state.trial != nullptr && (state.trial->hasBegun() || !isDelta);
  GstMapInfo map;
  if (!canBeTried || !gst_buffer_map(buffer, &map, GST_MAP_READ)) return true;
  const KeyTrial::Verdict verdict = state.trial->take(map.data, map.size);
  gst_buffer_unmap(buffer, &map);
  if (verdict == KeyTrial::Verdict::Undecided) return true;
  state.trial.reset();
  if (verdict == KeyTrial::Verdict::Fits) state.keys->noteFits(*state.keyId);
  if (verdict == KeyTrial::Verdict::Wrong) condemn(state, KeyFault::Wrong, *state.keyId);
  return !state.condemned;
}

bool decryptBuffer(Decryptor& state, GstBuffer* buffer, const SampleProtection& protection) {
  GstMapInfo map;
  if (!gst_buffer_map(buffer, &map, GST_MAP_READWRITE)) return false;
  const bool done = state.cipher.decrypt(state.key, protection, map.data, map.size);
  gst_buffer_unmap(buffer, &map);
  return done;
}

/// What the decrypted stream is; null for caps that do not tell.
GstCaps* clearCaps(const GstCaps* encrypted) {
  GstStructure* const structure = gst_structure_copy(gst_caps_get_structure(encrypted, 0));
  const char* const type = gst_structure_get_string(structure, "original-media-type");
  if (type == nullptr) {
    gst_structure_free(structure);
    return nullptr;
  }
  gst_structure_set_name(structure, std::string(type).c_str());
  gst_structure_remove_fields(structure, "original-media-type", "protection-system", "cipher-mode", nullptr);
  GstCaps* const caps = gst_caps_new_empty();
  gst_caps_append_structure(caps, structure);
  return caps;
}

CipherScheme schemeOf(const GstCaps* caps) {
  const char* const mode = gst_structure_get_string(gst_caps_get_structure(caps, 0), "cipher-mode");
  return mode != nullptr && std::strcmp(mode, "cbcs") == 0 ? CipherScheme::Cbcs : CipherScheme::Cenc;
}

}  // namespace
}  // namespace mediamgmnt

namespace {

using mediamgmnt::Decryptor;

struct AvcClearKey {
  GstElement element;
  GstPad* sink;
  GstPad* source;
  Decryptor* state;
};

struct AvcClearKeyClass {
  GstElementClass parent;
};

G_DEFINE_TYPE(AvcClearKey, avc_clear_key, GST_TYPE_ELEMENT)

/// With each of the rights systems, and with none: content may name none at all.
GstPadTemplate* makeSinkTemplate() {
  GstCaps* const caps = gst_caps_new_empty();
  for (const std::string_view system : mediamgmnt::kRightsSystems) {
    gst_caps_append_structure(
        caps, gst_structure_new("application/x-cenc", "protection-system", G_TYPE_STRING, std::string(system).c_str(), nullptr));
  }
  gst_caps_append_structure(caps, gst_structure_new_empty("application/x-cenc"));
  GstPadTemplate* const pad = gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, caps);
  gst_caps_unref(caps);
  return pad;
}

GstStaticPadTemplate sourceTemplate = GST_STATIC_PAD_TEMPLATE(
    "src", GST_PAD_SRC, GST_PAD_ALWAYS,
    GST_STATIC_CAPS(
        "video/x-h264; video/x-h265; video/x-vp9; video/x-av1; audio/mpeg; audio/x-ac3; audio/x-eac3; audio/x-ac4; audio/x-opus"));

AvcClearKey* self(gpointer object) { return static_cast<AvcClearKey*>(object); }

/// What was kept back goes on.
GstFlowReturn release(AvcClearKey* element) {
  GstFlowReturn result = GST_FLOW_OK;
  for (GstBuffer* const buffer : std::exchange(element->state->held, {})) {
    if (result == GST_FLOW_OK) {
      result = gst_pad_push(element->source, buffer);
    } else {
      gst_buffer_unref(buffer);
    }
  }
  return result;
}

/// What is condemned is dropped without an error: the source is about to be closed for it, and a flow that fails besides would only
/// race with that.
GstFlowReturn refuse(GstBuffer* buffer, const Decryptor& state) {
  gst_buffer_unref(buffer);
  if (state.cancelled) return GST_FLOW_FLUSHING;
  return state.condemned ? GST_FLOW_OK : GST_FLOW_ERROR;
}

/// In its place among those that are kept back.
GstFlowReturn passClear(AvcClearKey* element, GstBuffer* buffer) {
  if (element->state->held.empty()) return gst_pad_push(element->source, buffer);
  element->state->held.push_back(buffer);
  return GST_FLOW_OK;
}

GstFlowReturn decryptAndPush(GstPad*, GstObject* parent, GstBuffer* buffer) {
  using namespace mediamgmnt;
  Decryptor& state = *self(parent)->state;
  const auto* const meta = gst_buffer_get_protection_meta(buffer);
  if (meta == nullptr || !isEncrypted(*meta->info)) return passClear(self(parent), buffer);
  const std::optional<KeyId> id = keyIdOf(*meta->info);
  if (!id || !takeKey(state, *id)) return refuse(buffer, state);
  const SampleProtection protection = protectionOf(*meta->info, state.scheme);
  buffer = gst_buffer_make_writable(buffer);
  if (!decryptBuffer(state, buffer, protection) || !passesTrial(state, buffer)) return refuse(buffer, state);
  state.held.push_back(buffer);
  return state.trial != nullptr ? GST_FLOW_OK : release(self(parent));
}

gboolean passCaps(AvcClearKey* element, GstEvent* event) {
  GstCaps* encrypted = nullptr;
  gst_event_parse_caps(event, &encrypted);
  GstCaps* const caps = mediamgmnt::clearCaps(encrypted);
  element->state->scheme = mediamgmnt::schemeOf(encrypted);
  gst_event_unref(event);
  gst_caps_replace(&element->state->clearCaps, caps);
  if (caps == nullptr) return FALSE;
  const gboolean accepted = gst_pad_push_event(element->source, gst_event_new_caps(caps));
  gst_caps_unref(caps);
  return accepted;
}

void cancel(Decryptor& state) {
  state.cancelled = true;
  if (state.keys != nullptr) state.keys->wake();
}

/// No data flow meanwhile. The key is asked for again, and tried again if it was not proven.
void restart(Decryptor& state) {
  state.drop();
  state.keyId.reset();
  state.condemned = false;
  state.cancelled = false;
}

gboolean handleEvent(GstPad* pad, GstObject* parent, GstEvent* event) {
  AvcClearKey* const element = self(parent);
  const bool isSerialized = (gst_event_type_get_flags(GST_EVENT_TYPE(event)) & GST_EVENT_TYPE_SERIALIZED) != 0;
  const bool isInOrder = isSerialized && GST_EVENT_TYPE(event) != GST_EVENT_FLUSH_STOP;
  if (isInOrder && !element->state->cancelled) release(element);
  switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_CAPS: return passCaps(element, event);
    case GST_EVENT_FLUSH_START: cancel(*element->state); break;
    case GST_EVENT_FLUSH_STOP: restart(*element->state); break;
    default: break;
  }
  return gst_pad_event_default(pad, parent, event);
}

GstStateChangeReturn changeState(GstElement* element, GstStateChange transition) {
  Decryptor& state = *self(element)->state;
  if (transition == GST_STATE_CHANGE_READY_TO_PAUSED) restart(state);
  if (transition == GST_STATE_CHANGE_PAUSED_TO_READY) cancel(state);
  return GST_ELEMENT_CLASS(avc_clear_key_parent_class)->change_state(element, transition);
}

void finalize(GObject* object) {
  delete self(object)->state;
  G_OBJECT_CLASS(avc_clear_key_parent_class)->finalize(object);
}

void avc_clear_key_init(AvcClearKey* element) {
  element->state = new Decryptor;
  GstElementClass* const type = GST_ELEMENT_GET_CLASS(element);
  element->sink = gst_pad_new_from_template(gst_element_class_get_pad_template(type, "sink"), "sink");
  element->source = gst_pad_new_from_static_template(&sourceTemplate, "src");
  gst_pad_set_chain_function(element->sink, decryptAndPush);
  gst_pad_set_event_function(element->sink, handleEvent);
  gst_pad_use_fixed_caps(element->source);
  gst_element_add_pad(&element->element, element->sink);
  gst_element_add_pad(&element->element, element->source);
}

void avc_clear_key_class_init(AvcClearKeyClass* type) {
  GstElementClass* const elementClass = &type->parent;
  elementClass->change_state = changeState;
  G_OBJECT_CLASS(type)->finalize = finalize;
  gst_element_class_add_pad_template(elementClass, makeSinkTemplate());
  gst_element_class_add_static_pad_template(elementClass, &sourceTemplate);
  gst_element_class_set_static_metadata(elementClass, "ClearKey decryptor", "Decryptor",
                                        "Decrypts samples of the common encryption with clear keys",
                                        "A/V Control reference platform");
}

}  // namespace

namespace mediamgmnt {

bool registerClearKeyDecryptor() {
  return gst_element_register(nullptr, kDecryptorName, GST_RANK_PRIMARY, avc_clear_key_get_type()) != FALSE;
}

void giveKeys(GstElement* decryptor, std::shared_ptr<KeySession> keys) { self(decryptor)->state->keys = std::move(keys); }

}  // namespace mediamgmnt
