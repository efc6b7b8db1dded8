#compdef quoll-share
_arguments -S \
  '*--to[a recipient]:address: ' \
  '*--cc[a recipient of a copy]:address: ' \
  '*--bcc[a recipient whom the others do not see]:address: ' \
  '--subject[subject of the draft]:subject: ' \
  '--title[what is shared is called this; without --subject the subject]:title: ' \
  '(--html)--text[plain text, or - for standard input]:text: ' \
  '(--text)--html[styled text, or - for standard input]:HTML: ' \
  {-0,--null}'[read more items, each ended by a zero byte]' \
  '*--descriptor[the bytes of an open descriptor, as a file]:number: ' \
  '--clipboard[share what the clipboard holds]' \
  '--print[print the command URL instead of opening it]' \
  '--json[print what came of it for programs, as JSON]' \
  '--verbose[write each step and its time to standard error]' \
  '--notify[show on the desktop what went wrong]' \
  '--progress[write the progress to a pipe; closing it cancels]:number: ' \
  '(- *)--version[print the version and exit]' \
  '(- *)'{-h,--help}'[print the options and exit]' \
  '*:item:_files'
