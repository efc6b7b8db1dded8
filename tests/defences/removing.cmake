# What the receiver removes is its own.
quoll_defence(sweep_follows_no_link FILE apps/compose/sweep.cpp
  TAKES "O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC" GIVES "O_RDONLY | O_DIRECTORY | O_CLOEXEC"
  SHOWN_BY mail_client GivenDraftsTest.NothingOfTheUsersOwnIsSweptBehindALink)
quoll_defence(sweep_takes_names_of_drafts FILE apps/compose/draft_name.cpp
  TAKES "return name.size() >= kTime &&" GIVES "return name.size() < kTime || name.size() >= kTime ||"
  SHOWN_BY mail_client GivenDraftsTest.NothingOfTheUsersOwnIsSweptBehindALink)
