# The sandbox of quoll-share (docs/security.md).
set(main apps/share/share_program.cpp)
set(confined "sandbox::confine(needs_of(selection, container, image_helper_, folder_helper_));")
set(unconfined "static_cast<void>(&needs_of);")
foreach(pair IN ITEMS share_is_confined:TheRunningProgramIsMarked no_tracing:NoProcessIsTraced
                      no_looking_into_processes:NoProcessIsLookedInto)
  string(REPLACE ":" ";" pair ${pair})
  list(GET pair 0 name)
  list(GET pair 1 test)
  quoll_defence(${name} FILE ${main} TAKES "${confined}" GIVES "${unconfined}"
                SHOWN_BY sandbox Sandbox.${test})
endforeach()

set(file apps/sandbox/confine.cpp)
quoll_defence(read_only_what_was_selected FILE ${file}
  TAKES "rules.allow(path, Access::kReadFile);" GIVES "rules.allow(\"/\", Access::kRead);"
  SHOWN_BY sandbox Sandbox.AnotherFileCannotBeRead)
quoll_defence(list_no_folders FILE ${file}
  TAKES "rules.allow(path, Access::kReadFile);" GIVES "rules.allow(\"/\", Access::kRead);"
  SHOWN_BY sandbox Sandbox.FoldersCannotBeListed)
quoll_defence(write_only_the_group FILE ${file}
  TAKES "rules.allow(path, Access::kChange);" GIVES "rules.allow(\"/\", Access::kChange);"
  SHOWN_BY sandbox Sandbox.NothingOutsideTheGroupIsWritten)
quoll_defence(move_only_in_the_group FILE ${file}
  TAKES "rules.allow(path, Access::kChange);" GIVES "rules.allow(\"/\", Access::kChange);"
  SHOWN_BY sandbox Sandbox.NothingOutsideTheGroupIsRemovedOrMoved)
quoll_defence(link_only_what_is_in_the_group FILE ${file}
  TAKES "rules.allow(path, Access::kChange);" GIVES "rules.allow(\"/\", Access::kChange);"
  SHOWN_BY sandbox Sandbox.NoFileFromElsewhereIsLinkedIntoTheGroup)
quoll_defence(nothing_of_proc_is_read FILE ${file}
  TAKES "if (kSanitizerBuild) {" GIVES "if (!kSanitizerBuild) {"
  SHOWN_BY sandbox Sandbox.NoProcessIsLookedInto)
quoll_defence(start_only_the_helper FILE ${file}
  TAKES "rules.allow(path, Access::kExecute);"
  GIVES "rules.allow(path, Access::kExecute); rules.allow(\"/bin/true\", Access::kExecute);"
  SHOWN_BY sandbox Sandbox.NoProgramIsStarted)
quoll_defence(lesser_kernel_is_told FILE ${file}
  TAKES "if (missing.empty()) {" GIVES "if (missing.empty() || !missing.empty()) {"
  SHOWN_BY sandbox LesserKernel.WithoutBothOneLineTells)

set(file apps/sandbox/path_rules.cpp)
quoll_defence(selected_folders_give_nothing FILE ${file}
  TAKES "return S_ISREG(mode);" GIVES "return mode != 0;"
  SHOWN_BY posix_processes Confine.OnlyWhatIsListedCanBeRead)
quoll_defence(no_signals FILE ${file}
  TAKES "kAbstractSockets | kSignals}" GIVES "kAbstractSockets}"
  SHOWN_BY sandbox Sandbox.NoProcessIsSignalled)

quoll_defence(rules_make_no_links FILE ${file}
  TAKES "LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_REFER;"
  GIVES "LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SYM | LANDLOCK_ACCESS_FS_REFER;"
  SHOWN_BY sandbox LesserKernel.WithoutAFilterTheRulesForPathsHold)

set(file apps/sandbox/share_calls.cpp)
quoll_defence(filter_makes_no_links FILE ${file}
  TAKES "\"rmdir\"}" GIVES "\"rmdir\", \"symlink\"}"
  SHOWN_BY sandbox LesserKernel.WithoutRulesForPathsTheFilterHolds)
