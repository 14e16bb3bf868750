// SPDX-License-Identifier: Apache-2.0
#include "components/component_texts.h"

#include <cstdio>
#include <utility>

#include "support/number_text.h"

namespace {

/// Collects values, each followed by a "|".
class FieldWriter {
 public:
  FieldWriter& add(const char* text) {
    if (text != nullptr) m_text += text;
    m_text += '|';
    return *this;
  }
  FieldWriter& add(int number) { return add(std::to_string(number).c_str()); }
  FieldWriter& addCommon(const AVComponent* common) {
    static const AVComponent kNone{};
    const AVComponent& from = common != nullptr ? *common : kNone;
    return add(from.type)
        .add(from.encoding)
        .add(from.encrypted)
        .add(from.componentTag)
        .add(from.pid)
        .add(from.opaqueText1)
        .add(from.opaqueText2)
        .add(from.opaqueFlag ? 1 : 0)
        .add(from.opaqueText3);
  }
  std::string take() { return std::move(m_text); }

 private:
  std::string m_text;
};

}  // namespace

std::string indexKey(const AVVideoComponent& component) {
  char ratio[kFixedTextSize];
  {
    const CLocaleScope scope;
    std::snprintf(ratio, sizeof ratio, "%2f", static_cast<double>(component.aspectRatio));  // at least 2 wide, 6 decimals
  }
  return FieldWriter().addCommon(component.base).add(ratio).take();
}

std::string indexKey(const AVAudioComponent& component) {
  return FieldWriter()
      .addCommon(component.base)
      .add(component.audioText)
      .add(component.language)
      .add(component.audioDescription)
      .add(component.audioChannels)
      .take();
}

std::string indexKey(const AVSubtitleComponent& component) {
  return FieldWriter()
      .addCommon(component.base)
      .add(component.subtitleText1)
      .add(component.language)
      .add(component.subtitleText2)
      .add(component.hearingImpaired)
      .take();
}

std::string selectionPayload(const AVVideoComponent& component) {
  char ratio[kFixedTextSize];
  formatFixed(static_cast<double>(component.aspectRatio), ratio);
  return FieldWriter().addCommon(component.base).add(ratio).take();
}

std::string selectionPayload(const AVAudioComponent& component) { return indexKey(component); }

std::string selectionPayload(const AVSubtitleComponent& component) {
  return FieldWriter()
      .addCommon(component.base)
      .add(component.subtitleText1)
      .add(component.language)
      .add(component.hearingImpaired)
      .take();
}
