#include "apps/compose/client_choice.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "apps/compose/compose_error.h"
#include "quoll/foundation/printable.h"
#include "quoll/foundation/text.h"
#include "quoll/linux/gio/mail_clients.h"

namespace quoll::compose {
namespace {

using gio::DraftWay;
using gio::MailClient;

std::string in_words(const MailClient& client) {
  if (client.way == DraftWay::kNone) {
    return "cannot be given a draft";
  }
  if (client.way == DraftWay::kMessageFile) {
    return client.reads_files() ? "HTML and attachments" : "in a sandbox that no draft reaches";
  }
  if (client.way == DraftWay::kMailLink) {
    return "plain text without attachments";
  }
  return client.reads_files() ? "plain text and attachments"
                              : "plain text, in a sandbox that no attachment reaches";
}

// The name and the identifier, because two clients may have the same name.
std::string called(const MailClient& client) {
  return foundation::printable(client.name) + " (" + foundation::printable(client.id) + ")";
}

std::string folded(const std::string& text) {
  const gio::TextHandle small(g_utf8_casefold(text.c_str(), -1));
  return small.get();
}

bool is_called(const MailClient& client, const std::string& name) {
  return folded(client.id) == folded(name) || folded(client.id) == folded(name + ".desktop") ||
         folded(client.name) == folded(name);
}

/// Finds a client among those that open mail links, by name or identifier, or any program's entry
/// by its identifier.
std::optional<MailClient> found_client(const std::string& name) {
  if (!foundation::is_utf8(name)) {
    return std::nullopt;
  }
  std::vector<MailClient> clients = gio::find_mail_clients();
  const auto found = std::ranges::find_if(
      clients, [&](const MailClient& client) { return is_called(client, name); });
  if (found != clients.end()) {
    return std::move(*found);
  }
  for (const std::string& id : {name, name + ".desktop"}) {
    if (gio::EntryHandle entry{g_desktop_app_info_new(id.c_str())}) {
      return gio::mail_client_of(std::move(entry));
    }
  }
  return std::nullopt;
}

/// The clients that can be chosen, as advice.
std::string choices() {
  std::string names;
  for (const MailClient& client : gio::find_mail_clients()) {
    if (client.takes_drafts()) {
      names += (names.empty() ? "choose " : ", or ") + called(client);
    }
  }
  return names.empty() ? "none is there that can be chosen" : names;
}

void keep(const std::string& id) {
  if (const gio::FailureReason failure = gio::set_mail_client(id)) {
    throw ComposeError(*failure);
  }
}

}  // namespace

void print_clients(std::ostream& out) {
  gio::ChosenMailClient chosen = gio::chosen_mail_client();
  std::vector<MailClient> clients = gio::find_mail_clients();
  const std::string id = chosen.client ? chosen.client->id : "";
  if (chosen.client && std::ranges::find(clients, id, &MailClient::id) == clients.end()) {
    clients.push_back(std::move(*chosen.client));
  }
  for (const MailClient& client : clients) {
    const bool is_chosen = client.id == id;
    const char* const why = chosen.is_set ? ", chosen" : ", the default for mail links";
    out << (is_chosen ? "* " : "  ") << called(client) << ": " << in_words(client)
        << (is_chosen ? why : "") << '\n';
  }
  if (clients.empty()) {
    out << "No program opens mail links.\n";
  }
  if (!chosen.gone.empty()) {
    out << foundation::printable(chosen.gone) << " was chosen and is not there any more.\n";
  }
}

MailClient client_called(const std::string& name) {
  std::optional<MailClient> client = found_client(name);
  if (!client) {
    throw ComposeError("there is no mail client " + foundation::printable(name), choices());
  }
  if (!client->takes_drafts()) {
    throw ComposeError(called(*client) + " takes no drafts: " + in_words(*client), choices());
  }
  return std::move(*client);
}

std::string choose_client(const std::string& name) {
  if (name.empty() || name == "default") {
    keep("");
    const gio::ChosenMailClient now = gio::chosen_mail_client();
    return "Drafts go to the default for mail links" +
           (now.client ? ", " + called(*now.client) : ", which is not set") + ".";
  }
  const MailClient client = client_called(name);
  keep(client.id);
  return "Drafts go to " + called(client) + ": " + in_words(client) + ".";
}

}  // namespace quoll::compose
