# The limits of docs/limits.md that keep hostile input from growing, or a person from waiting.

# What a program takes in
quoll_defence(text_length FILE apps/share/request/selection.cpp
  TAKES "text->size() > kLongestText" GIVES "text->size() > 2 * kLongestText"
  SHOWN_BY host ReceivedLimits.ATextHas64MiBAtMost)
quoll_defence(list_length FILE apps/share/request/selection.cpp
  TAKES "bytes->size() > kLongestList" GIVES "bytes->size() > 2 * kLongestList"
  SHOWN_BY host ReceivedLimits.AListHas256MiBAtMost)
quoll_defence(descriptor_length FILE apps/share/request/received_bytes.cpp
  TAKES "return size <= source.limit ?" GIVES "return true ?"
  SHOWN_BY host ReceivedLimits.DescriptorsHave256MiBInAll)
quoll_defence(descriptors_in_all FILE apps/share/request/selection.cpp
  TAKES "budget_ -= taken" GIVES "budget_ -= 0 * taken"
  SHOWN_BY host ReceivedLimits.FilesAndImagesShareTheBudgetOfDescriptors)
quoll_defence(left_out_on_the_disk FILE apps/share/request/selection.cpp
  TAKES "unlink(path.c_str());" GIVES ""
  SHOWN_BY host ReceivedLimits.FilesAndImagesShareTheBudgetOfDescriptors)
quoll_defence(delivered_image FILE apps/share/request/received_bytes.cpp
  TAKES "std::min(kLargestImage, source.limit)" GIVES "kLargestImage"
  SHOWN_BY host ReceivedLimits.OfAnImageNoMoreIsHeldThanIsWanted)
quoll_defence(image_in_memory FILE apps/share/request/received_bytes.cpp
  TAKES "std::size_t{256} << 20" GIVES "std::size_t{512} << 20"
  SHOWN_BY host ReceivedLimits.AnImageIsHeldBelow256MiB)
quoll_defence(file_in_memory FILE quoll/linux/posix/files.cpp
  TAKES "off_t{1} << 30" GIVES "off_t{1} << 31"
  SHOWN_BY posix_files Write.ReadingKnowsItsLimits)
quoll_defence(wait_for_answers FILE quoll/share/item_gatherer.cpp
  TAKES "int attempt = -100" GIVES "int attempt = -200"
  SHOWN_BY share Gathering.WaitsItsFullTimeForWhatIsNeitherUrlNorImage)
quoll_defence(pool_threads FILE quoll/linux/posix/thread_pool.cpp
  TAKES "kThreads = 4" GIVES "kThreads = 8"
  SHOWN_BY contract_ports ThreadPool.FourBlocksRunAtATime)
quoll_defence(lock_name_length FILE quoll/linux/posix/coordinator.cpp
  TAKES "name.size() > NAME_MAX" GIVES "name.size() > 2 * NAME_MAX"
  SHOWN_BY posix_processes LockFileName.IsWrittenDownForOthers)
quoll_defence(slow_tool FILE apps/share/request/clipboard.cpp
  TAKES "+ time.in_all" GIVES "+ 100 * time.in_all"
  SHOWN_BY clipboard Clipboard.AnOwnerThatDeliversAByteNowAndThenIsGivenUp)
quoll_defence(tool_without_an_output FILE quoll/linux/posix/subprocess.cpp
  TAKES "std::min(Clock::now() + read_timeout, deadline)" GIVES "deadline"
  SHOWN_BY clipboard Clipboard.AToolThatClosesItsOutputAndStaysIsGivenUp)
quoll_defence(file_without_an_end FILE quoll/linux/posix/file_contents.cpp
  TAKES "off_t{64} << 20" GIVES "off_t{64} << 30"
  SHOWN_BY posix_files Copy.AFileWithoutAnEndIsRefused)
quoll_defence(size_of_a_system_file FILE quoll/linux/posix/file_contents.cpp
  TAKES "system.f_type == SYSFS_MAGIC" GIVES "system.f_type == 0"
  SHOWN_BY posix_files Copy.OfAFileOfTheSystemThereIsWhatCanBeRead)
