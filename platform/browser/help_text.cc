// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/help_text.h"

#include <sstream>

#include "platform/browser/configuration_file.h"
#include "platform/browser/remote_keys.h"
#include "platform/shell/protection_options.h"

namespace browser {

namespace {

// The shared text begins its explanations four columns earlier.
std::string protectionHelp() {
  std::string out;
  std::istringstream lines(shell::ProtectionOptions::helpText());
  for (std::string line; std::getline(lines, line);) out += "    " + line + '\n';
  return out;
}

}  // namespace

std::string helpText() {
  return R"(Usage: avc-browser [OPTION]... URL|FILE

Shows an HbbTV application as a television does: the page over a 1280x720 video plane, the keyboard as remote control,
every <object> of a supported type a live A/V Control object.

What the page is told
      --audio-languages LIST      preferred languages, ISO 639-2, such as "deu,eng"
      --subtitle-languages LIST
      --ui-languages LIST
      --country CODE              ISO 3166-1 alpha-3, such as DEU
      --user-agent TEXT           default: the engine's own followed by HbbTV/1.7.1
      --subtitle-settings VALUE:TEXT
                                  the viewer's subtitle settings: a number, and up to 64 bytes

What the viewer may see
)" + protectionHelp() +
         R"(
  The same names, but for subtitle-settings and clearkey, are the keys of the group [browser] in
  )" + defaultConfigurationFile() +
         R"(

What is shown
      --window WxH                size of the window; the page is always 1280x720. Default 1280x720
      --fullscreen                fills the screen
      --overlay                   starts with the status overlay (F11)

For scripts and tests: steps, done in the order given once the page has been loaded, as often as given. With --wait,
--screenshot or --status among them the browser ends after the last one.
      --script FILE               runs the file in the page
      --keys KEY,...              presses keys of the remote control: )" +
         remoteKeyNames() + R"(
      --wait EXPRESSION           waits until it is true in the page
      --screenshot FILE.png[@S]   writes the window, at the earliest S seconds after the page has been loaded
      --status                    prints the lines of the status overlay
      --quit-after SECONDS        ends after so long; when steps are left, that is a time-out

      --film FILE.ppm[@X,Y,WxH]   writes every frame that the window paints, or that part of it, as portable pixmaps, each
                                  with the time in microseconds since 1970
      --trace FILE                writes what crosses the host and the media library, one JSON object a line
      --private                   keeps no cookies and no local storage after the end
      --sandbox                   runs the page's process in WebKit's sandbox
      --media-library PATH        default: libmediamgmnt.so in ../lib beside the program
      --plugin PATH               default: libavcontrol.so in ../lib beside the program
  -h, --help                      prints this and ends
  -V, --version                   prints the version and ends

Exit status: 0; 1 the page had an uncaught error, its process ended, or it or the screenshot failed; 2 a wrong command
line, or a library that cannot be loaded; 3 time-out; 130 and 143 after SIGINT and SIGTERM.
)";
}

std::string versionText() { return "avc-browser " AVC_VERSION "\n"; }

}  // namespace browser
