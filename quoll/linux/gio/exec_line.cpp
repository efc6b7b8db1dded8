#include "quoll/linux/gio/exec_line.h"

#include "quoll/linux/gio/handles.h"

namespace quoll::gio {
namespace {

/// The argument as one word of an `Exec` line: quoted, and with no field code in it.
std::string word(const std::string& argument) {
  const TextHandle quoted(g_shell_quote(argument.c_str()));
  std::string out;
  for (const char c : std::string_view(quoted.get())) {
    out.append(c == '%' ? 2 : 1, c);
  }
  return out;
}

bool takes_files(char code) {
  return std::string_view("fFuU").find(code) != std::string_view::npos;
}

std::string without_marks(std::string_view exec) {
  std::string out;
  while (!exec.empty()) {
    const auto end = std::min(exec.find(' '), exec.size() - 1) + 1;
    const std::string_view piece = exec.substr(0, end);
    const std::string_view mark = piece.substr(0, piece.find(' '));
    if (mark != "@@" && mark != "@@u") {
      out += piece;
    }
    exec.remove_prefix(end);
  }
  return out;
}

}  // namespace

std::string exec_line_with(std::string_view exec, const std::vector<std::string>& arguments) {
  std::string words;
  for (const std::string& argument : arguments) {
    words += (words.empty() ? "" : " ") + word(argument);
  }
  const std::string line = without_marks(exec);
  std::string out;
  bool placed = false;
  for (std::size_t at = 0; at < line.size(); ++at) {
    const bool is_code = line[at] == '%' && at + 1 < line.size();
    if (!is_code) {
      out += line[at];
      continue;
    }
    const char code = line[++at];
    if (!takes_files(code)) {
      out += {'%', code};
    } else if (!placed) {
      out += words;
      placed = true;
    }
  }
  return placed ? out : out + " " + words;
}

}  // namespace quoll::gio
