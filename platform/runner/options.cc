// SPDX-License-Identifier: Apache-2.0
#include "platform/runner/options.h"

#include <glib.h>

#include "platform/shell/option_values.h"
#include "platform/shell/subtitle_settings.h"

namespace runner {

namespace {

// What the page can resolve sources against. The parser itself takes blanks, and http without a host.
bool isAddress(const std::string& text) {
  constexpr auto kFlags = static_cast<GUriFlags>(G_URI_FLAGS_PARSE_RELAXED | G_URI_FLAGS_ENCODED);
  GUri* const uri = g_uri_parse(text.c_str(), kFlags, nullptr);
  if (uri == nullptr) return false;
  const std::string scheme = g_uri_get_scheme(uri);
  const char* const host = g_uri_get_host(uri);
  const bool hasHost = host != nullptr && *host != '\0';
  g_uri_unref(uri);
  return (hasHost || (scheme != "http" && scheme != "https")) && text.find(' ') == std::string::npos;
}

class Parser {
 public:
  Parser(int argc, const char* const* argv, Options& out) : m_arguments(argv + 1, argv + argc), m_out(out) {}

  bool run(std::string& error) {
    for (; m_at < m_arguments.size() && m_error.empty(); ++m_at) {
      const std::string& argument = m_arguments[m_at];
      if (argument == "--") {
        m_out.scriptArguments.assign(m_arguments.begin() + static_cast<std::ptrdiff_t>(m_at) + 1, m_arguments.end());
        break;
      }
      if (argument.size() > 1 && argument[0] == '-') {
        readOption(argument);
      } else {
        m_out.scripts.push_back(argument);
      }
    }
    if (m_error.empty() && !m_out.help && !m_out.version && m_out.scripts.empty()) m_error = "no script given";
    error = m_error.empty() ? "" : m_error + "; \"avc-run --help\" lists what can be given";
    return error.empty();
  }

 private:
  void readOption(const std::string& argument) {
    const std::size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    if (readFlag(name, equals != std::string::npos)) return;
    std::string* const text = textOf(name);
    const bool other =
        name == "--timeout" || name == "--snapshot" || name == "--subtitle-settings" || shell::ProtectionOptions::isName(name);
    if (text == nullptr && !other) {
      m_error = "unknown option " + name;
      return;
    }
    std::string value;
    if (!readValue(argument, name, equals, value)) return;
    if (other) return readSpecial(name, value);
    *text = value;
    checkText(name, value);
  }

  void checkText(const std::string& name, const std::string& value) {
    if (name == "--document-url" && !isAddress(value)) {
      m_error = "--document-url needs an address such as http://host/app/, not \"" + value + "\"";
    }
    if (name == "--record-audio" && !value.ends_with(".wav")) {
      m_error = "--record-audio needs the name of a .wav file, not \"" + value + "\"";
    }
    if (name == "--languages") shell::checkLanguages(name, value, m_error);
  }

  bool readFlag(const std::string& name, bool withValue) {
    bool* const flag = name == "--quiet" || name == "-q"     ? &m_out.quiet
                       : name == "--help" || name == "-h"    ? &m_out.help
                       : name == "--version" || name == "-V" ? &m_out.version
                                                             : nullptr;
    if (flag == nullptr) return false;
    *flag = true;
    if (withValue) m_error = name + " takes no value";
    return true;
  }

  std::string* textOf(const std::string& name) {
    if (name == "--media-library") return &m_out.mediaLibrary;
    if (name == "--plugin") return &m_out.plugin;
    if (name == "--document-url") return &m_out.documentUrl;
    if (name == "--record-audio") return &m_out.recordingFile;
    if (name == "--languages") return &m_out.languages;
    return name == "--trace" ? &m_out.traceFile : nullptr;
  }

  bool readValue(const std::string& argument, const std::string& name, std::size_t equals, std::string& out) {
    if (equals != std::string::npos) {
      out = argument.substr(equals + 1);
    } else if (m_at + 1 < m_arguments.size()) {
      out = m_arguments[++m_at];
    }
    if (out.empty()) m_error = "option " + name + " needs a value";
    return !out.empty();
  }

  void readSpecial(const std::string& name, const std::string& value) {
    if (shell::ProtectionOptions::isName(name)) {
      m_out.protection.read(name, value, m_error);
    } else if (name == "--timeout") {
      const bool good = shell::parseSeconds(value, m_out.timeoutSeconds) && m_out.timeoutSeconds > 0;
      if (!good) m_error = "--timeout needs a number of seconds above 0, not \"" + value + "\"";
    } else if (name == "--subtitle-settings") {
      _SubtitleSettingsParams settings;
      const bool good = shell::parseSubtitleSettings(value, settings);
      if (good) m_out.subtitleSettings = settings;
      if (!good) m_error = "--subtitle-settings needs a number, a colon and at most 64 bytes of text, not \"" + value + "\"";
    } else {
      shell::readPictureFile(name, value, m_out.snapshot, m_error);
    }
  }

  std::vector<std::string> m_arguments;
  Options& m_out;
  std::size_t m_at = 0;
  std::string m_error;
};

}  // namespace

bool parseOptions(int argc, const char* const* argv, Options& out, std::string& error) {
  return Parser(argc, argv, out).run(error);
}

std::string helpText() {
  return std::string(R"(Usage: avc-run [OPTION]... SCRIPT.js... [-- ARGUMENT...]

Runs JavaScript against live A/V Control objects, without a window. The scripts run in the order given, in one global
scope, inside a small page: document.createElement("object"), a type that is supported, and the element plays.

  --document-url URL          address of the page; relative sources are resolved against it
                              (default: the file: address of the first script; sources must be http: or https:)
  --timeout SECONDS           end the run after so long, with status 3 (default: no limit)
  --snapshot FILE.png[@SECONDS]
                              write the video plane, 1280x720, as a PNG file: so long after the start, else at the end
  --trace FILE                write all that crosses the host and the media library, one JSON object a line
  --record-audio FILE.wav     record what is heard, in real time, instead of playing it
  --languages LIST            preferred languages of sound and subtitles, ISO 639-2, most preferred first: deu,eng
  --subtitle-settings VALUE:TEXT
                              the viewer's subtitle settings, told to every object: a number, and up to 64 bytes
)") + std::string(shell::ProtectionOptions::helpText()) +
         R"(  --quiet, -q                 print only warnings and errors of the script, not console.log, info and debug
  --media-library PATH        play with this media library (default: libmediamgmnt.so in ../lib beside this program)
  --plugin PATH               load this plugin (default: libavcontrol.so in ../lib beside this program)
  --help, -h                  print this text
  --version, -V               print the version
  --                          what follows is for the scripts: the global `arguments`

Scripts also have exit(status), readFile(path), setParentalLimit(age), changeSubtitleSettings(value, text), console,
timers and promises. The run ends by itself when no timer, no queued event and no object that is connecting,
buffering, playing or paused is left.

Exit status: the script's exit(status); 0 at the natural end; 1 after an uncaught error or an unhandled rejection, or
when a snapshot, trace or recording is not whole; 2 for a wrong command line, a script that cannot be read or a library
that cannot be loaded; 3 for the time-out; 130 and 143 after SIGINT and SIGTERM.

Example:
  avc-run --timeout 20 --trace out/trace.jsonl --snapshot out/frame.png@2 play.js -- http://127.0.0.1:8080/clip.mp4
)";
}

std::string versionText() { return "avc-run " AVC_VERSION "\n"; }

}  // namespace runner
