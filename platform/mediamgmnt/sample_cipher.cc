// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/sample_cipher.h"

#include <algorithm>
#include <limits>

namespace mediamgmnt {
namespace {

constexpr std::size_t kBlock = 16;

}  // namespace

bool SampleCipher::decrypt(const ContentKey& key, const SampleProtection& protection, std::uint8_t* data, std::size_t size) {
  if (m_context == nullptr || !begin(key, protection)) return false;
  if (protection.subsamples.empty()) return decryptPart(key, protection, data, size);
  std::size_t at = 0;
  for (const Subsample& part : protection.subsamples) {
    if (part.clear > size - at || part.encrypted > size - at - part.clear) return false;
    at += part.clear;
    if (!decryptPart(key, protection, data + at, part.encrypted)) return false;
    at += part.encrypted;
  }
  return true;
}

bool SampleCipher::begin(const ContentKey& key, const SampleProtection& protection) {
  const EVP_CIPHER* const cipher = protection.scheme == CipherScheme::Cenc ? EVP_aes_128_ctr() : EVP_aes_128_cbc();
  return EVP_DecryptInit_ex(m_context.get(), cipher, nullptr, key.data(), protection.iv.data()) == 1 &&
         EVP_CIPHER_CTX_set_padding(m_context.get(), 0) == 1;
}

/// "cenc" counts on through all parts of a sample; "cbcs" begins each with the same initial value.
bool SampleCipher::decryptPart(const ContentKey& key, const SampleProtection& protection, std::uint8_t* data, std::size_t size) {
  if (protection.scheme == CipherScheme::Cenc) return run(data, size);
  return begin(key, protection) && decryptPattern(protection, data, size);
}

/// What does not fill a block at the end was left clear.
bool SampleCipher::decryptPattern(const SampleProtection& protection, std::uint8_t* data, std::size_t size) {
  if (protection.skipBlocks == 0) return run(data, size / kBlock * kBlock);
  const std::size_t crypt = std::max(protection.cryptBlocks, 1U) * kBlock;
  const std::size_t period = crypt + protection.skipBlocks * kBlock;
  for (std::size_t at = 0; at < size; at += period) {
    if (!run(data + at, std::min(crypt, (size - at) / kBlock * kBlock))) return false;
  }
  return true;
}

bool SampleCipher::run(std::uint8_t* data, std::size_t size) {
  if (size == 0) return true;
  if (size > static_cast<std::size_t>(std::numeric_limits<int>::max())) return false;
  int written = 0;
  return EVP_DecryptUpdate(m_context.get(), data, &written, data, static_cast<int>(size)) == 1 &&
         static_cast<std::size_t>(written) == size;
}

}  // namespace mediamgmnt
