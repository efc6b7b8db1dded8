#compdef quollctl
local -a help=('(- *)'{-h,--help}'[print the options and exit]')
local json='--json[print JSON]'
local -a subcommands=(
  'doctor:say why shares do not arrive, and what to do'
  'forget:remove the copies of what was shared last'
  'show:print what a quoll\:// command URL says'
  'url:take a URL apart'
  'accounts:print the shared mail accounts'
  'contacts:print the shared address book'
  'date:print a date in the forms that are shared'
  'render:print a message as HTML'
  'launch:hand a command to the mail application'
  'call:answer JSON requests on standard input'
  'sample-container:write what a mail application shares, made up'
)
if ((CURRENT == 2)); then
  _describe subcommand subcommands
  _arguments $help '(- *)--version[print the version and exit]'
  return
fi
shift words
((CURRENT--))
case $words[1] in
  doctor) _arguments $help $json '--fix[do what is safe to do]' ;;
  show | url) _arguments $help $json '1:URL:_urls' ;;
  accounts | contacts | forget) _arguments $help $json ;;
  date) _arguments $help $json '1:date: ' ;;
  render) _arguments $help $json '1:message:_files' ;;
  launch)
    _arguments $help $json '--background[leave the application in the background]' \
      '1:command:(archive delete reply message compose send open)' '*:message:_files'
    ;;
  call) _arguments $help ;;
  sample-container)
    _arguments $help '--form[how to write the property lists]:form:(xml binary old)' \
      '1:folder:_directories'
    ;;
esac
