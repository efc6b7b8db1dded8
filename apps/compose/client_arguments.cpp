#include "apps/compose/client_arguments.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <string_view>

#include "apps/compose/clean_text.h"
#include "quoll/foundation/percent.h"

namespace quoll::compose {
namespace {

using foundation::percent_encode;

constexpr std::size_t kLongestArgument = 131071;  // the kernel's limit, in bytes

/// A file URL instead of a path, because clients read paths by rules of their own.
std::string file_url(const std::string& path) {
  std::string url = "file://";
  for (const char c : path) {
    if (c == '/') {
      url += c;
    } else {
      foundation::percent_encode_append(url, std::string_view(&c, 1));
    }
  }
  return url;
}

std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const auto& text : texts) {
    all += (all.empty() ? "" : ", ") + text;
  }
  return all;
}

/// Lines in a `mailto:` link end as they do in mail.
std::string with_mail_lines(const std::string& text) {
  std::string out;
  for (const char c : text) {
    out += c == '\n' ? "\r\n" : std::string(1, c);
  }
  return out;
}

/// Builds a `mailto:` link: the recipients, and the other fields behind a "?".
class MailLink {
 public:
  explicit MailLink(const std::vector<std::string>& to,
                    std::string (*written)(const std::string& address) = encoded) {
    for (const auto& address : to) {
      text_ += (text_.ends_with(':') ? "" : ",") + written(address);
    }
  }
  void add(const char* key, const std::string& value) {
    if (!value.empty()) {
      text_ += (has_query_ ? "&" : "?") + std::string(key) + "=" + percent_encode(value);
      has_query_ = true;
    }
  }
  void add_headers(const DraftFields& draft) {
    add("cc", joined(draft.cc));
    add("bcc", joined(draft.bcc));
    add("subject", draft.subject);
  }
  void add_message(const DraftFields& draft) {
    add_headers(draft);
    add("body", with_mail_lines(draft.text));
  }
  [[nodiscard]] const std::string& text() const { return text_; }

 private:
  static std::string encoded(const std::string& address) { return percent_encode(address); }

  std::string text_ = "mailto:";
  bool has_query_ = false;
};

std::vector<std::string> for_evolution(const DraftFields& draft, const ClientFiles& files) {
  MailLink link(draft.to);
  link.add_message(draft);
  for (const auto& file : files.attachments) {
    link.add("attach", file_url(file));
  }
  return {link.text()};
}

/// True for a text that looks like a URL: letters of a scheme, then a colon.
bool has_scheme(const std::string& text) {
  constexpr std::string_view kLetters =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+-.";
  const auto end = text.find_first_not_of(kLetters);
  return end != std::string::npos && text[end] == ':';
}

constexpr std::string_view kKMailText = "--body=";

bool is_too_long_for_kmail(const std::string& text) {
  return text.size() > kLongestArgument - kKMailText.size();
}

// An address that looks like a URL gets angle brackets; KMail would attach it otherwise.
std::vector<std::string> for_kmail(const DraftFields& draft, const ClientFiles& files) {
  std::vector<std::string> arguments{"--composer"};
  const auto add = [&](const char* option, const std::string& value) {
    if (!value.empty()) {
      arguments.push_back(option + value);
    }
  };
  add("--subject=", draft.subject);
  add("--cc=", joined(draft.cc));
  add("--bcc=", joined(draft.bcc));
  if (is_too_long_for_kmail(draft.text)) {
    add("--msg=", file_url(files.text));
  } else {
    add(kKMailText.data(), draft.text);
  }
  for (const auto& file : files.attachments) {
    add("--attach=", file_url(file));
  }
  if (!draft.to.empty()) {
    arguments.emplace_back("--");
  }
  for (const auto& address : draft.to) {
    arguments.push_back(has_scheme(address) ? "<" + address + ">" : address);
  }
  return arguments;
}

std::vector<std::string> for_claws(const DraftFields& draft, const ClientFiles& files) {
  MailLink link(draft.to);
  link.add_message(draft);
  std::vector<std::string> arguments{"--compose", link.text()};
  if (!files.attachments.empty()) {
    arguments.emplace_back("--attach");
    arguments.insert(arguments.end(), files.attachments.begin(), files.attachments.end());
  }
  return arguments;
}

// A Bcc is neither shown nor kept by Sylpheed, so it gets none.
std::vector<std::string> for_sylpheed(DraftFields draft, const ClientFiles& files) {
  draft.bcc.clear();
  return for_claws(draft, files);
}

std::vector<std::string> for_balsa(const DraftFields& draft, const ClientFiles& files) {
  MailLink link(draft.to);
  link.add_message(draft);
  std::vector<std::string> arguments{link.text()};  // its entry has the option "-m" before it
  for (const auto& file : files.attachments) {
    arguments.push_back("--attach=" + file_url(file));
  }
  return arguments;
}

