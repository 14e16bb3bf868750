// SPDX-License-Identifier: Apache-2.0
// Runs avc-run as a child process and collects what it says. Blocks until the child has ended; throws std::runtime_error when
// it cannot be started.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

struct Outcome {
  int status = -1;  ///< exit status; 128 + signal when a signal ended the child
  std::string out;
  std::string err;
};

/// A folder of its own that is removed with all that is in it.
class ScratchFolder {
 public:
  ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder();

  std::string path(const std::string& name) const { return (m_path / name).string(); }
  /// @return the path of the new file.
  std::string write(const std::string& name, const std::string& text) const;

 private:
  std::filesystem::path m_path;
};

std::string readAll(const std::string& path);

/// A signal that the child gets as soon as it has printed a text. Signal 0: none.
struct Interruption {
  std::string afterOutput;
  int signal = 0;
};

/// The arguments as given. The working folder is the one above pages/. A run of more than 100 seconds is killed.
Outcome runAvc(const std::vector<std::string>& arguments, const Interruption& interruption = {});
/// With the scripted media library, a document address and a limit of 60 seconds in front.
Outcome runScripted(const std::vector<std::string>& arguments);
/// The same for one inline script.
Outcome runText(const std::string& script, const std::vector<std::string>& options = {});
/// One inline script, interrupted.
Outcome interruptText(const std::string& script, const std::string& afterOutput, int signal);