quoll_defence(links_are_not_read FILE ${file}
  TAKES "\"rmdir\"}" GIVES "\"rmdir\", \"readlink\"}"
  SHOWN_BY sandbox Sandbox.LinksAreNotRead)
quoll_defence(linked_as_staging_links FILE ${file}
  TAKES "filter.allow(\"linkat\", {is(0, static_cast<std::uint32_t>(AT_FDCWD)), is(4, AT_SYMLINK_FOLLOW)});"
  GIVES "filter.allow({\"linkat\"});"
  SHOWN_BY sandbox Sandbox.NoFileFromElsewhereIsLinkedIntoTheGroup)
quoll_defence(modes_and_owners_stay FILE ${file}
  TAKES "filter.allow(\"utimensat\", {is_null(1)});" GIVES "filter.allow({\"utimensat\"});"
  SHOWN_BY sandbox Sandbox.ModesOwnersTimesAndAttributesStay)
quoll_defence(memory_is_no_program FILE ${file}
  TAKES "{has_all_of(1, probe ? kNotExecutable : 0)}" GIVES "{has_all_of(1, probe ? 0 : 0)}"
  SHOWN_BY sandbox Sandbox.NoProgramIsStarted)
quoll_defence(no_process_is_hampered FILE ${file}
  TAKES "is(0, PRIO_PROCESS), is(1, 0)" GIVES "is(0, PRIO_PROCESS)"
  SHOWN_BY sandbox Sandbox.NoProcessIsHampered)
quoll_defence(no_sockets FILE ${file}
  TAKES "{\"recvfrom\"}" GIVES "{\"recvfrom\", \"socket\"}"
  SHOWN_BY sandbox Sandbox.NoSocketIsMade)
quoll_defence(no_session_bus FILE ${file}
  TAKES "{\"recvfrom\"}" GIVES "{\"recvfrom\", \"socket\", \"connect\"}"
  SHOWN_BY sandbox Sandbox.TheSessionBusIsNotReached)
quoll_defence(open_sockets_stay_where_they_are FILE ${file}
  TAKES "filter.allow(\"sendto\", {is_null(4)});" GIVES "filter.allow({\"sendto\"});"
  SHOWN_BY sandbox Sandbox.AnOpenSocketReachesNobodyElse)
quoll_defence(rare_calls_are_refused FILE ${file}
  TAKES "\"restart_syscall\"" GIVES "\"restart_syscall\", \"io_uring_setup\""
  SHOWN_BY sandbox Sandbox.RarePartsOfTheKernelAreShut)
quoll_defence(no_new_namespaces FILE ${file}
  TAKES "has_none_of(0, kNamespaces)" GIVES "has_none_of(0, kNamespaces & 0)"
  SHOWN_BY sandbox Sandbox.TheViewOfTheSystemStays)
quoll_defence(the_user_stays FILE ${file}
  TAKES "\"restart_syscall\"" GIVES "\"restart_syscall\", \"setresuid\""
  SHOWN_BY sandbox Sandbox.TheUserStays)
quoll_defence(nothing_is_typed FILE ${file}
  TAKES "std::uint32_t{TIOCGWINSZ}" GIVES "std::uint32_t{TIOCSTI}"
  SHOWN_BY sandbox Sandbox.NothingIsTypedIntoTheTerminal)
quoll_defence(other_machines_end FILE apps/sandbox/call_filter.cpp
  TAKES "SCMP_ACT_KILL_PROCESS" GIVES "SCMP_ACT_ALLOW"
  SHOWN_BY sandbox Sandbox.CallsOfAnotherMachineEndTheProgram)
quoll_defence(inherited_descriptors_are_closed FILE apps/share/request/descriptors.cpp
  TAKES "close_range(first, ~0U, 0);" GIVES "static_cast<void>(first);"
  SHOWN_BY sandbox Sandbox.WhatTheHostLeftOpenIsClosed)

