# The process that writes drafts, and the reading of what strangers wrote.
set(file apps/compose/confine_writer.cpp)
quoll_defence(writer_reads_one_folder FILE ${file}
  TAKES "rules.allow(folder, PathRules::Access::kRead);"
  GIVES "rules.allow(\"/\", PathRules::Access::kRead); (void)folder;"
  SHOWN_BY sandbox WriterSandbox.NoOtherFileIsReadAndNoFolderListed)
quoll_defence(writer_opens_for_reading FILE ${file}
  TAKES "calls_.allow(\"openat\", {has_none_of(2, O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)});\n"
  GIVES "calls_.allow({\"openat\"}); (void)&has_none_of;\n"
  SHOWN_BY compose_writer WriterServer.ADraftIsNotOpenedForWriting)
foreach(pair IN ITEMS writer_changes_no_file:NoFileIsChanged writer_starts_nothing:NothingIsStarted
                      writer_leaves_processes:NoProcessIsTouched writer_makes_no_socket:NoSocketIsMade
                      writer_uses_no_rare_calls:RarePartsOfTheKernelAreShut)
  string(REPLACE ":" ";" pair ${pair})
  list(GET pair 0 name)
  list(GET pair 1 test)
  quoll_defence(${name} FILE ${file}
    TAKES "(void)!calls_.enforce();" GIVES "(void)calls_;"
    SHOWN_BY sandbox WriterSandbox.${test})
endforeach()
quoll_defence(writer_runs_no_memory FILE ${file}
  TAKES "calls_.allow(\"mprotect\", {has_none_of(2, PROT_EXEC)});"
  GIVES "calls_.allow({\"mprotect\"});"
  SHOWN_BY sandbox WriterSandbox.MemoryIsLimitedAndNeverMadeExecutable)
quoll_defence(writer_memory FILE ${file}
  TAKES "limit(RLIMIT_AS, mapped() + kMemory);"
  GIVES "limit(RLIMIT_AS, RLIM_INFINITY); (void)kMemory; (void)&mapped;"
  SHOWN_BY sandbox WriterSandbox.MemoryIsLimitedAndNeverMadeExecutable)
quoll_defence(writer_seconds FILE ${file}
  TAKES "kSeconds = 60;" GIVES "kSeconds = 61;"
  SHOWN_BY compose_writer WriterServer.HasItsLimits)
quoll_defence(writer_seconds_for_files FILE ${file}
  TAKES "kBytesOfASecond = 10'000'000;" GIVES "kBytesOfASecond = 1'000'000;"
  SHOWN_BY compose_writer WriterServer.HasItsLimits)
quoll_defence(writer_leaves_no_core FILE ${file}
  TAKES "limit(RLIMIT_CORE, 0);" GIVES ""
  SHOWN_BY compose_writer WriterServer.HasItsLimits)
quoll_defence(writer_fills_no_disk FILE ${file}
  TAKES "limit(RLIMIT_FSIZE, most);" GIVES ""
  SHOWN_BY compose_writer WriterServer.HasItsLimits)
quoll_defence(writer_ends_with_the_receiver FILE ${file}
  TAKES "prctl(PR_SET_PDEATHSIG, SIGKILL);" GIVES "prctl(PR_SET_PDEATHSIG, SIGCONT);"
  SHOWN_BY compose_writer WriterServer.AServerThatIsEndedTakesItsChildAlong)
quoll_defence(writer_holds_two_descriptors FILE apps/compose/writer_child.cpp
  TAKES "close_range(kOutput + 1, UINT_MAX, 0);" GIVES ""
  SHOWN_BY compose_writer WriterServer.AChildHasTwoDescriptorsAndTheEmptyStreams)
set(file apps/compose/writer_server.cpp)
quoll_defence(writers_server_ends_with_the_receiver FILE ${file}
  TAKES "end_with(receiver);" GIVES "(void)receiver;"
  SHOWN_BY compose_writer WriterServer.NobodyIsLeftOfAReceiverThatWasKilled)
