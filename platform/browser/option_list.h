// SPDX-License-Identifier: Apache-2.0
// The options of a page's <select>, as a list over the page that the remote control works: a television has no desktop's menus.
// Window's process, main thread.
#pragma once

#include <webkit2/webkit2.h>

#include <functional>

namespace browser {

class OptionList {
 public:
  /// @param changed what is shown has changed
  OptionList(WebKitWebView* view, std::function<void()> changed);
  OptionList(const OptionList&) = delete;
  OptionList& operator=(const OptionList&) = delete;
  ~OptionList();

  bool isShown() const { return m_menu != nullptr; }
  /// @param sentKey the key symbol of a key of the remote control
  /// @return true while the list is shown: keys are its own then.
  bool key(guint sentKey);
  /// The page gets this key: a list is shown soon after Enter, and at no other time.
  void keyPassed(guint sentKey);
  /// To be called when its page has gone, too: the engine leaves the list to whoever shows it.
  void close();
  /// Paints over @p windowWidth times @p windowHeight pixels.
  void paint(cairo_t* cairo, int windowWidth, int windowHeight) const;

 private:
  static gboolean onShow(WebKitWebView* view, WebKitOptionMenu* menu, GdkEvent* event, GdkRectangle* place, gpointer self);
  static void onClose(WebKitOptionMenu* menu, gpointer self);

  void show(WebKitOptionMenu* menu, const GdkRectangle& place);
  /// Lets go of the menu, which may have closed by itself.
  void forget();
  /// Closes the list once what has it is no longer in the page, or has lost the focus.
  void watchOwner();
  void lookForOwner(bool isFirst);
  void choose();
  /// To the next option that can be chosen, if there is one.
  void move(int step);

  WebKitWebView* m_view;
  std::function<void()> m_changed;
  WebKitOptionMenu* m_menu = nullptr;  ///< null: nothing is shown
  GdkRectangle m_place = {};           ///< of the element, in page pixels
  int m_marked = -1;                   ///< -1: none
  gint64 m_enterUs = 0;                ///< when the page got Enter
  guint m_watch = 0;                   ///< source; 0 while nothing is shown
  GCancellable* m_looks = nullptr;     ///< for the looks under way; null while nothing is shown
};

}  // namespace browser
