# shellcheck shell=bash
# Completion of kelvo-touchctl for bash.

_kelvo_touchctl() {
    local current=${COMP_WORDS[COMP_CWORD]} quote='' word
    local before=() asked=() candidates=()
    # The shell hands on the words as they were typed; the program takes them without their quotes.
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        before+=("$(printf '%s' "$word" | xargs printf '%s' 2>/dev/null)")
    done
    [[ $current == -* ]] && asked=(--options)
    mapfile -t candidates < <("${COMP_WORDS[0]}" complete "${asked[@]}" -- "${before[@]}" 2>/dev/null)
    [[ $current == [\"\']* ]] && quote=${current:0:1}
    COMPREPLY=()
    for word in "${candidates[@]}"; do
        [[ $quote ]] || printf -v word '%q' "$word"
        [[ $word == "${current#"$quote"}"* ]] && COMPREPLY+=("$word")
    done
}
complete -o default -F _kelvo_touchctl kelvo-touchctl
