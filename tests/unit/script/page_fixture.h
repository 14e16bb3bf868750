// SPDX-License-Identifier: Apache-2.0
// The page layer over the real plugin and the recording media library, in the least document that it can live in.
#pragma once

#include <string>

#include "tests/fakes/recording_media_library.h"
#include "tests/unit/script/script_fixture.h"

/// Script has `av`, an element with a live object, and makeObject() for more of them.
class PageTest : public ScriptTest {
 protected:
  PageTest();
  void TearDown() override;

  /// The native object of `av`.
  CorvelNativePluginBase& object() { return *binding().plugins().front(); }
  static fakes::RecordingMediaLibrary& library() { return fakes::RecordingMediaLibrary::instance(); }
};
