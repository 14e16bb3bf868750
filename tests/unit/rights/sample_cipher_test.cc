// SPDX-License-Identifier: Apache-2.0
// The common encryption, against known vectors and against an encryption made here block by block.
#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <algorithm>
#include <memory>
#include <numeric>
#include <vector>

#include "platform/mediamgmnt/sample_cipher.h"

using mediamgmnt::CipherScheme;
using mediamgmnt::ContentKey;
using mediamgmnt::parseHexKey;
using mediamgmnt::SampleCipher;
using mediamgmnt::SampleProtection;

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes bytesOf(const std::string& hex) {
  Bytes bytes;
  for (std::size_t at = 0; at < hex.size(); at += 32) {
    const auto block = parseHexKey(hex.substr(at, 32)).value();
    bytes.insert(bytes.end(), block.begin(), block.end());
  }
  return bytes;
}

// NIST Special Publication 800-38A, F.2.1 and F.5.1: AES-128.
constexpr char kKey[] = "2b7e151628aed2a6abf7158809cf4f3c";
constexpr char kPlain[] =
    "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e5130c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c37"
    "10";
constexpr char kCbcIv[] = "000102030405060708090a0b0c0d0e0f";
constexpr char kCbc[] =
    "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b273bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1"
    "a7";
constexpr char kCtrIv[] = "f0f1f2f3f4f5f6f7f8f9fafbfcfdfeff";
constexpr char kCtr[] =
    "874d6191b620e3261bef6864990db6ce9806f66b7970fdff8617187bb9fffdff5ae4df3edbd5d35e5b4f09020db03eab1e031dda2fbe03d1792170a0f3009c"
    "ee";

class SampleCipherTest : public ::testing::Test {
 protected:
  bool decrypt(const SampleProtection& protection, Bytes& data) {
    return m_cipher.decrypt(m_key, protection, data.data(), data.size());
  }

  SampleProtection protection(CipherScheme scheme, const char* iv) const {
    SampleProtection out;
    out.scheme = scheme;
    out.iv = parseHexKey(iv).value();
    return out;
  }

  const ContentKey m_key = parseHexKey(kKey).value();
  const Bytes m_plain = bytesOf(kPlain);
  SampleCipher m_cipher;
};

TEST_F(SampleCipherTest, DecryptsWholeSamples) {
  Bytes counted = bytesOf(kCtr);
  Bytes chained = bytesOf(kCbc);

  EXPECT_TRUE(decrypt(protection(CipherScheme::Cenc, kCtrIv), counted));
  EXPECT_TRUE(decrypt(protection(CipherScheme::Cbcs, kCbcIv), chained));

  EXPECT_EQ(counted, m_plain);
  EXPECT_EQ(chained, m_plain);
}

TEST_F(SampleCipherTest, CountsOnThroughSubsamples) {
  const Bytes encrypted = bytesOf(kCtr);
  Bytes data(3, 0xAA);
  data.insert(data.end(), encrypted.begin(), encrypted.begin() + 21);
  data.insert(data.end(), 5, 0xBB);
  data.insert(data.end(), encrypted.begin() + 21, encrypted.end());
  SampleProtection parts = protection(CipherScheme::Cenc, kCtrIv);
  parts.subsamples = {{3, 21}, {5, 43}};

  ASSERT_TRUE(decrypt(parts, data));

  EXPECT_EQ(Bytes(data.begin(), data.begin() + 3), Bytes(3, 0xAA));
  EXPECT_TRUE(std::equal(m_plain.begin(), m_plain.begin() + 21, data.begin() + 3));
  EXPECT_EQ(Bytes(data.begin() + 24, data.begin() + 29), Bytes(5, 0xBB));
  EXPECT_TRUE(std::equal(m_plain.begin() + 21, m_plain.end(), data.begin() + 29));
}

TEST_F(SampleCipherTest, BeginsEachSubsampleAnew_AndLeavesItsLastBytes) {
  const Bytes encrypted = bytesOf(kCbc);
  Bytes data{1, 2};
  data.insert(data.end(), encrypted.begin(), encrypted.begin() + 32);
  data.insert(data.end(), {3, 4, 5});
  data.push_back(6);
  data.insert(data.end(), encrypted.begin(), encrypted.begin() + 16);
  SampleProtection parts = protection(CipherScheme::Cbcs, kCbcIv);
  parts.subsamples = {{2, 35}, {1, 16}};

  ASSERT_TRUE(decrypt(parts, data));

  EXPECT_TRUE(std::equal(m_plain.begin(), m_plain.begin() + 32, data.begin() + 2));
  EXPECT_EQ(Bytes(data.begin() + 34, data.begin() + 38), (Bytes{3, 4, 5, 6}));
  EXPECT_TRUE(std::equal(m_plain.begin(), m_plain.begin() + 16, data.begin() + 38));
}

/// Of each ten blocks the first is encrypted, in one chain.
TEST_F(SampleCipherTest, FollowsAPattern) {
  const Bytes encrypted = bytesOf(kCbc);
  for (const std::size_t size : {std::size_t{16}, std::size_t{15}, std::size_t{175}, std::size_t{176}, std::size_t{500}}) {
    Bytes clear(size);
    std::iota(clear.begin(), clear.end(), std::uint8_t{7});
    Bytes data = clear;
    std::size_t block = 0;
    for (std::size_t at = 0; at + 16 <= size && block < 4; at += 160, ++block) {
      std::copy_n(m_plain.begin() + static_cast<std::ptrdiff_t>(16 * block), 16, clear.begin() + static_cast<std::ptrdiff_t>(at));
      std::copy_n(encrypted.begin() + static_cast<std::ptrdiff_t>(16 * block), 16, data.begin() + static_cast<std::ptrdiff_t>(at));
    }
    SampleProtection pattern = protection(CipherScheme::Cbcs, kCbcIv);
    pattern.cryptBlocks = 1;
    pattern.skipBlocks = 9;

    ASSERT_TRUE(decrypt(pattern, data)) << size;

    EXPECT_EQ(data, clear) << size;
  }
}

TEST_F(SampleCipherTest, RefusesSubsamplesThatDoNotFit) {
  for (const auto& [clear, encrypted] :
       {std::pair<std::size_t, std::size_t>{65, 0}, {0, 65}, {1, 64}, {64, 1}, {~std::size_t{0}, 1}}) {
    Bytes data(64);
    SampleProtection parts = protection(CipherScheme::Cenc, kCtrIv);
    parts.subsamples = {{clear, encrypted}};
    EXPECT_FALSE(decrypt(parts, data)) << clear << " " << encrypted;
  }
}

TEST_F(SampleCipherTest, TakesAnEmptySample) {
  Bytes data;
  EXPECT_TRUE(decrypt(protection(CipherScheme::Cenc, kCtrIv), data));
  EXPECT_TRUE(decrypt(protection(CipherScheme::Cbcs, kCbcIv), data));
}

}  // namespace
