// SPDX-License-Identifier: Apache-2.0
// What WebKit loads into the page's process.
#include <dlfcn.h>
#include <unistd.h>
#include <webkit2/webkit-web-extension.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

#include "platform/browser/messages.h"
#include "platform/browser/television_entities.h"
#include "platform/browser/web_side.h"

namespace {

// WebKit loads this file for itself alone; the plugin looks for the host and the seam among what everybody sees.
void showLibrariesToPlugin() {
  for (const char* name : {"libpluginsrequirements.so", "libavcshell.so"}) dlopen(name, RTLD_NOW | RTLD_GLOBAL | RTLD_NOLOAD);
}

std::map<std::string, std::string> readStart(GVariant* data) {
  std::map<std::string, std::string> out;
  if (data == nullptr || !g_variant_is_of_type(data, G_VARIANT_TYPE(browser::kStartType))) return out;
  GVariantIter iterator;
  g_variant_iter_init(&iterator, data);
  const char* name = nullptr;
  const char* text = nullptr;
  while (g_variant_iter_next(&iterator, "{&s&s}", &name, &text)) out.emplace(name, text);
  return out;
}

// The engine returns from main() while its compositor thread may still be at its first shaders, and the graphics library's exit
// handlers free what that thread reads. Objects of the main thread go before any such handler runs: the process ends with them.
struct EndBeforeExitHandlers {
  EndBeforeExitHandlers() = default;
  EndBeforeExitHandlers(const EndBeforeExitHandlers&) = delete;
  EndBeforeExitHandlers& operator=(const EndBeforeExitHandlers&) = delete;
  ~EndBeforeExitHandlers() {
    std::fflush(nullptr);
    _exit(EXIT_SUCCESS);
  }
};

void onPageCreated(WebKitWebExtension*, WebKitWebPage* page, gpointer side) {
  static_cast<browser::WebSide*>(side)->pageCreated(page);
}

void onWindowCleared(WebKitScriptWorld* world, WebKitWebPage*, WebKitFrame* frame, gpointer side) {
  static_cast<browser::WebSide*>(side)->windowCleared(world, frame);
}

}  // namespace

extern "C" G_MODULE_EXPORT void webkit_web_extension_initialize_with_user_data(WebKitWebExtension* extension, GVariant* data) {
  static thread_local const EndBeforeExitHandlers end;
  showLibrariesToPlugin();
  browser::knowTelevisionEntities();
  // Lives as long as the process: the engine may still call when its own globals go.
  auto* const side = new browser::WebSide(readStart(data));
  g_signal_connect(extension, "page-created", G_CALLBACK(onPageCreated), side);
  g_signal_connect(webkit_script_world_get_default(), "window-object-cleared", G_CALLBACK(onWindowCleared), side);
}
