// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/foreign_elements.h"

#include <gst/gst.h>

#include <initializer_list>

namespace mediamgmnt {
namespace {

constexpr char kEnginePrefix[] = "webkit";
constexpr guint kAdaptiveRank = GST_RANK_PRIMARY + 1;  // what they are registered with

gboolean isForeign(GstPluginFeature* feature, gpointer) { return g_str_has_prefix(GST_OBJECT_NAME(feature), kEnginePrefix); }

/// An element without a rank is still there for who asks for it by its name, as the engine does.
void passOver(GstPluginFeature* feature) { gst_plugin_feature_set_rank(feature, GST_RANK_NONE); }

void onFeatureAdded(GstRegistry*, GstPluginFeature* feature, gpointer) {
  if (isForeign(feature, nullptr)) passOver(feature);
}

}  // namespace

void keepForeignElementsOut() {
  GstRegistry* const registry = gst_registry_get();
  g_signal_connect(registry, "feature-added", G_CALLBACK(onFeatureAdded), nullptr);
  GList* const present = gst_registry_feature_filter(registry, isForeign, FALSE, nullptr);
  for (GList* at = present; at != nullptr; at = at->next) passOver(GST_PLUGIN_FEATURE(at->data));
  gst_plugin_feature_list_free(present);
}

void restoreAdaptiveElements() {
  for (const char* const name : {"dashdemux2", "hlsdemux2"}) {
    GstElementFactory* const factory = gst_element_factory_find(name);
    if (factory == nullptr) continue;
    auto* const feature = GST_PLUGIN_FEATURE(factory);
    if (gst_plugin_feature_get_rank(feature) < kAdaptiveRank) gst_plugin_feature_set_rank(feature, kAdaptiveRank);
    gst_object_unref(factory);
  }
}

}  // namespace mediamgmnt