quoll_defence(working_folder_without_a_path FILE apps/share/request/resolve_item.cpp
  TAKES "const auto whole = absolute(path);"
  GIVES "const auto whole = std::optional(absolute(path).value_or(std::string(path)));"
  SHOWN_BY host ResolveItem.InAFolderThatIsTooDeepForAPath)
quoll_defence(container_that_no_url_holds FILE apps/share/share_program.cpp
  TAKES "folder && !foundation::is_utf8(*folder)" GIVES "folder && folder->empty()"
  SHOWN_BY share_program Share.AContainerWhosePathIsNotUtf8IsRefused)
quoll_defence(file_that_may_not_grow FILE apps/share/main.cpp
  TAKES "SIGXFSZ, SIG_IGN" GIVES "SIGXFSZ, SIG_DFL"
  SHOWN_BY share_program Share.AFileThatMayNotGrowIsLeftOutWithTheReason)
quoll_defence(share_without_a_thread FILE quoll/linux/posix/thread_pool.cpp
  TAKES "if (!is_served) {" GIVES "if (!is_served && !block) {"
  SHOWN_BY share_program Share.WithoutAThreadItEndsWithAReason)
quoll_defence(children_of_a_tool FILE quoll/linux/posix/subprocess.cpp
  TAKES "kill(-process_, SIGKILL)" GIVES "kill(process_, SIGKILL)"
  SHOWN_BY clipboard Clipboard.NothingOfTheToolStays)

# What other programs ask of the service
quoll_defence(shares_at_a_time FILE apps/share-service/service.cpp
  TAKES "kMostShares = 16" GIVES "kMostShares = 17"
  SHOWN_BY share_service ShareService.SixteenSharesAreUnderWayAtMost)
quoll_defence(uris_of_a_call FILE apps/share-service/share_call.h
  TAKES "kMostUris = 20'000" GIVES "kMostUris = 40'000"
  SHOWN_BY share_service ShareService.OpenHasItsLimits)
quoll_defence(items_of_a_call FILE apps/share-service/share_call.cpp
  TAKES "kMostItems = 64" GIVES "kMostItems = 65"
  SHOWN_BY share_service ShareService.RequestsThatAreNone)
quoll_defence(uris_under_two_keys FILE apps/share-service/share_call.cpp
  TAKES "too_many_uris(uris.size() + count)" GIVES "too_many_uris(count)"
  SHOWN_BY share_service ShareService.RequestsThatAreNone)
quoll_defence(items_under_two_keys FILE apps/share-service/share_call.cpp
  TAKES "items.size() + count" GIVES "count"
  SHOWN_BY share_service ShareService.RequestsThatAreNone)
quoll_defence(late_share FILE apps/share-service/share_process.cpp
  TAKES "g_subprocess_force_exit(self.process_.get())" GIVES "static_cast<void>(self.process_)"
  SHOWN_BY share_service HurriedShareService.AShareThatTakesTooLongIsEndedAndSaid)
quoll_defence(share_of_an_ended_menu FILE apps/share/notify.cpp
  TAKES "PR_SET_PDEATHSIG, SIGKILL" GIVES "PR_SET_PDEATHSIG, 0"
  SHOWN_BY notify Notify.WhoeverEndsItEndsTheShare)
quoll_defence(inherited_descriptors FILE apps/share-service/share_process.cpp
  TAKES "    setrlimit(RLIMIT_NOFILE, &limit);" GIVES "    getrlimit(RLIMIT_NOFILE, &limit);"
  SHOWN_BY share_service
    ShareServiceWithFewDescriptors.TheMailApplicationIsGivenAsManyAsItWouldBe)
quoll_defence(told_of_a_share FILE apps/share-service/share_process.h
  TAKES "std::size_t{64} << 10" GIVES "std::size_t{64} << 20"
  SHOWN_BY share_service ShareService.ThousandsOfNamesAndALongAnswer)

# Property lists, values and JSON
quoll_defence(xml_depth FILE quoll/foundation/property_list_xml.cpp
  TAKES "depth > kPropertyListDepth" GIVES "depth > 2 * kPropertyListDepth"
  SHOWN_BY foundation XmlPropertyList.HasADeepestDepth)
quoll_defence(xml_values FILE quoll/foundation/property_list_xml.cpp
  TAKES "++values_ > kPropertyListValues" GIVES "++values_ > 2 * kPropertyListValues"
  SHOWN_BY foundation XmlPropertyList.HasAMostNumberOfValues)
