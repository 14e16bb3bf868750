// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/rating_schemes.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <string>

#include "platform/mediamgmnt/country_codes.h"

namespace mediamgmnt {
namespace {

struct RatingValue {
  std::string_view name;  ///< as compared: upper case, no blanks, no hyphens
  int minimumAge;
};

/// One column of the table below. Unused places are empty.
struct RatingScheme {
  std::array<std::string_view, 2> ids;  ///< as compared: lower case
  std::string_view prefix;              ///< may stand before a value: "FSK16"
  std::array<RatingValue, 8> values;    ///< from the lowest on
};

constexpr std::array<RatingScheme, 4> kSchemes = {{
    // Freiwillige Selbstkontrolle der Filmwirtschaft, Germany: the age groups of section 14 (2) of the Jugendschutzgesetz.
    {{"urn:oipf:germanyfskcs", "fsk"}, "FSK", {{{"0", 0}, {"6", 6}, {"12", 12}, {"16", 16}, {"18", 18}}}},
    // British Board of Film Classification: its published classification guidelines.
    {{"bbfc"}, "BBFC", {{{"U", 4}, {"PG", 8}, {"12A", 12}, {"12", 12}, {"15", 15}, {"18", 18}, {"R18", 18}}}},
    // Kijkwijzer, Netherlands: the age symbols that NICAM publishes.
    {{"kijkwijzer", "nicam"}, "KIJKWIJZER", {{{"AL", 0}, {"6", 6}, {"9", 9}, {"12", 12}, {"14", 14}, {"16", 16}, {"18", 18}}}},
    // Signalétique jeunesse, France: the categories of the broadcasting authority's youth signage.
    {{"csa", "arcom"}, "", {{{"TP", 0}, {"10", 10}, {"12", 12}, {"16", 16}, {"18", 18}}}},
}};

/// The broadcast standard (ETSI EN 300 468, parental_rating_descriptor): codes 1 to 15 are the age less 3; 0 is undefined; higher
/// ones are the broadcaster's own.
constexpr int kDvbOffset = 3;
constexpr int kHighestDvbCode = 0x0F;

std::string lowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  return lower;
}

const RatingScheme* findScheme(std::string_view name) {
  const std::string id = lowerCase(name);
  const auto found = std::find_if(kSchemes.begin(), kSchemes.end(), [&](const RatingScheme& scheme) {
    return !id.empty() && std::find(scheme.ids.begin(), scheme.ids.end(), id) != scheme.ids.end();
  });
  return found != kSchemes.end() ? &*found : nullptr;
}

/// "FSK 16", "fsk-16" and "16" are the same.
std::string comparable(std::string_view value, std::string_view prefix) {
  std::string bare;
  for (const unsigned char c : value) {
    if (std::isspace(c) == 0 && c != '-') bare += static_cast<char>(std::toupper(c));
  }
  if (!prefix.empty() && bare.compare(0, prefix.size(), prefix) == 0) bare.erase(0, prefix.size());
  return bare;
}

void readByTable(const RatingScheme& scheme, Rating& rating) {
  const std::string wanted = comparable(rating.name, scheme.prefix);
  const auto found = std::find_if(scheme.values.begin(), scheme.values.end(),
                                  [&](const RatingValue& each) { return !wanted.empty() && each.name == wanted; });
  if (found == scheme.values.end()) return;
  rating.value = static_cast<int>(found - scheme.values.begin());
  rating.minimumAge = found->minimumAge;
}

void readAge(Rating& rating) {
  int age = 0;
  const char* const end = rating.name.data() + rating.name.size();
  const auto [stop, error] = std::from_chars(rating.name.data(), end, age);
  if (error != std::errc() || stop != end || age <= kDvbOffset || age > kDvbOffset + kHighestDvbCode) return;
  rating.value = age - kDvbOffset;
  rating.minimumAge = age;
}

}  // namespace

Rating readRating(std::string_view scheme, std::string_view value, std::string_view region) {
  Rating rating;
  rating.name = value;
  rating.scheme = scheme;
  rating.region = twoLetterCountry(region);
  if (lowerCase(scheme) == kDvbScheme) {
    readAge(rating);
  } else if (const RatingScheme* const known = findScheme(scheme); known != nullptr) {
    readByTable(*known, rating);
  }
  return rating;
}

std::optional<Rating> readDvbRating(std::string_view country, std::uint8_t code) {
  if (code == 0) return std::nullopt;
  Rating rating;
  rating.scheme = kDvbScheme;
  rating.value = code;
  rating.region = twoLetterCountry(country);
  if (code <= kHighestDvbCode) rating.minimumAge = code + kDvbOffset;
  rating.name = std::to_string(rating.minimumAge.value_or(code));
  return rating;
}

bool isKnownScheme(std::string_view scheme) { return lowerCase(scheme) == kDvbScheme || findScheme(scheme) != nullptr; }

}  // namespace mediamgmnt