# The image helper.
set(file apps/image-helper/confine.cpp)
quoll_defence(helper_opens_nothing FILE ${file}
  TAKES "  leave_no_paths();\n  leave_few_calls();"
  GIVES "  static_cast<void>(&leave_no_paths);\n  static_cast<void>(&leave_few_calls);"
  SHOWN_BY sandbox HelperSandbox.NoFileIsOpened)
quoll_defence(helper_changes_nothing FILE ${file}
  TAKES "  leave_no_paths();\n  leave_few_calls();"
  GIVES "  static_cast<void>(&leave_no_paths);\n  static_cast<void>(&leave_few_calls);"
  SHOWN_BY sandbox HelperSandbox.NoFileIsChanged)
foreach(pair IN ITEMS helper_starts_nothing:NothingIsStarted helper_touches_nobody:NoProcessIsTouched
                      helper_makes_no_socket:NoSocketIsMade
                      helper_rare_calls:RarePartsOfTheKernelAreShut)
  string(REPLACE ":" ";" pair ${pair})
  list(GET pair 0 name)
  list(GET pair 1 test)
  quoll_defence(${name} FILE ${file}
    TAKES "  leave_few_calls();" GIVES "  static_cast<void>(&leave_few_calls);"
    SHOWN_BY sandbox HelperSandbox.${test})
endforeach()
quoll_defence(helper_runs_no_memory FILE apps/sandbox/helper_process.cpp
  TAKES "filter.allow(\"mprotect\", {has_none_of(2, PROT_EXEC)});"
  GIVES "filter.allow({\"mprotect\"});"
  SHOWN_BY sandbox HelperSandbox.MemoryIsNeverMadeExecutable)
quoll_defence(helper_memory_limit FILE ${file}
  TAKES "limit(RLIMIT_AS, 3 * kMostHeldBytes);" GIVES "limit(RLIMIT_AS, RLIM_INFINITY);"
  SHOWN_BY sandbox HelperSandbox.MemoryHasALimit)
quoll_defence(helper_result_is_whole FILE quoll/linux/image_helper/images.cpp
  TAKES "!is_sealed(result) || " GIVES ""
  SHOWN_BY image_helper Helper.WhatAHelperMayDoWrong)

# The folder helper.
set(file apps/folder-helper/confine.cpp)
quoll_defence(folder_helper_reads_one_folder FILE ${file}
  TAKES "  leave_one_folder(folder);\n  leave_few_calls();"
  GIVES "  static_cast<void>(folder);\n  static_cast<void>(&leave_one_folder);\n  static_cast<void>(&leave_few_calls);"
  SHOWN_BY sandbox FolderSandbox.NoOtherFolderIsReadAndNothingIsWritten)
quoll_defence(folder_helper_changes_nothing FILE ${file}
  TAKES "  leave_few_calls();" GIVES "  static_cast<void>(&leave_few_calls);"
  SHOWN_BY sandbox FolderSandbox.NoFileIsChanged)
quoll_defence(folder_helper_starts_nothing FILE ${file}
  TAKES "  leave_few_calls();" GIVES "  static_cast<void>(&leave_few_calls);"
  SHOWN_BY sandbox FolderSandbox.NothingIsStartedAndNobodyIsReached)
quoll_defence(folder_links_are_not_followed FILE apps/folder-helper/zip.cpp
  TAKES "O_RDONLY | O_NOFOLLOW | O_NONBLOCK" GIVES "O_RDONLY | O_NONBLOCK"
  SHOWN_BY folder_helper ZipTest.AFileThatGoesOrIsAnotherIsTold)
quoll_defence(list_only_shared_folders FILE apps/sandbox/confine.cpp
  TAKES "for (const std::string& path : wanted.listable) {\n    rules.allow(path, Access::kRead);"
  GIVES "for (const std::string& path : wanted.listable) {\n    rules.allow(path + \"/..\", Access::kRead);"
  SHOWN_BY sandbox SandboxWithAFolder.NoOtherFolderIsListed)
quoll_defence(folder_is_whole FILE apps/share/pack_folders.cpp
  TAKES " || !told.ends_with(kPacked)" GIVES ""
  SHOWN_BY host PackFolders.AHelperIsBelievedOnlyWhenItSaysThatAllIsPacked)

