// SPDX-License-Identifier: Apache-2.0
#include "components/component_collection.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "components/audio_component.h"
#include "components/component_records.h"
#include "components/integer_argument.h"
#include "components/script_rows.h"
#include "components/subtitle_component.h"
#include "components/video_component.h"
#include "plugin/av_control_plugin.h"

namespace hbbtv_avc {

namespace {

bool getLengthThunk(CorvelNativePropertyBase* self, _CorvelNativeVariant* result) {
  auto* const collection = HbbTVComponentCollectionClass::cast(self);
  if (collection == nullptr) return false;
  cvnplUtil::set(collection->getAvailableComponentsNumber(), *result);
  return true;
}

bool itemThunk(CorvelNativePropertyBase* self, const _CorvelNativeVariant* args, unsigned int /*argc*/,
               _CorvelNativeVariant* result) {
  const int index = integerOf(args[0]);  // of whatever type the argument is
  auto* const collection = HbbTVComponentCollectionClass::cast(self);
  if (collection == nullptr || index < 0) return false;
  const std::shared_ptr<CorvelNativePropertyBase> item = collection->getItem(index);
  cvnplUtil::set(item, *result);
  return item != nullptr;
}

/// The counts come from outside: none of them may overflow a sum.
int saturated(long long value) {
  return static_cast<int>(std::clamp<long long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

int sum(int left, int right) { return saturated(static_cast<long long>(left) + right); }

}  // namespace

CorvelNativeProperty HbbTVComponentCollectionClass::sm_properties[] = {
    rows::computedInteger("length", getLengthThunk),
};
const unsigned int HbbTVComponentCollectionClass::sm_prop_length = sizeof sm_properties / sizeof sm_properties[0];
const CorvelNativeMethod HbbTVComponentCollectionClass::sm_methods[] = {
    {"item", itemThunk},
};
const unsigned int HbbTVComponentCollectionClass::sm_met_length = sizeof sm_methods / sizeof sm_methods[0];

HbbTVComponentCollectionClass::HbbTVComponentCollectionClass(CorvelNativePropertyBase* parent, AVControlPlugin* plugin,
                                                             eAVComponentCollectionType_e kind)
    : CorvelNativePropertyBase(parent), m_kind(kind), m_plugin(plugin->weak_from_this()) {}

HbbTVComponentCollectionClass::~HbbTVComponentCollectionClass() {
  for (auto& [index, object] : m_items) object.reset();
  m_items.clear();
}

std::shared_ptr<HbbTVComponentCollectionClass> HbbTVComponentCollectionClass::create(CorvelNativePropertyBase* parent,
                                                                                     AVControlPlugin* plugin,
                                                                                     eAVComponentCollectionType_e kind) {
  auto collection = std::make_shared<HbbTVComponentCollectionClass>(parent, plugin, kind);
  collection->install();
  return collection;
}

HbbTVComponentCollectionClass* HbbTVComponentCollectionClass::cast(CorvelNativePropertyBase* object) {
  if (object == nullptr || object->type() != kObjectType) return nullptr;
  return static_cast<HbbTVComponentCollectionClass*>(object);
}

bool HbbTVComponentCollectionClass::install() {
  return CorvelNativePropertyBase::install(sm_properties, sm_prop_length, sm_methods, sm_met_length);
}

// --- Counting

int HbbTVComponentCollectionClass::getAvailableComponentsNumber() {
  if (owner() == nullptr) return 0;
  switch (m_kind) {
    case AV_COLLECTION_AVAILABLE_AUDIO: return audioCount(false);
    case AV_COLLECTION_AVAILABLE_VIDEO: return videoCount(false);
    case AV_COLLECTION_AVAILABLE_SUBTITLE: return availableSubtitleCount();
    case AV_COLLECTION_ACTIVE_AUDIO: return audioCount(true);
    case AV_COLLECTION_ACTIVE_VIDEO: return videoCount(true);
    case AV_COLLECTION_ACTIVE_SUBTITLE: return librarySubtitleCount(true);
    case AV_COLLECTION_ALL: return countAll();
  }
  return 0;
}

int HbbTVComponentCollectionClass::audioCount(bool active) {
  int count = 0;
  getAudioComponentLength(active, count);
  return count;
}

int HbbTVComponentCollectionClass::videoCount(bool active) {
  int count = 0;
  getVideoComponentLength(active, count);
  return count;
}

int HbbTVComponentCollectionClass::librarySubtitleCount(bool active) {
  int count = 0;
  getSubtitleComponentLength(active, count);
  return count;
}

int HbbTVComponentCollectionClass::availableSubtitleCount() { return sum(librarySubtitleCount(false), m_numOfSubtitles); }

int HbbTVComponentCollectionClass::countAll() {
  m_videoCount = videoCount(false);
  m_videoAndAudioCount = sum(m_videoCount, audioCount(false));
  return sum(m_videoAndAudioCount, availableSubtitleCount());
}

// --- Items

std::shared_ptr<CorvelNativePropertyBase> HbbTVComponentCollectionClass::getItem(int index) {
  getAvailableComponentsNumber();  // always anew: the media may have changed since
  std::shared_ptr<CorvelNativePropertyBase> object = makeItem(index);
  if (object != nullptr) setComponent(object, index);
  return object;
}

std::shared_ptr<CorvelNativePropertyBase> HbbTVComponentCollectionClass::makeItem(int index) {
  switch (m_kind) {
    case AV_COLLECTION_AVAILABLE_AUDIO:
    case AV_COLLECTION_ACTIVE_AUDIO: return makeAudio(index);
    case AV_COLLECTION_AVAILABLE_VIDEO:
    case AV_COLLECTION_ACTIVE_VIDEO: return makeVideo(index);
    case AV_COLLECTION_AVAILABLE_SUBTITLE:
    case AV_COLLECTION_ACTIVE_SUBTITLE: return makeSubtitle(index);
    case AV_COLLECTION_ALL: return makeItemOfAll(index);
  }
  return nullptr;
}

std::shared_ptr<CorvelNativePropertyBase> HbbTVComponentCollectionClass::makeItemOfAll(int index) {
  if (index < m_videoCount) return makeVideo(index);
  // Deliberate: the subtitle index does not start again at 0 behind the other kinds.
  if (index >= m_videoAndAudioCount) return makeSubtitle(index);
  return makeAudio(saturated(static_cast<long long>(index) - m_videoCount));
}

std::shared_ptr<CorvelNativePropertyBase> HbbTVComponentCollectionClass::makeAudio(int index) {
  AVAudioComponent* const record = getAudioComponent(index);
  return record != nullptr ? HbbTVAudioComponentClass::create(this, record) : nullptr;
}

std::shared_ptr<CorvelNativePropertyBase> HbbTVComponentCollectionClass::makeVideo(int index) {
  AVVideoComponent* const record = getVideoComponent(index);
  return record != nullptr ? HbbTVVideoComponentClass::create(this, record) : nullptr;
}

std::shared_ptr<CorvelNativePropertyBase> HbbTVComponentCollectionClass::makeSubtitle(int index) {
  AVSubtitleComponent* const record = getSubtitleComponent(index);
  return record != nullptr ? HbbTVSubtitleComponentClass::create(this, record) : nullptr;
}

void HbbTVComponentCollectionClass::setComponent(std::shared_ptr<CorvelNativePropertyBase> object, int index) {
  m_items[index] = std::move(object);
}

// --- Records

AVAudioComponent* HbbTVComponentCollectionClass::getAudioComponent(int index) {
  const bool active = m_kind == AV_COLLECTION_ACTIVE_AUDIO;
  if (!active && m_kind != AV_COLLECTION_AVAILABLE_AUDIO && m_kind != AV_COLLECTION_ALL) return nullptr;
  AVAudioComponent* record = nullptr;
  return getAudioComponentItem(active, index, record) ? record : nullptr;
}

AVVideoComponent* HbbTVComponentCollectionClass::getVideoComponent(int index) {
  const bool active = m_kind == AV_COLLECTION_ACTIVE_VIDEO;
  if (!active && m_kind != AV_COLLECTION_AVAILABLE_VIDEO && m_kind != AV_COLLECTION_ALL) return nullptr;
  AVVideoComponent* record = nullptr;
  return getVideoComponentItem(active, index, record) ? record : nullptr;
}

AVSubtitleComponent* HbbTVComponentCollectionClass::getSubtitleComponent(int index) {
  if (owner() == nullptr) return nullptr;  // the texts from out of band are gone with it
  if (m_kind == AV_COLLECTION_ACTIVE_SUBTITLE) return librarySubtitle(true, index);
  if (m_kind == AV_COLLECTION_AVAILABLE_SUBTITLE || m_kind == AV_COLLECTION_ALL) return availableSubtitle(index);
  return nullptr;
}

AVSubtitleComponent* HbbTVComponentCollectionClass::availableSubtitle(int index) {
  const int count = librarySubtitleCount(false);
  if (count == 0) return m_numOfSubtitles > index ? outOfBandSubtitle(index) : nullptr;
  if (index < count) return librarySubtitle(false, index);
  // Deliberate: behind the library's own, the announced number is no upper bound.
  return m_numOfSubtitles > 0 ? outOfBandSubtitle(static_cast<long long>(index) - count) : nullptr;
}

AVSubtitleComponent* HbbTVComponentCollectionClass::librarySubtitle(bool active, int index) {
  AVSubtitleComponent* record = nullptr;
  return getSubtitleComponentItem(active, index, record) ? record : nullptr;
}

AVSubtitleComponent* HbbTVComponentCollectionClass::outOfBandSubtitle(long long slot) {
  if (slot < 0 || slot >= m_subtitleTextCount) return nullptr;
  return hlpCreateAVSubtitleComponent((*m_subtitleTexts)[static_cast<std::size_t>(slot)].data());
}

void HbbTVComponentCollectionClass::collectionAttrOfParam(const char* text, int length) {
  if (m_subtitleTextCount >= kSubtitleTextCount || text == nullptr || length < 0) return;
  if (m_subtitleTexts == nullptr) m_subtitleTexts = std::make_unique<SubtitleTexts>();
  char* const slot = (*m_subtitleTexts)[static_cast<std::size_t>(m_subtitleTextCount++)].data();
  const int kept = std::min(length, kSubtitleTextSize - 1);
  std::memcpy(slot, text, static_cast<std::size_t>(kept));
  slot[kept] = '\0';
}

// --- The plugin's operations

std::shared_ptr<AVControlPlugin> HbbTVComponentCollectionClass::owner() const {
  std::shared_ptr<AVControlPlugin> plugin = m_plugin.lock();
  return plugin != nullptr && !plugin->deinitialized() ? plugin : nullptr;
}

bool HbbTVComponentCollectionClass::getAudioComponentLength(bool active, int& out) {
  const auto plugin = owner();
  return plugin != nullptr && plugin->getAudioComponentLength(active, out);
}

bool HbbTVComponentCollectionClass::getVideoComponentLength(bool active, int& out) {
  const auto plugin = owner();
  return plugin != nullptr && plugin->getVideoComponentLength(active, out);
}

bool HbbTVComponentCollectionClass::getSubtitleComponentLength(bool active, int& out) {
  const auto plugin = owner();
  return plugin != nullptr && plugin->getSubtitleComponentLength(active, out);
}

bool HbbTVComponentCollectionClass::getAudioComponentItem(bool active, int index, AVAudioComponent*& out) {
  const auto plugin = owner();
  return plugin != nullptr && plugin->getAudioComponentItem(active, index, out);
}

bool HbbTVComponentCollectionClass::getVideoComponentItem(bool active, int index, AVVideoComponent*& out) {
  const auto plugin = owner();
  return plugin != nullptr && plugin->getVideoComponentItem(active, index, out);
}

bool HbbTVComponentCollectionClass::getSubtitleComponentItem(bool active, int index, AVSubtitleComponent*& out) {
  const auto plugin = owner();
  return plugin != nullptr && plugin->getSubtitleComponentItem(active, index, out);
}

}  // namespace hbbtv_avc
