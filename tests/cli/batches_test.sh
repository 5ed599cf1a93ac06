#!/bin/bash
# SPDX-License-Identifier: MIT
# Runs the lines of docs/batches.md with pictures of its own: GNU parallel over two machines that are this one, and all tasks
# of a job array. A failed file stops nothing, and a second run does only what is missing.
#
#   batches_test.sh COMMAND   such as build/release/src/cli/pixkit
#
# The last line is "N passed, N failed". Ends with 77 where GNU parallel or rsync is not here; another program has the name of
# the first, too.
set -uo pipefail
if ! parallel --version 2>/dev/null | grep -q '^GNU' || ! command -v rsync >/dev/null; then
    echo "skipped: scripts/setup.sh native installs GNU parallel and rsync"
    exit 77
fi
command=$(realpath "${1:?the command}")
cd "$(dirname "$0")/../.." || exit 2
document=$PWD/docs/batches.md samples=$PWD/samples/pictures
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
passed=0 failed=0

same() {
    if [ "$2" = "$3" ]; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        printf 'FAILED: %s: %s instead of %s\n' "$1" "$2" "$3"
    fi
}

# What stands between the N-th pair of fences.
block() { awk -v n="$1" '/^```/ { inside = !inside; count += inside; next } inside && count == n' "$document"; }

# The command; machines that are reached without a network, each with a folder of its own to log in to, and where SHELL is
# set, as everywhere.
mkdir "$folder"/{bin,alpha,beta} && cd "$folder" || exit 2
printf '#!/bin/sh\nexec "%s" "$@"\n' "$command" >bin/pixkit
printf '#!/bin/sh\nhost=$1\n[ "$2" = -- ] && shift\nshift\necho "$host" >>"%s/hosts"
export SHELL=/bin/sh HOME="%s/$host"\ncd && exec sh -c "$*"\n' "$folder" "$folder" >bin/ssh
chmod +x bin/*
export PATH=$folder/bin:$PATH PARALLEL_SSH=$folder/bin/ssh PARALLEL_HOME=$folder

# Sixty pictures, one of which is none, with names that shells read in other ways.
mkdir photos
"$command" convert "$samples/landscape.png" picture.jpg --resize 120x --quiet
for ((i = 0; i < 59; ++i)); do ln picture.jpg "photos/it's \$HOME & $i.jpg"; done
printf '%0100d' 0 >photos/broken.jpg
find photos -name '*.jpg' | sort >list.txt

run_block() {
    rm -f hosts
    block "$1" >line.sh
    SLURM_ARRAY_TASK_COUNT=4 SLURM_ARRAY_TASK_ID=${2:-} bash -o pipefail line.sh >said 2>complaints
}
count() { find small -name '*.jpg' -printf x | wc -c; }

run_block 1
same "parallel: runs with a failure" $? 1
same "parallel: results" "$(count)" 59
same "parallel: machines" "$(sort -u hosts | xargs)" "alpha beta"
same "parallel: what failed is named" "$(grep -c 'photos/broken.jpg' complaints)" 1
rm "small/it's \$HOME & 7.jpg"
run_block 1
same "parallel again: what is missing" "$(grep -vc skipped said)" 1
same "parallel again: results" "$(count)" 59

rm -r small
mv "photos/it's \$HOME & 7.jpg" photos/$'7\nlines.jpg'
run_block 2
same "names with line ends: results" "$? $(count)" "1 59"
same "names with line ends: that one" "$(echo small/7*lines.jpg)" $'small/7\nlines.jpg'
mv photos/$'7\nlines.jpg' "photos/it's \$HOME & 7.jpg"

# One picture a run: eight of them are enough.
rm -r small jobs.log
mv photos all && mkdir photos small && cp all/*1[0-6].jpg all/broken.jpg photos
run_block 3
same "files sent: one fails" "$? $(count)" "1 7"
same "files sent: machines" "$(sort -u hosts | xargs)" "alpha beta"
same "files sent: what stays there" "$(find alpha beta -name '*.jpg' | wc -l)" 0
run_block 3
same "files sent again: what is missing" "$? $(grep -c . said) $(grep -c 'photos/broken.jpg' complaints)" "1 0 1"

rm -r small photos && mv all photos
for task in 0 1 2 3; do
    run_block 4 "$task"
    echo "$?"
done | sort | xargs >codes
same "tasks: one fails" "$(cat codes)" "0 0 0 123"
same "tasks: results" "$(count)" 59
cp picture.jpg photos/broken.jpg
for task in 0 1 2 3; do run_block 4 "$task" && grep -v skipped said; done >again
same "tasks again: what is missing" "$(cat again)" "photos/broken.jpg -> small/broken.jpg"

echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
