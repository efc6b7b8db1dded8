#include <exception>
#include <iostream>

#include "apps/quoll-share/share_program.h"
#include "arguments.h"
#include "clipboard.h"
#include "descriptors.h"
#include "notify.h"

namespace quoll {

namespace {

int run(Arguments& arguments) {
  close_inherited_descriptors(arguments.wanted);
  const auto run_here = [&] {
    const auto reason = arguments.clipboard ? add_clipboard(arguments.wanted) : std::nullopt;
    if (reason) {
      std::cerr << "not opened: the clipboard: " << *reason << '\n';
      return static_cast<int>(host::ExitCode::kNotOpened);
    }
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
    auto arguments = quoll::parse(argc, argv);
    const int* const ended = std::get_if<int>(&arguments);
    return ended != nullptr ? *ended : quoll::run(std::get<quoll::Arguments>(arguments));
  } catch (const std::exception& exception) {
    std::cerr << "not opened: " << exception.what() << '\n';
    return static_cast<int>(quoll::host::ExitCode::kNotOpened);
  }
}
