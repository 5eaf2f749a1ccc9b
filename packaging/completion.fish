# Completion of boardctl for fish. completions.py generates the tables from boardctl's help. Each
# row is a command, a tab and words, of which "@" stands for a file and "*" for any text. A
# description follows another tab.
# TABLES

# Prints the rows of a table that belong to a command.
function __boardctl_rows --argument-names command table
    string replace --filter -- $command\t '' $$table
end

# Prints the possible values of an option of the command or of boardctl itself; nothing for a flag.
function __boardctl_value --argument-names command option
    for path in $command boardctl
        set -l values (string replace --filter -- $path\t"$option " '' $_boardctl_values)
        if set -q values[1]
            string split ' ' -- $values[1]
            return
        end
    end
end

function __boardctl_complete
    set -l word (commandline --current-token)
    set -l command boardctl
    set -l option ''
    set -l offered
    set -l given
    set -l before ''
    # Goes through the words before the cursor: finds the command, its arguments, and whether the
    # last word is an option that still needs its value.
    for each in (commandline --tokenize --cut-at-cursor --current-process)[2..]
        if test -n "$option"
            set option ''
        else if string match --quiet -- '-*' $each
            set -l known (__boardctl_value $command $each)
            set -q known[1]; and set option $each
        else if contains -- $each (__boardctl_rows $command _boardctl_commands | string replace -r '\t.*' '')
            set command "$command $each"
        else
            set -a given $each
        end
    end

    if test -z "$option"; and string match --quiet -- '--*=*' $word
        set option (string split --max 1 = -- $word)[1]
        set before $option=
        set word (string replace -- $before '' $word)
    end
    if test -n "$option"
        set offered (__boardctl_value $command $option)
    else if string match --quiet -- '-*' $word
        __boardctl_rows $command _boardctl_options
        if test $command != boardctl
            __boardctl_rows boardctl _boardctl_options | string match -r -- '^--(?:board|sim|format)\t.*'
        end
        return
    else if set -l commands (__boardctl_rows $command _boardctl_commands)
        printf '%s\n' $commands
        return
    else
        for row in (__boardctl_rows $command _boardctl_arguments)
            set -l words (string split ' ' -- $row)
            set -l i 1
            while test $i -le (count $given); and contains -- "$words[$i]" @ '*' $given[$i]
                set i (math $i + 1)
            end
            test $i -gt (count $given); and set -a offered $words[$i]
        end
    end
    for each in $offered
        switch $each
            case '\*'
            case @
                printf '%s\n' $before(__fish_complete_path $word)
            case '*'
                echo $before$each
        end
    end
end

complete --command boardctl --no-files --arguments '(__boardctl_complete)'
