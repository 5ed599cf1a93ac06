# SPDX-License-Identifier: MIT
# To be sourced: counts commands that succeed and that fail, of which it shows what they said. check NAME COMMAND...
passed=0 failed=0

check() {
    local name=$1 output
    shift
    if output=$("$@" 2>&1); then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        printf 'FAILED: %s\n%s\n' "$name" "$output"
    fi
}
