// SPDX-License-Identifier: Apache-2.0
// The sample media's web server, as a child of the test process.
#pragma once

#include <string>

/// Started with the first use, ended with the process. Thread: the test's.
class SampleServer {
 public:
  static SampleServer& instance();
  SampleServer(const SampleServer&) = delete;
  SampleServer& operator=(const SampleServer&) = delete;

  /// The address of @p path below the media folder, or of one of the server's fault paths.
  std::string url(const std::string& path) const;

 private:
  SampleServer();

  int m_port = 0;
};

/// The address of a sample file without a server.
std::string fileUrl(const std::string& path);
