# Completion of vesk's command line in bash.
# Put it into /usr/share/bash-completion/completions/vesk, or source it in ~/.bashrc.

# Splits what stands before the cursor into words without their quotes, in the array `words`. `start`
# is where the last one begins in it, `open` the quote that is open there.
_vesk_split() {
    local text=$1 char word= in_word= i
    words=() open= start=${#text}
    for ((i = 0; i < ${#text}; i++)); do
        char=${text:i:1}
        if [[ -z $open && $char == [[:space:]] ]]; then
            [[ -z $in_word ]] || words+=("$word")
            word= in_word= start=${#text}
            continue
        fi
        [[ -n $in_word ]] || start=$i
        in_word=1
        if [[ -n $open && $char == "$open" ]]; then
            open=
        elif [[ -z $open && $char == [\"\'] ]]; then
            open=$char
        elif [[ $char == \\ && $open != \' ]]; then
            ((i += 1))
            word+=${text:i:1}
        else
            word+=$char
        fi
    done
    words+=("$word")
}

_vesk() {
    local line=${COMP_LINE:0:COMP_POINT} words open start candidate description raw kept
    _vesk_split "$line"
    raw=${line:start}
    # Of an unquoted word readline replaces only what stands behind the last of these.
    kept=
    if [[ -z $open && $raw == *[=:]* ]]; then
        kept=${raw%"${raw##*[=:]}"}
    fi
    COMPREPLY=()
    while IFS=$'\t' read -r candidate description; do
        [[ $candidate != *[=/:] ]] || compopt -o nospace 2> /dev/null
        if [[ -z $open ]]; then
            printf -v candidate %q "$candidate"
            candidate=${candidate/#'\~'/'~'}
            candidate=${candidate#"$kept"}
        fi
        # Two tabs only list: there is room to say what each is.
        if [[ $COMP_TYPE == 63 && -n $description ]]; then
            candidate+="  ($description)"
        fi
        COMPREPLY+=("$candidate")
    done < <(vesk --complete "${words[@]:1}" 2> /dev/null)
    if [[ $COMP_TYPE == 63 && ${#COMPREPLY[@]} == 1 ]]; then
        COMPREPLY=("${COMPREPLY[0]%%  (*}")
    fi
}

complete -o default -F _vesk vesk