/// The address as aerc reads it: nothing in front of the "?" is decoded.
std::string without_link_signs(const std::string& address) {
  std::string out;
  for (const char c : address) {
    const std::string_view one(&c, 1);
    out += std::string_view("%?#&").find(c) == std::string_view::npos ? std::string(one)
                                                                      : percent_encode(one);
  }
  return out;
}

std::vector<std::string> for_aerc(const DraftFields& draft, const ClientFiles& files) {
  MailLink link(draft.to, without_link_signs);
  link.add_message(draft);
  for (const auto& file : files.attachments) {
    link.add("attach", file);
  }
  return {link.text()};
}

/// A recipient as every program reads it: without a name, and with its "@" and "+" as they are.
std::string bare_address(const std::string& recipient) {
  const auto begin = recipient.ends_with('>') ? recipient.rfind('<') + 1 : 0;
  const std::string address =
      recipient.substr(begin, recipient.size() - begin - (begin != 0 ? 1 : 0));
  std::string out;
  for (const char c : address) {
    out += c == '@' || c == '+' ? std::string(1, c) : percent_encode(std::string_view(&c, 1));
  }
  return out;
}

std::string mail_link(const DraftFields& draft) {
  MailLink link(draft.to, bare_address);
  if (is_text_too_long(gio::DraftWay::kMailLink, draft)) {
    link.add_headers(draft);
  } else {
    link.add_message(draft);
  }
  return link.text();
}

std::vector<std::string> for_mutt(const DraftFields& draft, const ClientFiles& files) {
  std::vector<std::string> arguments;
  const auto add = [&](const char* option, const std::string& value) {
    if (!value.empty()) {
      arguments.insert(arguments.end(), {option, value});
    }
  };
  add("-s", draft.subject);
  add("-i", draft.text.empty() ? "" : files.text);
  for (const auto& address : draft.cc) {
    add("-c", address);
  }
  for (const auto& address : draft.bcc) {
    add("-b", address);
  }
  if (!files.attachments.empty()) {
    arguments.emplace_back("-a");
    arguments.insert(arguments.end(), files.attachments.begin(), files.attachments.end());
  }
  arguments.emplace_back("--");
  arguments.insert(arguments.end(), draft.to.begin(), draft.to.end());
  return arguments;
}

}  // namespace

std::vector<std::string> client_arguments(gio::DraftWay way, const DraftFields& draft,
                                          const ClientFiles& files) {
  switch (way) {
    case gio::DraftWay::kEvolution:
      return for_evolution(draft, files);
    case gio::DraftWay::kKMail:
      return for_kmail(draft, files);
    case gio::DraftWay::kClaws:
      return for_claws(draft, files);
    case gio::DraftWay::kSylpheed:
      return for_sylpheed(draft, files);
    case gio::DraftWay::kBalsa:
      return for_balsa(draft, files);
    case gio::DraftWay::kMutt:
      return for_mutt(draft, files);
    case gio::DraftWay::kAerc:
      return for_aerc(draft, files);
    case gio::DraftWay::kMailLink:
      return {mail_link(draft)};
    case gio::DraftWay::kMessageFile:
    case gio::DraftWay::kNone:
      break;
  }
  return {};
}

bool is_text_too_long(gio::DraftWay way, const DraftFields& draft) {
  constexpr std::size_t kLongestLink = 2000;
  if (way != gio::DraftWay::kMailLink || draft.text.empty()) {
    return false;
  }
  MailLink link(draft.to, bare_address);
  link.add_message(draft);
  return link.text().size() > kLongestLink;
}

// Evolution loses line breaks; Claws and Sylpheed write line breaks and quotes into a header, which
// breaks it. They are replaced by signs that look like them, or by "_" when the name would become
// too long.
std::string name_for_client(gio::DraftWay way, const std::string& name) {
  const bool has_quotes = way == gio::DraftWay::kClaws || way == gio::DraftWay::kSylpheed;
  std::string out;
  for (const char c : with_control_pictures(name)) {
    out += c == '"' && has_quotes ? "\u201d" : std::string(1, c);
  }
  if (out.size() > NAME_MAX) {
    out = name;
    std::ranges::replace_if(
        out, [&](unsigned char c) { return c < 0x20 || c == 0x7F || (c == '"' && has_quotes); },
        '_');
  }
  return out;
}

bool reads_files(gio::DraftWay way, const DraftFields& draft, const ClientFiles& files) {
  return (!files.attachments.empty() && way != gio::DraftWay::kMailLink) ||
         (way == gio::DraftWay::kMutt && !draft.text.empty()) ||
         (way == gio::DraftWay::kKMail && is_too_long_for_kmail(draft.text));
}

bool are_startable(const std::vector<std::string>& arguments) {
  return std::ranges::all_of(
      arguments, [](const std::string& argument) { return argument.size() <= kLongestArgument; });
}

}  // namespace quoll::compose
