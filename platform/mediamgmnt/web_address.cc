// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/web_address.h"

#include <algorithm>
#include <cctype>
#include <string>

namespace mediamgmnt {
namespace {

constexpr std::string_view kAuthorityMark = "//";

}  // namespace

bool isWebAddress(std::string_view url) {
  const std::size_t mark = url.find(kAuthorityMark);
  if (mark == std::string_view::npos) return false;
  std::string scheme(url.substr(0, mark));
  std::transform(scheme.begin(), scheme.end(), scheme.begin(), [](unsigned char c) { return std::tolower(c); });
  return scheme == "http:" || scheme == "https:";
}

bool namesHost(std::string_view url) {
  const std::size_t mark = url.find(kAuthorityMark);
  if (mark == std::string_view::npos) return false;
  const std::string_view rest = url.substr(mark + kAuthorityMark.size());
  const std::string_view authority = rest.substr(0, rest.find_first_of("/?#"));
  const std::string_view host = authority.substr(authority.rfind('@') + 1);  // npos + 1 is 0: all of it
  return !host.empty() && host.front() != ':';
}

}  // namespace mediamgmnt
