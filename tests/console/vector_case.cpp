#include "tests/console/vector_case.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace quoll::test {

namespace {

using console::Json;

constexpr std::string_view kAnything = "${ANY}";
constexpr std::array<std::string_view, 6> kKeys{"reason", "request", "reply",
                                                "before", "files",   "environment"};

std::map<std::string, std::string> texts(const Json& vector, const char* key) {
  std::map<std::string, std::string> found;
  if (vector.contains(key)) {
    for (const auto& [name, value] : vector[key].items()) {
      found[name] = value.get<std::string>();
    }
  }
  return found;
}

VectorCase read_vector(const std::string& line) {
  const Json json = console::parse_json(line);
  for (const auto& [key, value] : json.items()) {
    if (std::find(kKeys.begin(), kKeys.end(), key) == kKeys.end()) {
      throw std::runtime_error("a vector with the key " + key + ": " + line);
    }
  }
  VectorCase vector{.reason = json.at("reason").get<std::string>(),
                    .request = json.at("request"),
                    .reply = json.at("reply"),
                    .before = {},
                    .files = texts(json, "files"),
                    .environment = texts(json, "environment"),
                    .alone = false};
  if (json.contains("before")) {
    vector.before.assign(json["before"].begin(), json["before"].end());
  }
  vector.alone = line.find("${CONTAINER}") != std::string::npos ||
                 line.find("${TEMP}") != std::string::npos || json.contains("before") ||
                 json.contains("files") || json.contains("environment");
  return vector;
}

bool text_matches(std::string_view pattern, std::string_view text) {
  const std::size_t any = pattern.find(kAnything);
  if (any == std::string_view::npos) {
    return pattern == text;
  }
  if (!text.starts_with(pattern.substr(0, any))) {
    return false;
  }
  const std::string_view rest = pattern.substr(any + kAnything.size());
  for (std::size_t cut = any; cut <= text.size(); ++cut) {
    if (text_matches(rest, text.substr(cut))) {
      return true;
    }
  }
  return false;
}

}  // namespace

std::vector<VectorCase> read_vectors(const std::string& path) {
  std::ifstream in(path);
  std::vector<VectorCase> vectors;
  for (std::string line; std::getline(in, line);) {
    vectors.push_back(read_vector(line));
  }
  if (vectors.empty()) {
    throw std::runtime_error("no vectors in " + path);
  }
  return vectors;
}

std::string VectorFolders::fill(std::string text) const {
  const std::pair<std::string_view, std::string> places[] = {
      {"${CONTAINER}", containers() + "/K7Q2M9XT4B.quoll"}, {"${TEMP}", folder_.path("files")}};
  for (const auto& [name, path] : places) {
    for (std::size_t at = text.find(name); at != std::string::npos; at = text.find(name, at)) {
      text.replace(at, name.size(), path);
    }
  }
  return text;
}

void VectorFolders::make_files(const VectorCase& vector) const {
  for (const auto& [name, content] : vector.files) {
    const std::filesystem::path path = fill(name);
    std::filesystem::create_directories(path.parent_path());
    if (path.has_filename()) {
      std::ofstream(path, std::ios::binary) << content;
    }
  }
}

void VectorFolders::clear() const {
  for (const auto& entry : std::filesystem::directory_iterator(folder_.path())) {
    std::filesystem::remove_all(entry);
  }
}

std::vector<std::string> request_lines(const VectorCase& vector, const VectorFolders& folders) {
  std::vector<std::string> lines;
  for (const Json& request : vector.before) {
    lines.push_back(folders.fill(console::json_line(request)));
  }
  // A request that is a text stands for a line that need not be JSON.
  lines.push_back(folders.fill(vector.request.is_string() ? vector.request.get<std::string>()
                                                          : console::json_line(vector.request)));
  return lines;
}

bool matches(const Json& expected, const Json& reply) {
  if (expected == Json(kAnything)) {
    return true;
  }
  if (expected.is_string() && reply.is_string()) {
    return text_matches(expected.get_ref<const std::string&>(),
                        reply.get_ref<const std::string&>());
  }
  if (expected.type() != reply.type() || expected.size() != reply.size()) {
    return false;
  }
  if (expected.is_array()) {
    return std::equal(expected.begin(), expected.end(), reply.begin(), matches);
  }
  if (expected.is_object()) {
    for (const auto& [key, value] : expected.items()) {
      if (!reply.contains(key) || !matches(value, reply[key])) {
        return false;
      }
    }
    return true;
  }
  return expected == reply;
}

}  // namespace quoll::test
