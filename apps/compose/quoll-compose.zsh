#compdef quoll-compose
_arguments -S \
  '--service[take drafts from the session bus]' \
  '--idle[end the service after so many idle seconds]:seconds: ' \
  '--resume[go on with the drafts that wait]' \
  '--list[list the drafts, newest last]' \
  '--show[show this draft, or the newest]::draft:_files -g "*.eml"' \
  '--clients[list the mail clients that are there]' \
  '--client[give drafts to this mail client from now on]:client: ' \
  '--check[see whether drafts can be kept]' \
  '(- *)--version[print the version and exit]' \
  '(- *)'{-h,--help}'[print the options and exit]' \
  '*:command URL: '
