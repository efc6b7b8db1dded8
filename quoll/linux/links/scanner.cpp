#include "quoll/linux/links/scanner.h"

#include <algorithm>
#include <array>
#include <utility>

#include "quoll/foundation/text.h"
#include "quoll/linux/links/address_text.h"
#include "quoll/linux/links/byte_classes.h"
#include "quoll/linux/links/marks.h"

namespace quoll::links {

namespace {

/// File name extensions that are top-level domains too.
bool is_file_ending(std::string_view label) {
  constexpr std::array<std::string_view, 10> kEndings{"cc", "md", "ml", "mov", "ps",
                                                      "py", "rs", "sh", "so",  "zip"};
  return std::find(kEndings.begin(), kEndings.end(), label) != kEndings.end();
}

bool is_label(std::string_view label) {
  constexpr std::size_t kLongest = 63;
  return !label.empty() && label.size() <= kLongest && label.front() != '-' &&
         label.back() != '-' && label.find('_') == std::string_view::npos;
}

/// A name with a known top-level domain.
struct Domain {
  std::string text;       ///< in ASCII form
  std::size_t labels;     ///< at least two
  std::string top_level;  ///< in lower case
};

/// Positions count bytes of the text. Behind its end there is a zero byte, which ends everything.
class Scanner {
 public:
  Scanner(std::string_view text, const Questions& questions) : text_(text), ask_(questions) {}

  std::vector<Found> run() {
    std::size_t done = 0;
    for (std::size_t at = next_trigger(0); at < text_.size(); at = next_trigger(done)) {
      while (at > done && !is(text_[at - 1], kStop)) {
        --at;
      }
      done = scan_word(at);
    }
    return std::move(found_);
  }

 private:
  char at(std::size_t position) const { return position < text_.size() ? text_[position] : '\0'; }
  std::string_view piece(std::size_t begin, std::size_t end) const {
    return text_.substr(begin, end - begin);
  }
  MarkAt mark(std::size_t position) const {
    return is_ascii(at(position)) ? MarkAt{} : mark_at(text_, position);
  }
  bool stops(std::size_t position) const {
    return is(at(position), kStop) || mark(position).mark == Mark::kStop;
  }
  /// True for a byte of that class, and for a byte of a letter or symbol outside ASCII.
  bool is_part(std::size_t position, ByteClass byte_class) const {
    const char c = at(position);
    return is_ascii(c) ? is(c, byte_class) : mark_at(text_, position).mark == Mark::kNone;
  }
  std::size_t end_of(ByteClass byte_class, std::size_t position) const {
    while (is_part(position, byte_class)) {
      ++position;
    }
    return position;
  }

  std::size_t next_trigger(std::size_t position) const;
  std::size_t scan_word(std::size_t position);
  std::size_t scan_token(std::size_t begin);
  std::size_t take_address(std::size_t begin, std::size_t end);
  std::size_t take_mail(std::size_t begin, std::size_t end);
  std::size_t take_name(std::size_t begin, std::size_t end);

  std::size_t scheme_begin(std::size_t begin, std::size_t end) const;
  bool stands_alone(std::size_t begin) const;
  std::size_t host_begin(std::size_t position) const;
  std::size_t name_end(std::size_t position) const;
  std::size_t literal_end(std::size_t position) const;
  std::optional<std::string> ascii_form(std::string_view host) const;
  std::optional<Domain> domain(std::string_view name) const;
  bool reads_like_a_file(const Domain& name, std::size_t name_end) const;
  std::size_t port_end(std::size_t position) const;
  std::size_t path_end(std::size_t position) const;
  std::size_t address_end(std::size_t host_end) const;
  void add(std::string url, std::size_t begin, std::size_t host, std::string_view host_text,
           std::size_t host_end, std::size_t end);

