// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/options.h"

#include <glib.h>

#include <charconv>
#include <functional>
#include <map>
#include <string_view>
#include <utility>

#include "platform/browser/configuration_file.h"
#include "platform/browser/remote_keys.h"
#include "platform/shell/option_values.h"
#include "platform/shell/subtitle_settings.h"

namespace browser {

namespace {

constexpr int kLeastWindow = 160;
constexpr int kMostWindow = 16384;

bool parseWhole(std::string_view text, int least, int& out) {
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), out);
  return error == std::errc() && stop == text.data() + text.size() && out >= least && out <= kMostWindow;
}

bool parseSize(std::string_view text, int least, int& width, int& height) {
  const std::size_t cross = text.find('x');
  return cross != std::string_view::npos && parseWhole(text.substr(0, cross), least, width) &&
         parseWhole(text.substr(cross + 1), least, height);
}

// "FILE" or "FILE@X,Y,WxH"; an "@" that no such part of the window follows belongs to the name.
void readFilm(const std::string& text, Options& out) {
  out.filmFile = text;
  const std::size_t at = text.rfind('@');
  if (at == std::string::npos || at == 0) return;
  const std::vector<std::string> parts = splitList(text.substr(at + 1));
  WindowPart part;
  const bool isPart = parts.size() == 3 && parseWhole(parts[0], 0, part.x) && parseWhole(parts[1], 0, part.y) &&
                      parseSize(parts[2], 1, part.width, part.height);
  if (!isPart) return;
  out.filmFile = text.substr(0, at);
  out.filmPart = part;
}

// In small letters, or nothing.
std::string schemeOf(const std::string& address) {
  char* const scheme = g_uri_parse_scheme(address.c_str());
  std::string out = scheme == nullptr ? "" : scheme;
  g_free(scheme);
  return out;
}

// As far as its text and the files tell.
std::string whyNoPage(const std::string& urlOrFile) {
  const std::string named = "\"" + urlOrFile + "\"";
  const std::string scheme = schemeOf(urlOrFile);
  if (scheme.empty()) {
    if (g_file_test(urlOrFile.c_str(), G_FILE_TEST_EXISTS)) return "";
    return "there is no file " + named + "; if it is the address of a server, write http://" + urlOrFile;
  }
  for (const char* known : {"http", "https", "file", "data", "about"}) {
    if (scheme == known) return "";
  }
  const char first = urlOrFile[scheme.size() + 1];  // after the colon; a port?
  return named + " is no address of a page; " +
         (g_ascii_isdigit(first) ? "write http://" + urlOrFile : "they begin with http:, https: or file:");
}

class Parser {
 public:
  Parser(int argc, const char* const* argv, Options& out) : m_arguments(argv + 1, argv + argc), m_out(out) {}

  bool run(std::string& error) {
    for (; m_at < m_arguments.size() && m_error.empty(); ++m_at) {
      const std::string& argument = m_arguments[m_at];
      if (argument.size() > 1 && argument[0] == '-') {
        readOption(argument);
      } else if (!m_out.url.empty()) {
        m_error = "more than one address given: " + m_out.url + " and " + argument;
      } else {
        m_error = whyNoPage(argument);
        m_out.url = addressOf(argument);
      }
    }
    if (m_error.empty() && !m_out.help && !m_out.version && m_out.url.empty()) m_error = "no address given";
    if (m_error.empty() && !m_out.fullScreen) checkFilm();
    error = m_error.empty() ? "" : m_error + "; \"avc-browser --help\" lists what can be given";
    return error.empty();
  }

 private:
  void readOption(const std::string& argument) {
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    if (readFlag(name, equals != std::string::npos)) return;
    const auto setter = setterOf(name);
    if (setter == nullptr) {
      m_error = "unknown option " + name;
      return;
    }
    std::string value;
    if (readValue(argument, name, equals, value)) setter(value);
  }

  bool readFlag(const std::string& name, bool withValue) {
    const std::map<std::string, bool*> flags = {{"--overlay", &m_out.overlay},     {"--fullscreen", &m_out.fullScreen},
                                                {"--private", &m_out.keepNothing}, {"--sandbox", &m_out.sandbox},
                                                {"--help", &m_out.help},           {"-h", &m_out.help},
                                                {"--version", &m_out.version},     {"-V", &m_out.version}};
    const auto found = flags.find(name);
    const bool isStatus = name == "--status";
    if (isStatus) addStep({Step::Kind::status, "", {}, 0});
    if (found == flags.end() && !isStatus) return false;
    if (found != flags.end()) *found->second = true;
    if (withValue) m_error = name + " takes no value";
    return true;
  }

