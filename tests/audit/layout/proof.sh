# Counting for the scripts that prove something about the tree; sourced by each.
passed=0
failed=0
skipped=0

holds() {
    passed=$((passed + 1))
    printf '  ok      %s\n' "$1"
}

# The second argument says what is wrong.
broken() {
    failed=$((failed + 1))
    printf '  FAILED  %s\n' "$1"
    sed 's/^/            /' <<<"$2"
}

# in_a_clone: what looks at the files that git lists sees nothing elsewhere, and would find nothing wrong.
in_a_clone() {
    if ! git ls-files --error-unmatch check >/dev/null 2>&1; then
        broken "this is a clone of git" "git lists no files here, so nothing could be looked at"
        finish
    fi
}

# skip NAME REASON: it cannot be proven here.
skip() {
    skipped=$((skipped + 1))
    printf '  skip    %s: %s\n' "$1" "$2"
}

# prove NAME COMMAND...: the command succeeds; when it does not, its last lines are shown.
prove() {
    local name=$1 output
    shift
    if output=$("$@" 2>&1 </dev/null); then
        holds "$name"
    else
        broken "$name" "$(tail -n 30 <<<"$output")"
    fi
}

finish() {
    printf '%d passed, %d failed, %d skipped\n' "$passed" "$failed" "$skipped"
    [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
    exit
}
