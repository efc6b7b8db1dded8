#include "apps/compose/moment.h"

#include <ctime>
#include <fstream>
#include <sstream>

namespace quoll::compose {

Moment present_moment() {
  Moment now{.time = std::time(nullptr), .boot = {}, .since_boot = 0};
  std::ifstream("/proc/sys/kernel/random/boot_id") >> now.boot;
  std::timespec since_boot{};
  clock_gettime(CLOCK_BOOTTIME, &since_boot);
  now.since_boot = since_boot.tv_sec;
  return now;
}

std::string mark_of(const Moment& moment) {
  return moment.boot + " " + std::to_string(moment.since_boot) + "\n";
}

std::int64_t age_of(const std::string& mark, const struct stat& status, const Moment& now) {
  std::istringstream line(mark);
  std::string boot;
  std::int64_t since_boot = 0;
  const bool is_of_this_boot = line >> boot >> since_boot && boot == now.boot;
  return is_of_this_boot ? now.since_boot - since_boot : now.time - status.st_mtim.tv_sec;
}

std::string first_line(const std::string& text) {
  return text.substr(0, text.find('\n'));
}

std::string after_first_line(const std::string& text) {
  const auto end = text.find('\n');
  return end == std::string::npos ? "" : text.substr(end + 1);
}

}  // namespace quoll::compose
