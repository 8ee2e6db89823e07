# fish completion for vorn-openfiles

set -g __vorn_openfiles_columns service pid user host path filename time full_path hidden folder deleted share command owner login unit started fd mode size space modified inode device locks

function __vorn_openfiles_conditions
    for column in service user
        vorn-openfiles --timeout 2 --print0 $column 2>/dev/null | sort -zu | string split0 | string replace -r '^' "$column="
    end
    printf '%s=\n' $__vorn_openfiles_columns
end

set -l list 'not __fish_seen_subcommand_from services check metrics busy idle disconnect events help'
set -l selection 'not __fish_seen_subcommand_from services check metrics busy idle events help'
set -l disconnect '__fish_seen_subcommand_from disconnect'
set -l busy '__fish_seen_subcommand_from busy idle'
set -l source 'not __fish_seen_subcommand_from services check busy idle events help'

complete -c vorn-openfiles -n '__fish_is_first_token' -a 'list services check metrics busy idle disconnect events help'
complete -c vorn-openfiles -n '__fish_seen_subcommand_from help' -x -a 'list services check metrics busy idle disconnect events'
complete -c vorn-openfiles -s h -l help -d 'Show help'
complete -c vorn-openfiles -s V -l version -d 'Show the version'
complete -c vorn-openfiles -n $source -l by -x -a 'share volume' -d 'Files under shares or anywhere on volumes'
complete -c vorn-openfiles -n $source -l jobs -x -d 'Threads'
complete -c vorn-openfiles -n $source -l source -x -a 'auto iterator walk' -d 'Where descriptors are read'
complete -c vorn-openfiles -n 'not __fish_seen_subcommand_from services events help' -l timeout -x -d 'Give up after so many seconds'
complete -c vorn-openfiles -n '__fish_seen_subcommand_from metrics' -l no-user -d 'Leave the label out that tells the user'
complete -c vorn-openfiles -n '__fish_seen_subcommand_from metrics' -l output -r -F -d 'Replace this file'
complete -c vorn-openfiles -n 'not __fish_seen_subcommand_from metrics events help' -l json -d 'As JSON'
complete -c vorn-openfiles -n 'not __fish_seen_subcommand_from metrics events help' -l schema -x -a '1 2' -d 'Form of JSON'
complete -c vorn-openfiles -n $list -l header -d 'A first record about the list'
complete -c vorn-openfiles -n $list -l time -d 'Add last access times'
complete -c vorn-openfiles -n $selection -l where -x -a '(__vorn_openfiles_conditions)' -d 'Column equals text'
complete -c vorn-openfiles -n $selection -l match -x -a '(__vorn_openfiles_conditions)' -d 'Column contains text'
complete -c vorn-openfiles -n $selection -l not-where -x -a '(__vorn_openfiles_conditions)' -d 'Column does not equal text'
complete -c vorn-openfiles -n $selection -l not-match -x -a '(__vorn_openfiles_conditions)' -d 'Column does not contain text'
complete -c vorn-openfiles -n $selection -l hidden -x -a 'yes no only' -d 'Files in hidden folders'
complete -c vorn-openfiles -n $selection -l folders -x -a 'yes no only' -d 'Folders'
complete -c vorn-openfiles -n $selection -l deleted -x -a 'yes no only' -d 'Deleted files'
complete -c vorn-openfiles -n $list -l sort -x -a '(__fish_append , $__vorn_openfiles_columns)' -d 'Order by columns'
complete -c vorn-openfiles -n $list -l group-by -x -a '$__vorn_openfiles_columns' -d 'Sections'
complete -c vorn-openfiles -n $selection -l since -x -d 'Of processes started within'
complete -c vorn-openfiles -n $list -l reverse -d 'The other way round'
complete -c vorn-openfiles -n $list -l limit -x -d 'The first so many'
complete -c vorn-openfiles -n $list -l format -x -a 'table json jsonl csv' -d 'Output format'
complete -c vorn-openfiles -n $list -l print0 -x -a '$__vorn_openfiles_columns' -d 'One column, NUL behind each'
complete -c vorn-openfiles -n 'not __fish_seen_subcommand_from services check metrics disconnect events help' -l pids -d 'Process ids'
complete -c vorn-openfiles -n $list -s o -l columns -x -a '(__fish_append , $__vorn_openfiles_columns)' -d 'Columns to show'
complete -c vorn-openfiles -n $list -l wide -d 'Shorten nothing'
complete -c vorn-openfiles -n $list -l no-header -d 'No headings'
complete -c vorn-openfiles -n 'not __fish_seen_subcommand_from services check busy idle events help' -l sum -x -a 'size space' -d 'Sizes of what is counted'
complete -c vorn-openfiles -n $list -l count-by -x -a '(__fish_append , $__vorn_openfiles_columns)' -d 'Count by columns'
complete -c vorn-openfiles -n $list -l watch -d 'Keep looking'
complete -c vorn-openfiles -n $busy -l wait -d 'Look until nothing is in use'
complete -c vorn-openfiles -n $busy -l source -x -a 'auto iterator walk' -d 'Where descriptors are read'
complete -c vorn-openfiles -n $busy -l inside -d 'Nothing outside of this PID namespace matters'
complete -c vorn-openfiles -n 'not __fish_seen_subcommand_from services check metrics disconnect events help' -s q -l quiet -d 'Answer by status alone'
complete -c vorn-openfiles -n $list -l strict -d 'Fail when incomplete'
complete -c vorn-openfiles -n $disconnect -l yes -d 'Do not ask'
complete -c vorn-openfiles -n $disconnect -l dry-run -d 'End nothing'
complete -c vorn-openfiles -n $disconnect -l grace -x -d 'Seconds that they may take to end'
complete -c vorn-openfiles -n $disconnect -l force -d 'Kill what is still there then'
complete -c vorn-openfiles -n '__fish_seen_subcommand_from events' -l journal -d 'Into the journal of systemd'
complete -c vorn-openfiles -n '__fish_seen_subcommand_from events' -l interval -x -a never -d 'Seconds between looks at volumes that are not watched'
complete -c vorn-openfiles -n '__fish_seen_subcommand_from events' -l heartbeat -x -d 'Seconds between signs of life'
