#!/bin/bash
# SPDX-License-Identifier: MIT
# Runs the built command, for what only a process of its own shows. What it makes of pictures stands in tests/data/cli.
#
#   command_test.sh COMMAND [ARGUMENT...]   such as build/release/src/cli/pixkit, or scripts/wine.sh run .../pixkit.exe
#
# The last line is "N passed, N failed" (and ", N skipped").
set -uo pipefail
[ $# -gt 0 ] || { sed -n '3,7p' "$0"; exit 2; }
command=("$@")
cd "$(dirname "$0")/../.." || exit 2

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
alpha=tests/data/cli/alpha.png passed=0 failed=0 skipped=0

fail() {
    failed=$((failed + 1))
    echo "FAILED: $1"
}

# What cannot be tried here.
skip() {
    skipped=$((skipped + 1))
    echo "skipped: $1"
}

# A line of the command, its exit code, and a pattern that a line of what it says fits.
check() {
    local expected=$1 pattern=$2 status
    shift 2
    "${command[@]}" "$@" >"$folder/said" 2>&1 </dev/null
    status=$?
    if [ "$status" = "$expected" ] && tr -d '\r' <"$folder/said" | grep -E "$pattern" >/dev/null; then
        passed=$((passed + 1))
    else
        failed=$((failed + 1))
        echo "FAILED: exit code $status instead of $expected, or nothing that fits $pattern: $*"
        sed 's/^/    /' "$folder/said"
    fi
}

version=$(awk '/define PIXKIT_VERSION_/ { text = text (text == "" ? "" : ".") $3 } END { print text }' src/shared/version.h)
name="$folder/größe & 東京 100%"
cp "$alpha" "$name.png"
check 0 "^pixkit $version\$" --version
check 2 "Subcommands"
check 1 "gone.png: the file does not exist" info gone.png "$alpha"
check 0 "größe & 東京 100%.bmp" convert "$name.png" "$name.bmp"
check 0 '"name": "AlphaComplex"' info --json samples/pictures/lantern.png
check 0 'größe.* results$' effects "$alpha" "$name.png" -o "$folder/effects"

# However many threads take part, and whichever pictures they meet at, the files are the same.
threads_agree() {
    local threads
    for threads in 1 4; do
        "${pixkit[@]}" convert samples/pictures "$name.png" "$@" "$folder/with$threads" --jobs $threads --quiet || return
        "${pixkit[@]}" gallery samples/pictures "$@" -o "$folder/page$threads" --jobs $threads --quiet || return
        "${pixkit[@]}" sheet samples/pictures "$@" -o "$folder/with$threads/sheet.png" --jobs $threads --cell 50x50 --quiet
    done
    diff -r "$folder/with1" "$folder/with4" && diff -r "$folder/page1" "$folder/page4" && echo same
}
pixkit=("${command[@]}") command=(threads_agree)
check 0 '^same$' --recursive
command=("${pixkit[@]}")

# Only natively: Windows has no such terminals and pipes, and timeout needs a program of its own.
if [ ${#command[@]} = 1 ]; then
    unset pixkit
    pixkit=${command[0]}
    command=(timeout 10 "$pixkit")
    mkfifo "$folder/pipe.png"
    check 1 "pipe.png: the file cannot be opened" convert "$folder/pipe.png" "$folder/pipe.bmp"
    check 1 "pipe.png: it is no file but a pipe" convert $alpha "$folder/pipe.png"
    check 1 "null: it is no file but a pipe or a device" convert $alpha /dev/null --to png --overwrite

    # Pipes carry every format as files do, and what nobody can write is a failure.
    command=(bash -c 'set -o pipefail; "$0" "$@" <tests/data/cli/alpha.png | "$0" info - <(cat tests/data/cli/opaque.png)' "$pixkit")
    check 0 " 4 x 2 .* -$" convert - - --to tga
    check 0 " 2 x 2 .* /dev/fd/" convert /dev/stdin /dev/stdout --to jpg
    command=(bash -c '"$0" "$@" >/dev/full' "$pixkit")
    check 1 "the output cannot be written" convert $alpha - --to png
    command=(bash -c '"$0" convert samples/pictures/*.png "$1" --to bmp --quiet | :; ls "$1"' "$pixkit")
    check 0 "lantern.bmp" "$folder/unread"

    # What has no standard streams gets no file in their place.
    command=(bash -c '"$0" sheet "$1" -o - --to png --index "$2" >&-; code=$?; ls "$2" 2>&1; exit $code' "$pixkit")
    check 1 "index.json': No such file" $alpha "$folder/index.json"
    command=(bash -c '"$0" "$@" <&-' "$pixkit")
    check 1 "nothing came through the pipe" convert - "$folder/nothing.png"

    # What is made of the options is what the programs that read it take.
    "$pixkit" help bash >"$folder/completions" && "$pixkit" help man >"$folder/pixkit.1"
    command=(bash -c '. "$0"; COMP_WORDS=(pixkit "$@"); COMP_CWORD=$#; _pixkit; echo "${COMPREPLY[@]}"' "$folder/completions")
    check 0 '^down$' convert --fit d
    check 0 '^rebeccapurple red$' convert --flatten = re
    check 0 '^exit-codes$' help ex
    readers() {
        case $1 in
        groff) [ -z "$(groff -man -ww -z "$folder/pixkit.1" 2>&1)" ] ;;
        *) "$pixkit" help "$1" >"$folder/completions.$1" && "$1" -n "$folder/completions.$1" ;;
        esac && echo well
    }
    command=(readers)
    for reader in groff zsh fish; do
        if command -v $reader >/dev/null; then check 0 '^well$' $reader; else skip "there is no $reader"; fi
    done

    # Examples, and options as a page shows them, need no quotation marks that cmd.exe does not know.
    examples() {
        local each
        for each in info convert compose sheet gallery effects; do "$pixkit" help $each; done | grep '^  pixkit '
        grep -h '^pixkit ' README.md docs/*.md
        grep -oh '<code class="soft">[^<]*' "$folder/effects/index.html"
    }
    quoting() { examples | awk '/\047/ { print; ++wrong } END { print (NR > 100 ? wrong + 0 : "too few") }'; }
    command=(quoting)
    check 0 '^0$'

    # Pictures of one name cost no more than others, however many, and whether or not their results are there.
    mkdir -p "$folder"/many/{d{1..3000},out} && cp "$alpha" "$folder/many/a.png" && cp "$alpha" "$folder/many/out/a.png"
    command=(bash -c 'cd "$1" && shift && timeout 10 "$0" "$@"' "$(realpath "$pixkit")" "$folder/many")
    check 1 '^d1/../a.png -> out/a.png: skipped' convert d{1..3000}/../a.png out --skip-newer

    # What a folder has of pictures' names is told of, even if it is no file.
    mkdir "$folder/odd" && ln -s nowhere "$folder/odd/link.png" && mkfifo "$folder/odd/pipe.png"
    command=(timeout 10 "$pixkit")
    check 1 'link.png: the file does not exist' info -r "$folder/odd"
    check 1 'pipe.png: the file cannot be opened' info -r "$folder/odd"
    check 1 'pipe.png: the file cannot be opened' convert -r "$folder/odd" "$folder/odd-pictures"
    check 1 'pipe.png: the file cannot be opened' sheet -r "$folder/odd" -o "$folder/odd.png"
    check 1 'pipe.png: the file cannot be opened' gallery -r "$folder/odd" -o "$folder/odd-page"
    check 1 'pipe.png: the file cannot be opened' effects -r "$folder/odd" -o "$folder/odd-page"

    # A signal in the middle of writing: the one for files that grow too large comes at a sure moment.
    mkdir "$folder/ended"
    (ulimit -c 0 -f 8; "$pixkit" convert samples/pictures/lantern.png "$folder/ended/out.bmp"; :) &>/dev/null
    command=(find "$folder/ended" -name '~*')
    "${command[@]}" | grep . && fail "a draft was left behind"

    # A gallery of nothing leaves no folders.
    command=(bash -c '"$0" gallery "$1/gone.png" -o "$1/nothing"; ls "$1/nothing"' "$pixkit")
    check 2 "nothing': No such file" "$folder"

    # Interrupted at a sure moment, while it waits for a pipe, a run leaves what it has done, and the next does the rest.
    mkfifo "$folder/wait"
    command=(bash -c 'timeout --preserve-status -s "$1" 1 "$0" convert "$2" - "$3" --to bmp --jobs 1 --no-overwrite <>"$4"
        echo $? $(ls -A "$3")' "$pixkit")
    check 0 '^130 alpha.bmp$' INT $alpha "$folder/interrupted" "$folder/wait"
    check 0 '^143 alpha.bmp$' TERM $alpha "$folder/interrupted" "$folder/wait"
    command=(bash -c '"$0" convert "$@" <tests/data/cli/opaque.png' "$pixkit")
    check 0 "stdin.bmp" $alpha - "$folder/interrupted" --to bmp --no-overwrite
    command=(bash -c 'timeout -s KILL 1 "$0" gallery "$1" - -o "$2" --jobs 1 <>"$3"; grep -c "</html>" "$2/index.html"' "$pixkit")
    check 0 '^1$' $alpha "$folder/killed" "$folder/wait"
    # Text is drawn by several threads at once, or refused where this build draws none.
    command=("$pixkit")
    "$pixkit" convert $alpha "$folder/text.bmp" --text A --quiet 2>/dev/null
    check $? '' convert samples/pictures "$folder/texts" --recursive --text 'Hello:size=10%' --jobs 4
    # Nobody reads any longer.
    command=(bash -c '{ sleep 0.2; "$0" "$@"; echo $? >"$2.code"; } | :; cat "$2.code"' "$pixkit" info)
    cp "$alpha" "$folder/unheard.png"
    check 0 '^141$' "$folder/unheard.png"

    # On a full disk files stay what they were, and nothing is left of new ones. Who may not mount one goes without.
    mkdir "$folder/disk"
    if mount -t tmpfs -o size=64k none "$folder/disk" 2>/dev/null; then
        cd "$folder/disk" || exit 2
        samples=$OLDPWD/samples/pictures
        pixkit=$(cd "$OLDPWD" && realpath "$pixkit")
        echo old >old.bmp
        command=("$pixkit")
        for target in old.bmp new.bmp; do
            check 1 "$target: the disk is full" convert "$samples/lantern.png" $target --overwrite
        done
        check 1 "sheet.bmp: the disk is full" sheet -o sheet.bmp --index sheet.json "$samples/lantern.png"
        command=(bash -c '"$0" "$@"; echo $? $(find page -name "~*" -o -size 0 -type f)' "$pixkit")
        check 0 "png: the disk is full" effects -o page "$samples/lantern.png"
        grep -qx 1 "$folder/said" || fail "something was left of effects on a full disk"
        rm -r page
        check 0 ": the disk is full" gallery -o page "$samples" -r --overwrite
        grep -qx 1 "$folder/said" || fail "something was left of a gallery on a full disk"
        rm -r page
        # By those that bring results to the disk beside the work.
        told='import json, sys; told = json.load(sys.stdin); print(len({each["status"] for each in told}), *told, sep="\n")'
        command=(bash -c '"$0" convert "$1" out -r --jobs 4 --to bmp --json 2>/dev/null | python3 -c "$2"; find out -type f | wc -l' "$pixkit")
        check 0 "'failed', 'reason': '.*: the disk is full'" "$samples" "$told"
        [ "$(grep -c "'done'" "$folder/said")" = "$(tail -n 1 "$folder/said")" ] || fail "not all that is told is on a full disk"
        rm -r out
        cd "$OLDPWD" || exit 2
        "$pixkit" gallery $alpha -o "$folder/disk/page" --quiet && cp "$folder/disk/page/index.html" "$folder/before.html"
        cat /dev/zero >"$folder/disk/page/rest" 2>/dev/null
        command=("$pixkit")
        check 1 "index.html: the disk is full" gallery $alpha -o "$folder/disk/page" --title Other
        command=(bash -c 'cmp "$@" && echo same' cmp)
        check 0 same "$folder/before.html" "$folder/disk/page/index.html"
        rm -r "$folder/disk/page" && mount -o remount,ro "$folder/disk"
        command=("$pixkit")
        check 1 "old.bmp: the file system is read-only" convert $alpha "$folder/disk/old.bmp" --overwrite
        command=(bash -c '(cd "$0" && ls -A && cat old.bmp) && umount "$0"' "$folder/disk")
        check 0 '^old$'
        grep -c . "$folder/said" | grep -qx 2 || fail "something was left on a full disk"
    else
        skip "no disk can be mounted that gets full"
    fi

    # What cannot be read, or is no file, and names that no terminal shows.
    command=(timeout 10 "$pixkit")
    check 1 "/dev/zero: the file cannot be opened" info /dev/zero
    if grep -qa __ubsan_ "$pixkit"; then
        skip "the sanitizers open pipes of their own, for which there must be room"
    else
        command=(bash -c 'exec 3>&-; ulimit -n 4 && "$0" "$@"' "$pixkit")
        check 1 "index.json: too many files are open" sheet $alpha -o "$folder/many.png" --index "$folder/index.json" --jobs 1
    fi
    command=(timeout 10 "$pixkit")
    cp "$alpha" "$folder/"$'a\nb\xff.png'
    cp "$alpha" "$folder/"$'u\xff.png' && cp "$alpha" "$folder/"$'u\xfe.png'
    command=(bash -c '"$0" sheet "$1"/u*.png -qo "$1/x.png" --index "$1/x.css" && cat "$1/x.css"' "$pixkit")
    check 0 '^.sprite-u.+-2 ' "$folder"
    command=(timeout 10 "$pixkit")
    check 0 '/a.x0ab' convert "$folder/"$'a\nb\xff.png' "$folder/"$'a\nb\xff.bmp'

    # A file stays whose it is, and private; a link stays a link; a folder that takes no file may hold one that can be
    # written. Root may do everything, so somebody else tries.
    chmod 755 "$folder" && cp "$alpha" "$pixkit" "$folder" && cd "$folder" || exit 2
    mkdir closed && touch closed/a.bmp private.bmp real.bmp && ln -s real.bmp link.bmp
    chmod 555 closed && chmod 666 closed/a.bmp && chmod 600 private.bmp && chmod 444 real.bmp
    mkdir shut && cp alpha.png secret.png && chmod 000 shut secret.png
    command=(./pixkit)
    check 0 "link.bmp" convert alpha.png link.bmp --overwrite
    [ "$(id -u)" != 0 ] || { chown nobody private.bmp && command=(setpriv --reuid=nobody --clear-groups ./pixkit); }
    check 0 "a.bmp" convert alpha.png closed/a.bmp --overwrite
    check 1 "b.bmp: the folder takes no new file" convert alpha.png closed/b.bmp
    check 1 "^pixkit info: secret.png: the system denies access" info alpha.png secret.png
    check 1 "^pixkit convert: shut: the folder cannot be read: Permission denied" convert -r shut alpha.png .
    [ "$(id -u)" != 0 ] || command=(./pixkit)
    owner=$(stat -c %U private.bmp)
    check 0 "private.bmp" convert alpha.png private.bmp --overwrite
    command=(stat -c '%n %a %U %F')
    check 0 "^private.bmp 600 $owner" private.bmp
    check 0 "^real.bmp 444 .* regular file" real.bmp
    check 0 "^link.bmp .* symbolic link" link.bmp
    # Its attributes and access list stay, too, where the file system has them.
    attributes='import os, struct, sys
acl = struct.pack("<I" + "HHI" * 5, 2, 1, 6, 2**32 - 1, 2, 4, 1234, 4, 4, 2**32 - 1, 16, 4, 2**32 - 1, 32, 0, 2**32 - 1)
wanted = {"user.note": b"of mine", "system.posix_acl_access": acl}
for name, value in wanted.items() if sys.argv[1:] else ():
    try: os.setxattr("private.bmp", name, value)
    except OSError: print("without")
print(*sorted(name for name in wanted if name in os.listxattr("private.bmp") and os.getxattr("private.bmp", name) == wanted[name]))'
    before=$(python3 -c "$attributes" set)
    command=(./pixkit)
    check 0 "private.bmp" convert alpha.png private.bmp --overwrite
    command=(python3 -c "$attributes")
    check 0 "^${before##*$'\n'}\$"
    # In a folder that all may write to only one's own links, and those of the folder's owner, lead anywhere.
    if [ "$(id -u)" = 0 ]; then
        mkdir -m 1777 shared && echo kept >victim.bmp && ln -s ../victim.bmp shared/a.bmp && ln -s ../none.bmp shared/b.bmp
        chown -h nobody shared/?.bmp && ln -s ../real.bmp shared/own.bmp
        command=(./pixkit)
        check 1 "a.bmp: the system denies access to it" convert alpha.png shared/a.bmp --overwrite
        check 1 "b.bmp: the system denies access to it" convert alpha.png shared/b.bmp --overwrite
        check 0 "own.bmp" convert alpha.png shared/own.bmp --overwrite
        command=(bash -c 'cat victim.bmp; ls none.bmp 2>&1')
        check 2 '^kept$'
    fi
    # No library is taken from where the pictures lie. Builds for another word size may have none that reads JPEG.
    cp "$OLDPWD/samples/pictures/landscape.png" a.png && ./pixkit convert a.png a.jpg --quiet
    ./pixkit convert a.jpg a.bmp --quiet 2>jpeg.txt
    reads_jpeg=$?
    echo nothing | tee libturbojpeg.so.0 libz.so.1 >libstdc++.so.6
    command=(./pixkit)
    check 0 "a.png -> a.bmp" convert a.png a.bmp --overwrite
    if [ $reads_jpeg = 0 ]; then
        check 0 "a.jpg -> a.bmp" convert a.jpg a.bmp --overwrite
    else
        grep -q "libturbojpeg.so.0 cannot be loaded" jpeg.txt || fail "a.jpg: $(cat jpeg.txt)"
        skip "no libturbojpeg for this word size"
    fi
    chmod 755 closed shut && cd "$OLDPWD" || exit 2

    for answer in no yes; do
        echo old >"$folder/a.bmp"
        echo $answer | script -qec "'$pixkit' convert $alpha $folder/a.bmp" "$folder/log" >"$folder/shown"
        command=(head -c 3 "$folder/a.bmp")
        check 0 "^$([ $answer = no ] && echo old || echo BMN)"
    done
elif [[ ${command[-1]} = *.exe ]]; then
    # The command finds the files that fit a pattern itself: none of them is an option.
    mkdir "$folder/patterns" && cp "$alpha" "$folder/patterns/-x.png" && cd "$folder/patterns" || exit 2
    check 0 '[.].-x.png$' info '*.png'
    cd "$OLDPWD" || exit 2
fi

echo "$passed passed, $failed failed$([ $skipped = 0 ] || echo ", $skipped skipped")"
[ "$failed" = 0 ]
