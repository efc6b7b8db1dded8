# Rules of the library whose loss is not seen at once: an order, a lock, an answer that nobody needs.

# A share's view is loaded in four steps.
set(file quoll/share/share_view_controller.cpp)
quoll_defence(the_folder_is_emptied_before_the_view_is_made FILE ${file}
  TAKES "  ExtensionUtilities::ShareInit(kService);\n  NSViewController::loadView();\n"
  GIVES "  NSViewController::loadView();\n  ExtensionUtilities::ShareInit(kService);\n"
  SHOWN_BY share ShareViewController.EmptiesTheStagingFolderBeforeItsViewIsMade)
quoll_defence(the_folder_is_emptied_before_the_request_ends FILE ${file}
  TAKES "  ExtensionUtilities::ShareInit(kService);\n  NSViewController::loadView();\n  cancel(nullptr);\n"
  GIVES "  NSViewController::loadView();\n  cancel(nullptr);\n  ExtensionUtilities::ShareInit(kService);\n"
  SHOWN_BY share ShareViewController.LoadsItsViewInFourSteps)
quoll_defence(the_view_is_made_before_the_request_ends FILE ${file}
  TAKES "  NSViewController::loadView();\n  cancel(nullptr);\n"
  GIVES "  cancel(nullptr);\n  NSViewController::loadView();\n"
  SHOWN_BY share ShareViewController.LoadsItsViewInFourSteps)
quoll_defence(the_request_ends_before_items_are_gathered FILE ${file}
  TAKES [[
  cancel(nullptr);
  ExtensionUtilities::GetItemForExtension(extensionContext(), std::string(kService),
                                          open_compose_window);
]]
  GIVES [[
  ExtensionUtilities::GetItemForExtension(extensionContext(), std::string(kService),
                                          open_compose_window);
  cancel(nullptr);
]]
  SHOWN_BY share ShareViewController.LoadsItsViewInFourSteps)

# Items are gathered one after the other, for any service, from files of any name.
set(file quoll/share/item_gatherer.cpp)
quoll_defence(files_are_staged_under_their_service FILE ${file}
  TAKES "ShareFiles(gathering.service," GIVES "ShareFiles(\"Share\","
  SHOWN_BY share Gathering.FilesAndImagesAreStagedUnderTheServiceThatIsNamed)
quoll_defence(images_are_staged_under_their_service FILE ${file}
  TAKES "ShareDatas(gathering.service," GIVES "ShareDatas(\"Share\","
  SHOWN_BY share Gathering.FilesAndImagesAreStagedUnderTheServiceThatIsNamed)
quoll_defence(a_service_has_its_folder FILE quoll/container/staging.cpp
  TAKES "URLByAppendingPathComponent(GroupDataPath(), name)"
  GIVES "URLByAppendingPathComponent(GroupDataPath(), \"Share\")"
  SHOWN_BY container Staging.EachServiceHasAFolderOfItsOwn)
quoll_defence(a_text_comes_with_its_item FILE ${file}
  TAKES "    append_text(*gathering->message, *item);\n"
  GIVES "    append_text(*gathering->message, *item);\n  }\n  for (const auto& item : items) {\n"
  SHOWN_BY share Gathering.TextsAndAttachmentsComeItemByItem)
quoll_defence(a_text_comes_before_the_attachments FILE ${file}
  TAKES [[
    append_text(*gathering->message, *item);
    for (const auto& provider : item->attachments()) {
      load_attachment(gathering, item, *provider);
    }
]]
  GIVES [[
    for (const auto& provider : item->attachments()) {
      load_attachment(gathering, item, *provider);
    }
    append_text(*gathering->message, *item);
]]
  SHOWN_BY share Gathering.TextsAndAttachmentsComeItemByItem)
quoll_defence(attachments_come_in_their_order FILE ${file}
  TAKES "    for (const auto& provider : item->attachments()) {\n"
  GIVES "    auto providers = item->attachments();\n    for (; !providers.empty(); providers.pop_back()) {\n      const auto& provider = providers.back();\n"
  SHOWN_BY share Gathering.TextsAndAttachmentsComeItemByItem)
