#include "apps/console/receiver_check.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <map>
#include <optional>

#include "apps/console/container_check.h"
#include "apps/console/operations/json.h"
#include "apps/console/session_environment.h"
#include "apps/share/container_trouble.h"
#include "quoll/linux/gio/applications.h"
#include "quoll/linux/gio/launcher.h"
#include "quoll/linux/gio/mail_clients.h"
#include "quoll/linux/posix/subprocess.h"

namespace quoll::console {

namespace {

namespace fs = std::filesystem;
using State = Finding::State;
using gio::ApplicationLookup;

constexpr std::chrono::milliseconds kAnswerTimeOut{5000};
constexpr const char* kName = "mail application";

bool is_compose(const fs::path& program) {
  return program.filename() == "quoll-compose";
}

/// True when the program that has the name on the bus, or else the one that the bus would start, is
/// `quoll-compose`.
bool is_compose_on_bus(const ApplicationLookup& lookup) {
  if (!lookup.is_running) {
    return is_compose(lookup.service_program);
  }
  std::error_code unknown;
  return is_compose(fs::read_symlink("/proc/" + std::to_string(lookup.process) + "/exe", unknown));
}

Finding session_bus(const ApplicationLookup& lookup) {
  if (lookup.bus_trouble.empty()) {
    return {"session bus", State::kGood, "it answers", ""};
  }
  return {"session bus", lookup.has_entry ? State::kWorthKnowing : State::kBroken,
          "there is none: " + lookup.bus_trouble,
          "log in to a desktop session, or start the program by dbus-run-session"};
}

/// What the bus would start for a share, by what is known of it.
Finding startable(const std::string& application, const ApplicationLookup& lookup) {
  const std::string& program = lookup.service_program;
  const std::string name = fs::path(program).filename();
  if (!program.empty() && !gio::is_program(program)) {
    return {
        kName, State::kBroken,
        application + " cannot be started: " + gio::missing_program(program, lookup.service_file),
        gio::advice_on_missing_program(lookup.service_file)};
  }
  if (name == "false" || name == "true") {
    return {kName, State::kBroken,
            application + " is switched off: its service file starts " + program,
            "remove " + lookup.service_file + ", which says so"};
  }
  return {kName, State::kWorthKnowing,
          application + " is started by " + (program.empty() ? "the session bus" : program) +
              ", which was not tried",
          "if shares do not arrive, start it and look at what it says"};
}

/// Of the application's desktop entry, which a share uses when the bus does not know it.
Finding by_entry(const std::string& application, const ApplicationLookup& lookup) {
  if (!lookup.has_entry) {
    return lookup.broken_entry.empty()
               ? Finding{kName, State::kBroken, "no mail application answers to " + application,
                         "install the mail application or quoll-compose"}
               : Finding{kName, State::kBroken,
                         lookup.broken_entry + " is damaged, or its program is missing",
                         "install its package again"};
  }
  const std::string found =
      application + " is started by its desktop entry, which takes no more than 128 KiB of text";
  if (!is_compose(lookup.entry_program)) {
    return {kName, State::kGood, found, ""};
  }
  constexpr std::size_t kMost = 4096;
  const auto said =
      posix::run_program({lookup.entry_program, "--check"}, kMost, gio::kOpeningTimeOut,
                         std::chrono::steady_clock::now() + gio::kOpeningTimeOut);
  if (said.end == posix::ProgramAnswer::End::kWell) {
    return {kName, State::kGood, found, ""};
  }
  return {kName, State::kBroken,
          said.complaint.empty() ? lookup.entry_program + " does not work" : said.complaint,
          "install quoll-compose again, if nothing else is named"};
}

/// What to do about a refusal; nothing more when it says so itself.
std::string advice_on_refusal(const std::string& failure) {
  for (const char* const name : {"", "/drafts", "/taken"}) {
    const std::string folder = share::existing_part(drafts_place() + name);
    std::error_code unknown;
    if (fs::is_directory(folder, unknown) && access(folder.c_str(), W_OK | X_OK) != 0 &&
        errno == EACCES) {
      return share::permission_advice(folder);
    }
  }
  return failure.find("; ") != std::string::npos
             ? ""
             : "see that what is named there is yours and can be written";
}

/// Has `quoll-compose` answer on the bus; none when the bus does not know it.
std::optional<Finding> by_bus(const std::string& application, const std::string& program) {
  const auto deadline = std::chrono::steady_clock::now() + gio::kOpeningTimeOut;
  const auto answer = gio::activate_application(application, gio::kOpeningTimeOut);
  if (!answer.is_there) {
    return std::nullopt;
  }
  if (!answer.failure) {
    return Finding{kName, State::kGood, application + " is quoll-compose, and can keep drafts", ""};
  }
  if (!answer.advice.empty()) {
    return Finding{kName, State::kBroken, *answer.failure, answer.advice};
  }
  const int process = gio::look_up_application(application, kAnswerTimeOut).process;
  const bool is_silent = std::chrono::steady_clock::now() >= deadline;
  return Finding{
      kName, State::kBroken, *answer.failure,
      process == 0 ? "install quoll-compose again; " +
                         (program.empty() ? "quoll-compose" : program) + " --check may say more"
      : is_silent
          ? "end process " + std::to_string(process) + ": the next share starts the program anew"
          : advice_on_refusal(*answer.failure)};
}

/// What a list of drafts says.
struct Drafts {
  std::map<std::string, std::size_t> numbers;  ///< how many have each state
  std::string kept, why;         ///< the newest that no mail client was given, and why; else empty
  std::string aside, why_aside;  ///< the newest that was set aside, and why; else empty
};

std::string text_in(const Json& draft, const char* name) {
  const auto text = draft.find(name);
  return text != draft.end() && text->is_string() ? text->get<std::string>() : "";
}

/// None for what is no list of drafts.
std::optional<Drafts> drafts_in(const Json& list) {
  if (!list.is_array()) {
    return std::nullopt;
  }
  Drafts drafts;
  for (const Json& draft : list) {  // the newest comes last
    const std::string state = text_in(draft, "state");
    if (state.empty()) {
      return std::nullopt;
    }
    ++drafts.numbers[state];
    if (state == "kept") {
      drafts.kept = text_in(draft, "name");
      drafts.why = text_in(draft, "reason");
    } else if (state == "set aside") {
      drafts.aside = text_in(draft, "name");
      drafts.why_aside = text_in(draft, "reason");
    }
  }
  return drafts;
}

/// The drafts that `quoll-compose` has: a number for each state, and why the newest was kept.
Finding drafts(const std::string& program) {
  constexpr std::size_t kMost = std::size_t{16} << 20U;
  const auto said = posix::run_program({program, "--list", "--json"}, kMost, kAnswerTimeOut,
                                       std::chrono::steady_clock::now() + kAnswerTimeOut);
  const auto drafts = drafts_in(Json::parse(said.output, nullptr, false));
  if (said.end != posix::ProgramAnswer::End::kWell || !drafts) {
    return {"drafts", State::kWorthKnowing, "not known: " + program + " does not list them",
            "see quoll-compose --list"};
  }
  std::string found;
  for (const auto& [state, number] : drafts->numbers) {
    found += (found.empty() ? "" : ", ") + std::to_string(number) + " " + state;
  }
  if (found.empty()) {
    return {"drafts", State::kGood, "none", ""};
  }
  found += "; given ones go after 7 days, set aside ones after 30, the others stay";
  Finding finding{"drafts", State::kGood, found, "quoll-compose --list shows them"};
  if (!drafts->aside.empty()) {
    finding.state = State::kWorthKnowing;
    finding.found += "; the newest that was set aside is " + drafts->aside + ": " +
                     (drafts->why_aside.empty() ? "nobody knows why" : drafts->why_aside);
  }
  if (!drafts->why.empty()) {
    finding.state = State::kWorthKnowing;
    finding.found += "; the newest kept one is " + drafts->kept + ": " + drafts->why;
    finding.advice = "quoll-compose --again " + drafts->kept + " gives it to a mail client";
  }
  return finding;
}

Finding mail_client() {
  const std::string name = "mail client";
  const gio::ChosenMailClient chosen = gio::chosen_mail_client();
  if (!chosen.client) {
    return {name, State::kWorthKnowing, "no program is the default for mail",
            "choose one in the settings; quoll-compose keeps drafts and shows them until then"};
  }
  const gio::MailClient& client = *chosen.client;
  if (!chosen.gone.empty()) {
    return {name, State::kWorthKnowing,
            chosen.gone + " was chosen and is not there; drafts go to " + client.id,
            "quoll-compose --clients lists those that are there, --client NAME chooses one"};
  }
  if (client.way == gio::DraftWay::kMailLink) {
    return {
        name, State::kWorthKnowing, client.id + " gets recipients, subject and text, and no files",
        "attach the files by hand, which a notification and quoll-compose --files NAME show, or "
        "choose another by quoll-compose --client NAME"};
  }
  if (client.way == gio::DraftWay::kNone) {
    return {name, State::kWorthKnowing, client.id + " cannot be given a draft",
            "open or import the drafts that quoll-compose keeps, or choose another by "
            "quoll-compose --client NAME"};
  }
  if (!client.reads_files()) {
    return {name, State::kWorthKnowing,
            client.id + " is in a sandbox that no attachment of a draft reaches",
            "open or import the drafts that quoll-compose keeps for it"};
  }
  return {name, State::kGood, client.id, ""};
}

}  // namespace

std::vector<Finding> check_receiver(const std::string& application) {
  const auto lookup = gio::look_up_application(application, kAnswerTimeOut);
  std::vector<Finding> findings{session_bus(lookup)};
  const bool is_on_bus = lookup.is_running || lookup.is_startable;
  if (is_on_bus && !is_compose_on_bus(lookup)) {
    findings.push_back(lookup.is_running
                           ? Finding{kName, State::kGood, application + " is running", ""}
                           : startable(application, lookup));
    if (lookup.process != 0) {
      findings.push_back(compare_environment(lookup.process));
    }
    return findings;
  }
  const auto on_bus = is_on_bus ? by_bus(application, lookup.service_program) : std::nullopt;
  findings.push_back(on_bus ? *on_bus : by_entry(application, lookup));
  const bool is_broken = findings.back().state == State::kBroken;
  const int process = gio::look_up_application(application, kAnswerTimeOut).process;
  if (process != 0) {
    findings.push_back(compare_environment(process));
  }
  if (is_broken || (!on_bus && !is_compose(lookup.entry_program))) {
    return findings;
  }
  findings.push_back(check_display(process != 0 ? process : getpid()));
  findings.push_back(mail_client());
  findings.push_back(
      drafts(on_bus && !lookup.service_program.empty() ? lookup.service_program : "quoll-compose"));
  return findings;
}

}  // namespace quoll::console
