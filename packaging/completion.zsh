#compdef boardctl
# Completion of boardctl for zsh. completions.py generates the tables from boardctl's help. Each
# table maps a command to lines of words; the word "@" stands for a file, "*" for any text.
local -A _boardctl_commands _boardctl_options _boardctl_values _boardctl_arguments
# TABLES

local command=boardctl option='' known='' each row i
local -a given table row_words offered
local word=${words[CURRENT]}

# Prints the possible values of an option of the command or of boardctl itself; nothing for a flag.
_boardctl_value() {
    local line
    for line in ${(f)_boardctl_values[$command]} ${(f)_boardctl_values[boardctl]}; do
        [[ ${line%% *} == $1 ]] && { print -r -- ${line#* }; return }
    done
}

# Goes through the words before the cursor: finds the command, its arguments, and whether the last
# word is an option that still needs its value.
for each in ${words[2,CURRENT-1]}; do
    if [[ -n $option ]]; then
        option=''
    elif [[ $each == -*=* ]]; then
        :
    elif [[ $each == -* ]]; then
        known=$(_boardctl_value $each)
        [[ -n $known ]] && option=$each
    elif [[ -n ${(M)${(f)_boardctl_commands[$command]}:#$each:*} ]]; then
        command+=" $each"
    else
        given+=($each)
    fi
done

if [[ -z $option && $word == --*=* ]]; then
    known=$(_boardctl_value ${word%%=*})
    [[ -n $known ]] && option=${word%%=*}
    compset -P '*='
fi
if [[ -n $option ]]; then
    offered=(${=known})
elif [[ $word == -* ]]; then
    table=(${(f)_boardctl_options[$command]})
    [[ $command == boardctl ]] || table+=(${(M)${(f)_boardctl_options[boardctl]}:#--(board|sim|format):*})
    _describe -o option table
    return
elif [[ -n $_boardctl_commands[$command] ]]; then
    table=(${(f)_boardctl_commands[$command]})
    _describe command table
    return
else
    for row in ${(f)_boardctl_arguments[$command]}; do
        row_words=(${=row})
        for ((i = 1; i <= $#given; ++i)); do
            [[ $row_words[i] == [@*] || $row_words[i] == $given[i] ]] || continue 2
        done
        offered+=($row_words[i])
    done
fi
if (($offered[(Ie)@])); then
    _files
else
    offered=(${(u)offered:#\*})
    (($#offered)) && compadd -a offered
fi
