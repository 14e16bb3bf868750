// SPDX-License-Identifier: Apache-2.0
// A media library that accepts everything, says nothing by itself, and answers reads with a text that the fuzzer chose.
#pragma once

#include <string>

namespace fuzz {

/// The answer to every property read from now on. Thread: any.
void setAnswer(std::string answer);

/// Says @p word to the latest player's callback, on the calling thread. False when there is none.
bool say(const std::string& word);

}  // namespace fuzz
