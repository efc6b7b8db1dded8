#include <iostream>
#include <string>

#include "apps/console/commands.h"
#include "apps/console/operations/session.h"
#include "apps/console/output.h"
#include "apps/console/program_desktop.h"

namespace quoll::console {

int call() {
  Session session(program_desktop());
  std::ios::sync_with_stdio(false);
  std::string line;
  while (std::getline(std::cin, line) && std::cout) {
    std::cout << session.reply(line) << '\n' << std::flush;
  }
  return finish(session.all_answered());
}

}  // namespace quoll::console