quoll_defence(writer_that_falls_stops_no_other FILE ${file}
  TAKES "MSG_NOSIGNAL) != sizeof answer) {"
  GIVES "MSG_NOSIGNAL) != sizeof answer || answer.status != 0) {"
  SHOWN_BY compose_writer WriterServer.WhatEachEndMeans)

set(file apps/compose/writer_result.cpp)
quoll_defence(writer_is_asked_for_plain_text FILE ${file}
  TAKES "!foundation::is_utf8(text) || !is_clean(text, allowed)" GIVES "!foundation::is_utf8(text)"
  SHOWN_BY compose_writer WriterResult.OnlyPlainTextIsTaken)
quoll_defence(writer_is_asked_for_a_draft FILE ${file}
  TAKES "read_at(file, 0, beginning.size()) != beginning" GIVES "beginning.empty()"
  SHOWN_BY compose_writer WriterResult.TheMessageBeginsAsItMust)
quoll_defence(writer_fields_length FILE ${file}
  TAKES "record.fields > kMostFields" GIVES "record.fields > 2 * kMostFields"
  SHOWN_BY compose_writer WriterResult.MoreFieldsThanADraftHasAreNotRead)
quoll_defence(writer_addresses FILE ${file}
  TAKES "kMostAddresses = 1'000'000" GIVES "kMostAddresses = 2'000'000"
  SHOWN_BY compose_writer WriterResult.AMillionAddressesAreRead)
quoll_defence(writer_fields_need_memory FILE apps/compose/draft_writing.cpp
  TAKES "} catch (const std::bad_alloc&) {" GIVES "} catch (const std::bad_cast&) {"
  SHOWN_BY compose_writer DraftWriting.FieldsThatNeedTooMuchMemoryAreAFailure)
quoll_defence(writer_lengths_fit FILE ${file}
  TAKES "record.fields != before - record.message" GIVES "record.fields > before"
  SHOWN_BY compose_writer WriterResult.LengthsAreNotBelieved)

set(file apps/compose/addresses.cpp)
quoll_defence(addresses_are_not_decoded FILE ${file}
  TAKES "without_encoded_words(mailbox.name)" GIVES "mailbox.name"
  SHOWN_BY compose_writer Addresses.NothingIsDecodedAndNothingCanBe)
quoll_defence(addresses_are_one_line FILE ${file}
  TAKES "= one_line(joined);" GIVES "= std::string(joined);"
  SHOWN_BY compose_writer Addresses.NothingIsDecodedAndNothingCanBe)
quoll_defence(invisible_characters_leave_names FILE ${file}
  TAKES "  mailbox.name = trim(without_invisible(mailbox.name));\n" GIVES ""
  SHOWN_BY compose_writer Addresses.HaveNoInvisibleCharacter)
quoll_defence(recipients_left_out_are_counted FILE ${file}
  TAKES "    ++addresses.not_plain;\n" GIVES ""
  SHOWN_BY compose_writer Addresses.WhatAClientIsNotToldIsCounted)
quoll_defence(recipients_left_out_are_said FILE apps/compose/hand_over.cpp
  TAKES "left_out = fields.not_plain;"
  GIVES "left_out = 0;"
  SHOWN_BY mail_client ComposeNotice.ARecipientWithoutAnAddressIsSaid)
quoll_defence(names_are_no_options FILE apps/compose/mail_header.cpp
  TAKES " && !name.starts_with('-')" GIVES ""
  SHOWN_BY compose_writer Addresses.NoNameLooksLikeAnOption)
quoll_defence(invisible_addresses FILE apps/compose/plain_address.cpp
  TAKES "is_clean(text) && !has_invisible(text);" GIVES "is_clean(text);"
  SHOWN_BY compose_writer Addresses.HaveNoInvisibleCharacter)
quoll_defence(addresses_are_no_options FILE apps/compose/plain_address.cpp
  TAKES "address.front() != '-' && " GIVES ""
  SHOWN_BY compose_writer Addresses.WhatAClientIsNotToldIsCounted)
quoll_defence(writer_is_asked_for_addresses FILE apps/compose/writer_result.cpp
  TAKES "!is_plain_address(text)" GIVES "text.empty() && !is_plain_address(text)"
  SHOWN_BY compose_writer WriterResult.OnlyPlainAddressesAreTaken)
