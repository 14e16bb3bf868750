// SPDX-License-Identifier: Apache-2.0
#include "platform/mediamgmnt/preferences.h"

#include "platform/mediamgmnt/language_code.h"

namespace mediamgmnt {
namespace {

constexpr std::string_view kSeparators = ", \t";

Languages splitLanguages(std::string_view list) {
  Languages languages;
  for (auto first = list.find_first_not_of(kSeparators); first != std::string_view::npos;
       first = list.find_first_not_of(kSeparators)) {
    list.remove_prefix(first);
    const auto length = std::min(list.find_first_of(kSeparators), list.size());
    languages.push_back(languageCode(list.substr(0, length)));
    list.remove_prefix(length);
  }
  return languages;
}

}  // namespace

Preferences& Preferences::instance() {
  static auto* const instance = new Preferences;  // never destroyed: threads may outlive the process's static objects
  return *instance;
}

void Preferences::setLanguages(ComponentKind kind, std::string_view list) {
  Languages languages = splitLanguages(list);
  std::lock_guard lock(m_mutex);
  m_languages[indexOf(kind)] = std::move(languages);
}

Languages Preferences::languages(ComponentKind kind) const {
  std::lock_guard lock(m_mutex);
  return m_languages[indexOf(kind)];
}

void Preferences::selectDefaults(ComponentKind kind) {
  std::lock_guard lock(m_mutex);
  ++m_eras[indexOf(kind)];
}

unsigned long Preferences::era(ComponentKind kind) const {
  std::lock_guard lock(m_mutex);
  return m_eras[indexOf(kind)];
}

}  // namespace mediamgmnt
