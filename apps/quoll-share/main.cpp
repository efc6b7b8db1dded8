#include <exception>
#include <iostream>

#include "apps/quoll-share/share_program.h"
#include "arguments.h"
#include "descriptors.h"
#include "notify.h"

namespace quoll {

namespace {

int run(const Arguments& arguments) {
  close_inherited_descriptors(arguments.wanted);
  const auto run_here = [&] {
    return share(arguments.wanted,
                 {.print = arguments.print,
                  .verbose = arguments.verbose,
                  .progress = nullptr,
                  .ended = [](host::ExitCode, const std::string& told) { std::cerr << told; }});
  };
  return arguments.notify ? share_and_notify(run_here) : run_here();
}

}  // namespace

}  // namespace quoll

int main(int argc, char** argv) {
  quoll::hold_standard_descriptors();
  try {
    const auto arguments = quoll::parse(argc, argv);
    const int* const ended = std::get_if<int>(&arguments);
    return ended != nullptr ? *ended : quoll::run(std::get<quoll::Arguments>(arguments));
  } catch (const std::exception& exception) {
    std::cerr << "not opened: " << exception.what() << '\n';
    return static_cast<int>(quoll::host::ExitCode::kNotOpened);
  }
}
