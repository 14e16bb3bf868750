// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/input_progress.h"

#include <algorithm>

namespace mediamgmnt {

InputProgress::Id InputProgress::add() {
  std::lock_guard lock(m_mutex);
  m_inputs.emplace_back();
  return m_inputs.size() - 1;
}

void InputProgress::describe(Id input, bool isMedia) {
  std::lock_guard lock(m_mutex);
  m_inputs.at(input).isMedia = isMedia;
}

void InputProgress::restart(Id input) {
  std::lock_guard lock(m_mutex);
  m_inputs.at(input).hasEnded = false;
  m_inputs.at(input).end = {};
}

void InputProgress::advance(Id input, std::chrono::nanoseconds end) {
  std::lock_guard lock(m_mutex);
  Input& advanced = m_inputs.at(input);
  advanced.end = std::max(advanced.end, end);
  m_reach = std::max(m_reach, end);
}

void InputProgress::finish(Id input) {
  std::lock_guard lock(m_mutex);
  m_inputs.at(input).hasEnded = true;
}

bool InputProgress::hasEnd() const {
  std::lock_guard lock(m_mutex);
  return std::any_of(m_inputs.begin(), m_inputs.end(), [](const Input& each) { return each.hasEnded; });
}

bool InputProgress::isAllShorterThan(std::chrono::nanoseconds length) const {
  std::lock_guard lock(m_mutex);
  return m_reach < length && std::all_of(m_inputs.begin(), m_inputs.end(), [](const Input& each) { return each.hasEnded; });
}

bool InputProgress::isMediaOverAt(std::chrono::nanoseconds position) const {
  std::lock_guard lock(m_mutex);
  return !m_inputs.empty() && std::all_of(m_inputs.begin(), m_inputs.end(), [=](const Input& each) {
    return !each.isMedia || (each.hasEnded && each.end <= position);
  });
}

}  // namespace mediamgmnt
