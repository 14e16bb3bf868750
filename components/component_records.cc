// SPDX-License-Identifier: Apache-2.0
#include "components/component_records.h"

#include <cstdlib>

#include "components/record_reader.h"

namespace {

/// A zeroed record with a zeroed common record.
template <typename Record>
Record* allocateRecord() {
  auto* const record = static_cast<Record*>(std::calloc(1, sizeof(Record)));
  record->base = static_cast<AVComponent*>(std::calloc(1, sizeof(AVComponent)));
  return record;
}

bool readCommon(RecordReader& reader, AVComponent& out) {
  return reader.readInteger(out.type) && reader.readText(out.encoding) && reader.readInteger(out.encrypted) &&
         reader.readInteger(out.componentTag) && reader.readInteger(out.pid) && reader.readText(out.opaqueText1) &&
         reader.readText(out.opaqueText2) && reader.readBoolean(out.opaqueFlag) && reader.readText(out.opaqueText3);
}

bool readOwn(RecordReader& reader, AVVideoComponent& out) { return reader.readFraction(out.aspectRatio); }

bool readOwn(RecordReader& reader, AVAudioComponent& out) {
  return reader.readText(out.audioText) && reader.readText(out.language) && reader.readInteger(out.audioDescription) &&
         reader.readInteger(out.audioChannels);
}

bool readOwn(RecordReader& reader, AVSubtitleComponent& out) {
  return reader.readText(out.subtitleText1) && reader.readText(out.language) && reader.readText(out.subtitleText2) &&
         reader.readInteger(out.hearingImpaired);
}

template <typename Record>
Record* createRecord(const char* text, void (*destroy)(Record*)) {
  if (!holdsRecord(text)) return nullptr;
  RecordReader reader(text);
  Record* const record = allocateRecord<Record>();
  if (readCommon(reader, *record->base) && readOwn(reader, *record)) return record;
  destroy(record);  // cut short: what was read of it goes too
  return nullptr;
}

void freeCommon(AVComponent* common) {
  if (common == nullptr) return;
  std::free(common->encoding);
  std::free(common->opaqueText1);
  std::free(common->opaqueText2);
  std::free(common->opaqueText3);
  std::free(common);
}

}  // namespace

AVVideoComponent* hlpCreateAVVideoComponent(char* text) { return createRecord(text, hlpDestroyAVVideoComponent); }

AVAudioComponent* hlpCreateAVAudioComponent(char* text) { return createRecord(text, hlpDestroyAVAudioComponent); }

AVSubtitleComponent* hlpCreateAVSubtitleComponent(char* text) { return createRecord(text, hlpDestroyAVSubtitleComponent); }

void hlpDestroyAVVideoComponent(AVVideoComponent* component) {
  freeCommon(component->base);
  std::free(component);
}

void hlpDestroyAVAudioComponent(AVAudioComponent* component) {
  freeCommon(component->base);
  std::free(component->audioText);
  std::free(component->language);
  std::free(component);
}

void hlpDestroyAVSubtitleComponent(AVSubtitleComponent* component) {
  freeCommon(component->base);
  std::free(component->subtitleText1);
  std::free(component->language);
  std::free(component->subtitleText2);
  std::free(component);
}
