// SPDX-License-Identifier: Apache-2.0
// Decrypting samples in memory, against copying them: an ordinary picture of 20 kB, encrypted from behind its first bytes on.
#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

#include "platform/mediamgmnt/sample_cipher.h"

namespace {

using namespace mediamgmnt;

constexpr std::size_t kSampleBytes = 20000;
constexpr std::size_t kClearBytes = 96;

void copySample(benchmark::State& state) {
  const std::vector<std::uint8_t> from(kSampleBytes, 1);
  std::vector<std::uint8_t> to(kSampleBytes);
  for (auto step : state) {
    std::memcpy(to.data(), from.data(), to.size());
    benchmark::DoNotOptimize(to.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kSampleBytes));
}

void decrypt(benchmark::State& state, const SampleProtection& protection) {
  std::vector<std::uint8_t> sample(kSampleBytes, 1);
  SampleCipher cipher;
  for (auto step : state) {
    if (!cipher.decrypt(ContentKey{}, protection, sample.data(), sample.size())) state.SkipWithError("it was refused");
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * kSampleBytes));
}

SampleProtection protectionBy(CipherScheme scheme) {
  SampleProtection protection;
  protection.scheme = scheme;
  protection.subsamples = {{kClearBytes, kSampleBytes - kClearBytes}};
  return protection;
}

void decryptCenc(benchmark::State& state) { decrypt(state, protectionBy(CipherScheme::Cenc)); }

void decryptCbcs(benchmark::State& state) {
  SampleProtection protection = protectionBy(CipherScheme::Cbcs);
  protection.cryptBlocks = 1;
  protection.skipBlocks = 9;
  decrypt(state, protection);
}

BENCHMARK(copySample)->Unit(benchmark::kMicrosecond);
BENCHMARK(decryptCenc)->Unit(benchmark::kMicrosecond);
BENCHMARK(decryptCbcs)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
