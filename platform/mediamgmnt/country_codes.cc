// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/country_codes.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace mediamgmnt {
namespace {

struct Country {
  std::string_view three;
  std::string_view two;
};

/// ISO 3166-1: where televisions of this kind are in use, and their neighbours.
constexpr std::array<Country, 62> kCountries = {{
    {"ALB", "AL"}, {"AND", "AD"}, {"ARM", "AM"}, {"AUS", "AU"}, {"AUT", "AT"}, {"AZE", "AZ"}, {"BEL", "BE"}, {"BGR", "BG"},
    {"BIH", "BA"}, {"BLR", "BY"}, {"CHE", "CH"}, {"CYP", "CY"}, {"CZE", "CZ"}, {"DEU", "DE"}, {"DNK", "DK"}, {"ESP", "ES"},
    {"EST", "EE"}, {"FIN", "FI"}, {"FRA", "FR"}, {"GBR", "GB"}, {"GEO", "GE"}, {"GRC", "GR"}, {"HKG", "HK"}, {"HRV", "HR"},
    {"HUN", "HU"}, {"IDN", "ID"}, {"IND", "IN"}, {"IRL", "IE"}, {"IRN", "IR"}, {"ISL", "IS"}, {"ISR", "IL"}, {"ITA", "IT"},
    {"KAZ", "KZ"}, {"LIE", "LI"}, {"LTU", "LT"}, {"LUX", "LU"}, {"LVA", "LV"}, {"MAR", "MA"}, {"MCO", "MC"}, {"MDA", "MD"},
    {"MKD", "MK"}, {"MLT", "MT"}, {"MNE", "ME"}, {"MYS", "MY"}, {"NLD", "NL"}, {"NOR", "NO"}, {"NZL", "NZ"}, {"POL", "PL"},
    {"PRT", "PT"}, {"ROU", "RO"}, {"RUS", "RU"}, {"SGP", "SG"}, {"SMR", "SM"}, {"SRB", "RS"}, {"SVK", "SK"}, {"SVN", "SI"},
    {"SWE", "SE"}, {"THA", "TH"}, {"TUN", "TN"}, {"TUR", "TR"}, {"UKR", "UA"}, {"VNM", "VN"},
}};

bool isLetter(unsigned char c) { return std::isalpha(c) != 0; }

}  // namespace

std::string twoLetterCountry(std::string_view country) {
  std::string upper(country);
  if (upper.size() < 2 || upper.size() > 3 || !std::all_of(upper.begin(), upper.end(), isLetter)) return upper;
  std::transform(upper.begin(), upper.end(), upper.begin(), [](unsigned char c) { return std::toupper(c); });
  const auto found = std::find_if(kCountries.begin(), kCountries.end(), [&](const Country& each) { return each.three == upper; });
  return found != kCountries.end() ? std::string(found->two) : upper;
}

}  // namespace mediamgmnt
