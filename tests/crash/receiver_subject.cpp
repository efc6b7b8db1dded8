#include "tests/crash/receiver_subject.h"

#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <optional>
#include <random>

#include "quoll/foundation/base64.h"
#include "tests/integration/receiver_home.h"

namespace quoll::crash {

namespace {

namespace fs = std::filesystem;

constexpr Lane kTaker{0, 0};
constexpr const char* kName = "it.vorlent.quoll2";
constexpr const char* kFiles[] = {"one.bin", "two.bin"};

std::string content_of(const std::string& name) {
  std::minstd_rand random(static_cast<unsigned>(name.front()));
  std::string bytes(20'000, '\0');
  for (char& byte : bytes) {
    byte = static_cast<char>(random() >> 8U);
  }
  return bytes;
}

/// Whether the message file is whole: it has its end, and this file in Base64.
bool has_file(const std::string& message, const std::string& name) {
  std::string text = message;
  std::erase_if(text, [](char c) { return c == '\r' || c == '\n'; });
  return text.find(foundation::base64_encode(content_of(name))) != std::string::npos;
}

/// A program that calls the receiver once it has its name on the bus. It stays, because the stepper
/// would take its end for that of a process of its own.
class Caller {
 public:
  Caller(const std::string& files, const std::string& url, const test::Environment& environment)
      : files_(files),
        program_({"sh", "-c",
                  "gdbus wait --session \"$1\" && : > \"$0-asked\" &&"
                  " { gdbus call --session --dest \"$1\" --object-path /it/vorlent/quoll2"
                  " --method org.freedesktop.Application.Open \"['$2']\""
                  " \"{'quoll-report': <true>}\" > /dev/null 2>&1 &&"
                  " : > \"$0-answered\"; : > \"$0-ended\"; }; exec sleep 1000",
                  files, kName, url},
                 environment) {}

  /// Whether it was answered that the whole draft was taken. Call it when the receiver has ended.
  [[nodiscard]] bool is_answered() const {
    while (fs::exists(files_ + "-asked") && !fs::exists(files_ + "-ended")) {
      usleep(1000);
    }
    return fs::exists(files_ + "-answered");
  }

 private:
  std::string files_;
  test::Process program_;
};

/// How the command comes.
enum class Road { kArguments, kBus };

class ReceiverSubject final : public Subject {
 public:
  explicit ReceiverSubject(Road road) : road_(road), environment_(home_.bus.environment()) {
    environment_["PATH"] = home_.bus.path("bin") + ":" + std::getenv("PATH");
    environment_["GIO_MODULE_DIR"] = home_.bus.path("no-modules");
    environment_["LC_ALL"] = "C.UTF-8";
    environment_["ASAN_OPTIONS"] = "detect_leaks=0";  // the check cannot work in a traced process
    environment_["RECORD"] = home_.bus.path("given-0");
    fs::create_directories(home_.bus.path("bin"));
    const std::string client = home_.bus.path("bin/claws-mail");
    std::ofstream(client) << "#!/bin/sh\nprintf '%s\\n' \"$*\" >> \"$RECORD\"\n";
    fs::permissions(client, fs::perms::owner_all);
    home_.bus.add_entry("claws-mail",
                        "[Desktop Entry]\nType=Application\nName=Claws\nExec=claws-mail %u\n"
                        "MimeType=x-scheme-handler/mailto;\n");
    std::ofstream(home_.bus.path("config/mimeapps.list"))
        << "[Default Applications]\nx-scheme-handler/mailto=claws-mail.desktop\n";
  }

  [[nodiscard]] std::unique_ptr<Subject> another() const override {
    return std::make_unique<ReceiverSubject>(road_);
  }

  void prepare(bool /*anew*/) override {
    fs::remove_all(home_.bus.data_home() + "/quoll-compose");
    fs::remove_all(home_.staging());
    // One of its own for each run: a client that the run before started may still be on its way.
    fs::remove(*environment_["RECORD"]);
    environment_["RECORD"] = home_.bus.path("given-" + std::to_string(++runs_));
    fs::create_directories(home_.staging());
    for (const char* name : kFiles) {
      chmod(home_.stage(name, content_of(name)).c_str(), 0640);
    }
    is_promising_ = false;
    is_promised_ = false;
    caller_.reset();
    if (road_ == Road::kBus) {
      caller_.emplace(home_.bus.path("call-" + std::to_string(runs_)), url(), environment_);
    }
  }

  [[nodiscard]] std::vector<std::string> command() const override {
    return road_ == Road::kBus
               ? std::vector<std::string>{QUOLL_COMPOSE, "--service", "--idle", "0.5"}
               : std::vector<std::string>{QUOLL_COMPOSE, url()};
  }
  [[nodiscard]] const test::Environment& environment() const override { return environment_; }

  // What comes after the call that gives the name was made after the promise.
  void entered(const Call& call) override {
    if (call.lane == kTaker) {
      is_promised_ = is_promised_ || is_promising_;
      is_promising_ = call.number == SYS_renameat2;
    }
  }

  void check(const Trial& trial, const Harmed& harmed, unsigned /*seconds*/,
             Result& result) override {
    const bool is_answered = caller_ && caller_->is_answered();
    const bool is_promised = is_promised_ || is_answered || is_there();
    result.ended_by_library = was_ended_by_library(harmed.end);
    const bool is_told = trial.harm != Harm::kKillAll && !harmed.end.is_hung &&
                         !result.ended_by_library && !check_end(trial, harmed, result);
    if (is_told) {
      check_told(harmed, is_promised, result.findings);
    }
    start_next({"--resume"}, result.findings);
    const bool is_told_whole = road_ == Road::kBus ? is_answered : harmed.end.status == 0;
    const bool may_miss = trial.harm == Harm::kFault && !is_told_whole;
    check_drafts(is_promised ? 1 : 0, may_miss, result.findings);
    start_next({"quoll://compose?subject=next"}, result.findings);
    check_drafts(is_promised ? 2 : 1, may_miss, result.findings);
    check_left(is_promised ? 2 : 1, result.findings);
  }

 private:
  [[nodiscard]] std::string url() const {
    return test::ReceiverHome::url({home_.staging() + "/one.bin", home_.staging() + "/two.bin"},
                                   "subject=first&to=a%40x.org&plainBody=words");
  }
  /// GLib aborts a process that gets no thread, and sends itself SIGTERM when it loses a bus to
  /// which it has just connected. Nobody is left who could tell; the draft has to be there.
  [[nodiscard]] static bool was_ended_by_library(const SteppedEnd& end) {
    return std::any_of(end.deaths.begin(), end.deaths.end(), [&](const Death& death) {
      const bool is_abort =
          death.signal == SIGTRAP && end.errors.find("GLib-ERROR") != std::string::npos;
      return death.is_program && (is_abort || death.signal == SIGTERM);
    });
  }
  /// Whether a draft has its name somewhere.
  [[nodiscard]] bool is_there() const {
    const auto has_draft = [](const std::vector<std::string>& paths) {
      return std::any_of(paths.begin(), paths.end(), [](const std::string& path) {
        return !fs::path(path).filename().string().starts_with('.');
      });
    };
    return has_draft(home_.taken()) || has_draft(home_.drafts());
  }

  void check_told(const Harmed& harmed, bool is_promised, Findings& findings) const {
    const SteppedEnd& end = harmed.end;
    const std::string told = "status " + std::to_string(end.status) + ": " + end.errors;
    // A service has taken what it has answered; the next start may write it.
    if (road_ == Road::kArguments && end.status == 0 && home_.drafts().size() != 1) {
      findings.push_back({About::kUntruth, "no draft is there, " + told});
    }
    if (end.status != 0 && end.status != 1) {
      findings.push_back({About::kUntruth, "which means nothing, " + told});
    }
    if (end.status == 1 && !is_promised && end.errors.empty() && !harmed.was_telling) {
      findings.push_back({About::kUntruth, "nothing says why, " + told});
    }
  }

  void start_next(std::vector<std::string> arguments, Findings& findings) const {
    arguments.insert(arguments.begin(), QUOLL_COMPOSE);
    const test::Ended ended = test::run(arguments, environment_);
    if (ended.status != 0 || !ended.errors.empty()) {
      findings.push_back(
          {About::kNextShare,
           arguments.back() + " ended with " + std::to_string(ended.status) + ": " + ended.errors});
    }
  }

  /// That so many drafts are there, each once and whole.
  void check_drafts(std::size_t count, bool may_miss, Findings& findings) const {
    const std::vector<std::string> drafts = home_.drafts();
    if (drafts.size() != count) {
      findings.push_back(
          {drafts.size() < count ? About::kNextShare : About::kLeftOver,
           std::to_string(drafts.size()) + " drafts instead of " + std::to_string(count)});
    }
    for (const std::string& path : drafts) {
      const std::string message = test::read_file(path);
      const bool is_first = message.find("Subject: first") != std::string::npos;
      const bool is_whole =
          is_first ? may_miss || (has_file(message, kFiles[0]) && has_file(message, kFiles[1]))
                   : message.find("Subject: next") != std::string::npos;
      if (!is_whole || message.find("MIME-Version: 1.0") == std::string::npos) {
        findings.push_back({About::kHalfFile, path + " has " + std::to_string(message.size()) +
                                                  " bytes and is no whole draft"});
      }
    }
  }

  /// That nothing is left of what was not promised, and nothing was given twice or changed.
  void check_left(std::size_t drafts, Findings& findings) const {
    for (const std::string& path : home_.taken()) {
      findings.push_back({About::kLeftOver, path});
    }
    const std::string given = *environment_.at("RECORD");
    const std::string record = fs::exists(given) ? test::read_file(given) : "";
    if (static_cast<std::size_t>(std::count(record.begin(), record.end(), '\n')) > drafts) {
      findings.push_back({About::kUntruth, "a client got a draft twice: " + record});
    }
    for (const char* name : kFiles) {
      const std::string path = home_.staging() + "/" + name;
      struct stat status {};
      if (stat(path.c_str(), &status) != 0 || (status.st_mode & 07777U) != 0640 ||
          test::read_file(path) != content_of(name)) {
        findings.push_back({About::kTouched, path});
      }
    }
  }

  Road road_;
  test::ReceiverHome home_{{{"DISPLAY", ":99"}}};
  test::Environment environment_;
  std::optional<Caller> caller_;
  int runs_ = 0;
  bool is_promising_ = false;
  bool is_promised_ = false;
};

}  // namespace

std::unique_ptr<Subject> make_receiver() {
  return std::make_unique<ReceiverSubject>(Road::kArguments);
}

std::unique_ptr<Subject> make_receiver_service() {
  return std::make_unique<ReceiverSubject>(Road::kBus);
}

}  // namespace quoll::crash
