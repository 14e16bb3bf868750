// SPDX-License-Identifier: Apache-2.0
// The list of the library's running threads, so that an orderly end can wait for those that nobody joins.
#pragma once

#include <functional>

namespace mediamgmnt {

/// Handle under which threads are listed that belong to the library itself and not to a player.
inline constexpr unsigned long kLibraryThreads = 0;

/// Starts @p body on a detached thread, listed under @p handle until it returns. Thread: any.
/// Throws std::system_error when the system gives no thread; nothing is listed then.
void startListedThread(unsigned long handle, std::function<void()> body);

/// From now on the threads of @p handle count as left over. Thread: any.
void markClosed(unsigned long handle);

/// Waits until no thread of a closed player and none of the library itself is left. @return false after @p timeoutMs. Thread: any
/// but a listed one.
bool waitForLeftoverThreads(int timeoutMs);

}  // namespace mediamgmnt
