# What makes a share whole after a crash, see docs/reliability.md.

quoll_defence(whole_before_it_is_named
  FILE quoll/linux/posix/copy_item.cpp
  TAKES [[open_file_at(to.folder.get(), ".", O_TMPFILE | O_WRONLY, S_IRUSR | S_IWUSR);
  if (unnamed) {]]
  GIVES [[open_file_at(to.folder.get(), to.name, O_CREAT | O_EXCL | O_WRONLY, S_IRUSR | S_IWUSR);
  if (unnamed) {
    return fill_file(from, unnamed.get());
  }
  if (unnamed) {]]
  SHOWN_BY crash All/Killed.NoFileIsHalfUnderItsName/0)

quoll_defence(hidden_while_it_is_made
  FILE quoll/linux/posix/copy_item.cpp
  TAKES [[return copy_under_hidden_name(from, to, step);]]
  GIVES [[(void)&copy_under_hidden_name;
  const UniqueFd named(::openat(to.folder.get(), to.name.c_str(),
                                O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, S_IRUSR | S_IWUSR));
  return fill_file(from, named.get(), step);]]
  SHOWN_BY crash All/Killed.NoFileIsHalfUnderItsName/1)

quoll_defence(left_overs_are_swept
  FILE quoll/linux/posix/temporary_item.cpp
  TAKES [[if (left && lock_at_once(left.get())) {]]
  GIVES [[if (left && lock_at_once(left.get()) && name.empty()) {]]
  SHOWN_BY crash All/Killed.NothingStaysThatTheNextShareDoesNotRemove/1)

quoll_defence(locks_die_with_their_holder
  FILE apps/share/staging_lock.cpp
  TAKES [[  while (!Interruption::has_come()) {]]
  GIVES [[  static const std::string held = lock_path().value_or("") + ".held";
  while (open(held.c_str(), O_CREAT | O_EXCL | O_CLOEXEC, 0600) < 0) {
    usleep(1000);
  }
  std::atexit([] { unlink(held.c_str()); });
  while (!Interruption::has_come()) {]]
  SHOWN_BY crash All/Killed.NoLockStays/0)

quoll_defence(sources_are_only_read
  FILE quoll/linux/posix/copy_item.cpp
  TAKES [[  keep_attributes(from, status, to);
  // No fsync]]
  GIVES [[  keep_attributes(from, status, to);
  ::futimens(from, nullptr);  // to mark what was shared
  // No fsync]]
  SHOWN_BY crash All/Killed.NothingElseIsTouched/0)

# What keeps a draft that the receiver has promised.
quoll_defence(failed_writes_are_remembered
  FILE apps/compose/write_message.cpp
  TAKES "error = written < 0 ? errno : 0;" GIVES "error = 0;"
  SHOWN_BY crash Failed.ADraftIsNeverWrittenInPart)
quoll_defence(file_without_a_name_is_copied
  FILE apps/compose/taker.cpp
  TAKES " && errno != ENOENT" GIVES ""
  SHOWN_BY crash Failed.AFileThatCannotBeLinkedIsCopiedFromItsDescriptor)
quoll_defence(modes_of_files_stay
  FILE apps/compose/taker.cpp
  TAKES [[const std::string source = "/proc/self/fd/" + std::to_string(file);]]
  GIVES [[const std::string source = "/proc/self/fd/" + std::to_string(file);
  fchmod(file, S_IRUSR | S_IWUSR);]]
  SHOWN_BY draft_states TakingForAClient.TheUsersOwnFileKeepsItsModeAndItsName)

quoll_defence(files_stay_until_they_are_taken
  FILE quoll/linux/gio/opener.cpp
  TAKES [[posix::Pipe taken = tells ? posix::make_pipe() : posix::Pipe{};]]
  GIVES [[posix::Pipe taken = tells && false ? posix::make_pipe() : posix::Pipe{};]]
  SHOWN_BY share_bus ShareByEntry.TheNextShareWaitsUntilTheFilesAreTaken)
