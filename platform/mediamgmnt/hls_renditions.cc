// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/hls_renditions.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "platform/mediamgmnt/hls_playlist.h"

namespace mediamgmnt {
namespace {

constexpr std::string_view kMediaLine = "#EXT-X-MEDIA:";
constexpr std::string_view kVariantLine = "#EXT-X-STREAM-INF:";
constexpr std::string_view kTypes[] = {"AUDIO", "VIDEO", "SUBTITLES"};
constexpr std::size_t kMostMedia = 200;  // each is compared with each

/// One choice of the viewer's: the same sound, picture or text in every group.
struct Rendition {
  std::vector<const HlsMedia*> media;
  std::string language;  ///< for the demuxer

  bool isIn(std::string_view group) const {
    return std::any_of(media.begin(), media.end(), [=](const HlsMedia* each) { return each->groupId == group; });
  }
  bool isNamed(std::string_view name) const {
    return std::any_of(media.begin(), media.end(), [=](const HlsMedia* each) { return each->name == name; });
  }
  bool isSpoken(std::string_view language) const {
    return !language.empty() &&
           std::any_of(media.begin(), media.end(), [=](const HlsMedia* each) { return each->language == language; });
  }
};

using Renditions = std::vector<Rendition>;

void addOnce(std::vector<std::string>& texts, const std::string& text) {
  if (!text.empty() && std::find(texts.begin(), texts.end(), text) == texts.end()) texts.push_back(text);
}

/// Those that variants name and nobody describes are among them.
std::vector<std::string> groupsOf(const HlsPlaylist& playlist, std::string_view type) {
  std::vector<std::string> groups;
  for (const HlsMedia& each : playlist.media) {
    if (each.type == type) addOnce(groups, each.groupId);
  }
  for (const HlsVariant& each : playlist.variants) addOnce(groups, each.groupOf(type));
  return groups;
}

/// Names tell better than languages which ones of two groups are the same.
Renditions renditionsOf(const HlsPlaylist& playlist, std::string_view type, const std::vector<std::string>& groups) {
  Renditions renditions;
  const auto add = [&](const HlsMedia& media, auto isSame) {
    const auto found = std::find_if(renditions.begin(), renditions.end(),
                                    [&](const Rendition& each) { return !each.isIn(media.groupId) && isSame(each); });
    if (found == renditions.end()) return false;
    found->media.push_back(&media);
    return true;
  };
  for (const std::string& group : groups) {
    std::vector<const HlsMedia*> others;
    for (const HlsMedia& each : playlist.media) {
      if (each.type != type || each.groupId != group) continue;
      if (!add(each, [&](const Rendition& known) { return known.isNamed(each.name); })) others.push_back(&each);
    }
    for (const HlsMedia* const each : others) {
      if (!add(*each, [&](const Rendition& known) { return known.isSpoken(each->language); })) renditions.push_back({{each}, {}});
    }
  }
  return renditions;
}

/// A private subtag, so that it stays the language that it is.
void nameLanguages(Renditions& renditions) {
  std::set<std::string> taken;
  for (Rendition& each : renditions) {
    const std::string& written = each.media.front()->language;
    each.language = written;
    for (int number = 2; !taken.insert(each.language).second; ++number)
      each.language = (written.empty() ? "und" : written) + "-x-" + std::to_string(number);
  }
}

std::string flag(std::string_view name, bool isSet) {
  std::string out;
  if (isSet) out.append(",").append(name).append("=YES");
  return out;
}

/// All that the demuxer reads of it.
std::string lineFor(const HlsMedia& media, const std::string& group, const std::string& language) {
  std::string line = std::string(kMediaLine) + "TYPE=" + media.type + ",GROUP-ID=\"" + group + "\",NAME=\"" + media.name + "\"";
  if (!language.empty()) line += ",LANGUAGE=\"" + language + "\"";
  line += flag("DEFAULT", media.isDefault) + flag("AUTOSELECT", media.isAutoSelected) + flag("FORCED", media.isForced);
  if (!media.uri.empty()) line += ",URI=\"" + media.uri + "\"";
  return line + "\n";
}

/// A text without quotes of its own may have one in it.
bool canBeWritten(const HlsPlaylist& playlist) {
  const auto hasQuote = [](const std::string& text) { return text.find('"') != std::string::npos; };
  const auto isWritable = [&](const HlsMedia& each) {
    return !hasQuote(each.groupId) && !hasQuote(each.name) && !hasQuote(each.language) && !hasQuote(each.uri);
  };
  const auto hasWritableGroups = [&](const HlsVariant& each) {
    return std::none_of(std::begin(kTypes), std::end(kTypes), [&](std::string_view type) { return hasQuote(each.groupOf(type)); });
  };
  return std::all_of(playlist.media.begin(), playlist.media.end(), isWritable) &&
         std::all_of(playlist.variants.begin(), playlist.variants.end(), hasWritableGroups);
}

/// What is to stand in the place of what was there.
struct Mended {
  std::map<const HlsMedia*, std::string> lines;
  std::map<const HlsVariant*, std::string> attributes;  ///< of a variant, before its own
  std::string added;
  bool isNew = false;
};

void mend(const HlsPlaylist& playlist, std::string_view type, Mended& mended) {
  const std::vector<std::string> groups = groupsOf(playlist, type);
  Renditions renditions = renditionsOf(playlist, type, groups);
  if (renditions.empty()) return;
  nameLanguages(renditions);
  for (const Rendition& rendition : renditions) {
    for (const HlsMedia* const each : rendition.media) {
      mended.isNew = mended.isNew || each->language != rendition.language;
      mended.lines.emplace(each, lineFor(*each, each->groupId, rendition.language));
    }
    const auto source =
        std::find_if(rendition.media.begin(), rendition.media.end(), [](const HlsMedia* each) { return !each->uri.empty(); });
    if (source == rendition.media.end()) continue;  // it is in the segments of its variants
    for (const std::string& group : groups) {
      if (!rendition.isIn(group)) mended.added += lineFor(**source, group, rendition.language);
    }
  }
  for (const HlsVariant& each : playlist.variants) {
    if (each.groupOf(type).empty()) mended.attributes[&each] += std::string(type) + "=\"" + groups.front() + "\",";
  }
}

bool startsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

std::string_view takeLine(std::string_view& text) {
  const std::string_view line = text.substr(0, std::min(text.find('\n'), text.size() - 1) + 1);
  text.remove_prefix(line.size());
  return line;
}

}  // namespace

std::string tellRenditionsApart(std::string_view text) {
  const std::optional<HlsPlaylist> playlist = readHlsPlaylist(text);
  if (!playlist || playlist->media.empty() || playlist->media.size() > kMostMedia || !canBeWritten(*playlist))
    return std::string(text);
  Mended mended;
  for (const std::string_view type : kTypes) mend(*playlist, type, mended);
  if (!mended.isNew && mended.added.empty() && mended.attributes.empty()) return std::string(text);

  std::string out;
  auto media = playlist->media.begin();
  auto variant = playlist->variants.begin();
  while (!text.empty()) {
    const std::string_view line = takeLine(text);
    if (startsWith(line, kMediaLine)) {
      const auto found = mended.lines.find(&*media++);
      out += found != mended.lines.end() ? found->second : std::string(line);
      if (media == playlist->media.end()) out += "\n" + mended.added;
    } else if (startsWith(line, kVariantLine)) {
      out += std::string(kVariantLine) + mended.attributes[&*variant++] + std::string(line.substr(kVariantLine.size()));
    } else {
      out += line;
    }
  }
  return out;
}

}  // namespace mediamgmnt
