// SPDX-License-Identifier: Apache-2.0
#include "platform/shell/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

namespace shell {

// The lowest number that is free is taken, so the streams before it are open already.
void openStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(stream, F_GETFD) == -1 && open("/dev/null", O_RDWR) == -1) return;
  }
}

}  // namespace shell