  std::function<void(const std::string&)> setterOf(const std::string& name) {
    const std::map<std::string, std::string*> texts = {
        {"--media-library", &m_out.mediaLibrary}, {"--plugin", &m_out.plugin}, {"--trace", &m_out.traceFile}};
    const auto text = texts.find(name);
    if (text != texts.end()) return [out = text->second](const std::string& value) { *out = value; };
    auto preferences = preferenceTexts(m_out.preferences);
    const auto preference = name.size() > 2 ? preferences.find(name.substr(2)) : preferences.end();
    if (preference != preferences.end()) {
      return [this, out = preference->second, bare = name.substr(2)](const std::string& value) {
        const std::string problem = wrongPreference(bare, value);
        if (!problem.empty()) m_error = "--" + problem;
        *out = value;
      };
    }
    if (name == "--script") return [this](const std::string& value) { addStep({Step::Kind::script, value, {}, 0}); };
    if (name == "--wait") return [this](const std::string& value) { addStep({Step::Kind::wait, value, {}, 0}); };
    if (name == "--screenshot") return [this](const std::string& value) { readScreenshot(value); };
    if (name == "--film") return [this](const std::string& value) { readFilmName(value); };
    if (name == "--window") return [this](const std::string& value) { readWindow(value); };
    if (name == "--quit-after") return [this](const std::string& value) { readQuit(value); };
    if (name == "--keys") return [this](const std::string& value) { readKeys(value); };
    if (name == "--subtitle-settings") return [this](const std::string& value) { readSubtitleSettings(value); };
    if (shell::ProtectionOptions::isName(name)) {
      return [this, name](const std::string& value) { m_out.protection.read(name, value, m_error); };
    }
    return nullptr;
  }

  void readWindow(const std::string& value) {
    if (parseSize(value, kLeastWindow, m_out.width, m_out.height)) return;
    const auto square = [](int side) { return std::to_string(side) + "x" + std::to_string(side); };
    m_error = "--window needs a size from " + square(kLeastWindow) + " to " + square(kMostWindow) + ", such as 1280x720, not \"" +
              value + "\"";
  }

  void readScreenshot(const std::string& value) {
    shell::PictureFile picture;
    shell::readPictureFile("--screenshot", value, picture, m_error);
    addStep({Step::Kind::screenshot, picture.path, {}, picture.seconds.value_or(0)});
  }

  void readFilmName(const std::string& value) {
    readFilm(value, m_out);
    if (m_out.filmFile.ends_with(".ppm")) return;
    m_error = "--film needs the name of a .ppm file, and perhaps @X,Y,WxH behind it, not \"" + value + "\"";
  }

  void checkFilm() {
    const WindowPart& part = m_out.filmPart;
    if (part.x < m_out.width && part.y < m_out.height) return;
    const auto pair = [](int a, char sign, int b) { return std::to_string(a) + sign + std::to_string(b); };
    m_error =
        "--film: the part at " + pair(part.x, ',', part.y) + " lies outside the window of " + pair(m_out.width, 'x', m_out.height);
  }

  void readQuit(const std::string& value) {
    const bool good = shell::parseSeconds(value, m_out.quitSeconds) && m_out.quitSeconds > 0;
    if (!good) m_error = "--quit-after needs a number of seconds above 0, not \"" + value + "\"";
  }

  void readSubtitleSettings(const std::string& value) {
    _SubtitleSettingsParams settings;
    if (!shell::parseSubtitleSettings(value, settings)) {
      m_error = "--subtitle-settings needs a number, a colon and at most 64 bytes of text, not \"" + value + "\"";
    }
    m_out.subtitleSettings = value;
  }

  void addStep(Step step) { m_out.steps.push_back(std::move(step)); }

  void readKeys(const std::string& value) {
    addStep({Step::Kind::keys, "", splitList(value), 0});
    for (const std::string& key : m_out.steps.back().keys) {
      if (!isRemoteKey(key)) m_error = "--keys: there is no key \"" + key + "\"; there are " + remoteKeyNames();
    }
  }

  bool readValue(const std::string& argument, const std::string& name, std::size_t equals, std::string& out) {
    if (equals != std::string::npos) {
      out = argument.substr(equals + 1);
    } else if (m_at + 1 < m_arguments.size()) {
      out = m_arguments[++m_at];
    }
    const bool isText = g_utf8_validate(out.c_str(), -1, nullptr) != FALSE;  // the page's process takes nothing else
    if (out.empty()) m_error = "option " + name + " needs a value";
    if (!isText) m_error = "option " + name + " needs a text in UTF-8";
    return m_error.empty();
  }

  std::vector<std::string> m_arguments;
  Options& m_out;
  std::size_t m_at = 0;
  std::string m_error;
};

}  // namespace

bool parseOptions(int argc, const char* const* argv, const std::string& configurationFile, Options& out, std::string& error) {
  std::string wrongFile;
  const bool isRead = readConfiguration(configurationFile, out, wrongFile);
  if (!Parser(argc, argv, out).run(error)) return false;
  if (isRead || out.help || out.version) return true;
  error = wrongFile;
  return false;
}

std::string addressOf(const std::string& urlOrFile) {
  if (!schemeOf(urlOrFile).empty()) return urlOrFile;
  char* const absolute = g_canonicalize_filename(urlOrFile.c_str(), nullptr);
  char* const url = g_filename_to_uri(absolute, nullptr, nullptr);
  std::string out = url == nullptr ? "" : url;
  g_free(url);
  g_free(absolute);
  return out;
}

}  // namespace browser