quoll_defence(writer_is_asked_for_a_plain_subject FILE apps/compose/writer_result.cpp
  TAKES "fields.subject.find(\"=?\") != std::string::npos" GIVES "fields.subject == \"=?\""
  SHOWN_BY compose_writer WriterResult.OnlyPlainAddressesAreTaken)
quoll_defence(address_length FILE apps/compose/plain_address.cpp
  TAKES "kLongest = 320;" GIVES "kLongest = 1000;"
  SHOWN_BY compose_writer Addresses.WhatIsNoneStaysWhereAPersonSeesIt)
quoll_defence(subject_is_one_line FILE apps/compose/write_message.cpp
  TAKES "one_line(text_of(message.subject()))" GIVES "text_of(message.subject())"
  SHOWN_BY compose_writer WriteMessage.NoFieldAddsAHeader)
quoll_defence(client_decodes_no_subject FILE apps/compose/write_message.cpp
  TAKES "fields.subject = without_encoded_words(fields.subject);" GIVES ""
  SHOWN_BY mail_client HostileFields.BecomeNoArgumentsOfTheirOwn)
quoll_defence(quotes_are_closed_once FILE ${file}
  TAKES "    has = false;\n" GIVES ""
  SHOWN_BY compose_writer Addresses.TakeTimeInProportion)

quoll_defence(commands_are_words FILE quoll/message/received_command.cpp
  TAKES "std::ranges::find(commands, word) == commands.end()" GIVES "word.empty() && commands.empty()"
  SHOWN_BY message ReceivedCommand.AnythingElseIsRefused)
quoll_defence(show_tells_of_staged_files_only FILE apps/console/show.cpp
  TAKES "if (!is_staged(path)) {" GIVES "if (path.empty() && !is_staged(path)) {"
  SHOWN_BY quollctl QuollctlTest.ShowsWhatACommandUrlSays)

set(file apps/compose/main.cpp)
quoll_defence(drafts_are_shown_confined FILE ${file}
  TAKES "compose::confine_reader(-1);" GIVES ""
  SHOWN_BY receiver Reading.ADraftIsShownByAConfinedProcess)
quoll_defence(drafts_are_listed_confined FILE ${file}
  TAKES "compose::confine_reader(folder.get());" GIVES ""
  SHOWN_BY receiver Reading.DraftsAreListedByAConfinedProcess)
quoll_defence(a_list_reads_one_folder FILE ${file}
  TAKES "open(compose::drafts_folder().c_str()," GIVES "open(\"/\","
  SHOWN_BY receiver Reading.NothingElseIsReadFromTheList)

set(file apps/compose/service.cpp)
quoll_defence(a_held_up_receiver_ends FILE ${file}
  TAKES "  alarm(1);\n" GIVES ""
  SHOWN_BY draft_states Ending.AMainThreadThatIsHeldUpIsEndedByItsAlarm)
quoll_defence(notifications_hold_up_nothing FILE ${file}
  TAKES "    for (const Notification& one : notifications_.take()) {\n"
  GIVES "    show_and_wait(notifications_.take());\n    for (const Notification& one : notifications_.take()) {\n"
  SHOWN_BY draft_states Ending.ADesktopThatDoesNotAnswerHoldsUpNothing)
quoll_defence(notifications_wait_for_answers FILE ${file}
  TAKES "    if (shown_ != 0) {\n" GIVES "    if (shown_ > 100) {\n"
  SHOWN_BY draft_states Ending.WhatComesBeforeTheDesktopHasAnsweredBecomesFew)
quoll_defence(a_button_keeps_the_service FILE ${file}
  TAKES " || !buttons_->empty()" GIVES ""
  SHOWN_BY mail_client NotificationButton.KeepsTheServiceButNotFromEnding)
set(file quoll/linux/gio/notification_buttons.cpp)
quoll_defence(buttons_of_others_are_not_ours FILE ${file}
  TAKES "const auto shown = find(notification);" GIVES "const auto shown = notifications_.begin();"
  SHOWN_BY mail_client NotificationButton.KeepsTheServiceButNotFromEnding)
