# Counting for ./check, which sources it: runs proofs, keeps what each printed in the folder $logs, and adds up what was
# passed, failed and skipped. Nothing gets lost: what cannot run is skipped with its reason, and a proof that counts
# nothing, stops halfway or is never heard of again has failed.
#
# With must_run=yes before it, a proof may not be left out: if it cannot run, it has failed.

# counts LOG: what a program counted, by GoogleTest's closing lines or by lines "N passed, N failed, N skipped": passed,
# failed, skipped. Nothing when it counted nothing.
counts() {
    awk '
        /^\[==========\] Running [0-9]+ test/ { counted = 1 }
        /^\[  PASSED  \] [0-9]+ test/ { passed += $4 }
        /^\[  FAILED  \] [0-9]+ test/ { failed += $4 }
        /^\[  SKIPPED \] [0-9]+ test/ { skipped += $4 }
        /^  YOU HAVE [0-9]+ DISABLED TEST/ { skipped += $3 }
        /^[0-9]+ passed, [0-9]+ failed(, [0-9]+ skipped)?$/ { passed += $1; failed += $3; skipped += $5; counted = 1 }
        END { if (counted) print passed + 0, failed + 0, skipped + 0 }' "$1"
}

# halfway LOG: more of GoogleTest's programs began than came to an end.
halfway() {
    [ "$(grep -c '^\[==========\] Running [0-9]' "$1")" -gt "$(grep -c '^\[  PASSED  \] [0-9]' "$1")" ]
}

# skips LOG: each skip that has a reason, as "own NAME: REASON" when a script of ours says so and as "test NAME: REASON"
# when GoogleTest does.
skips() {
    awk '
        /^  skip    ..*: ..*/ { print "own " substr($0, 11) }
        /^\[ RUN      \] / { reason = "" }
        /^\[  SKIPPED \] .* \([0-9]+ ms\)$/ { if (reason != "") print "test " $4 ": " reason; reason = "" }
        /: Skipped$/ { reading = 1; next }
        /^$/ || /^\[/ { reading = 0 }
        reading { reason = reason (reason == "" ? "" : " ") $0 }' "$1"
}

log_of() {
    echo "$logs/${1//[ \/]/_}.log"
}

# record NAME PASSED FAILED SKIPPED SECONDS REASON: keeps the counts, and shows them.
record() {
    local name=$1 passed=$2 failed=$3 skipped=$4 seconds=$5 reason=${6:-} log said
    log=$(log_of "$name")
    said=$(printf '%6d passed' "$passed")
    [ "$failed" -eq 0 ] || said+=", $failed failed"
    [ "$skipped" -eq 0 ] || said+=", $skipped skipped"
    if [ "$failed" -gt 0 ]; then
        printf '  FAILED  %-34s %s  %4d s   %s\n' "$name" "$said" "$seconds" "$log"
        [ -z "$reason" ] || sed 's/^/            /' <<<"$reason"
    elif [ "$passed" -eq 0 ]; then
        printf '  skip    %-34s %s\n' "$name" "$reason"
    else
        printf '  ok      %-34s %s  %4d s\n' "$name" "$said" "$seconds"
    fi
    echo "$passed $failed $skipped" >"$log.count"
    [ "$failed" -eq 0 ]
}

# skip NAME REASON: a proof that is not tried, because it could not run.
skip() {
    local log
    log=$(log_of "$1")
    echo "$2" >>"$log"
    if [ -z "$2" ]; then
        record "$1" 0 1 0 0 "it cannot run and does not say why"
    elif [ -n "${must_run:-}" ]; then
        record "$1" 0 1 0 0 "could not run: $2"
    else
        echo "$1: $2" >"$log.skips"
        record "$1" 0 0 1 0 "$2"
    fi
}

# prove NAME COMMAND...: a command that counts what it proves. Status 77: it cannot run, and its last line says why.
prove() {
    judge counts "$@"
}

# complete NAME COMMAND...: a command of which only the status counts.
complete() {
    judge status "$@"
}

judge() {
    local by=$1 name=$2 log status passed failed skipped told own line wrong='' start=$SECONDS
    shift 2
    log=$(log_of "$name")
    if [ -e "$log" ]; then
        echo "two proofs have one name" >"$(log_of "$name again")"
        record "$name again" 0 1 0 0 "two proofs have one name"
        return
    fi
    "$@" >"$log" 2>&1 </dev/null
    status=$?
    if [ "$status" -eq 77 ]; then
        skip "$name" "$(sed '/^[[:space:]]*$/d' "$log" | tail -n 1)"
        return
    fi
    passed='' failed=0 skipped=0
    [ "$by" = status ] || read -r passed failed skipped < <(counts "$log")
    if [ "$by" = status ]; then
        passed=$((status == 0))
    elif [ -z "$passed" ]; then
        passed=0 failed=1 skipped=0 wrong="it counted nothing"
    elif halfway "$log"; then
        failed=$((failed + 1)) wrong="it stopped halfway"
    elif [ $((passed + failed + skipped)) -eq 0 ]; then
        failed=1 wrong="it proved nothing"
    fi
    if [ "$status" -ne 0 ] && { [ "$failed" -eq 0 ] || [ -n "$wrong" ]; }; then
        [ "$failed" -gt 0 ] || failed=1
        wrong+="${wrong:+, }it ended with status $status"
    fi
    told=0 own=0
    : >"$log.skips"
    [ "$skipped" -eq 0 ] || while IFS= read -r line; do
        told=$((told + 1))
        if [ -n "${must_run:-}" ] && [[ $line = own\ * ]]; then
            own=$((own + 1))
            wrong+="${wrong:+$'\n'}could not run: ${line#own }"
        else
            echo "$name: ${line#* }" >>"$log.skips"
        fi
    done < <(skips "$log")
    if [ "$skipped" -ne "$told" ]; then
        # Nobody can judge such a skip.
        wrong+="${wrong:+$'\n'}$skipped skipped, $told with a reason"
        failed=$((failed + (skipped > told ? skipped - told : 1)))
        skipped=$told
    fi
    record "$name" "$passed" $((failed + own)) $((skipped - own)) $((SECONDS - start)) "$wrong" && return
    grep -E '^\[  FAILED  \]|^FAILED|FAILED|error:|ERROR: |WARNING: ThreadSanitizer' "$log" | head -n 12 | sed 's/^/            /'
    return 1
}

# The reasons of all skips, then the sum, which is the last line.
finish() {
    local log name passed failed skipped
    wait
    for log in "$logs"/*.log; do
        if [ -e "$log" ] && [ ! -e "$log.count" ]; then
            name=${log##*/}
            record "${name%.log}" 0 1 0 0 "it never ended"
        fi
    done
    if grep -qs . "$logs"/*.skips; then
        echo "Skipped:"
        sort "$logs"/*.skips | uniq -c | sed -E 's/^ *1 /  /; t; s/^ *([0-9]+) (.*)/  \2 (\1 times)/'
    fi
    read -r passed failed skipped < <(cat "$logs"/*.count 2>/dev/null |
        awk '{ p += $1; f += $2; s += $3 } END { print p + 0, f + 0, s + 0 }')
    printf '%d passed, %d failed, %d skipped\n' "$passed" "$failed" "$skipped"
    [ "$failed" -eq 0 ] && [ "$passed" -gt 0 ]
    exit
}