quoll_defence(old_depth FILE quoll/foundation/property_list_old.cpp
  TAKES "depth > kPropertyListDepth" GIVES "depth > 2 * kPropertyListDepth"
  SHOWN_BY foundation OldPropertyList.HasADeepestDepth)
quoll_defence(old_values FILE quoll/foundation/property_list_old.cpp
  TAKES "++values_ > kPropertyListValues" GIVES "++values_ > 2 * kPropertyListValues"
  SHOWN_BY foundation OldPropertyList.HasAMostNumberOfValues)
quoll_defence(binary_depth FILE quoll/foundation/property_list_binary.cpp
  TAKES "depth + object.height - 1 <= kPropertyListDepth"
  GIVES "depth + object.height - 1 <= 2 * kPropertyListDepth"
  SHOWN_BY foundation BinaryPropertyList.HasADeepestDepth)
quoll_defence(binary_values FILE quoll/foundation/property_list_binary.cpp
  TAKES "whole.values <= kPropertyListValues" GIVES "whole.values <= 2 * kPropertyListValues"
  SHOWN_BY foundation BinaryPropertyList.HasAMostNumberOfValues)
quoll_defence(binary_doubling FILE quoll/foundation/property_list_binary.cpp
  TAKES "!count_in(whole, element->values)" GIVES "!count_in(whole, 1)"
  SHOWN_BY foundation BinaryPropertyList.RefusesDoublingReferences)
quoll_defence(binary_keys FILE quoll/foundation/property_list_binary.cpp
  TAKES "kKeyBytesOfAValue = 64" GIVES "kKeyBytesOfAValue = 64000"
  SHOWN_BY foundation BinaryPropertyList.CountsSharedKeys)
quoll_defence(printed_depth FILE quoll/foundation/value_description.cpp
  TAKES "kPrintedDepth = 64" GIVES "kPrintedDepth = 65"
  SHOWN_BY foundation ValueDescription.PrintsSixtyFourListsInsideOneAnother)
quoll_defence(printed_bytes FILE quoll/foundation/value_description.cpp
  TAKES "std::size_t{1} << 26U" GIVES "std::size_t{1} << 28U"
  SHOWN_BY foundation ValueDescription.EndsForAListThatDoublesAtEachLevel)
quoll_defence(json_depth FILE apps/console/operations/json.cpp
  TAKES "kMaxDepth = 512" GIVES "kMaxDepth = 513"
  SHOWN_BY console JsonDepth.IsReadTo512Levels)
quoll_defence(answer_depth FILE apps/console/operations/write_value.cpp
  TAKES "kMaxDepth = 1024" GIVES "kMaxDepth = 1025"
  SHOWN_BY console JsonDepth.IsWrittenTo1024Levels)

# Pictures
quoll_defence(picture_pixels FILE apps/image-helper/codecs/picture.cpp
  TAKES "width * height > kMostPixels" GIVES "width * height > 2 * kMostPixels"
  SHOWN_BY image_helper PictureLimits.APictureHas2To28Pixels)
quoll_defence(picture_memory FILE apps/image-helper/codecs/picture.cpp
  TAKES "bytes > kMostHeldBytes" GIVES "bytes > 2 * kMostHeldBytes"
  SHOWN_BY image_helper PictureLimits.OneGibibyteOfPixelsIsHeld)
quoll_defence(helper_seconds FILE apps/image-helper/confine.cpp
  TAKES "limit(RLIMIT_CPU, kSeconds)" GIVES "limit(RLIMIT_CPU, 2 * kSeconds)"
  SHOWN_BY image_helper HelperLimits.AreSetBeforeAnyByteIsRead)
quoll_defence(helper_result FILE apps/image-helper/confine.cpp
  TAKES "limit(RLIMIT_FSIZE, kLongestResult)" GIVES "limit(RLIMIT_FSIZE, 2 * kLongestResult)"
  SHOWN_BY image_helper HelperLimits.AreSetBeforeAnyByteIsRead)
quoll_defence(helper_memory FILE apps/image-helper/confine.cpp
  TAKES "3 * kMostHeldBytes" GIVES "6 * kMostHeldBytes"
  SHOWN_BY image_helper HelperLimits.AreSetBeforeAnyByteIsRead)

