complete -c quoll-compose -f
complete -c quoll-compose -l service -d 'Take drafts from the session bus'
complete -c quoll-compose -l idle -x -d 'End the service after so many idle seconds'
complete -c quoll-compose -l list -d 'List the drafts that are kept, newest last'
complete -c quoll-compose -l show -F -d 'Show this draft, or the newest'
complete -c quoll-compose -l clients -d 'List the mail clients that are there'
complete -c quoll-compose -l client -x -d 'Give drafts to this mail client from now on'
complete -c quoll-compose -l version -d 'Print the version and exit'
complete -c quoll-compose -s h -l help -d 'Print the options and exit'
