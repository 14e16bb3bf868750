// SPDX-License-Identifier: Apache-2.0
// What getComponents and getCurrentActiveComponents return: an object with "length" and "item".
#pragma once

#include <array>
#include <map>
#include <memory>

#include "components/av_components.h"
#include "host/corvel_native.h"

class AVControlPlugin;

namespace hbbtv_avc {

/// What a collection is of. Audio comes before video here, unlike in the component type numbers.
enum eAVComponentCollectionType_e : int {
  AV_COLLECTION_AVAILABLE_AUDIO = 0,
  AV_COLLECTION_AVAILABLE_VIDEO = 1,
  AV_COLLECTION_AVAILABLE_SUBTITLE = 2,  ///< the library's, then those from out of band
  AV_COLLECTION_ACTIVE_AUDIO = 3,
  AV_COLLECTION_ACTIVE_VIDEO = 4,
  AV_COLLECTION_ACTIVE_SUBTITLE = 5,
  AV_COLLECTION_ALL = 6,  ///< available video, then audio, then subtitle
};

/// Holds no list: each read of "length" and each "item" asks the media library again and builds fresh records and objects.
///
/// Script may keep it longer than the element lives: it holds the plugin weakly and is empty once that is gone or deinitialised.
/// Thread: script.
class HbbTVComponentCollectionClass : public CorvelNativePropertyBase {
 public:
  static constexpr int kObjectType = 9;
  static constexpr int kSubtitleTextCount = 10;
  static constexpr int kSubtitleTextSize = 1024;  ///< bytes, the NUL included

  /// @p plugin is owned by a shared pointer already.
  HbbTVComponentCollectionClass(CorvelNativePropertyBase* parent, AVControlPlugin* plugin, eAVComponentCollectionType_e kind);
  ~HbbTVComponentCollectionClass() override;

  static std::shared_ptr<HbbTVComponentCollectionClass> create(CorvelNativePropertyBase* parent, AVControlPlugin* plugin,
                                                               eAVComponentCollectionType_e kind);
  /// @return the object when it is of this class, else null.
  static HbbTVComponentCollectionClass* cast(CorvelNativePropertyBase* object);

  int type() override { return kObjectType; }
  bool install() override;

  int getAvailableComponentsNumber();
  /// The last object handed out for an index stays alive until the next one for it.
  /// @return null when there is no such component. The index is not negative.
  std::shared_ptr<CorvelNativePropertyBase> getItem(int index);
  /// Records that the caller owns; null when this collection has none at that index, or none of that kind.
  AVAudioComponent* getAudioComponent(int index);
  AVVideoComponent* getVideoComponent(int index);
  AVSubtitleComponent* getSubtitleComponent(int index);
  void setComponent(std::shared_ptr<CorvelNativePropertyBase> object, int index);
  /// Stored as it comes, zero and negative included.
  void setNumOfSubtitles(int count) { m_numOfSubtitles = count; }
  /// Stores the record text of an out-of-band subtitle, cut to 1023 bytes. Those after the tenth are dropped; nothing ever takes
  /// the stored ones back.
  void collectionAttrOfParam(const char* text, int length);

  // The plugin's operations of these names; false when it is gone.
  bool getAudioComponentLength(bool active, int& out);
  bool getVideoComponentLength(bool active, int& out);
  bool getSubtitleComponentLength(bool active, int& out);
  bool getAudioComponentItem(bool active, int index, AVAudioComponent*& out);
  bool getVideoComponentItem(bool active, int index, AVVideoComponent*& out);
  bool getSubtitleComponentItem(bool active, int index, AVSubtitleComponent*& out);

  static CorvelNativeProperty sm_properties[];
  static const unsigned int sm_prop_length;
  static const CorvelNativeMethod sm_methods[];
  static const unsigned int sm_met_length;

 private:
  /// The plugin, kept alive; null when it is gone or deinitialised.
  std::shared_ptr<AVControlPlugin> owner() const;
  int audioCount(bool active);
  int videoCount(bool active);
  int librarySubtitleCount(bool active);
  int availableSubtitleCount();
  int countAll();
  std::shared_ptr<CorvelNativePropertyBase> makeItem(int index);
  std::shared_ptr<CorvelNativePropertyBase> makeItemOfAll(int index);
  std::shared_ptr<CorvelNativePropertyBase> makeAudio(int index);
  std::shared_ptr<CorvelNativePropertyBase> makeVideo(int index);
  std::shared_ptr<CorvelNativePropertyBase> makeSubtitle(int index);
  AVSubtitleComponent* availableSubtitle(int index);
  AVSubtitleComponent* librarySubtitle(bool active, int index);
  /// @return null for a slot outside the table or without a record.
  AVSubtitleComponent* outOfBandSubtitle(long long slot);

  const eAVComponentCollectionType_e m_kind;
  using SubtitleTexts = std::array<std::array<char, kSubtitleTextSize>, kSubtitleTextCount>;
  std::unique_ptr<SubtitleTexts> m_subtitleTexts;  ///< made with the first text: six of seven collections never get one
  int m_subtitleTextCount = 0;
  std::map<int, std::shared_ptr<CorvelNativePropertyBase>> m_items;
  const std::weak_ptr<AVControlPlugin> m_plugin;
  int m_numOfSubtitles = 0;
  int m_videoCount = 0;  ///< this and the next: of the last count, in a collection of all
  int m_videoAndAudioCount = 0;
};

}  // namespace hbbtv_avc