quoll_defence(a_file_may_have_any_name FILE ${file}
  TAKES "const auto path = foundation::file_system_path(url);" GIVES "const auto path = url->path();"
  SHOWN_BY share Gathering.AFileUrlThatIsNotUtf8NamesItsFile)
quoll_defence(an_image_may_have_any_name FILE ${file}
  TAKES "foundation::file_system_path(url).value_or(\"\")" GIVES "url->path().value_or(\"\")"
  SHOWN_BY share Gathering.AFileUrlThatIsNotUtf8NamesItsFile)
quoll_defence(a_staged_name_is_a_text FILE quoll/container/staging.cpp
  TAKES "foundation::utf8_with_escapes(foundation::last_path_component(source_path(item)))"
  GIVES "std::string(foundation::last_path_component(source_path(item)))"
  SHOWN_BY container Staging.ANameThatIsNoTextIsStagedWithItsBadBytesEscaped)

# What is read or staged lies where the coordinator says.
quoll_defence(the_coordinator_says_where FILE quoll/container/coordinated_access.cpp
  TAKES "url, platform::NSFileCoordinatorWritingForDeleting, accessor);"
  GIVES "url, platform::NSFileCoordinatorWritingForDeleting, [&](const auto&) { accessor(url); });"
  SHOWN_BY container Staging.WorksAtTheLocationThatIsGiven)
set(own "foundation::URLByAppendingPathComponent(GroupDataPath(), ")
quoll_defence(the_coordinators_folder_is_removed FILE quoll/container/staging.cpp
  TAKES "removeItemAtURL(location)" GIVES "removeItemAtURL(${own}\"Share\"))"
  SHOWN_BY container Staging.WorksAtTheLocationThatIsGiven)
quoll_defence(the_coordinators_folder_is_made FILE quoll/container/staging.cpp
  TAKES "createDirectoryAtURL(location)" GIVES "createDirectoryAtURL(${own}\"Share\"))"
  SHOWN_BY container Staging.WorksAtTheLocationThatIsGiven)
quoll_defence(the_coordinators_folder_is_filled FILE quoll/container/staging.cpp
  TAKES "file_system_path(location)" GIVES "file_system_path(${own}folder))"
  SHOWN_BY container Staging.WorksAtTheLocationThatIsGiven)
quoll_defence(the_coordinators_accounts_are_read FILE quoll/container/accounts_store.cpp
  TAKES "array_with_contents_of_url(location)"
  GIVES "array_with_contents_of_url(${own}container::layout::accounts))"
  SHOWN_BY container Stores.AccountsAreReadFromTheLocationThatIsGiven)
quoll_defence(the_coordinators_contacts_are_made FILE quoll/container/contacts_store.cpp
  TAKES "make_contacts_folder(location)"
  GIVES "make_contacts_folder(${own}container::layout::contacts))"
  SHOWN_BY container Stores.ContactsAreReadFromTheLocationThatIsGiven)
quoll_defence(the_coordinators_contacts_are_read FILE quoll/container/contacts_store.cpp
  TAKES "stored_list(location, container::layout::addresses)"
  GIVES "stored_list(${own}container::layout::contacts), container::layout::addresses)"
  SHOWN_BY container Stores.ContactsAreReadFromTheLocationThatIsGiven)

# Requests have their options and their method, whatever they hold.
set(file quoll/requestutils/http_request.cpp)
set(vectors Files/Vectors.AreAnsweredHereAndByTheProgram)
quoll_defence(parameters_have_options_without_a_query FILE ${file}
  TAKES [[
  const std::string added = URLQueryWithParameters(parameters, options);
  const auto query = request.URL() ? URLQuery(request.URL()->absoluteString()) : std::nullopt;
]]
  GIVES [[
  const auto query = request.URL() ? URLQuery(request.URL()->absoluteString()) : std::nullopt;
  const std::string added = URLQueryWithParameters(parameters, query ? options : URLQueryOptions{});
]]
  SHOWN_BY console ${vectors}/http_request)
