// SPDX-License-Identifier: Apache-2.0
// Makes components of GStreamer's streams, and of the facts about them that manifests and program maps hold.
#pragma once

#include <gst/gst.h>

#include <optional>
#include <vector>

#include "platform/mediamgmnt/component.h"
#include "platform/mediamgmnt/dash_manifest.h"
#include "platform/mediamgmnt/hls_playlist.h"
#include "platform/mediamgmnt/program_map.h"

namespace mediamgmnt {

/// What is known of a source beside its streams.
struct SourceFacts {
  std::string url;
  std::optional<DashManifest> dash;
  std::optional<HlsPlaylist> hls;
  std::optional<ProgramMap> programMap;
};

using Streams = std::vector<GstStream*>;

/// Borrows the streams. @p period is the index of the DASH period that they belong to. Streams that are none of the three kinds are
/// left out. Thread: any.
ComponentList readComponents(const Streams& streams, const SourceFacts& facts, std::size_t period);

/// The first period from @p from on, in a circle, whose tracks are these streams; @p from when no period's are.
std::size_t periodOf(const Streams& streams, const DashManifest& manifest, std::size_t from);

}  // namespace mediamgmnt
