#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

/// The command line of the programs: what they take, their help, and one manner of saying what is
/// wrong with it. One thread.
namespace quoll::command_line {

/// One option, or the arguments that stand alone. Lives as long as its command line.
class Option {
 public:
  explicit Option(CLI::Option* option) : option_(option) {}

  Option& required();
  /// How help and errors call the value.
  Option& placeholder(const std::string& name);
  /// Takes one of these, and says so: "it takes xml, binary or old".
  Option& one_of(const std::vector<std::string_view>& names);
  /// Takes a number from `least` to `most`, and says so: "it takes 0 to 86400 seconds".
  Option& range(std::int64_t least, std::int64_t most, const std::string& unit);
  /// Shows in the help what is taken when it is not given.
  Option& show_default();
  /// Takes one value each time, also when its variable holds several.
  Option& one_value();
  /// May stand without its value.
  Option& value_may_miss();

  [[nodiscard]] bool is_given() const;
  [[nodiscard]] std::string name() const;
  friend bool operator==(const Option&, const Option&) = default;

 private:
  CLI::Option* option_;
};

/// What a program, or one of its subcommands, takes. The variables that it is given are set by
/// `read` and must live until then.
class CommandLine {
 public:
  /// `text` says what the program does, `footer` ends its help.
  CommandLine(const std::string& program, const std::string& version, const std::string& text,
              const std::string& footer);
  ~CommandLine();
  CommandLine(CommandLine&&) noexcept;
  CommandLine& operator=(CommandLine&&) = delete;

  Option flag(const std::string& names, bool& to, const std::string& text);
  Option value(const std::string& names, std::string& to, const std::string& text);
  Option value(const std::string& names, std::optional<std::string>& to, const std::string& text);
  Option value(const std::string& names, double& to, const std::string& text);
  Option value(const std::string& names, std::int64_t& to, const std::string& text);
  Option values(const std::string& names, std::vector<std::string>& to, const std::string& text);

  /// From now on one of the subcommands must be given; `chosen` is called by `read` when it is
  /// this one.
  CommandLine subcommand(const std::string& name, const std::string& text,
                         const std::string& footer, std::function<void()> chosen);

  /// Reads the arguments, without the program's name. Answers an exit status after help, the
  /// version, or wrong usage, which it has said.
  [[nodiscard]] std::optional<int> read(std::vector<std::string> arguments);
  [[nodiscard]] std::optional<int> read(int argc, const char* const* argv);

  /// Says in one line what is wrong, and where there is help; answers the exit status.
  int wrong_usage(const std::string& why) const;

 private:
  CommandLine(CLI::App* app, std::string program);

  std::unique_ptr<CLI::App> owned_;  ///< null for a subcommand
  CLI::App* app_;
  std::string program_;
};

}  // namespace quoll::command_line
