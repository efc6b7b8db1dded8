# What a stranger's HTML may become in a draft, see docs/security.md.
set(xml quoll/linux/xml)
quoll_defence(html_link_schemes FILE ${xml}/allowed_link.cpp
  TAKES [["mailto", "ftp", "tel"]] GIVES [["mailto", "ftp", "javascript"]]
  SHOWN_BY xml MailHtml.KeepsLinksOfFiveSchemesOnly)
quoll_defence(styled_link_schemes FILE ${xml}/allowed_link.cpp
  TAKES [["http", "https", "mailto"]] GIVES [["http", "https", "data"]]
  SHOWN_BY xml StyledLinks.HaveFiveSchemesOnly)
quoll_defence(html_controls_in_links FILE ${xml}/allowed_link.cpp
  TAKES "without_controls(text, [&link](std::string_view piece) { link += piece; });"
  GIVES "link = text;"
  SHOWN_BY xml MailHtml.KeepsLinksOfFiveSchemesOnly)
quoll_defence(html_pictures FILE ${xml}/allowed_link.cpp
  TAKES [[kSourceSchemes{"cid"}]] GIVES [[kSourceSchemes{"http"}]]
  SHOWN_BY xml MailHtml.DropsWhatIsNotMail)
quoll_defence(html_hidden_text FILE ${xml}/css.cpp
  TAKES [[inherited.hidden || value == "none"]] GIVES [[inherited.hidden && value == "none"]]
  SHOWN_BY xml MailHtml.HidesNothing)
quoll_defence(html_invisible_colours FILE ${xml}/mail_look.cpp
  TAKES "kLeastDifference = 64" GIVES "kLeastDifference = 0"
  SHOWN_BY xml MailHtml.HidesNothing)
quoll_defence(html_small_letters FILE ${xml}/mail_look.cpp
  TAKES "kSmallestSize = 6" GIVES "kSmallestSize = 0"
  SHOWN_BY xml MailHtml.HidesNothing)
quoll_defence(html_font_names FILE ${xml}/mail_look.cpp
  TAKES "!std::ranges::all_of(font, is_name_byte)" GIVES "!std::ranges::any_of(font, is_name_byte)"
  SHOWN_BY xml MailHtml.HidesNothing)
quoll_defence(html_is_escaped FILE ${xml}/markup.cpp
  TAKES [[return "&lt;";]] GIVES [[return "<";]]
  SHOWN_BY xml MailHtml.ShowsAShareAsItWasWritten)
quoll_defence(html_body_length FILE ${xml}/mail_document.cpp
  TAKES "std::size_t{128} << 20U" GIVES "std::size_t{256} << 20U"
  SHOWN_BY xml MailLimits.ABodyHas128MiB)
quoll_defence(html_open_elements FILE ${xml}/html_reader.cpp
  TAKES "262'144" GIVES "524'288"
  SHOWN_BY xml MailLimits.ElementsAre262144Deep)
quoll_defence(html_nested_blocks FILE ${xml}/mail_html.cpp
  TAKES "kDeepest = 128" GIVES "kDeepest = 256"
  SHOWN_BY xml MailLimits.BlocksAre128Deep)
quoll_defence(html_nested_quotes FILE ${xml}/text_form.cpp
  TAKES "kWidestIndent = 32" GIVES "kWidestIndent = 64"
  SHOWN_BY xml MailText.HasQuotes)