  std::string_view text_;
  const Questions& ask_;
  std::vector<Found> found_;
};

/// The next "." inside a word or ":" before "//". Most of a text is skipped here.
std::size_t Scanner::next_trigger(std::size_t position) const {
  for (; position < text_.size(); ++position) {
    if (is(text_[position], kTrigger) &&
        (text_[position] == ':' ? text_.substr(position, 3) == "://"
                                : !is(at(position + 1), kStop))) {
      break;
    }
  }
  return position;
}

/// Searches a word and answers its end. A word begins at `position` and ends at the next ASCII
/// stop.
std::size_t Scanner::scan_word(std::size_t position) {
  while (!is(at(position), kStop)) {
    if (is_part(position, kToken)) {
      position = scan_token(position);
    } else {
      position += std::max<std::size_t>(mark(position).length, 1);
    }
  }
  return position;
}

/// Searches a token. Adds the link that begins in it, if there is one, and answers where to go on.
std::size_t Scanner::scan_token(std::size_t begin) {
  const std::size_t end = end_of(kToken, begin);
  if (text_.substr(end, 3) == "://") {
    return take_address(begin, end);
  }
  if (!stands_alone(begin)) {
    return end;
  }
  return at(end) == '@' ? take_mail(begin, end) : take_name(begin, end);
}

/// False for a name inside a path, an address or an escape: such a name is not a link of its own.
bool Scanner::stands_alone(std::size_t begin) const {
  return begin == 0 || !is_one_of(text_[begin - 1], "/\\@%");
}

/// The beginning of the scheme at the end of a token; `end` when it is not the scheme of a link.
std::size_t Scanner::scheme_begin(std::size_t begin, std::size_t end) const {
  constexpr std::size_t kTooLong = 6;
  std::size_t first = end;
  while (first > begin && end - first < kTooLong &&
         (is(text_[first - 1], kAlphanumeric) || is_one_of(text_[first - 1], "+-."))) {
    --first;
  }
  const std::string scheme = foundation::ascii_lower_case(piece(first, end));
  return scheme == "http" || scheme == "https" || scheme == "ftp" ? first : end;
}

std::size_t Scanner::take_address(std::size_t begin, std::size_t end) {
  constexpr std::size_t kSlashes = 3;  // "://"
  const std::size_t first = scheme_begin(begin, end);
  if (first == end) {
    return end + kSlashes;
  }
  const std::size_t host = host_begin(end + kSlashes);
  const std::size_t host_end = at(host) == '[' ? literal_end(host) : name_end(host);
  const auto host_text = ascii_form(piece(host, host_end));
  if (!host_text || host_text->empty()) {
    return end + kSlashes;
  }
  const std::size_t link_end = address_end(host_end);
  add("", first, host, *host_text, host_end, link_end);
  return link_end;
}

/// The beginning of the host: behind the last "@" of a user at `position`, if there is one.
std::size_t Scanner::host_begin(std::size_t position) const {
  std::size_t begin = position;
  for (; is_part(position, kUser) || at(position) == '@'; ++position) {
    if (at(position) == '@') {
      begin = position + 1;
    }
  }
  return begin;
}

/// The end of the host's name that begins at `position`, without a dot at its end.
std::size_t Scanner::name_end(std::size_t position) const {
  if (!is_part(position, kAlphanumeric)) {
    return position;
  }
  while (is_part(position, kName)) {
    if (at(position) == '.' && (at(position + 1) == '.' || !is_part(position + 1, kName))) {
      break;
    }
    ++position;
  }
  return position;
}

/// The end of an IP address in brackets; `position` when there is none.
std::size_t Scanner::literal_end(std::size_t position) const {
  const std::size_t end = text_.find_first_not_of("0123456789ABCDEFabcdef:.", position + 1);
  return end != std::string_view::npos && end > position + 1 && text_[end] == ']' ? end + 1
                                                                                  : position;
}

/// The ASCII form of a host; none when it has none.
std::optional<std::string> Scanner::ascii_form(std::string_view host) const {
  if (std::all_of(host.begin(), host.end(), is_ascii)) {
    return std::string(host);
  }
  constexpr std::size_t kLongest = 1024;  // a longer text cannot give a name of 253 characters
  return host.size() > kLongest ? std::nullopt : ask_.ascii_form(host);
}

std::optional<Domain> Scanner::domain(std::string_view name) const {
  constexpr std::size_t kLongest = 253;
  if (name.find('.') == std::string_view::npos) {
    return std::nullopt;
  }
  auto text = ascii_form(name);
  if (!text || text->size() > kLongest) {
    return std::nullopt;
  }
  std::string_view rest = *text;
  std::size_t labels = 1;
  for (std::size_t dot = rest.find('.'); dot != std::string_view::npos; dot = rest.find('.')) {
    if (!is_label(rest.substr(0, dot))) {
      return std::nullopt;
    }
    rest.remove_prefix(dot + 1);
    ++labels;
  }
  std::string top_level = foundation::ascii_lower_case(rest);
  if (!is_label(rest) || !ask_.is_top_level_domain(top_level)) {
    return std::nullopt;
  }
  return Domain{std::move(*text), labels, std::move(top_level)};
}

std::size_t Scanner::take_mail(std::size_t begin, std::size_t end) {
  const std::string_view local = piece(begin, end);
  const std::size_t host = end + 1;
  const std::size_t host_end = name_end(host);
  const std::size_t token_end = end_of(kToken, host);
  if (local.front() == '.' || local.back() == '.' || local.find("..") != std::string_view::npos ||
      (host_end != token_end && at(host_end) != '.') || at(token_end) == '@') {
    return host;
  }
  const auto found = domain(piece(host, host_end));
  if (!found) {
    return host;
  }
  add("mailto:", begin, host, found->text, host_end, host_end);
  return host_end;
}

std::size_t Scanner::take_name(std::size_t begin, std::size_t end) {
  const std::size_t host_end = name_end(begin);
  if (host_end != end && at(host_end) != '.') {
    return end;
  }
  const auto found = domain(piece(begin, host_end));
  if (!found || reads_like_a_file(*found, host_end)) {
    return end;
  }
  const std::size_t link_end = address_end(host_end);
  add("http://", begin, begin, found->text, host_end, link_end);
  return link_end;
}

bool Scanner::reads_like_a_file(const Domain& name, std::size_t name_end) const {
  return name.labels == 2 && is_file_ending(name.top_level) &&
         !foundation::ascii_lower_case(name.text).starts_with("www.") &&
         at(port_end(name_end)) != '/';
}

std::size_t Scanner::port_end(std::size_t position) const {
  std::size_t end = position;
  if (at(position) == ':') {
    for (++position; is_digit(at(position)); ++position) {
      end = position + 1;
    }
  }
  return end;
}

/// The end of path, query and fragment. They end before a stop, and before a closing bracket that
/// was not opened in them.
std::size_t Scanner::path_end(std::size_t position) const {
  constexpr std::string_view kOpening = "([{";
  constexpr std::string_view kClosing = ")]}";
  std::array<std::size_t, 3> open{};
  for (; !stops(position); ++position) {
    const char c = text_[position];
    if (const std::size_t kind = kOpening.find(c); kind != std::string_view::npos) {
      ++open[kind];
    } else if (const std::size_t closed = kClosing.find(c); closed != std::string_view::npos) {
      if (open[closed] == 0) {
        break;
      }
      --open[closed];
    }
  }
  return position;
}

std::size_t Scanner::address_end(std::size_t host_end) const {
  std::size_t end = host_end;
  if (text_.substr(end, 2) == "./") {
    ++end;  // a host's name may end with a dot
  }
  end = port_end(end);
  if (is_one_of(at(end), "/?#")) {
    end = path_end(end);
  }
  while (end > host_end && is_one_of(text_[end - 1], ".,!?;:")) {
    --end;
  }
  return end;
}

void Scanner::add(std::string url, std::size_t begin, std::size_t host, std::string_view host_text,
                  std::size_t host_end, std::size_t end) {
  append_address(url, piece(begin, host));
  url += host_text;
  append_address(url, piece(host_end, end));
  found_.push_back({begin, end - begin, std::move(url)});
}

}  // namespace

std::vector<Found> scan(std::string_view text, const Questions& questions) {
  return Scanner(text, questions).run();
}

}  // namespace quoll::links
