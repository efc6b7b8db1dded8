#include "linux/gio/program_output.h"

#include "linux/gio/handles.h"

namespace quoll::gio {

std::optional<std::string> output_of(const std::vector<std::string>& argv) {
  std::vector<const char*> arguments;
  arguments.reserve(argv.size() + 1);
  for (const std::string& argument : argv) {
    arguments.push_back(argument.c_str());
  }
  arguments.push_back(nullptr);
  constexpr auto kHow = static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDOUT_PIPE |
                                                      G_SUBPROCESS_FLAGS_STDERR_SILENCE);
  const ObjectHandle<GSubprocess> process(g_subprocess_newv(arguments.data(), kHow, nullptr));
  GBytes* output = nullptr;
  if (!process || g_subprocess_communicate(process.get(), nullptr, nullptr, &output, nullptr,
                                           nullptr) == FALSE) {
    return std::nullopt;
  }
  const std::unique_ptr<GBytes, Release<g_bytes_unref>> held(output);
  if (g_subprocess_get_successful(process.get()) == FALSE) {
    return std::nullopt;
  }
  gsize size = 0;
  const void* const bytes = g_bytes_get_data(output, &size);
  return std::string(static_cast<const char*>(bytes), size);
}

}  // namespace quoll::gio
