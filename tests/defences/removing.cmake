# What the receiver removes is its own.
quoll_defence(sweep_follows_no_link FILE apps/compose/sweep.cpp
  TAKES "posix::open_folder(AT_FDCWD, incoming_folder())"
  GIVES "posix::UniqueFd(open(incoming_folder().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))"
  SHOWN_BY mail_client GivenDraftsTest.NothingOfTheUsersOwnIsSweptBehindALink)
quoll_defence(sweep_of_taken_by_name FILE apps/compose/sweep.cpp
  TAKES "!is_hidden_draft_name(name)" GIVES "!(name.starts_with('.') && !is_hidden_draft_name(\"\"))"
  SHOWN_BY mail_client GivenDraftsTest.NothingOfTheUsersOwnIsSweptBehindALink)
quoll_defence(sweep_of_given_by_name FILE apps/compose/given_draft.cpp
  TAKES "return !is_draft_name(name);" GIVES "return name.empty() && !is_draft_name(name);"
  SHOWN_BY mail_client GivenDraftsTest.NothingOfTheUsersOwnIsSweptBehindALink)
quoll_defence(copy_is_in_a_snap FILE apps/compose/given_draft.cpp
  TAKES "copy_path(snap, draft) != copy)" GIVES "copy == copy_path(\"\", draft))"
  SHOWN_BY mail_client GivenDraftsTest.OnlyACopyThatWasMadeIsRemoved)
quoll_defence(copy_is_behind_no_link FILE apps/compose/given_draft.cpp
  TAKES "posix::open_folder(folder.get(), name)" GIVES "posix::UniqueFd(openat(folder.get(), name.c_str(), O_RDONLY))"
  SHOWN_BY mail_client GivenDraftsTest.OnlyACopyThatWasMadeIsRemoved)
quoll_defence(deleting_tells_of_failure FILE apps/compose/draft_list.cpp
  TAKES "if (const int error = draft->remove()) {" GIVES "if (const int error = draft->remove(); error == -1) {"
  SHOWN_BY kept_drafts KeptDrafts.OneThatCannotBeDeletedIsSaidAndStaysListed)
quoll_defence(errors_are_printable FILE apps/compose/main.cpp
  TAKES "foundation::printable(exception.what())" GIVES "exception.what()"
  SHOWN_BY kept_drafts KeptDrafts.NothingControlsTheTerminal)
