# Read by a bash on the test's terminal: C-x i puts all that may follow into the line, C-x d hands
# the line over and clears it.
if [[ ${WITH_PACKAGE-} ]]; then
    . /usr/share/bash-completion/bash_completion
else
    set -u
    . "$DATA/bash-completion/completions/akhostmgmt"
fi
_dump() {
    printf '%s\0' "$READLINE_LINE" >"$ANSWERS"
    READLINE_LINE= READLINE_POINT=0
}
bind -x '"\C-xd": _dump'
bind '"\C-xi": insert-completions'
printf '\0' >"$ANSWERS"
