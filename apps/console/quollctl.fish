function __quollctl_subcommand
    complete -c quollctl -n __fish_use_subcommand -f -a $argv[1] -d $argv[2]
end
# An option of the subcommands that are named first; the rest goes to complete.
function __quollctl_option
    complete -c quollctl -n "__fish_seen_subcommand_from $argv[1]" $argv[2..]
end

__quollctl_subcommand doctor 'Say why shares do not arrive, and what to do'
__quollctl_subcommand forget 'Remove the copies of what was shared last'
__quollctl_subcommand show 'Print what a quoll:// command URL says'
__quollctl_subcommand url 'Take a URL apart'
__quollctl_subcommand accounts 'Print the shared mail accounts'
__quollctl_subcommand contacts 'Print the shared address book'
__quollctl_subcommand date 'Print a date in the forms that are shared'
__quollctl_subcommand render 'Print a message as HTML'
__quollctl_subcommand launch 'Hand a command to the mail application'
__quollctl_subcommand call 'Answer JSON requests on standard input'
__quollctl_subcommand sample-container 'Write what a mail application shares, made up'

__quollctl_option 'doctor forget show url accounts contacts date render launch' -l json -d 'Print JSON'
__quollctl_option doctor -l fix -d 'Do what is safe to do'
__quollctl_option launch -l background -d 'Leave the application in the background'
__quollctl_option launch -a 'archive delete reply message compose send open'
__quollctl_option sample-container -l form -x -a 'xml binary old' -d 'How to write property lists'
complete -c quollctl -n __fish_use_subcommand -l version -d 'Print the version and exit'
complete -c quollctl -s h -l help -d 'Print the options and exit'
