#!/bin/sh
# Vector image files travel between builds whose pointer words differ (offsets from an
# arena in a 64-bit build, plain addresses in a 32-bit one, a Windows build under Wine): each kivutil writes the
# sample, the two files must be the same bytes, and each kivutil must describe each
# file exactly as the other does (read and mapped, entities, index, picks).
# usage: vector-crosscheck.sh <kivutil> <other kivutil>
# Each kivutil may be a command of several words (an emulator and the program).
set -eu
first=${1:?usage: vector-crosscheck.sh <kivutil> <other kivutil>}
second=${2:?usage: vector-crosscheck.sh <kivutil> <other kivutil>}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# shellcheck disable=SC2086 # a command's words are separate arguments
$first vector sample -o "$work/first.vec" >/dev/null
# shellcheck disable=SC2086
$second vector sample -o "$work/second.vec" >/dev/null
failed=0
if ! cmp "$work/first.vec" "$work/second.vec"; then
    echo "vector-crosscheck: the two builds write the sample as different bytes" >&2
    failed=1
fi

# Both builds read both files; each reading is compared between the builds.
for file in first second; do
    for reading in "info" "info --mapped" "index" "pick" ; do
        case "$reading" in
            pick) args="pick $work/$file.vec 5100 8070 --tolerance 20" ;;
            *) args="$reading $work/$file.vec" ;;
        esac
        # shellcheck disable=SC2086
        $first vector $args >"$work/out.first" 2>&1 || echo "exit $?" >>"$work/out.first"
        # shellcheck disable=SC2086
        $second vector $args >"$work/out.second" 2>&1 || echo "exit $?" >>"$work/out.second"
        # A Windows build writes its console text in the C runtime's text mode, which
        # ends every line with CR LF; the CR carries nothing, and the outputs hold no CR
        # of their own, so dropping a CR before each LF compares the information alone.
        # File names are given to both builds alike and printed as given.
        sed -i 's/\r$//' "$work/out.first" "$work/out.second"
        if ! diff -u "$work/out.first" "$work/out.second"; then
            echo "vector-crosscheck: 'vector $reading' of the $file build's file differs" >&2
            failed=1
        elif ! grep -q . "$work/out.first"; then
            echo "vector-crosscheck: 'vector $reading' printed nothing" >&2
            failed=1
        fi
    done
done
[ "$failed" -eq 0 ] && echo "vector-crosscheck: '$first' and '$second' agree on both files"
exit "$failed"
