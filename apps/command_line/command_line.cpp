#include "apps/command_line/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <utility>

#include "quoll/foundation/printable.h"

namespace quoll::command_line {

namespace {

/// The option that was given first of those that are not known, or the first word that nothing
/// takes; empty when that is not what is wrong.
std::string unknown_argument(const CLI::App& app) {
  const auto rest = app.remaining(true);
  const auto option =
      std::ranges::find_if(rest, [](const std::string& word) { return word.starts_with('-'); });
  return option != rest.end() ? *option : rest.empty() ? "" : rest.front();
}

/// "--title needs a TEXT", where the parser says "--title: 1 required TEXT missing".
std::string missing_value(const CLI::App& app, const std::string& words) {
  const auto* const option = app.get_option_no_throw(words.substr(0, words.find(':')));
  if (option == nullptr) {
    return words;
  }
  if (option->count() > 1) {
    return option->get_name() + " is given twice";
  }
  const std::string value = option->get_type_name();
  return option->get_name() + (value.ends_with('S') ? " needs " : " needs a ") + value;
}

/// The error in words for people.
std::string words_for(const CLI::App& app, const CLI::ParseError& error) {
  if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
    const std::string unknown = unknown_argument(app);
    return unknown.starts_with('-')
               ? "there is no option " + unknown.substr(0, unknown.find_first_of(" ="))
               : unknown + " is not expected";
  }
  return dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr
             ? missing_value(app, error.what())
             : error.what();
}

}  // namespace

Option& Option::required() {
  option_->required();
  return *this;
}

Option& Option::placeholder(const std::string& name) {
  option_->type_name(name);
  return *this;
}

Option& Option::one_of(const std::vector<std::string_view>& names) {
  std::string all;
  for (const std::string_view name : names) {
    const std::string_view between = all.empty() ? "" : name == names.back() ? " or " : ", ";
    all.append(between).append(name);
  }
  option_->check([names, complaint = "it takes " + all](const std::string& text) {
    return std::ranges::find(names, text) != names.end() ? "" : complaint;
  });
  return *this;
}

Option& Option::range(std::int64_t least, std::int64_t most, const std::string& unit) {
  const std::string complaint =
      "it takes " + std::to_string(least) + " to " + std::to_string(most) + " " + unit;
  option_->check([=](const std::string& text) {
    const bool is_number = text.find_first_of("nN") == std::string::npos;  // "nan" is in no range
    const CLI::Range range(static_cast<double>(least), static_cast<double>(most));
    return is_number && range(text).empty() ? "" : complaint;
  });
  return *this;
}

Option& Option::show_default() {
  option_->capture_default_str();
  return *this;
}

Option& Option::one_value() {
  option_->allow_extra_args(false);
  return *this;
}

Option& Option::value_may_miss() {
  option_->expected(0, 1);
  return *this;
}

bool Option::is_given() const {
  return option_->count() > 0;
}

std::string Option::name() const {
  return option_->get_name();
}

CommandLine::CommandLine(const std::string& program, const std::string& version,
                         const std::string& text, const std::string& footer)
    : owned_(std::make_unique<CLI::App>(text, program)), app_(owned_.get()), program_(program) {
  app_->set_version_flag("--version", program + " " + version);
  app_->footer(footer);
}

CommandLine::CommandLine(CLI::App* app, std::string program)
    : app_(app), program_(std::move(program)) {}

CommandLine::~CommandLine() = default;
CommandLine::CommandLine(CommandLine&&) noexcept = default;

Option CommandLine::flag(const std::string& names, bool& to, const std::string& text) {
  return Option(app_->add_flag(names, to, text));
}

Option CommandLine::value(const std::string& names, std::string& to, const std::string& text) {
  return Option(app_->add_option(names, to, text));
}

Option CommandLine::value(const std::string& names, std::optional<std::string>& to,
                          const std::string& text) {
  return Option(app_->add_option(names, to, text));
}

Option CommandLine::value(const std::string& names, double& to, const std::string& text) {
  return Option(app_->add_option(names, to, text));
}

Option CommandLine::value(const std::string& names, std::int64_t& to, const std::string& text) {
  return Option(app_->add_option(names, to, text));
}

Option CommandLine::values(const std::string& names, std::vector<std::string>& to,
                           const std::string& text) {
  return Option(app_->add_option(names, to, text));
}

CommandLine CommandLine::subcommand(const std::string& name, const std::string& text,
                                    const std::string& footer, std::function<void()> chosen) {
  app_->require_subcommand(1);
  CLI::App* const command = app_->add_subcommand(name, text);
  command->footer(footer);
  command->callback(std::move(chosen));
  return {command, program_ + " " + name};
}

std::optional<int> CommandLine::read(std::vector<std::string> arguments) {
  const std::string first = arguments.empty() ? "" : arguments.front();
  std::ranges::reverse(arguments);  // the parser takes them from the back
  try {
    app_->parse(std::move(arguments));
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {  // help, or the version
      return app_->exit(error);
    }
    const auto chosen = app_->get_subcommands();
    if (!chosen.empty()) {
      CLI::App* const command = chosen.front();
      return CommandLine(command, program_ + " " + command->get_name())
          .wrong_usage(words_for(*command, error));
    }
    const bool has_subcommands = !app_->get_subcommands([](const auto*) { return true; }).empty();
    const std::string kind = first.starts_with('-') ? "option " : "subcommand ";
    return wrong_usage(has_subcommands && !first.empty() ? "there is no " + kind + first
                                                         : words_for(*app_, error));
  }
}

std::optional<int> CommandLine::read(int argc, const char* const* argv) {
  return read(std::vector<std::string>(argv + std::min(argc, 1), argv + argc));
}

int CommandLine::wrong_usage(const std::string& why) const {
  constexpr int kUsage = 2;
  const std::string program = program_.substr(0, program_.find(' '));
  std::cerr << program << ": " << foundation::printable(why) << "; see " << program_ << " --help\n";
  return kUsage;
}

}  // namespace quoll::command_line
