# Completion of the command ferrobank for fish.

set -l commands status check du share serve restart export uninstall
complete -c ferrobank -f
complete -c ferrobank -n "not __fish_seen_subcommand_from $commands" -l help -d 'Show the commands'
complete -c ferrobank -n "not __fish_seen_subcommand_from $commands" -l version -d 'Show the version'
complete -c ferrobank -n "not __fish_seen_subcommand_from $commands" -a status -d 'Show the state of the drive'
complete -c ferrobank -n "not __fish_seen_subcommand_from $commands" -a check -d 'Check that everything is in order'
complete -c ferrobank -n "not __fish_seen_subcommand_from $commands" -a du -d 'Show what each folder holds, takes and saves'
complete -c ferrobank -n "not __fish_seen_subcommand_from $commands" -a share -d 'Share repeated data now, or pause that'
complete -c ferrobank -n "not __fish_seen_subcommand_from $commands" -a serve -d 'Mount the drive and keep it so'
complete -c ferrobank -n "not __fish_seen_subcommand_from $commands" -a restart -d 'Mount the drive anew, or start it'
complete -c ferrobank -n "not __fish_seen_subcommand_from $commands" -a export -d 'Copy all files to a folder and verify the copy'
complete -c ferrobank -n "not __fish_seen_subcommand_from $commands" -a uninstall -d 'Remove the drive from this computer'
complete -c ferrobank -n '__fish_seen_subcommand_from status check du' -l json -d 'Print JSON'
complete -c ferrobank -n '__fish_seen_subcommand_from check' -l full -d 'Read every file'
complete -c ferrobank -n '__fish_seen_subcommand_from check' -l acknowledge -d 'Settle what was found before'
complete -c ferrobank -n '__fish_seen_subcommand_from du' -a '(__fish_complete_directories)'
complete -c ferrobank -n '__fish_seen_subcommand_from share' -a 'now pause resume'
complete -c ferrobank -n '__fish_seen_subcommand_from restart' -l keep-mounted -d 'Only take up an installed update'
complete -c ferrobank -n '__fish_seen_subcommand_from uninstall' -l export -r -a '(__fish_complete_directories)' -d 'Copy the files there first'
complete -c ferrobank -n '__fish_seen_subcommand_from uninstall' -l delete-store -d 'Delete the data for good'
complete -c ferrobank -n '__fish_seen_subcommand_from uninstall' -l yes -d 'Delete without a question'
complete -c ferrobank -n '__fish_seen_subcommand_from export' -a '(__fish_complete_directories)'
