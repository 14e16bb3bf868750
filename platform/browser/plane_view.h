// SPDX-License-Identifier: Apache-2.0
// The video plane as the window's process sees it: the page's process shares its pictures, the newest one is painted.
// Main thread only.
#pragma once

#include <cairo.h>
#include <gio/gunixfdlist.h>
#include <glib.h>

#include <cstdint>
#include <functional>

#include "platform/mediamgmnt/media_plane.h"

namespace browser {

class PlaneView {
 public:
  /// @p changed: a newer picture is there, to be painted now.
  explicit PlaneView(std::function<void()> changed);
  PlaneView(const PlaneView&) = delete;
  PlaneView& operator=(const PlaneView&) = delete;
  ~PlaneView();

  /// Takes another plane, in the place of the present one. @p descriptors: memory and tick; they stay the caller's.
  /// @return false when they are not what they should be; there is no plane then.
  bool open(GUnixFDList* descriptors, unsigned memoryBytes);
  /// From here on all is black.
  void close();

  /// The page has something new to paint with the next frame of the window.
  void pageChanges();
  /// What is painted next is the newest picture.
  void stopWaiting();

  /// Fills @p width times @p height with the plane.
  void paint(cairo_t* cairo, int width, int height);

 private:
  static gboolean onTick(gint fd, GIOCondition condition, gpointer self);
  std::uint32_t read(std::uint32_t MediaPlaneHeader::*field) const;
  bool readLayout();
  bool mayWait() const;
  void takeTick();
  const unsigned char* pictureToPaint();

  std::function<void()> m_changed;
  unsigned char* m_memory = nullptr;
  unsigned m_bytes = 0;
  std::uint32_t m_bufferCount = 0;
  std::uint32_t m_firstBuffer = 0;
  int m_tickFd = -1;
  guint m_source = 0;
  // A picture in which a video has moved waits for the page that moved it, and is painted with it.
  guint m_waiting = 0;  ///< the timer that ends it at the latest
  bool m_painted = false;
  bool m_pageDue = false;  ///< the page is painted with the next frame
  gint64 m_pageAt = 0;     ///< when it wanted to be last
  std::uint32_t m_shown = 0;
  std::uint32_t m_shownSequence = 0;
  std::uint32_t m_shownMoved = 0;
};

}  // namespace browser
