// SPDX-License-Identifier: Apache-2.0
// What the headless page calls in the program: printing, timers, files, addresses. Script thread only.
#pragma once

#include <JavaScriptCore/JavaScript.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/runner/timers.h"

namespace runner {

struct PageHost {
  std::string documentUrl;
  std::vector<std::string> programArguments;
  bool quiet = false;
  Timers* timers = nullptr;
  std::function<void(int status)> exit;
  std::function<void(JSValueRef error)> reportError;
  std::function<bool(int age)> setParentalLimit;
  std::function<bool(int value, const std::string& text)> changeSubtitleSettings;
};

/// @p host must outlive every call of the returned object's functions. What they do is written at the top of runner_page.js.
JSObjectRef makePageHost(JSGlobalContextRef context, const PageHost& host);

/// @return false, with one line in @p error.
bool readTextFile(const std::string& path, std::string& out, std::string& error);

}  // namespace runner
