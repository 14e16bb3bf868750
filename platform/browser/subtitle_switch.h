// SPDX-License-Identifier: Apache-2.0
// The viewer's subtitle settings as the subtitle key of a remote control changes them. Window's process, main thread.
#pragma once

#include <string>

namespace browser {

class SubtitleSwitch {
 public:
  /// @p start is "VALUE:TEXT", or empty: then no page is told anything before the key is pressed.
  explicit SubtitleSwitch(const std::string& start);

  /// Off is the value 0; on is the value of the start, or 1. The text stays, so that subtitles come back as they were.
  void toggle();
  bool isOn() const { return m_on; }
  /// "VALUE:TEXT", or empty as long as there are none.
  std::string settings() const;

 private:
  std::string m_text;   ///< behind the value, with its colon
  std::string m_value;  ///< when they are on
  bool m_on = true;
  bool m_told = false;
};

}  // namespace browser
