// SPDX-License-Identifier: Apache-2.0
// The keys of one opened source: where its decryptors ask, wait for a licence, and say what is wrong.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <optional>

#include "platform/mediamgmnt/clear_keys.h"

namespace mediamgmnt {

enum class KeyFault { Missing, Wrong };

/// Threads: any, for all functions. Shared by the pipeline and its decryptors.
class KeySession {
 public:
  /// @p report is called at most once, on the thread that found the fault, with no lock held.
  using Report = std::function<void(KeyFault fault, const KeyId& id)>;

  explicit KeySession(Report report) : m_report(std::move(report)) {}

  /// One licence more is on its way: keys that are not known are waited for.
  void expectLicence();
  /// It has come, or will not.
  void licenceCame(const KeyMap& keys);
  /// The source is being closed: nobody waits any more, nothing is reported.
  void end();
  /// Lets those who wait look whether they still should.
  void wake();

  /// Waits while a licence may still bring the key, and @p cancelled is not set. @return nothing when there is none.
  std::optional<ContentKey> find(const KeyId& id, const std::atomic<bool>& cancelled);

  void report(KeyFault fault, const KeyId& id);

  /// The key has decrypted something that could be read.
  void noteFits(const KeyId& id);
  bool isProven(const KeyId& id);
  /// A key that was handed out and has not been proven. Nothing when there is none.
  std::optional<KeyId> unproven();

 private:
  std::optional<ContentKey> findLocked(const KeyId& id) const;

  const Report m_report;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  KeyMap m_keys;                 // guarded by m_mutex, like all below
  std::map<KeyId, bool> m_used;  ///< whether it is proven
  int m_expected = 0;
  bool m_ended = false;
  bool m_reported = false;
};

}  // namespace mediamgmnt
