#compdef quoll-share
_arguments -S \
  '--title[subject of the draft of a web link]:subject: ' \
  '(--html)--text[plain text, or - for standard input]:text: ' \
  '(--text)--html[styled text, or - for standard input]:HTML: ' \
  '--print[print the command URL instead of opening it]' \
  '--verbose[write the log to standard error too]' \
  '--notify[show on the desktop what went wrong]' \
  '(- *)'{-h,--help}'[print the options and exit]' \
  '*:item:_files'
