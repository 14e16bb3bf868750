// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/page_view.h"

#include <utility>

namespace browser {

namespace {

using Asked = std::function<void()>;
constexpr char kAsked[] = "avc-redraw-asked";

GtkWidgetClass* engineClass() { return GTK_WIDGET_CLASS(g_type_class_peek(WEBKIT_TYPE_WEB_VIEW)); }

void queueDrawRegion(GtkWidget* view, const cairo_region_t* region) {
  engineClass()->queue_draw_region(view, region);
  const auto* const asked = static_cast<const Asked*>(g_object_get_data(G_OBJECT(view), kAsked));
  if (asked != nullptr && *asked) (*asked)();
}

void initClass(gpointer viewClass, gpointer) { GTK_WIDGET_CLASS(viewClass)->queue_draw_region = queueDrawRegion; }

GType registerType() {
  GTypeQuery engine;
  g_type_query(WEBKIT_TYPE_WEB_VIEW, &engine);
  return g_type_register_static_simple(WEBKIT_TYPE_WEB_VIEW, "AvcPageView", engine.class_size, initClass, engine.instance_size,
                                       nullptr, static_cast<GTypeFlags>(0));
}

}  // namespace

GType pageViewType() {
  static const GType type = registerType();
  return type;
}

void onRedrawAsked(WebKitWebView* view, Asked asked) {
  const auto destroy = [](gpointer data) { delete static_cast<Asked*>(data); };
  g_object_set_data_full(G_OBJECT(view), kAsked, new Asked(std::move(asked)), destroy);
}

}  // namespace browser
