#pragma once

#include <string>
#include <utility>

namespace quoll::xml {

/// A function of the reader module.
template <typename Function>
struct ReaderFunction {
  Function* call = nullptr;
  /// Why `call` is null.
  std::string problem;
};

/// Loads the module, if it is not loaded, and finds the function. The module is never unloaded,
/// because its libraries keep data for each thread.
[[nodiscard]] ReaderFunction<void> load_reader_function(const char* name);

template <typename Function>
[[nodiscard]] ReaderFunction<Function> load_reader(const char* name) {
  auto found = load_reader_function(name);
  return {reinterpret_cast<Function*>(found.call), std::move(found.problem)};
}

}  // namespace quoll::xml
