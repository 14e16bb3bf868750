// SPDX-License-Identifier: Apache-2.0
// Keeps the HTTP library from crashing over the body of an answer that came as its request was cancelled.
#pragma once

namespace mediamgmnt {

/// libsoup 3.2 closes such a body after it has finished with the message, and without asking whether it has: from here on that
/// close is left out. It is for the whole process, whichever thread cancels. More than once is harmless. Thread: any.
void guardCancelledBodies();

}  // namespace mediamgmnt