# The launcher, which is not confined.
set(file quoll/linux/gio/launcher.cpp)
quoll_defence(launcher_opens_the_mail_application FILE ${file}
  TAKES "std::ranges::find(openable.applications, request.application) =="
  GIVES "request.application.empty() && std::ranges::find(openable.applications, request.application) =="
  SHOWN_BY launcher LauncherLimits.NoOtherApplicationIsOpened)
quoll_defence(launcher_opens_only_the_editions FILE ${file}
  TAKES "std::ranges::find(openable.applications, request.application) =="
  GIVES "request.application.starts_with(\"it.vorlent.quoll\") ? false : std::ranges::find(openable.applications, request.application) =="
  SHOWN_BY launcher LauncherLimits.OnlyTheEditionsOfTheMailApplicationAreOpened)
quoll_defence(launcher_opens_its_urls FILE ${file}
  TAKES "url.starts_with(openable.urls)" GIVES "!url.empty() || url.starts_with(openable.urls)"
  SHOWN_BY launcher LauncherLimits.NoOtherUrlIsOpened)
quoll_defence(launcher_counts FILE ${file}
  TAKES "request.urls.size() > openable.most_urls" GIVES "openable.most_urls == 0"
  SHOWN_BY launcher LauncherLimits.NotMoreOftenThanItMay)
quoll_defence(launcher_reads_no_long_lists FILE quoll/linux/gio/fields.cpp
  TAKES " || fields.size() == kMostFields" GIVES ""
  SHOWN_BY launcher LauncherMessages.WhatIsNoRequestEndsTheLauncherInOrder)
quoll_defence(share_makes_one_draft FILE ${main}
  TAKES "{.urls = \"quoll://compose?\", .most_urls = 1}" GIVES "{}"
  SHOWN_BY sandbox Sandbox.TheLauncherMakesOneDraftAndNothingElse)

# The receiver.
set(file apps/compose/staging_folder.cpp)
quoll_defence(receiver_follows_no_links FILE ${file}
  TAKES "how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;"
  GIVES "how.resolve = RESOLVE_NO_MAGICLINKS;"
  SHOWN_BY receiver ReceiverTest.WhatIsNotInTheStagingFolderIsLeftOutByName)
quoll_defence(receiver_only_composes FILE apps/compose/taker.cpp
  TAKES "if (received.command != commandCompose) {" GIVES "if (received.command.empty()) {"
  SHOWN_BY receiver ReceiverTest.WhatIsNoComposeCommandIsRefusedInOneLine)
quoll_defence(recipient_is_no_file FILE apps/compose/client_arguments.cpp
  TAKES "has_scheme(address) ?" GIVES "address.empty() && has_scheme(address) ?"
  SHOWN_BY mail_client ClientArguments.ARecipientIsNeitherAFileNorAnOption)
quoll_defence(refused_files_are_said FILE apps/compose/notifications.cpp
  TAKES "foundation::printable(files.named[at].name, kLongestName)"
  GIVES "foundation::printable(\"a file\", kLongestName)"
  SHOWN_BY mail_client ComposeNotice.AFileFromElsewhereIsRefusedAndSaid)
quoll_defence(receiver_is_safe_on_a_terminal FILE apps/compose/draft_summary.cpp
  TAKES "foundation::printable(shown)"
  GIVES "shown"
  SHOWN_BY receiver ReceiverTest.TheSummaryIsSafeOnATerminal)

# The console.
quoll_defence(forget_follows_no_links FILE apps/console/forget.cpp
  TAKES "if (!before.trouble.empty()) {" GIVES "if (before.folder.empty()) {"
  SHOWN_BY forget Forget.NothingIsRemovedThroughALink)

# What the receiver takes, and that it loses nothing; see docs/mail-clients.md.
set(file apps/compose/staging_folder.cpp)
quoll_defence(receiver_staging_has_no_links FILE ${file}
  TAKES "folder_ = open_inside(group.get(), inside, O_PATH | O_DIRECTORY);"
  GIVES "folder_ = posix::UniqueFd(::open(path_.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));"
  SHOWN_BY draft_states Taking.NoFolderInTheContainerIsALink)
