# What the entry of browsers takes, and what it can do meanwhile (docs/security.md, docs/limits.md).
set(file apps/share/share_program.cpp)
quoll_defence(browsers_are_read_in_the_sandbox FILE ${file}
  TAKES "sandbox::confine(needs_of({}, container, image_helper_, folder_helper_));"
  GIVES "static_cast<void>(&needs_of);"
  SHOWN_BY sandbox BrowserSandbox.NoFileIsReadAndNoFolderListed)
quoll_defence(browsers_make_one_draft FILE ${file}
  TAKES ".most_urls = 1" GIVES ".most_urls = 2"
  SHOWN_BY sandbox BrowserSandbox.TheLauncherMakesOneDraftAndNothingElse)

set(file apps/share/request/browser_request.cpp)
quoll_defence(browsers_name_no_file FILE ${file}
  TAKES "if (is_shareable_link(link)) {" GIVES "if (is_shareable_link(link) || true) {"
  SHOWN_BY browser_request BrowserRequest.NoPathAndNoFileUrlIsTaken)
quoll_defence(browsers_link_is_no_path FILE apps/share/request/selection.cpp
  TAKES "add_resolved(link, resolve_link(link));" GIVES "add(link);"
  SHOWN_BY share_browser ShareBrowser.ALinkIsNoPath)
quoll_defence(browsers_words_are_ours FILE ${file}
  TAKES "if (missing == kMissing.end()) {\n      return false;"
  GIVES "if (missing == kMissing.end()) {\n      return true;"
  SHOWN_BY browser_request BrowserRequest.WhatTheBrowserCouldNotGiveIsToldInOurWords)
quoll_defence(browsers_json_is_flat FILE ${file}
  TAKES "return ++depth_ == 1;" GIVES "return ++depth_ > 0;"
  SHOWN_BY browser_request BrowserRequest.WhatIsNoFrameIsRefused)
quoll_defence(browsers_text_has_an_end FILE ${file}
  TAKES "text_bytes_ > kMostTextBytes" GIVES "text_bytes_ > 2 * kMostTextBytes"
  SHOWN_BY browser_request BrowserRequest.TextsAndLinksHaveAnEnd)
quoll_defence(browsers_pictures_have_an_end FILE ${file}
  TAKES "picture_bytes_ <= kMostPictureBytes" GIVES "picture_bytes_ <= 2 * kMostPictureBytes"
  SHOWN_BY browser_request BrowserRequest.PicturesHaveAnEnd)
quoll_defence(browsers_pictures_are_counted FILE ${file}
  TAKES "++finished_pictures_;" GIVES "static_cast<void>(finished_pictures_);"
  SHOWN_BY browser_request BrowserRequest.PicturesThatAreNoneHaveAnEndToo)
quoll_defence(browsers_pictures_are_pictures FILE ${file}
  TAKES "if (begins_as_image(picture.beginning)) {" GIVES "if (!picture.beginning.empty()) {"
  SHOWN_BY browser_request BrowserRequest.BytesThatAreNoPictureAreLeftOut)
quoll_defence(browsers_frame_has_an_end FILE apps/share/request/browser_port.cpp
  TAKES "length <= kLongestFrame &&" GIVES "length <= 2 * kLongestFrame &&"
  SHOWN_BY browser_request BrowserPort.AFrameIsWholeAndHas16MiBAtMost)
quoll_defence(browsers_log_stays_empty FILE apps/share/browser_main.cpp
  TAKES "  say_nothing_to_the_browsers_log();\n  return" GIVES "  static_cast<void>(&say_nothing_to_the_browsers_log);\n  return"
  SHOWN_BY share_browser ShareBrowser.NothingGoesIntoTheBrowsersLog)
