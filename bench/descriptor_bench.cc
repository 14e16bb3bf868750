// SPDX-License-Identifier: Apache-2.0
// Reading a content-access-streaming descriptor: an ordinary one, and the largest that is taken.
#include <benchmark/benchmark.h>

#include <string>

#include "platform/mediamgmnt/content_descriptor.h"

namespace {

constexpr char kItem[] = R"(
 <ContentItem>
  <Title>Film &amp; Test</Title><Synopsis>Two hours of a test card.</Synopsis><ContentID>crid://example.org/film</ContentID>
  <ContentURL MIMEType="video/mp4" DRMSystemID="urn:dvb:casystemid:19219" TransferType="streaming">http://example.org/a.mp4</ContentURL>
  <ContentURL MIMEType="application/dash+xml">http://example.org/a.mpd</ContentURL>
  <ParentalRating Scheme="dvb-si" Region="DE">16</ParentalRating>
  <DRMControlInformation><DRMSystemID>urn:dvb:casystemid:19219</DRMSystemID><DRMContentID>cid:1</DRMContentID>
   <RightsIssuerURL>http://issuer.example/</RightsIssuerURL></DRMControlInformation>
 </ContentItem>)";

std::string descriptorOf(std::size_t items) {
  std::string text = R"(<Contents xmlns="urn:oipf:iptv:ContentAccessStreamingDescriptor:2008-1">)";
  for (std::size_t i = 0; i < items; ++i) text += kItem;
  return text + "</Contents>";
}

void read(benchmark::State& state, const std::string& text) {
  for (auto step : state) {
    std::string problem;
    auto descriptor = mediamgmnt::readContentDescriptor(text, problem);
    if (!descriptor) state.SkipWithError(problem.c_str());
    benchmark::DoNotOptimize(descriptor);
  }
  state.counters["bytes"] = static_cast<double>(text.size());
}

void readDescriptor(benchmark::State& state) { read(state, descriptorOf(1)); }

void readLargestDescriptor(benchmark::State& state) {
  read(state, descriptorOf((mediamgmnt::kLargestDescriptor - 200) / (sizeof kItem - 1)));
}

BENCHMARK(readDescriptor)->Unit(benchmark::kMicrosecond);
BENCHMARK(readLargestDescriptor)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