quoll_defence(receiver_takes_own_files FILE ${file}
  TAKES "status.st_uid == geteuid() ?" GIVES "status.st_ino != 0 ?"
  SHOWN_BY draft_states Taking.AFileOfAnotherUserIsLeftOut)
set(file apps/compose/taker.cpp)
quoll_defence(each_file_once FILE ${file}
  TAKES "files_.contains({staged.identity.device, staged.identity.inode})"
  GIVES "files_.size() > kMostFiles"
  SHOWN_BY draft_states Taking.AFileThatIsNamedOftenIsAttachedOnce)
quoll_defence(room_for_all_that_waits FILE apps/compose/room.cpp
  TAKES "most = sum_of(most, need);" GIVES "static_cast<void>(need);"
  SHOWN_BY draft_states DraftsOnASmallDisk.RoomIsCountedOverAllThatWaits)
set(file apps/compose/taken_draft.cpp)
quoll_defence(one_program_works_on_a_draft FILE ${file}
  TAKES "kind | LOCK_NB" GIVES "LOCK_SH | LOCK_NB"
  SHOWN_BY draft_states DraftStates.TwoReceiversAtOnceDoEachDraftOnce)
quoll_defence(no_draft_is_opened_twice FILE ${file}
  TAKES "    error = rename_to_given();\n" GIVES ""
  SHOWN_BY draft_states DraftStates.NoDraftIsOpenedTwice)
quoll_defence(aside_stays FILE ${file}
  TAKES "std::int64_t{30} * 24" GIVES "std::int64_t{29} * 24"
  SHOWN_BY draft_states DraftStates.WhatWasSetAsideStaysForThirtyDays)
set(file apps/compose/attempts.cpp)
quoll_defence(only_failures_count FILE ${file}
  TAKES "if (line.starts_with(kFailed)) {" GIVES "if (line.resize(32, ' '), true) {"
  SHOWN_BY draft_states DraftStates.FourEndsOfTheProgramDoNotCount)
quoll_defence(attempts_end FILE ${file}
  TAKES "kMostFailures = 3" GIVES "kMostFailures = 4"
  SHOWN_BY draft_states DraftStates.WhatCannotBeWrittenIsSetAsideWithItsBytes)
quoll_defence(ends_of_the_program FILE ${file}
  TAKES "kMostWithoutEnd = 5" GIVES "kMostWithoutEnd = 6"
  SHOWN_BY draft_states DraftStates.ADraftThatEndsTheProgramHoldsUpNoOther)
set(file apps/compose/draft_thread.cpp)
quoll_defence(what_waits_is_gone_on_with FILE ${file}
  TAKES "      go_on_with(name);" GIVES "      static_cast<void>(name);"
  SHOWN_BY draft_states DraftStates.AKilledReceiverLosesNothingThatItAnswered)
quoll_defence(a_flood_opens_nothing FILE ${file}
  TAKES "kMostAtOnce = 10" GIVES "kMostAtOnce = 100"
  SHOWN_BY draft_states DraftFloods.AFloodOpensNoWindow)
quoll_defence(few_locks_of_many FILE ${file}
  TAKES "waiting_.size() >= kMostAtOnce" GIVES "waiting_.size() >= 1000 * kMostAtOnce"
  SHOWN_BY draft_states DraftFloods.ManyThatWaitNeedFewDescriptors)
quoll_defence(windows_of_all_programs FILE apps/compose/recent_moments.cpp
  TAKES "if (count >= most) {" GIVES "if (count >= 100 * most) {"
  SHOWN_BY draft_states DraftFloods.WhatAnotherProgramOfferedCounts)
quoll_defence(list_of_moments_is_a_file FILE apps/compose/recent_moments.cpp
  TAKES "if (!S_ISREG(status.st_mode)) {" GIVES "if (S_ISDIR(status.st_mode)) {"
  SHOWN_BY draft_states DraftFloods.WithoutAListOfMomentsDraftsAreKept)
