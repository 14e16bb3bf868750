// SPDX-License-Identifier: Apache-2.0
// The reader of ClearKey licences: whatever a server answers is read inside its bounds or refused, and a key that was read is asked
// for by the same text.
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/fuzz_element.h"
#include "platform/mediamgmnt/licence.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace mediamgmnt;
  const auto keys = readLicence(std::string_view(reinterpret_cast<const char*>(bytes), size));
  if (!keys) return 0;
  for (const auto& entry : *keys) {
    const KeyId& id = entry.first;
    const std::string request = licenceRequest({id});
    const std::string text = request.substr(request.find("[\"") + 2, 22);
    const auto again = readLicence("{\"keys\":[{\"kid\":\"" + text + "\",\"k\":\"" + text + "\"}]}");
    fuzz::require(again.has_value() && again->count(id) == 1, "an id reads back as itself");
    fuzz::require(parseHexKey(keyIdText(id)) == id, "an id's text reads back as itself");
  }
  return 0;
}
