// Staging files, compared with std::filesystem with the same rule for names, and with `cp`. These
// two do less: they take no lock and do not reserve names.
//
// QUOLL_BENCH_FOLDER names a folder on the file system to measure; without it, the temporary folder
// is used.

#include "quoll/container/staging.h"

#include <benchmark/benchmark.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>

#include "quoll/foundation/collections.h"
#include "quoll/linux/posix/coordinator.h"
#include "quoll/linux/posix/files.h"
#include "quoll/platform/desktop.h"

extern char** environ;

namespace {

namespace fs = std::filesystem;

struct Input {
  const char* name;
  int count;
  std::size_t size;
  bool one_name;
};

constexpr Input kInputs[] = {{"1x1GB", 1, std::size_t{1} << 30, false},
                             {"1000x64KB", 1000, 64 << 10, false},
                             {"10000x4KB", 10000, 4 << 10, false},
                             {"1000_of_one_name", 1000, 100, true}};

fs::path root() {
  const char* folder = std::getenv("QUOLL_BENCH_FOLDER");
  return (folder == nullptr ? fs::temp_directory_path() : fs::path(folder)) / "quoll-bench-staging";
}

std::vector<std::string> make_sources(const Input& input) {
  std::vector<std::string> paths;
  const std::string block(1 << 20, 'q');
  for (int i = 0; i < input.count; ++i) {
    const fs::path folder = root() / "sources" / (input.one_name ? std::to_string(i) : "all");
    fs::create_directories(folder);
    paths.push_back(folder / (input.one_name ? "same.txt" : "file" + std::to_string(i) + ".bin"));
    std::ofstream out(paths.back(), std::ios::binary);
    for (std::size_t left = input.size; left > 0; left -= std::min(left, block.size())) {
      out.write(block.data(), static_cast<std::streamsize>(std::min(left, block.size())));
    }
  }
  return paths;
}

fs::path staging() {
  return root() / "K7Q2M9XT4B.quoll" / "SharedData" / "Share";
}

void stage(const std::vector<std::string>& paths) {
  quoll::foundation::List list;
  for (const std::string& path : paths) {
    list.addObject(path);
  }
  const auto staged = quoll::ExtensionUtilities::ShareFiles("Share", list);
  if (staged.count() != paths.size()) {
    std::abort();
  }
}

void copy_with_std(const std::vector<std::string>& paths) {
  for (const fs::path path : paths) {
    fs::path to = staging() / path.filename();
    for (int n = 1; fs::exists(to); ++n) {
      to = staging() / (path.stem().string() + "_" + std::to_string(n) + path.extension().string());
    }
    fs::copy_file(path, to);
  }
}

void copy_with_cp(const std::vector<std::string>& paths) {
  std::string to = staging();
  std::vector<char*> arguments{const_cast<char*>("cp"), const_cast<char*>("--backup=numbered"),
                               const_cast<char*>("-t"), to.data()};
  for (const std::string& path : paths) {
    arguments.push_back(const_cast<char*>(path.c_str()));
  }
  arguments.push_back(nullptr);
  pid_t child = 0;
  int status = 0;
  if (posix_spawnp(&child, "cp", nullptr, nullptr, arguments.data(), environ) != 0 ||
      waitpid(child, &status, 0) != child || status != 0) {
    std::abort();
  }
}

void add(const Input& input, const char* who, void (*copy)(const std::vector<std::string>&)) {
  benchmark::RegisterBenchmark((std::string(input.name) + "/" + who).c_str(),
                               [&input, copy](benchmark::State& state) {
                                 const auto paths = make_sources(input);
                                 for (auto _ : state) {
                                   state.PauseTiming();
                                   quoll::ExtensionUtilities::ShareInit("Share");
                                   state.ResumeTiming();
                                   copy(paths);
                                 }
                                 fs::remove_all(root());
                               })
      ->Unit(benchmark::kMillisecond)
      ->UseRealTime();
}

}  // namespace

int main(int argc, char** argv) {
  setenv("QUOLL_GROUP_CONTAINERS", root().c_str(), 1);
  quoll::platform::install({.files = quoll::posix::make_file_manager(),
                            .coordinator = quoll::posix::coordinator_factory()});
  for (const Input& input : kInputs) {
    add(input, "quoll", stage);
    add(input, "std", copy_with_std);
    add(input, "cp", copy_with_cp);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
}