quoll_defence(parameters_have_options_without_a_body FILE ${file}
  TAKES [[
  const std::string added = URLQueryWithParameters(parameters, options);
  set_form(]]
  GIVES [[
  const bool has_body = !body_text(request).empty();
  const std::string added = URLQueryWithParameters(parameters, has_body ? options : URLQueryOptions{});
  set_form(]]
  SHOWN_BY console ${vectors}/http_request)
set(is_get "if (request->HTTPMethod() == kGet) {")
quoll_defence(a_method_that_nobody_lists_has_a_body FILE ${file}
  TAKES "${is_get}"
  GIVES "if (const std::string m(request->HTTPMethod()); m != \"POST\" && m != \"PUT\" && m != \"DELETE\") {"
  SHOWN_BY console ${vectors}/http_request)
quoll_defence(a_method_that_is_like_get_has_a_body FILE ${file}
  TAKES "${is_get}" GIVES "if (std::string(request->HTTPMethod()).starts_with(kGet)) {"
  SHOWN_BY console ${vectors}/http_request)

# Messages are compared, locked and sent.
set(file quoll/message/extension_message.cpp)
quoll_defence(a_message_asks_its_identifier_first FILE ${file}
  TAKES [[
(messageId().isEqualToString(other.messageId()) &&
                            account().isEqualToString(other.account()))]]
  GIVES "(account().isEqualToString(other.account()) && messageId().isEqualToString(other.messageId()))"
  SHOWN_BY console ${vectors}/message_record)
quoll_defence(a_message_asks_its_account_last FILE ${file}
  TAKES "isEqualToString(other.messageId()) &&" GIVES "isEqualToString(other.messageId()) &"
  SHOWN_BY console ${vectors}/message_record)
set(file quoll/message/command_launcher.cpp)
quoll_defence(a_launch_that_failed_is_answered FILE ${file}
  TAKES "return platform::NSWorkspace::sharedWorkspace()->openURLs("
  GIVES "return true | platform::NSWorkspace::sharedWorkspace()->openURLs("
  SHOWN_BY message Opened/Launching.AnswersWhatTheWorkspaceAnswers/0)
quoll_defence(a_launch_for_messages_that_failed_is_answered FILE ${file}
  TAKES "return LaunchCommands(urls, background);"
  GIVES "return LaunchCommands(urls, background) || !urls.empty();"
  SHOWN_BY message Opened/Launching.AnswersWhatTheWorkspaceAnswers/0)
set(file quoll/message/command_url.cpp)
quoll_defence(a_url_waits_for_its_message FILE ${file}
  TAKES "  const auto lock = synchronized();\n" GIVES ""
  SHOWN_BY message Message.ItsUrlWaitsForItsLock)
quoll_defence(a_message_is_locked_while_its_url_is_made FILE ${file}
  TAKES "  const auto lock = synchronized();\n" GIVES "  synchronized().unlock();\n"
  SHOWN_BY message Message.IsLockedWhileItsUrlIsMade)
set(file quoll/message/html_rendering.cpp)
quoll_defence(html_waits_for_its_message FILE ${file}
  TAKES "    const auto lock = synchronized();\n" GIVES ""
  SHOWN_BY message Message.ItsHtmlWaitsForItsLock)
quoll_defence(html_waits_before_it_reads FILE ${file}
  TAKES [[
    const auto lock = synchronized();
    for (const Value& attachment : attachments().copy()) {
      body += foundation::format("<img src=\"file://%@\"/><br/>", attachment);
    }
]]
  GIVES [[
    for (const Value& attachment : attachments().copy()) {
      body += foundation::format("<img src=\"file://%@\"/><br/>", attachment);
    }
    const auto lock = synchronized();
]]
  SHOWN_BY message Message.ItsHtmlWaitsForItsLock)
