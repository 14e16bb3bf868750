// SPDX-License-Identifier: Apache-2.0
// The page-side scripts, put into the program when it is built.
#pragma once

namespace script {

/// A function expression: (native, page) -> layer. What the parameters and the result offer is written at its top.
extern const char kAvElementSource[];
/// A function expression: (host, native, makeLayer) -> page. Only in programs that link the headless page.
extern const char kRunnerPageSource[];

}  // namespace script
