// SPDX-License-Identifier: Apache-2.0
// The reader of HLS playlists, and what the demuxer gets of them: nothing that was told is lost, and no two sounds of a group are
// one.
#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>

#include "fuzz/fuzz_element.h"
#include "platform/mediamgmnt/hls_playlist.h"
#include "platform/mediamgmnt/hls_renditions.h"

namespace {

using namespace mediamgmnt;

void compare(const HlsPlaylist& told, const HlsPlaylist& given) {
  fuzz::require(given.media.size() >= told.media.size() && given.variants.size() == told.variants.size(), "nothing is lost");
  for (std::size_t i = 0; i < told.media.size(); ++i) {
    const HlsMedia& before = told.media[i];
    const HlsMedia& after = given.media[i];
    fuzz::require(std::tie(before.type, before.groupId, before.name, before.uri, before.isDefault, before.isForced) ==
                      std::tie(after.type, after.groupId, after.name, after.uri, after.isDefault, after.isForced),
                  "a rendition stays what it is");
  }
  for (std::size_t i = 0; i < told.variants.size(); ++i)
    fuzz::require(told.variants[i].uri == given.variants[i].uri, "variants stay");
}

void expectToldApart(const HlsPlaylist& given) {
  std::set<std::pair<std::string, std::string>> seen;
  for (const HlsMedia& each : given.media) {
    if (each.type != "AUDIO" || each.groupId.empty()) continue;  // the demuxer passes over what has no group
    const bool isNew = seen.insert({each.groupId, each.language}).second;
    fuzz::require(isNew, "languages of a group differ");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(bytes), size);
  const auto told = readHlsPlaylist(text);
  const std::string forDemuxer = tellRenditionsApart(text);
  if (!told) {
    fuzz::require(forDemuxer == text, "what is no playlist passes");
    return 0;
  }
  const auto given = readHlsPlaylist(forDemuxer);
  fuzz::require(given.has_value(), "it stays a playlist");
  compare(*told, *given);
  if (forDemuxer != text) expectToldApart(*given);
  return 0;
}
