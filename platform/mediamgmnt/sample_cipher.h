// SPDX-License-Identifier: Apache-2.0
// Decrypts samples as the common encryption standard (ISO/IEC 23001-7) says.
#pragma once

#include <openssl/evp.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "platform/mediamgmnt/clear_keys.h"

namespace mediamgmnt {

enum class CipherScheme { Cenc, Cbcs };

struct Subsample {
  std::size_t clear;
  std::size_t encrypted;
};

/// How one sample is encrypted.
struct SampleProtection {
  CipherScheme scheme = CipherScheme::Cenc;
  std::array<std::uint8_t, 16> iv{};  ///< a shorter one is followed by zeros
  std::vector<Subsample> subsamples;  ///< empty: the whole sample is encrypted
  unsigned cryptBlocks = 0;           ///< "cbcs": of a pattern, which begins anew in each subsample; 0 and 0: every block
  unsigned skipBlocks = 0;
};

/// One thread at a time.
class SampleCipher {
 public:
  SampleCipher() : m_context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free) {}

  /// In place. @return false when the description does not fit the sample; some of it may have been changed then.
  bool decrypt(const ContentKey& key, const SampleProtection& protection, std::uint8_t* data, std::size_t size);

 private:
  bool begin(const ContentKey& key, const SampleProtection& protection);
  bool decryptPart(const ContentKey& key, const SampleProtection& protection, std::uint8_t* data, std::size_t size);
  bool decryptPattern(const SampleProtection& protection, std::uint8_t* data, std::size_t size);
  bool run(std::uint8_t* data, std::size_t size);

  std::unique_ptr<EVP_CIPHER_CTX, void (*)(EVP_CIPHER_CTX*)> m_context;
};

}  // namespace mediamgmnt
