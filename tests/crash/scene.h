#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/crash/snapshot.h"
#include "tests/integration/private_bus.h"

namespace quoll::crash {

/// The same selection in two states: the names are the same, the bytes are not.
enum class Which { kFirst, kNext };

/// What the mail application was given.
struct Draft {
  /// What it lacks of the selection, as the command line named it.
  std::set<std::string> missing;
  /// What it names and what is not there in whole.
  std::vector<std::string> broken;
};

/// Files by the names under which they are staged.
using Contents = std::map<std::string, std::string>;

/// What the two selections are staged as.
struct Staged {
  Contents first;
  Contents next;
};

/// A home in which a share takes every road: files with one extent, with several and with holes, a
/// folder, an image as bytes, bytes that become a file, a link, a text; a bus with a mail
/// application that takes what comes; and files all around that are no business of a share.
class Scene {
 public:
  Scene();

  [[nodiscard]] std::vector<std::string> command(Which which) const;
  [[nodiscard]] const test::Environment& environment() const { return environment_; }
  /// The folder that is shared.
  [[nodiscard]] std::string shared_folder(Which which) const;

  /// What a share says of its selection when all is well, a line.
  static constexpr const char* kNote = "notes is a folder and is shared as notes.zip";

  /// Shares both selections to see what their images and folders become; throws when that does not
  /// work.
  Staged learn();
  /// Takes what another scene has learnt.
  void know(const Staged& staged) { staged_ = staged; }
  /// Forgets what was opened. `anew` also takes back all that earlier shares left.
  void prepare(bool anew);

  /// What the application was given since `prepare`, compared with a selection; none when nothing.
  [[nodiscard]] std::optional<Draft> draft(Which which) const;
  /// True when a file has all the bytes of the one that is staged under its name, or under the
  /// name with a number, in either of the two selections. Of a folder something may be left out.
  [[nodiscard]] bool is_whole(const std::string& path) const;
  /// True for the name of a file that is picked in both selections.
  [[nodiscard]] static bool is_picked_file(const std::string& name);
  /// The names that are staged when all went well, sorted.
  [[nodiscard]] std::vector<std::string> staged_names() const;

  /// Everything that a share may not touch: what is shared, the folder beside it, the rest of the
  /// group container.
  [[nodiscard]] Snapshot untouchable() const;

  [[nodiscard]] std::string staging() const { return shared_data() + "/Share"; }
  [[nodiscard]] std::string locks() const { return container() + "/.locks"; }
  [[nodiscard]] std::string incoming() const { return container() + "/.incoming"; }
  [[nodiscard]] std::string temporary() const { return bus_.path("tmp"); }

 private:
  void write_sources(Which which);
  void write_surroundings() const;
  [[nodiscard]] std::string container() const;
  [[nodiscard]] std::string shared_data() const { return container() + "/SharedData"; }
  [[nodiscard]] std::string source_folder(Which which) const;
  [[nodiscard]] const Contents& whole(Which which) const;
  Contents& whole(Which which);
  /// What the file at `path` lacks, as a line about it would name it: nothing, or of a folder what
  /// lies in it. None when it is not what is staged under that name.
  [[nodiscard]] std::optional<std::set<std::string>> lacking(Which which,
                                                             const std::string& path) const;

  test::PrivateBus bus_;
  test::Environment environment_;
  test::Process application_;
  Staged staged_;
};

}  // namespace quoll::crash
