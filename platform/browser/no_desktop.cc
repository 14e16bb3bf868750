// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/no_desktop.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "platform/browser/console_text.h"

namespace browser {

namespace {

gboolean refusePrint(WebKitWebView*, WebKitPrintOperation*, gpointer) {
  printConsoleLine("warn", "print: a television prints nothing");
  return TRUE;
}

// The server's own words to those who have no password are shown.
gboolean refuseLogin(WebKitWebView*, WebKitAuthenticationRequest* request, gpointer) {
  webkit_authentication_request_authenticate(request, nullptr);
  return TRUE;
}

gboolean refuseMenu(WebKitWebView*, WebKitContextMenu*, GdkEvent*, WebKitHitTestResult*, gpointer) { return TRUE; }

gboolean refuseFileChooser(WebKitWebView*, WebKitFileChooserRequest* request, gpointer) {
  webkit_file_chooser_request_cancel(request);
  return TRUE;
}

gboolean refuseColorChooser(WebKitWebView*, WebKitColorChooserRequest* request, gpointer) {
  webkit_color_chooser_request_cancel(request);
  return TRUE;
}

gboolean refusePermission(WebKitWebView*, WebKitPermissionRequest* request, gpointer) {
  webkit_permission_request_deny(request);
  return TRUE;
}

void refuseDownload(WebKitWebContext*, WebKitDownload* download, gpointer) {
  constexpr std::size_t kShown = 100;
  const char* const address = webkit_uri_request_get_uri(webkit_download_get_request(download));
  printConsoleLine("warn",
                   "download: a television keeps no files: " + std::string(address == nullptr ? "" : address).substr(0, kShown));
  webkit_download_cancel(download);
}

}  // namespace

void keepToTheTelevision(WebKitWebView* view, WebKitWebContext* context) {
  g_signal_connect(view, "print", G_CALLBACK(refusePrint), nullptr);
  g_signal_connect(view, "authenticate", G_CALLBACK(refuseLogin), nullptr);
  g_signal_connect(view, "context-menu", G_CALLBACK(refuseMenu), nullptr);
  g_signal_connect(view, "run-file-chooser", G_CALLBACK(refuseFileChooser), nullptr);
  g_signal_connect(view, "run-color-chooser", G_CALLBACK(refuseColorChooser), nullptr);
  g_signal_connect(view, "permission-request", G_CALLBACK(refusePermission), nullptr);
  g_signal_connect(context, "download-started", G_CALLBACK(refuseDownload), nullptr);
}

bool canBeGoneTo(const char* address) {
  constexpr const char* kSchemes[] = {"http", "https", "file", "data", "blob", "javascript"};
  const std::string text = address == nullptr ? "" : address;
  if (text.starts_with("about:blank") || text.starts_with("about:srcdoc")) return true;
  char* const scheme = g_uri_parse_scheme(text.c_str());
  const bool known = scheme != nullptr && std::any_of(std::begin(kSchemes), std::end(kSchemes),
                                                      [&](const char* each) { return g_ascii_strcasecmp(scheme, each) == 0; });
  g_free(scheme);
  return known;
}

}  // namespace browser