# The folder helper
foreach(pair IN ITEMS
    "folder_entries:++entries_ > kMostEntries:++entries_ > kMostEntries + 1:MoreThan100000EntriesAreRefused"
    "folder_bytes:bytes_ > kMostBytes:bytes_ > kMostBytes << 10:ASparseTerabyteIsRefusedBeforeAnythingIsWritten"
    "folder_depth:levels_.size() > kDepth:levels_.size() > kDepth + 1:AFolderInside128OthersIsLeftOut")
  string(REPLACE ":" ";" pair ${pair})
  list(GET pair 0 name)
  list(GET pair 1 takes)
  list(GET pair 2 gives)
  list(GET pair 3 test)
  quoll_defence(${name} FILE apps/folder-helper/walk.cpp TAKES "${takes}" GIVES "${gives}"
                SHOWN_BY folder_helper HostileFolder.${test})
endforeach()
quoll_defence(folder_names_told FILE apps/folder-helper/zip.cpp
  TAKES "untold_ > 0 || told_.size() + line.size() > kMostTold" GIVES "untold_ > 0"
  SHOWN_BY folder_helper ZipTest.ManyThatAreLeftOutAreCounted)
quoll_defence(folder_helper_memory FILE apps/folder-helper/confine.cpp
  TAKES "rlim_t{1} << 30U" GIVES "rlim_t{2} << 30U"
  SHOWN_BY folder_helper FolderHelperLimits.AreSetBeforeAnyNameIsRead)
quoll_defence(folder_helper_seconds FILE apps/folder-helper/confine.cpp
  TAKES "limit(RLIMIT_CPU, kSeconds)" GIVES "limit(RLIMIT_CPU, 2 * kSeconds)"
  SHOWN_BY folder_helper FolderHelperLimits.AreSetBeforeAnyNameIsRead)

# HTML, links and texts
quoll_defence(html_comparisons FILE quoll/linux/xml/html_reader.cpp
  TAKES "200'000'000" GIVES "400'000'000"
  SHOWN_BY xml HtmlLimits.EndsThatFitNothingAreComparedTwoHundredMillionTimes)
quoll_defence(html_link_length FILE quoll/linux/xml/allowed_link.cpp
  TAKES "kLongestLink = 8192" GIVES "kLongestLink = 8193"
  SHOWN_BY xml HtmlLimits.ALinkHas8192Bytes)
quoll_defence(html_repeated_links FILE quoll/linux/xml/run_builder.cpp
  TAKES "std::size_t{64} << 20U" GIVES "std::size_t{128} << 20U"
  SHOWN_BY xml HtmlReading.StopsRepeatingALongLink)
quoll_defence(html_font_name FILE quoll/linux/xml/css.cpp
  TAKES "kLongestFamily = 100" GIVES "kLongestFamily = 101"
  SHOWN_BY xml HtmlLimits.AFontsNameHas100Bytes)
quoll_defence(html_font_size FILE quoll/linux/xml/css.cpp
  TAKES "kLargestSize = 1638" GIVES "kLargestSize = 1639"
  SHOWN_BY xml HtmlLimits.AFontHas1638Points)
quoll_defence(host_length FILE quoll/linux/links/scanner.cpp
  TAKES "kLongest = 1024" GIVES "kLongest = 1025"
  SHOWN_BY links Scan.AsksForTheAsciiFormOfPlausibleHostsOnly)
quoll_defence(rendering_length FILE quoll/message/html_rendering.cpp
  TAKES "std::size_t{64} << 20U" GIVES "std::size_t{128} << 20U"
  SHOWN_BY message HtmlRendering.KeepsTheExactResultUpTo64MiB)
quoll_defence(date_text_length FILE quoll/linux/icu/date_formatter.cpp
  TAKES "kLongest = 1000" GIVES "kLongest = 1001"
  SHOWN_BY icu DateFormatterTest.ReadsATextOfAThousandBytes)
quoll_defence(locale_name_length FILE quoll/linux/icu/user_locale.cpp
  TAKES "kLongest = 100" GIVES "kLongest = 101"
  SHOWN_BY icu UserLocale.IsLookedAtUpToAHundredBytes)

