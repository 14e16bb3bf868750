// SPDX-License-Identifier: Apache-2.0
#include "platform/runner/signals.h"

#include <glib-unix.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdint>
#include <utility>

namespace runner {

namespace {

std::atomic<int> s_received{0};
std::atomic<int> s_wakeFd{-1};

void onSignal(int number) {
  const int savedErrno = errno;
  s_received.store(number);
  const std::uint64_t one = 1;
  // A full counter wakes the reader just as well.
  if (write(s_wakeFd.load(), &one, sizeof(one)) < 0) errno = savedErrno;
  errno = savedErrno;
}

void handle(int number, void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  action.sa_flags = SA_RESTART | (handler == SIG_DFL ? 0 : static_cast<int>(SA_RESETHAND));
  sigaction(number, &action, nullptr);
}

}  // namespace

Signals::Signals(std::function<void()> wake) : m_wake(std::move(wake)), m_fd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  s_received.store(0);
  s_wakeFd.store(m_fd);
  m_source = g_unix_fd_add(m_fd, G_IO_IN, onReadable, this);
  handle(SIGINT, onSignal);
  handle(SIGTERM, onSignal);
}

Signals::~Signals() {
  handle(SIGINT, SIG_DFL);
  handle(SIGTERM, SIG_DFL);
  g_source_remove(m_source);
  s_wakeFd.store(-1);
  close(m_fd);
}

int Signals::received() { return s_received.load(); }

gboolean Signals::onReadable(gint fd, GIOCondition, gpointer data) {
  std::uint64_t count = 0;
  if (read(fd, &count, sizeof(count)) < 0) return G_SOURCE_CONTINUE;  // another reader was quicker
  static_cast<Signals*>(data)->m_wake();
  return G_SOURCE_CONTINUE;
}

}  // namespace runner
