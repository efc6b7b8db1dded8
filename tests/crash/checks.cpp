#include "tests/crash/checks.h"

#include <fcntl.h>
#include <sys/file.h>

#include <filesystem>
#include <set>
#include <sstream>

#include "quoll/linux/posix/unique_fd.h"

namespace quoll::crash {

namespace {

namespace fs = std::filesystem;

constexpr int kOpened = 0;
constexpr int kNotOpened = 1;
constexpr int kSomethingLeftOut = 3;

void check_copy(const Scene& scene, const std::string& folder, const fs::path& path,
                Findings& findings) {
  const std::string name = path.filename();
  if (!scene.is_whole(path)) {
    findings.push_back({About::kHalfFile, folder + "/" + name + " has " +
                                              std::to_string(fs::file_size(path)) +
                                              " bytes and is no whole copy"});
  }
}

void check_staged(const Scene& scene, Findings& findings) {
  for (const std::string& name : names_in(scene.staging())) {
    check_copy(scene, "Share", scene.staging() + "/" + name, findings);
  }
}

/// What lies ready to be staged has its name only when it is whole, but for bytes that came without
/// a file.
void check_prepared(const Scene& scene, Findings& findings) {
  std::error_code missing;
  for (const auto& entry : fs::recursive_directory_iterator(scene.incoming(), missing)) {
    if (entry.is_regular_file() && Scene::is_picked_file(entry.path().filename())) {
      check_copy(scene, ".incoming", entry.path(), findings);
    }
  }
}

void check_locks(const Scene& scene, Findings& findings) {
  for (const std::string& name : names_in(scene.locks())) {
    const std::string path = scene.locks() + "/" + name;
    if (name != "turn" && !name.ends_with(".lock")) {
      findings.push_back({About::kLock, ".locks/" + name + " is no lock that is known"});
      continue;
    }
    const posix::UniqueFd file(open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW));
    if (!file || flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
      findings.push_back({About::kLock, ".locks/" + name + " cannot be taken"});
    }
  }
}

std::string joined(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) {
    text += (text.empty() ? "" : ", ") + name;
  }
  return text;
}

/// What standard error says was left out, and whether it says that nothing was opened.
struct Told {
  std::set<std::string> left_out;
  bool not_opened = false;
  bool has_note = false;
  bool is_well = true;  // nothing but the note, and what GLib says of itself

  explicit Told(const std::string& errors) {
    constexpr std::string_view kLeftOut = "left out: ";
    std::istringstream lines(errors);
    for (std::string line; std::getline(lines, line);) {
      if (line.starts_with(kLeftOut)) {
        line.erase(0, kLeftOut.size());
        left_out.insert(line.substr(0, line.find(": ")));
      }
      const bool is_note = line == Scene::kNote;
      has_note = has_note || is_note;
      is_well = is_well && (is_note || line.empty() || line.starts_with("(process:"));
      not_opened = not_opened || line.starts_with("not opened: ");
    }
  }
};

std::string joined(const std::set<std::string>& names) {
  return joined(std::vector<std::string>(names.begin(), names.end()));
}

}  // namespace

std::string words_of(About about) {
  switch (about) {
    case About::kHalfFile:
      return "half file";
    case About::kLeftOver:
      return "left over";
    case About::kLock:
      return "lock";
    case About::kTouched:
      return "touched";
    case About::kNextShare:
      return "next share";
    case About::kDeath:
      return "death";
    case About::kHang:
      return "hang";
    case About::kUntruth:
      return "untruth";
  }
  return "";
}

std::string words_of(const Death& death) {
  return death.process + ", signal " + std::to_string(death.signal);
}

void check_disk(const Scene& scene, const Snapshot& before, Findings& findings) {
  check_staged(scene, findings);
  check_prepared(scene, findings);
  check_locks(scene, findings);
  for (const std::string& path : differences(before, scene.untouchable())) {
    findings.push_back({About::kTouched, path});
  }
}

void check_next(const Scene& scene, const SteppedEnd& end, Findings& findings) {
  const auto draft = scene.draft(Which::kNext);
  if (end.is_hung || !end.deaths.empty() || end.status != 0 ||
      end.errors != std::string(Scene::kNote) + "\n") {
    findings.push_back({About::kNextShare, "it ended with " + std::to_string(end.status) +
                                               (end.is_hung ? " after all its time" : "") + ": " +
                                               end.errors});
  }
  if (!draft || !draft->missing.empty() || !draft->broken.empty()) {
    findings.push_back({About::kNextShare, draft ? "its draft lacks " + joined(draft->missing) +
                                                       "; broken: " + joined(draft->broken)
                                                 : "nothing was opened"});
  }
  if (const auto names = names_in(scene.staging()); names != scene.staged_names()) {
    findings.push_back({About::kLeftOver, "Share holds " + joined(names)});
  }
  if (const auto names = names_in(scene.incoming()); !names.empty()) {
    findings.push_back({About::kLeftOver, ".incoming holds " + joined(names)});
  }
}

void check_told(const Scene& scene, const SteppedEnd& end, bool is_mute, bool& is_unsure,
                Findings& findings) {
  const auto untruth = [&](const std::string& text) {
    findings.push_back({About::kUntruth,
                        "status " + std::to_string(end.status) + ", " + text + ": " + end.errors});
  };
  const auto draft = scene.draft(Which::kFirst);
  const Told told(end.errors);
  if (draft && !draft->broken.empty()) {
    untruth("the draft names what is not there: " + joined(draft->broken));
  }
  switch (end.status) {
    case kOpened:
      if (!draft || !draft->missing.empty()) {
        untruth(draft ? "the draft lacks " + joined(draft->missing) : "nothing was opened");
      } else if (!told.is_well) {
        untruth("standard error says more than it should");
      } else if (!told.has_note && !is_mute) {
        untruth("nothing says that the folder is packed");
      }
      break;
    case kSomethingLeftOut:
      if (!draft || draft->missing.empty()) {
        untruth(draft ? "the draft has everything" : "nothing was opened");
      } else if (draft->missing != told.left_out && !is_mute) {
        untruth("the draft lacks " + joined(draft->missing));
      }
      break;
    case kNotOpened:
      is_unsure = draft.has_value();
      if (!told.not_opened && !is_mute) {
        untruth("nothing says so");
      }
      break;
    default:
      untruth("which means nothing");
  }
}

}  // namespace quoll::crash
