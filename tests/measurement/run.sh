#!/usr/bin/env bash
# The program as a user runs it: good files end with `identical`, bad ones with exit code 1, one line on standard
# error that names file and line, and no document.
#   run.sh <the program measurement>
set -euo pipefail
program=$1
here=$(mktemp -d)
trap 'rm -rf "$here"' EXIT
cd "$here"

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

"$program" >report
grep -q 'identical' report || fail "no identical in the report"
grep -q 'S21: 5 notifications' report || fail "no change in the report"
[ "$(sed -n 's/^notified *//p' report)" = '/, /, /Marker, /Marker/Target, /S21' ] || fail "who was notified"
[ -s lowpass.s2p.json ] || fail "no document"
! grep -q Marker lowpass.s2p.json || fail "the marker is in the document"
"$program" --csv --document own.json >csv 2>err
[ "$(wc -l <csv)" -eq 202 ] || fail "the table has not a header and 201 points"
[ "$(head -1 csv)" = 'frequency [MHz],S11 re,S11 im,S12 re,S12 im,S21 re,S21 im,S22 re,S22 im' ] || fail "header"
[ ! -s err ] || fail "words on standard error"
cmp own.json lowpass.s2p.json || fail "two runs wrote different documents"
rm -f ./*.json report csv err

mkdir folder.s1p
: >empty.s1p
printf '# GHz\n1 2\n' >short.s1p
printf '# GHz\n1 2 three\n' >text.s1p
printf '# GHz Q\n1 2 3\n' >option.s1p
printf '# GHz\n2 2 3\n1 2 3\n' >decreasing.s1p
head -c 5000 "$program" >binary.s1p
printf '# GHz\n1 2 3\n' | tee name.txt >good.s1p
refuse() {
    local code=0
    "$program" --document out.json "$@" >out 2>err || code=$?
    [ "$code" -eq 1 ] || fail "$*: exit code $code"
    [ ! -s out ] || fail "$*: words on standard output"
    [ "$(wc -l <err)" -eq 1 ] || fail "$*: not one line on standard error"
}
for case in missing.s1p:0 folder.s1p:0 name.txt:0 empty.s1p:1 short.s1p:2 text.s1p:2 option.s1p:1 decreasing.s1p:3 \
    binary.s1p:1; do
    for mode in '' --csv; do
        refuse $mode "${case%:*}"
        grep -q "^$case: ." err || fail "$case: $(cat err)"
    done
done
refuse --unknown
refuse two.s1p files.s1p
refuse --document none/out.json good.s1p
if [ -w /dev/full ] && "$program" good.s1p >/dev/full 2>err; then
    fail "a full device went unnoticed"
fi
rm -f good.s1p.json
left=$(find . -name '*json*')
[ -z "$left" ] || fail "a document was left: $left"
