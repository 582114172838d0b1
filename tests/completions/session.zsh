# Read by a zsh on the test's terminal: TAB completes, C-x d hands over the line and what zsh has
# taken as matches, a line each, and clears it.
fpath=($DATA/zsh/vendor-completions $fpath)
autoload -U compinit
compinit -u
LISTMAX=1000
_matches=()
compadd() {
    local -a hits
    if [[ -z ${@[(r)-[OAD]]} ]]; then
        builtin compadd -O hits "$@"
        _matches+=($hits)
    fi
    builtin compadd "$@"
}
_dump() {
    printf '%s\n' "$BUFFER" $_matches >$ANSWERS
    printf '\0' >$ANSWERS
    BUFFER=
    _matches=()
}
zle -N _dump
bindkey '^I' complete-word
bindkey '^Xd' _dump
printf '\0' >$ANSWERS
