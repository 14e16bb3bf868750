// SPDX-License-Identifier: Apache-2.0
#include "sample_server.h"

#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <stdexcept>

SampleServer& SampleServer::instance() {
  static SampleServer server;
  return server;
}

/// The server reads this process's end of a pipe and ends when that closes, however this process ends.
SampleServer::SampleServer() {
  std::array<int, 2> input{};
  std::array<int, 2> output{};
  if (pipe(input.data()) != 0 || pipe(output.data()) != 0) throw std::runtime_error("no pipe for the sample server");
  const pid_t child = fork();
  if (child < 0) throw std::runtime_error("no process for the sample server");
  if (child == 0) {
    dup2(input[0], STDIN_FILENO);
    dup2(output[1], STDOUT_FILENO);
    for (const int end : {input[0], input[1], output[0], output[1]}) close(end);
    execlp(AVC_PYTHON, AVC_PYTHON, AVC_SAMPLE_SERVER, "--root", AVC_SAMPLE_MEDIA, "--until-eof", nullptr);
    _exit(127);
  }
  close(input[0]);
  close(output[1]);
  FILE* const lines = fdopen(output[0], "r");
  const bool answered = lines != nullptr && std::fscanf(lines, "PORT %d", &m_port) == 1;
  if (lines != nullptr) std::fclose(lines);
  if (!answered) throw std::runtime_error("the sample server did not start");
}

std::string SampleServer::url(const std::string& path) const { return "http://127.0.0.1:" + std::to_string(m_port) + "/" + path; }

std::string fileUrl(const std::string& path) {
  return "file://" + std::filesystem::absolute(AVC_SAMPLE_MEDIA).string() + "/" + path;
}
