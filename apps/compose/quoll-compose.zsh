#compdef quoll-compose
local -a drafts clients
drafts=(${(f)"$(quoll-compose --list 2>/dev/null | cut -d ' ' -f 1)"})
clients=(default ${(f)"$(quoll-compose --clients 2>/dev/null |
  sed -n '/cannot be given a draft/d; /in a sandbox that no draft/d; s/^..[^:]*(\(.*\)\.desktop): .*/\1/p')"})
_arguments -S \
  '--service[take drafts from the session bus]' \
  '--idle[end the service after so many idle seconds]:seconds: ' \
  '--resume[go on with the drafts that wait]' \
  '--list[list the drafts, newest last]' \
  '--json[list them for programs]' \
  '--open[open the message file of this draft]:draft:($drafts)' \
  '--ask[have the desktop ask which program shall open this draft]:draft:($drafts)' \
  '--files[show the files of this draft in the file manager]:draft:($drafts)' \
  '--again[give this draft to the mail client again]:draft:($drafts)' \
  '--delete[delete this draft]:draft:($drafts)' \
  '--show[show this draft, or the newest]::draft:_files -g "*.eml"' \
  '--clients[list the mail clients that are there]' \
  '--client[give drafts to this mail client from now on]:client:($clients)' \
  '--check[see whether drafts can be kept]' \
  '(- *)--version[print the version and exit]' \
  '(- *)'{-h,--help}'[print the options and exit]' \
  '*:command URL: '
