// SPDX-License-Identifier: Apache-2.0
#include "platform/browser/configuration_file.h"

#include <glib.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <vector>

namespace browser {

namespace {

constexpr char kSection[] = "browser";
constexpr const char* kProtectionKeys[] = {"clearkey-file", "parental-country", "parental-limit"};

std::string absoluteBeside(const std::string& configurationFile, const std::string& path) {
  char* const folder = g_path_get_dirname(configurationFile.c_str());
  char* const absolute = g_canonicalize_filename(path.c_str(), folder);
  std::string out = absolute;
  g_free(absolute);
  g_free(folder);
  return out;
}

// A list that GLib made, as texts.
std::vector<std::string> taken(char** list) {
  std::vector<std::string> out(list, list + g_strv_length(list));
  g_strfreev(list);
  return out;
}

// The options of the same names but for single clear keys, which belong into a file of their own; its name is relative to the
// configuration. @return what is wrong, or "".
std::string setFromFile(const std::string& name, const std::string& value, const std::string& path, Options& out) {
  auto preferences = preferenceTexts(out.preferences);
  const auto preference = preferences.find(name);
  if (preference != preferences.end()) {
    *preference->second = value;
    return wrongPreference(name, value);
  }
  if (std::find(std::begin(kProtectionKeys), std::end(kProtectionKeys), name) == std::end(kProtectionKeys)) {
    std::string known;
    for (const auto& each : preferences) known += each.first + ", ";
    for (const char* each : kProtectionKeys) known += std::string(each) + ", ";
    return "there is no key \"" + name + "\"; there are " + known.substr(0, known.size() - 2);
  }
  std::string error;
  const bool good = out.protection.read("--" + name, name == "clearkey-file" ? absoluteBeside(path, value) : value, error);
  return good ? "" : error.substr(2);
}

std::string readGroup(GKeyFile* file, const std::string& group, const std::string& path, Options& out) {
  if (group != kSection) return "there is no group \"" + group + "\"; all keys belong to \"" + kSection + "\"";
  for (const std::string& name : taken(g_key_file_get_keys(file, kSection, nullptr, nullptr))) {
    GError* problem = nullptr;
    char* const text = g_key_file_get_string(file, kSection, name.c_str(), &problem);
    std::string wrong = text == nullptr ? problem->message : setFromFile(name, text, path, out);
    g_free(text);
    g_clear_error(&problem);
    if (!wrong.empty()) return wrong;
  }
  return "";
}

}  // namespace

std::string defaultConfigurationFile() {
  char* const path = g_build_filename(g_get_user_config_dir(), "avcontrol", "browser.ini", nullptr);
  std::string out = path;
  g_free(path);
  return out;
}

bool readConfiguration(const std::string& path, Options& out, std::string& error) {
  if (!g_file_test(path.c_str(), G_FILE_TEST_EXISTS)) return true;
  const std::unique_ptr<GKeyFile, decltype(&g_key_file_unref)> file(g_key_file_new(), g_key_file_unref);
  GError* problem = nullptr;
  if (!g_key_file_load_from_file(file.get(), path.c_str(), G_KEY_FILE_NONE, &problem)) {
    error = path + ": " + problem->message;
    g_error_free(problem);
    return false;
  }
  for (const std::string& group : taken(g_key_file_get_groups(file.get(), nullptr))) {
    error = readGroup(file.get(), group, path, out);
    if (error.empty()) continue;
    error.insert(0, path + ": ");
    return false;
  }
  return true;
}

}  // namespace browser