# Drawings
quoll_defence(drawn_text_length FILE quoll/linux/cairo/text_layout.cpp
  TAKES "std::size_t{256} << 10" GIVES "std::size_t{257} << 10"
  SHOWN_BY cairo TextDrawing.ATextHas256KiB)
quoll_defence(drawn_font_size FILE quoll/linux/cairo/text_layout.cpp
  TAKES "kLargestFont = 4096" GIVES "kLargestFont = 4097"
  SHOWN_BY cairo TextDrawing.TakesAnyLengthAndSize)
quoll_defence(drawn_image_pixels FILE quoll/linux/cairo/image_surface.cpp
  TAKES "std::uint64_t{1} << 28" GIVES "std::uint64_t{1} << 29"
  SHOWN_BY cairo ImageDrawing.RefusesMorePixelsThanTheLimit)

# Handing over and receiving
quoll_defence(bus_length FILE quoll/linux/gio/open_request.cpp
  TAKES "size >= kLargestBusList" GIVES "size > kLargestBusList"
  SHOWN_BY launcher LauncherTest.AsMuchAsABusMessageCarriesIsOpenedAndNoMore)
quoll_defence(left_out_text_length FILE quoll/linux/gio/left_out.cpp
  TAKES "std::size_t{64} << 10" GIVES "std::size_t{64} << 20"
  SHOWN_BY launcher LauncherTest.WhatTheApplicationLeavesOutIsToldAndTheRestIsOpened)
quoll_defence(left_out_names FILE quoll/linux/gio/left_out.cpp
  TAKES "kMostNames = 100" GIVES "kMostNames = 101"
  SHOWN_BY launcher LauncherTest.WhatTheApplicationLeavesOutIsToldAndTheRestIsOpened)
quoll_defence(reason_length FILE quoll/linux/gio/opener.cpp
  TAKES "kLongest = 8192" GIVES "kLongest = 81920"
  SHOWN_BY launcher LauncherTest.AReasonOfMegabytesIsCutShort)
quoll_defence(wait_for_a_started_program FILE quoll/linux/gio/opener.cpp
  TAKES "std::chrono::steady_clock::now() + time_out_);" GIVES "std::chrono::steady_clock::now());"
  SHOWN_BY launcher LauncherTest.AStartedProgramThatNeverTellsIsWaitedForUntilTheTimeOut)
quoll_defence(log_line_length FILE quoll/linux/posix/system_log.cpp
  TAKES "kLongestLine = 4096" GIVES "kLongestLine = 4097"
  SHOWN_BY posix_text SystemLog.ALineHas4096Bytes)
quoll_defence(left_out_log_has_no_names FILE apps/compose/left_out.cpp
  TAKES "++numbers[file.reason];" GIVES "++numbers[file.name + \": \" + file.reason];"
  SHOWN_BY compose_text ComposeLimits.FilesThatAreLeftOutAreLoggedByTheirReasonsWithoutNames)
quoll_defence(files_in_a_notice FILE apps/compose/notifications.cpp
  TAKES "kMostFiles = 5" GIVES "kMostFiles = 6"
  SHOWN_BY mail_client ComposeNotice.ManyFilesFromElsewhereAreCounted)
quoll_defence(notices_at_once FILE apps/compose/notifications.cpp
  TAKES "kMost = 3" GIVES "kMost = 4"
  SHOWN_BY mail_client ComposeNotice.OfManyTheFirstAreShown)
quoll_defence(refusal_in_a_notice FILE apps/compose/notifications.cpp
  TAKES "kLongestReason = 400" GIVES "kLongestReason = 500"
  SHOWN_BY mail_client ComposeNotices.ALongRefusalIsCutShort)
quoll_defence(client_argument_length FILE apps/compose/client_arguments.cpp
  TAKES "kLongestArgument = 131071" GIVES "kLongestArgument = 131072"
  SHOWN_BY mail_client ClientArguments.NoTextIsEverShortened)
quoll_defence(given_draft_stays FILE apps/compose/given_draft.cpp
  TAKES "std::int64_t{7} * 24" GIVES "std::int64_t{6} * 24"
  SHOWN_BY mail_client GivenDraftsTest.AreCleanedAfterSevenDaysAndNeverBefore)