quoll_defence(a_button_has_its_time FILE ${file}
  TAKES "steady_clock::now() + longest_" GIVES "steady_clock::now() + 1000 * longest_"
  SHOWN_BY mail_client NotificationButtonsOfAProgram.EndWithTheirTime)
quoll_defence(few_buttons_at_a_time FILE ${file}
  TAKES "kMost = 16" GIVES "kMost = 1600"
  SHOWN_BY mail_client NotificationButtonsOfAProgram.OnlyTheNewestSixteenCanBePressed)
quoll_defence(buttons_end_with_their_desktop FILE ${file}
  TAKES "static_cast<Shown*>(data)->notifications_.clear();" GIVES "static_cast<void>(data);"
  SHOWN_BY mail_client NotificationButtonsOfAProgram.EndWithTheDesktopThatHasThem)
quoll_defence(a_number_names_the_newest FILE ${file}
  TAKES "    remove(notification);  //" GIVES "    //"
  SHOWN_BY mail_client NotificationButtonsOfAProgram.ANumberThatIsGivenAgainNamesTheNewer)
quoll_defence(a_button_opens_its_own_draft FILE apps/compose/notifications.cpp
  TAKES "present.st_ino != shown.st_ino" GIVES "false"
  SHOWN_BY mail_client NotificationButton.OpensNoLaterDraftOfTheName)
quoll_defence(no_process_is_no_end FILE apps/compose/writer_server.cpp
  TAKES "return {.end = WriterEnd::kNotNow,\n" GIVES "return {.end = WriterEnd::kStopped,\n"
  SHOWN_BY draft_states Ending.WithoutAProcessForItADraftWaitsAndItIsSaid)
quoll_defence(kept_drafts_have_their_files FILE apps/compose/taken_draft.cpp
  TAKES "if (rename_to_given() == 0) {" GIVES "if (folder() == -2) {"
  SHOWN_BY kept_drafts KeptDrafts.OneThatNoClientTookIsGivenAgainWithItsFiles)
quoll_defence(nothing_is_promised_that_cannot_be_kept FILE apps/compose/folders.cpp
  TAKES "access(folder.c_str(), R_OK | W_OK | X_OK) != 0" GIVES "access(folder.c_str(), F_OK) != 0"
  SHOWN_BY kept_drafts KeptDrafts.WhereNothingCanBeKeptNothingIsPromised)
quoll_defence(reasons_of_before_go FILE apps/compose/noted_reason.cpp
  TAKES "    unlinkat(fd.get(), kReasonFile, 0);" GIVES "    unlinkat(fd.get(), \"\", 0);"
  SHOWN_BY kept_drafts KeptDrafts.AReasonThatCannotBeNotedChangesNothing)
quoll_defence(what_is_being_given_is_told_apart FILE apps/compose/given_draft.cpp
  TAKES "return Giving::kNow;" GIVES "return Giving::kPerhaps;"
  SHOWN_BY draft_states DraftStates.OneThatIsBeingGivenIsNotPerhapsGiven)
quoll_defence(failures_print_no_success FILE apps/compose/main.cpp
  TAKES "const std::string given_to ="
  GIVES "std::cout << \"The draft was given to \";\n  const std::string given_to ="
  SHOWN_BY kept_drafts KeptDrafts.AreGivenAgainAsAMessageFile)
quoll_defence(receiver_ignores_sigxfsz FILE apps/compose/main.cpp
  TAKES "std::signal(SIGXFSZ, SIG_IGN);" GIVES ""
  SHOWN_BY draft_states UsersFileLimit.IsSaidAndNothingIsSetAside)
quoll_defence(users_file_limit_is_no_fault_of_a_draft FILE apps/compose/writer_child.cpp
  TAKES "number == EFBIG && confinement" GIVES "number == 0 && confinement"
  SHOWN_BY draft_states UsersFileLimit.IsSaidAndNothingIsSetAside)
quoll_defence(clients_do_not_ignore_sigxfsz FILE quoll/linux/gio/desktop_entry.cpp
  TAKES "std::signal(SIGXFSZ, SIG_DFL);" GIVES ""
  SHOWN_BY draft_states UsersFileLimit.OfAClientEndsItAsEver)

