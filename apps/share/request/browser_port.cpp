#include "apps/share/request/browser_port.h"

#include <cstdint>
#include <cstring>
#include <nlohmann/json.hpp>

#include "quoll/linux/posix/descriptor_io.h"

namespace quoll::share {

namespace {

/// Bytes that are no text have come from elsewhere, and are replaced.
std::string dumped(const nlohmann::json& value) {
  return value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace

BrowserPort::Received BrowserPort::receive(std::string& frame) const {
  std::uint32_t length = 0;
  bool ended = false;
  frame.clear();
  if (!posix::read_until(input_, frame, sizeof length, ended)) {
    return Received::kDamaged;
  }
  if (frame.size() < sizeof length) {
    return frame.empty() ? Received::kEnd : Received::kDamaged;
  }
  std::memcpy(&length, frame.data(), sizeof length);
  frame.clear();
  const bool is_whole = length <= kLongestFrame &&
                        posix::read_until(input_, frame, length, ended) && frame.size() == length;
  return is_whole ? Received::kFrame : Received::kDamaged;
}

void BrowserPort::tell_progress(int percent) {
  if (percent != percent_) {
    percent_ = percent;
    say(dumped({{"progress", percent}}));
  }
}

void BrowserPort::tell_waiting() {
  say(R"({"waiting":true})");
}

void BrowserPort::tell_end(bool is_opened, std::string_view title, std::string_view body) {
  say(dumped({{"end", {{"opened", is_opened}, {"title", title}, {"body", body}}}}));
}

void BrowserPort::say(std::string_view json) {
  const auto length = static_cast<std::uint32_t>(json.size());
  std::string frame(sizeof length, '\0');
  std::memcpy(frame.data(), &length, sizeof length);
  frame += json;
  has_listener_ = has_listener_ && posix::write_all(output_, frame);
}

}  // namespace quoll::share