quoll_defence(list_of_moments_is_locked FILE apps/compose/recent_moments.cpp
  TAKES "if (!lock_soon(file.get())) {" GIVES "if (!lock_soon(file.get()) && file.get() < 0) {"
  SHOWN_BY draft_states DraftFloods.WithoutAListOfMomentsDraftsAreKept)
quoll_defence(changed_files_are_refused FILE apps/compose/write_message.cpp
  TAKES "static_cast<std::uint64_t>(status.st_size) != taken.size" GIVES "status.st_size < 0 && taken.size > 0"
  SHOWN_BY draft_states DraftsThatChange.AFileThatShrankIsNotAttached)
quoll_defence(growing_files_are_cut FILE apps/compose/mime_parts.cpp
  TAKES "0, static_cast<gint64>(size)" GIVES "0, static_cast<gint64>(size) - static_cast<gint64>(size) - 1"
  SHOWN_BY compose_writer WriteMessage.AnAttachmentHasNoMoreThanWasTaken)
quoll_defence(sizes_are_those_of_the_taking FILE apps/compose/waiting_files.cpp
  TAKES "file.size = sizes[file.number];" GIVES "file.size = 0;"
  SHOWN_BY compose_text ComposeLimits.TheSizesOfAFileAreThoseOfTheMomentWhenItWasTaken)
quoll_defence(no_draft_is_larger_than_the_disk FILE apps/compose/room.cpp
  TAKES "need <= disk_of_drafts().whole" GIVES "need / 2 <= disk_of_drafts().whole * 100"
  SHOWN_BY draft_states DraftsOnASmallDisk.WhatIsLargerThanTheDiskIsSetAsideAtOnce)
quoll_defence(what_cannot_be_locked_is_said FILE apps/compose/taken_draft.cpp
  TAKES "!folder && errno != EWOULDBLOCK && errno != ENOENT" GIVES "!folder && errno == EFAULT"
  SHOWN_BY draft_states LesserDisk.ADraftThatCannotBeLockedWaitsAndThatIsSaid)
quoll_defence(what_cannot_be_read_is_said FILE apps/compose/taken_draft.cpp
  TAKES "files.add({\"other files\"," GIVES "LeftOutFiles().add({\"other files\","
  SHOWN_BY draft_states DraftsThatChange.WhatCannotBeReadIsSaid)
quoll_defence(small_files_change_in_one_step FILE apps/compose/small_file.cpp
  TAKES "beside = std::string(\".\") + name;" GIVES "beside = name;"
  SHOWN_BY compose_text ComposeLimits.ASmallFileIsThereAsItWasOrAsItShallBe)
quoll_defence(late_errors_are_seen FILE apps/compose/small_file.cpp
  TAKES "posix::late_write_error(file.get())" GIVES "0"
  SHOWN_BY draft_states LesserDisk.WhatIsLostWhenAFileIsClosedIsNotPromised)
quoll_defence(disks_without_exclusive_renames FILE quoll/linux/posix/exclusive_rename.cpp
  TAKES "errno == EINVAL || errno == ENOSYS" GIVES "errno == ENOSYS"
  SHOWN_BY draft_states LesserDisk.WithoutExclusiveRenamesOrSyncingOfFoldersADraftIsGiven)
set(file apps/compose/service.cpp)
quoll_defence(receiver_ends_at_once FILE ${file}
  TAKES "_exit(0);" GIVES ""
  SHOWN_BY draft_states DraftStates.ItEndsWithinASecondAndRefusesNewCalls)
quoll_defence(only_who_asks_is_told FILE ${file}
  TAKES "return g_variant_lookup(platform_data.get(), wish" GIVES "return true || g_variant_lookup(platform_data.get(), wish"
  SHOWN_BY draft_states DraftStates.ASenderThatAsksIsToldWhatWasLeftOut)
quoll_defence(pipe_is_not_passed_on FILE apps/compose/taken_pipe.cpp
  TAKES "unsetenv(kVariable);" GIVES ""
  SHOWN_BY draft_states DraftStates.ASenderWithoutABusIsToldByThePipe)
