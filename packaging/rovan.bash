# SPDX-License-Identifier: Apache-2.0
# Completion of the tools' subcommands, options and choices for bash. It asks each program's own
# help, so that it never offers what the installed program does not have.

# Prints the subcommands and options that the help of "$@" names, one a line.
_rovan_words() {
    "$@" --help 2>/dev/null | awk '
        /^[A-Za-z]/ { subcommands = /^Subcommands:/ }
        /^  -/ {
            count = split($1, names, ",")
            for (i = 1; i <= count; ++i) print names[i]
        }
        subcommands && /^  [a-z]/ { print $1 }'
}

# Prints the choices that the help of "$2"... gives for the option $1, one a line.
_rovan_choices() {
    local option=$1
    shift
    "$@" --help 2>/dev/null | awk -v option="$option" '
        /^  -/ {
            count = split($1, names, ",")
            for (i = 1; i <= count; ++i) {
                if (names[i] == option && $2 ~ /\|/) {
                    choices = $2
                    sub(/[=:].*/, "", choices)
                    gsub(/\|/, "\n", choices)
                    print choices
                }
            }
        }'
}

_rovan() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local command=("${COMP_WORDS[0]}")
    # The first word that is no option is the subcommand, in a program that has some.
    if ((COMP_CWORD > 1)) && _rovan_words "${command[@]}" | grep -qxF -- "${COMP_WORDS[1]}" &&
        [[ ${COMP_WORDS[1]} != -* ]]; then
        command+=("${COMP_WORDS[1]}")
    fi
    local words=
    [[ $before != -* ]] || words=$(_rovan_choices "$before" "${command[@]}")
    if [[ -z $words ]]; then
        words=$(_rovan_words "${command[@]}")
        # Where no subcommand begins with the word, files may.
        [[ $word == -* || ${#command[@]} -eq 1 ]] || words=
    fi
    mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}

complete -o default -F _rovan rovan-bus rovan-config rovan-unit gssip
