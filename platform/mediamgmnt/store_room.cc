// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/store_room.h"

#include <string_view>
#include <utility>

namespace mediamgmnt {
namespace {

// What the decoder sets itself; the time changes by itself while streams are interleaved.
constexpr guint64 kStoreNs = 2 * GST_SECOND;
constexpr guint kStoreBytes = 10 * 1024 * 1024;

bool isMadeBy(GstElement* element, std::string_view factory) {
  GstElementFactory* const made = gst_element_get_factory(element);
  return made != nullptr && factory == GST_OBJECT_NAME(made);
}

/// @return a reference to the decoder's queue of all streams, or null.
GstElement* findStore(GstElement* decoder) {
  GstIterator* const queues = gst_bin_iterate_all_by_element_factory_name(GST_BIN(decoder), "multiqueue");
  GValue value = G_VALUE_INIT;
  GstElement* found = nullptr;
  while (found == nullptr) {
    const GstIteratorResult result = gst_iterator_next(queues, &value);
    if (result == GST_ITERATOR_RESYNC) {
      gst_iterator_resync(queues);
      continue;
    }
    if (result != GST_ITERATOR_OK) break;
    auto* const queue = GST_ELEMENT(g_value_get_object(&value));
    GstObject* const parent = gst_object_get_parent(GST_OBJECT(queue));
    if (parent != nullptr && isMadeBy(GST_ELEMENT(parent), "decodebin3")) found = GST_ELEMENT(gst_object_ref(queue));
    if (parent != nullptr) gst_object_unref(parent);
    g_value_reset(&value);
  }
  g_value_unset(&value);
  gst_iterator_free(queues);
  return found;
}

}  // namespace

StoreRoom::~StoreRoom() { close(); }

void StoreRoom::write(GstElement* store, const Limits& limits) {
  g_object_set(store, "use-interleave", limits.interleaved, "max-size-time", limits.timeNs, "max-size-bytes", limits.bytes,
               nullptr);
}

void StoreRoom::bound(GstElement* decoder, bool bounded) {
  std::lock_guard lock(m_mutex);
  if (m_bounded == bounded) return;
  GstElement* const store = findStore(decoder);
  if (store == nullptr) return;
  m_bounded = bounded;
  const Limits limits = bounded ? Limits{TRUE, kStoreNs, kStoreBytes} : Limits{FALSE, 0, 4 * kStoreBytes};
  if (m_kept) {
    m_kept = limits;
  } else {
    write(store, limits);
  }
  gst_object_unref(store);
}

void StoreRoom::open(GstElement* decoder) {
  std::lock_guard lock(m_mutex);
  if (m_kept) return;
  m_open = findStore(decoder);
  if (m_open == nullptr) return;
  Limits limits{};
  g_object_get(m_open, "use-interleave", &limits.interleaved, "max-size-time", &limits.timeNs, "max-size-bytes", &limits.bytes,
               nullptr);
  m_kept = limits;
  write(m_open, Limits{FALSE, 0, 0});
}

void StoreRoom::close() {
  std::lock_guard lock(m_mutex);
  if (!m_kept) return;
  write(m_open, *std::exchange(m_kept, std::nullopt));
  gst_object_unref(std::exchange(m_open, nullptr));
}

}  // namespace mediamgmnt
