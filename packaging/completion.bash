# Completion of boardctl for bash. completions.py generates the tables from boardctl's help. Each
# table maps a command to lines of words; the word "@" stands for a file, "*" for any text.
declare -gA _boardctl_commands _boardctl_options _boardctl_values _boardctl_arguments
# TABLES

_boardctl() {
    local word=${COMP_WORDS[COMP_CWORD]} command=boardctl option='' known='' row i
    local -a given=() words=() row_words
    # Goes through the words before the cursor: finds the command, its arguments, and whether the
    # last word is an option that still needs its value.
    # The shell splits --board=FILE into three words; the = is one of them.
    for ((i = 1; i < COMP_CWORD; ++i)); do
        local each=${COMP_WORDS[i]}
        if [[ $each == = && $option ]]; then
            continue
        elif [[ $option ]]; then
            option=''
        elif [[ $each == -* ]]; then
            known=$(_boardctl_value "$command" "$each")
            [[ -z $known ]] || option=$each
        elif grep -qxF -- "$each" <<<"${_boardctl_commands[$command]-}"; then
            command+=" $each"
        else
            given+=("$each")
        fi
    done
    [[ $word != = ]] || word=''

    if [[ $option ]]; then
        read -ra words <<<"$known"
    elif [[ $word == -* ]]; then
        mapfile -t words <<<"${_boardctl_options[$command]}"
        [[ $command == boardctl ]] || words+=(--board --sim --format)
    elif [[ ${_boardctl_commands[$command]-} ]]; then
        mapfile -t words <<<"${_boardctl_commands[$command]}"
    else
        while read -ra row_words; do
            for ((i = 0; i < ${#given[@]}; ++i)); do
                [[ ${row_words[i]-} == [@*] || ${row_words[i]-} == "${given[i]}" ]] || continue 2
            done
            words+=("${row_words[i]-}")
        done <<<"${_boardctl_arguments[$command]-}"
    fi

    COMPREPLY=()
    for row in "${words[@]}"; do
        case $row in
        '' | '*') ;;
        @)
            compopt -o filenames 2>/dev/null
            mapfile -t -O "${#COMPREPLY[@]}" COMPREPLY < <(compgen -f -- "$word")
            ;;
        "$word"*) COMPREPLY+=("$row") ;;
        esac
    done
}

# Prints the possible values of an option of the command or of boardctl itself; nothing for a flag.
_boardctl_value() {
    local path name values
    for path in "$1" boardctl; do
        while read -r name values; do
            [[ $name != "$2" ]] || {
                echo "$values"
                return
            }
        done <<<"${_boardctl_values[$path]-}"
    done
}

complete -F _boardctl boardctl