quoll_defence(only_copy_stays FILE apps/compose/given_draft.cpp
  TAKES "  if (has(draft, kMark)) {" GIVES "  if (!draft.empty()) {"
  SHOWN_BY mail_client GivenDraftsTest.ADraftThatNoClientHasStaysForGood)
quoll_defence(perhaps_given_stays_so FILE apps/compose/given_draft.cpp
  TAKES "} else if (has(draft, kOffered) &&" GIVES "} else if (draft.empty() && has(draft, kOffered) &&"
  SHOWN_BY mail_client GivenDraftsTest.WhatWasPerhapsGivenStaysSo)
quoll_defence(offer_is_not_aged_by_a_clock FILE apps/compose/taken_draft.cpp
  TAKES "kOffered, mark_of(present_moment()))" GIVES "kOffered, \"\")"
  SHOWN_BY mail_client GivenDraftsTest.AClockThatIsSetTakesNoFilesOfWhatWasPerhapsGiven)
quoll_defence(offered_again_stays FILE apps/compose/given_draft.cpp
  TAKES "return std::min(given.value_or(kNever), offered.value_or(kNever));"
  GIVES "return given ? *given : offered.value_or(kNever);"
  SHOWN_BY mail_client GivenDraftsTest.WhatIsOfferedAgainStaysForSevenDaysMore)
quoll_defence(mail_link_length FILE apps/compose/client_arguments.cpp
  TAKES "kLongestLink = 2000" GIVES "kLongestLink = 2001"
  SHOWN_BY mail_client ClientArguments.AMailLinkHas2000BytesAtMostOrNoText)
quoll_defence(no_client_for_what_no_mail_carries FILE apps/compose/hand_over.cpp
  TAKES "2'000'000'000" GIVES "3'000'000'000"
  SHOWN_BY mail_client MailLink.WhatNoMailCarriesIsKeptWithItsFiles)
quoll_defence(large_draft_is_said FILE apps/compose/hand_over.cpp
  TAKES "25'000'000" GIVES "26'000'000"
  SHOWN_BY mail_client MailClientTest.ADraftThatServersRefuseIsSaid)
quoll_defence(shown_lines FILE apps/compose/draft_summary.cpp
  TAKES "kLines = 12" GIVES "kLines = 13"
  SHOWN_BY compose_text ComposeLimits.TwelveLinesOfATextAreShown)
quoll_defence(shown_line_length FILE apps/compose/draft_summary.cpp
  TAKES "kBytesOfALine = 400" GIVES "kBytesOfALine = 401"
  SHOWN_BY compose_text ComposeLimits.FourHundredBytesOfALineAreShown)

# What a share menu sends.
quoll_defence(menu_request_depth FILE apps/share/request/menu_request.cpp
  TAKES "kDeepest = 16;" GIVES "kDeepest = 17;"
  SHOWN_BY menu_request MenuRequest.SixteenLevelsAreRead)
quoll_defence(menu_request_lengths FILE apps/share/request/menu_request.cpp
  TAKES "failed_ = !is_countable;" GIVES "static_cast<void>(is_countable);"
  SHOWN_BY menu_request MenuRequest.WhatIsNoRequest)
quoll_defence(notification_is_cut FILE apps/share/notice.cpp
  TAKES "kMost = 1000;" GIVES "kMost = 100000;"
  SHOWN_BY notify Notify.ManyLinesAreCutShort)

# What the receiver takes of a command.
quoll_defence(files_of_a_draft FILE apps/compose/taker.cpp
  TAKES "kMostFiles = 10'000" GIVES "kMostFiles = 20'000"
  SHOWN_BY compose_text ComposeLimits.ADraftHasTenThousandFiles)
quoll_defence(drafts_of_a_call FILE apps/compose/taker.cpp
  TAKES "kMostAtOnce = 256" GIVES "kMostAtOnce = 512"
  SHOWN_BY compose_text ComposeLimits.ACallHas256Drafts)
quoll_defence(left_out_by_name FILE apps/compose/left_out.cpp
  TAKES "kMostNamed = 100" GIVES "kMostNamed = 200"
  SHOWN_BY compose_text ComposeLimits.OneHundredFilesThatAreLeftOutAreKeptByName)