# What was answered is there, see docs/mail-clients.md.
quoll_defence(a_draft_is_promised_when_it_is_taken FILE apps/compose/service.cpp
  TAKES "      drafts = take(urls);\n"
  GIVES "      g_object_ref(call);\n      answer(call, drafts);\n      usleep(100'000);\n      drafts = take(urls);\n"
  SHOWN_BY draft_states DraftStates.AKilledReceiverLosesNothingThatItAnswered)
set(file apps/compose/draft_writing.cpp)
quoll_defence(a_draft_is_on_the_disk FILE ${file}
  TAKES "return sync(file) && folder &&" GIVES "return file >= 0 && folder &&"
  SHOWN_BY draft_states LesserDisk.WhatWasTakenStaysUntilTheDraftIsOnTheDisk)
quoll_defence(a_drafts_name_is_on_the_disk FILE ${file}
  TAKES "         sync_folder(folder.get());" GIVES "         (sync_folder(folder.get()) || true);"
  SHOWN_BY draft_states LesserDisk.WhatWasTakenStaysUntilTheDraftIsOnTheDisk)
quoll_defence(a_writer_that_stands_still_is_told_of FILE apps/compose/writer_server.cpp
  TAKES "return ends ? status.value_or(SIGKILL) : SIGXCPU;" GIVES "return status.value_or(SIGKILL);"
  SHOWN_BY compose_writer WriterServer.OneThatStandsStillIsEnded)
quoll_defence(ten_drafts_are_no_flood FILE apps/compose/draft_thread.cpp
  TAKES "under_way_ > kMostAtOnce;" GIVES "under_way_ >= kMostAtOnce;"
  SHOWN_BY draft_states DraftFloods.TenDraftsAreNoFlood)
set(file apps/compose/hand_over.cpp)
quoll_defence(no_text_is_too_long_for_a_client FILE ${file}
  TAKES "!are_startable(arguments)" GIVES "arguments.empty() && !are_startable(arguments)"
  SHOWN_BY mail_client ComposeNotice.ATextTooLongForACommandLineIsNeverShortened)
quoll_defence(a_client_that_stays_has_the_draft FILE ${file}
  TAKES "is_seen = trouble == ETIMEDOUT;" GIVES "is_seen = false;"
  SHOWN_BY mail_client MailClientTest.AClientThatStaysHasTheDraft)
quoll_defence(notifications_speak_of_no_commands FILE ${file}
  TAKES "outcome.reason = foundation::printable(reason_in(failure));"
  GIVES "outcome.reason = foundation::printable(failure.what());"
  SHOWN_BY mail_client ComposeNotice.ADraftThatIsKeptIsSaidWithItsPlace)
quoll_defence(clients_of_completion_take_drafts FILE apps/compose/client_choice.cpp
  TAKES "in a sandbox that no draft reaches" GIVES "in a sandbox, which no draft reaches"
  SHOWN_BY kept_drafts KeptDrafts.CompletionKnowsTheNamesAndTheClients)
quoll_defence(staging_folders_trouble_is_said FILE apps/compose/staging_folder.cpp
  TAKES "  error_ = errno;\n" GIVES ""
  SHOWN_BY compose_text StagingFolder.WhyItCannotBeOpenedIsSaid)
quoll_defence(files_that_grew_are_refused FILE apps/compose/write_message.cpp
  TAKES "static_cast<std::uint64_t>(status.st_size) != taken.size"
  GIVES "static_cast<std::uint64_t>(status.st_size) < taken.size"
  SHOWN_BY draft_states DraftsOnASmallDisk.AFileThatGrowsAfterwardsHoldsUpNoOther)
quoll_defence(half_a_copy_is_not_taken FILE apps/compose/taker.cpp
  TAKES "posix::copy_contents(file, copy.get())) {"
  GIVES "posix::copy_contents(file, copy.get()); failure && failure->number < 0) {"
  SHOWN_BY receiver ReceiverWithoutRoom.SaysSoAndKeepsNothing)
