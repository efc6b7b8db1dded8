function __quoll_compose_drafts
    quoll-compose --list 2>/dev/null | string replace -r '^(\S+)  (.*)$' '$1\t$2'
end
function __quoll_compose_clients
    quoll-compose --clients 2>/dev/null | string match -v '*cannot be given a draft*' |
        string match -v '*in a sandbox that no draft*' |
        string replace -fr '^..([^:]*) \((.*)\.desktop\): .*$' '$2\t$1'
    echo default
end
complete -c quoll-compose -f
complete -c quoll-compose -l service -d 'Take drafts from the session bus'
complete -c quoll-compose -l idle -x -d 'End the service after so many idle seconds'
complete -c quoll-compose -l resume -d 'Go on with the drafts that wait'
complete -c quoll-compose -l list -d 'List the drafts, newest last'
complete -c quoll-compose -l json -d 'List them for programs'
complete -c quoll-compose -l open -x -a '(__quoll_compose_drafts)' -d 'Open the message file of this draft'
complete -c quoll-compose -l ask -x -a '(__quoll_compose_drafts)' -d 'Have the desktop ask which program shall open this draft'
complete -c quoll-compose -l files -x -a '(__quoll_compose_drafts)' -d 'Show the files of this draft in the file manager'
complete -c quoll-compose -l again -x -a '(__quoll_compose_drafts)' -d 'Give this draft to the mail client again'
complete -c quoll-compose -l delete -x -a '(__quoll_compose_drafts)' -d 'Delete this draft'
complete -c quoll-compose -l show -F -d 'Show this draft, or the newest'
complete -c quoll-compose -l clients -d 'List the mail clients that are there'
complete -c quoll-compose -l client -x -a '(__quoll_compose_clients)' -d 'Give drafts to this mail client from now on'
complete -c quoll-compose -l check -d 'See whether drafts can be kept'
complete -c quoll-compose -l version -d 'Print the version and exit'
complete -c quoll-compose -s h -l help -d 'Print the options and exit'
