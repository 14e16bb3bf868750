// SPDX-License-Identifier: Apache-2.0
// Writes everything that crosses the host and the media library as JSON lines: see docs/avc-run.md for the fields.
#pragma once

#include <memory>
#include <string>

#include "platform/shell/media_library.h"

namespace shell {

/// Watches from its opening to its end. Open it before the first object is made, destroy it after the last; one at a time.
/// Threads: construction and destruction on the main thread; lines come from any thread, each whole.
class AVCSHELL_API Trace {
 public:
  /// @return null, with one line in @p error, when the file cannot be written.
  static std::unique_ptr<Trace> open(const std::string& path, std::string& error);
  Trace(const Trace&) = delete;
  Trace& operator=(const Trace&) = delete;
  ~Trace();

  /// Ends it. @return false, with one line in @p error, when the file lacks something that was to be written.
  bool finish(std::string& error);

 private:
  class Writer;
  Trace(std::unique_ptr<Writer> writer, std::string path);
  std::unique_ptr<Writer> m_writer;
  const std::string m_path;
};

}  // namespace shell
