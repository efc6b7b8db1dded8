#include <iostream>
#include <string>

#include "commands.h"
#include "program_desktop.h"
#include "quoll/console/session.h"

namespace quoll::quollctl {

int call() {
  console::Session session(program_desktop());
  std::ios::sync_with_stdio(false);
  std::string line;
  while (std::getline(std::cin, line) && std::cout) {
    std::cout << session.reply(line) << '\n' << std::flush;
  }
  return session.all_answered() && std::cout ? 0 : 1;
}

}  // namespace quoll::quollctl
