// SPDX-License-Identifier: Apache-2.0
// The page-side texts of the browser, put into its binaries when they are built. What each offers is written at its top.
#pragma once

namespace script {

extern const char kBrowserPageSource[];
extern const char kInspectSource[];
extern const char kListenersSource[];
extern const char kScreenSource[];
extern const char kRemoteKeysSource[];
extern const char kBodyKeysSource[];
extern const char kKeyPressSource[];
extern const char kEnvironmentSource[];
extern const char kStackingSource[];
extern const char kElementsSource[];
extern const char kResultsSource[];
extern const char kBoxesSource[];
extern const char kCoverSource[];
extern const char kVideoHoleSource[];
extern const char kNamedEntitiesSource[];
extern const char kTvMediumSource[];
extern const char kApplicationTableSource[];
extern const char kControlsSource[];
extern const char kDirectedFocusSource[];
/// The style sheet that every page gets.
extern const char kTelevisionStyle[];

}  // namespace script
