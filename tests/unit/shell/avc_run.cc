// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/shell/avc_run.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <thread>

namespace {

constexpr std::chrono::seconds kLongestRun{100};

/// A run that hangs must not outlive its test.
int waitFor(pid_t child) {
  const int fd = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
  pollfd end{fd, POLLIN, 0};
  if (poll(&end, 1, static_cast<int>(std::chrono::milliseconds(kLongestRun).count())) <= 0) kill(child, SIGKILL);
  close(fd);
  int status = 0;
  if (waitpid(child, &status, 0) != child) throw std::runtime_error("waitpid failed");
  return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

bool waitForText(const std::string& path, const std::string& text) {
  const auto deadline = std::chrono::steady_clock::now() + kLongestRun;
  while (readAll(path).find(text) == std::string::npos) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> out;
  for (std::string& text : texts) out.push_back(text.data());
  out.push_back(nullptr);
  return out;
}

}  // namespace

ScratchFolder::ScratchFolder() {
  std::string name = (std::filesystem::temp_directory_path() / "avc-run-test-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp failed");
  m_path = name;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;  // a leftover folder is no reason to fail
  std::filesystem::remove_all(m_path, ignored);
}

std::string ScratchFolder::write(const std::string& name, const std::string& text) const {
  std::ofstream(m_path / name) << text;
  return path(name);
}

std::string readAll(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// Files and not pipes: nothing the child prints can block it.
Outcome runAvc(const std::vector<std::string>& arguments, const Interruption& interruption) {
  const ScratchFolder folder;
  const std::string out = folder.path("out");
  const std::string err = folder.path("err");
  std::vector<std::string> texts{AVC_RUN};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out.c_str(), O_WRONLY | O_CREAT, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err.c_str(), O_WRONLY | O_CREAT, 0600);
  posix_spawn_file_actions_addchdir_np(&actions, PAGES_FOLDER "/..");
  pid_t child = 0;
  const int error = posix_spawn(&child, AVC_RUN, &actions, nullptr, pointers(texts).data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("cannot start avc-run");
  if (interruption.signal != 0 && waitForText(out, interruption.afterOutput)) kill(child, interruption.signal);
  const int status = waitFor(child);
  return {status, readAll(out), readAll(err)};
}

namespace {

std::vector<std::string> scripted(const std::vector<std::string>& arguments) {
  std::vector<std::string> all{
      "--media-library", SCRIPTED_MEDIA_LIBRARY, "--timeout", "60", "--document-url", "http://media.example/app/index.html"};
  all.insert(all.end(), arguments.begin(), arguments.end());
  return all;
}

}  // namespace

Outcome runScripted(const std::vector<std::string>& arguments) { return runAvc(scripted(arguments)); }

Outcome runText(const std::string& script, const std::vector<std::string>& options) {
  const ScratchFolder folder;
  std::vector<std::string> all = options;
  all.push_back(folder.write("script.js", script));
  return runScripted(all);
}

Outcome interruptText(const std::string& script, const std::string& afterOutput, int signal) {
  const ScratchFolder folder;
  return runAvc(scripted({folder.write("script.js", script)}), {afterOutput, signal});
}
