# fish completion for vorn-openfiles

set -g __vorn_openfiles_columns service pid user host path filename time full_path hidden folder deleted

function __vorn_openfiles_conditions
    for column in service user
        vorn-openfiles --timeout 2 --print0 $column 2>/dev/null | sort -zu | string split0 | string replace -r '^' "$column="
    end
    printf '%s=\n' pid host path filename time
end

set -l list 'not __fish_seen_subcommand_from services check metrics help'
set -l source 'not __fish_seen_subcommand_from services check help'

complete -c vorn-openfiles -n '__fish_is_first_token' -a 'list services check metrics help'
complete -c vorn-openfiles -n '__fish_seen_subcommand_from help' -x -a 'list services check metrics'
complete -c vorn-openfiles -s h -l help -d 'Show help'
complete -c vorn-openfiles -s V -l version -d 'Show the version'
complete -c vorn-openfiles -n $source -l by -x -a 'share volume' -d 'Files under shares or anywhere on volumes'
complete -c vorn-openfiles -n 'not __fish_seen_subcommand_from services help' -l timeout -x -d 'Give up after so many seconds'
complete -c vorn-openfiles -n '__fish_seen_subcommand_from metrics' -l output -r -F -d 'Replace this file'
complete -c vorn-openfiles -n 'not __fish_seen_subcommand_from metrics help' -l json -d 'As JSON'
complete -c vorn-openfiles -n $list -l time -d 'Add last access times'
complete -c vorn-openfiles -n $list -l where -x -a '(__vorn_openfiles_conditions)' -d 'Column equals text'
complete -c vorn-openfiles -n $list -l match -x -a '(__vorn_openfiles_conditions)' -d 'Column contains text'
complete -c vorn-openfiles -n $list -l not-where -x -a '(__vorn_openfiles_conditions)' -d 'Column does not equal text'
complete -c vorn-openfiles -n $list -l not-match -x -a '(__vorn_openfiles_conditions)' -d 'Column does not contain text'
complete -c vorn-openfiles -n $list -l hidden -x -a 'yes no only' -d 'Files in hidden folders'
complete -c vorn-openfiles -n $list -l folders -x -a 'yes no only' -d 'Folders'
complete -c vorn-openfiles -n $list -l deleted -x -a 'yes no only' -d 'Deleted files'
complete -c vorn-openfiles -n $list -l sort -x -a 'service pid user host path filename' -d 'Order by column'
complete -c vorn-openfiles -n $list -l reverse -d 'The other way round'
complete -c vorn-openfiles -n $list -l limit -x -d 'The first so many'
complete -c vorn-openfiles -n $list -l format -x -a 'table json jsonl csv' -d 'Output format'
complete -c vorn-openfiles -n $list -l print0 -x -a '$__vorn_openfiles_columns' -d 'One column, NUL behind each'
complete -c vorn-openfiles -n $list -l pids -d 'Process ids'
complete -c vorn-openfiles -n $list -l columns -x -a '(__fish_append , $__vorn_openfiles_columns)' -d 'Columns to show'
complete -c vorn-openfiles -n $list -l no-header -d 'No headings'
complete -c vorn-openfiles -n $list -l count-by -x -a '(__fish_append , $__vorn_openfiles_columns)' -d 'Count by columns'
complete -c vorn-openfiles -n $list -l watch -d 'Keep looking'
complete -c vorn-openfiles -n $list -s q -l quiet -d 'Answer by status alone'
complete -c vorn-openfiles -n $list -l strict -d 'Fail when incomplete'
