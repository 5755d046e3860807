# For the scripts that run test programs, to be sourced: counts in $passed, $failed and $skipped what
# their results say. They set $top, the folder of the checkout.
# shellcheck shell=bash
cores=$(nproc)
passed=0
failed=0
skipped=0

# count NAME FILE: the first number that the file gives under the name, 0 without one.
count() {
    local number
    number=$(sed -n "s/^.*[[:space:]]$1=\"\([0-9]*\)\".*/\1/p" "$2" 2>/dev/null | head -n 1)
    echo "${number:-0}"
}

# run_program PROGRAM [LAUNCHER]...: every test of it that $GTEST_FILTER leaves, divided among as many
# processes as there are cores. The launcher is a command that takes the program as its last argument.
# A process in the background, or under nohup, would ignore the signals that some tests send.
run_program() {
    local program=$1 shard
    local -a running=()
    for ((shard = 0; shard < cores; ++shard)); do
        rm -f "$program.$shard.xml"
        GTEST_TOTAL_SHARDS=$cores GTEST_SHARD_INDEX=$shard GTEST_BRIEF=1 \
            GTEST_OUTPUT=xml:$program.$shard.xml \
            LSAN_OPTIONS=suppressions=$top/cmake/lsan.supp:print_suppressions=0 \
            env --default-signal=HUP,INT,QUIT,TERM \
            "${@:2}" "$program" >"$program.$shard.log" 2>&1 &
        running+=($!)
    done
    for ((shard = 0; shard < cores; ++shard)); do
        local status=0
        wait "${running[shard]}" || status=$?
        local results=$program.$shard.xml
        local all bad none
        all=$(count tests "$results")
        bad=$(($(count failures "$results") + $(count errors "$results")))
        none=$(($(grep -c '<skipped' "$results" 2>/dev/null || true) + $(count disabled "$results")))
        # A process that ended before it wrote its results, or with a leak after them, has failed.
        if ((status != 0 && bad == 0)); then
            bad=1
            all=$((all > 0 ? all : 1))
        fi
        if ((status != 0)); then
            cat "$program.$shard.log"
        fi
        passed=$((passed + all - bad - none))
        failed=$((failed + bad))
        skipped=$((skipped + none))
    done
    echo "$(basename "$program"): $passed passed so far, $failed failed"
}

# report_sum: the last line of such a script; false when a test failed or none was run.
report_sum() {
    if ((skipped)); then
        echo "$skipped skipped: they say what is missing on this machine"
    fi
    echo "$passed passed, $failed failed"
    ((failed == 0 && passed > 0))
}
