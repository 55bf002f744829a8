#!/usr/bin/env bash
# The program as a user runs it: good files end with `identical`, bad ones with exit code 1, one line on standard
# error that names file and line, and no document, half a document or change of an older one.
#   run.sh <the program measurement>
set -euo pipefail
program=$1
here=$(mktemp -d)
trap 'rm -rf "$here"' EXIT
cd "$here"
mkdir scratch
export TMPDIR=$here/scratch

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

"$program" >report
grep -q 'identical' report || fail "no identical in the report"
grep -q 'S21: 5 notifications' report || fail "no change in the report"
[ "$(sed -n 's/^notified *//p' report)" = '/, /, /Marker, /Marker/Target, /S21' ] || fail "who was notified"
document=$(sed -n 's/^document *\(.*\), [0-9]* bytes$/\1/p' report)
case $document in
"$TMPDIR"/measurement/*/document/measurement.json) ;;
*) fail "the document is called $document" ;;
esac
[ -s "$document" ] || fail "no document"
! grep -q Marker "$document" || fail "the marker is in the document"
"$program" --csv --output own.json >csv 2>err
[ "$(wc -l <csv)" -eq 202 ] || fail "the table has not a header and 201 points"
[ "$(head -1 csv)" = 'frequency [MHz],S11 re,S11 im,S12 re,S12 im,S21 re,S21 im,S22 re,S22 im' ] || fail "header"
[ ! -s err ] || fail "words on standard error"
cmp own.json "$document" || fail "two runs wrote different documents"
mkdir 'Prüf stand'
for path in "$here/Prüf stand/Grün & weiß.json" 'Prüf stand/../Prüf stand/測定 😀.json'; do
    "$program" --output "$path" >report
    grep -qF "document   $path, " report || fail "$path is not in the report"
    cmp own.json "$path" || fail "$path holds another document"
done
rm -rf ./*.json 'Prüf stand' report csv err

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
    "$program" --output out.json "$@" >out 2>err || code=$?
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
refuse --output '' good.s1p
refuse --output $'\xff.json' good.s1p
refuse --output none/out.json good.s1p
grep -qx 'none/out.json: cannot be written: No such file or directory' err || fail "no reason: $(cat err)"
echo old >kept.txt
(
    trap '' XFSZ
    ulimit -f 1
    refuse --output kept.txt
)
grep -qx 'kept.txt: cannot be written: File too large' err || fail "no reason: $(cat err)"
[ "$(cat kept.txt)" = old ] || fail "a failed run changed an older file"
if [ -w /dev/full ] && "$program" good.s1p >/dev/full 2>err; then
    fail "a full device went unnoticed"
fi
rm -rf scratch
left=$(find . -name '*json*' -o -name '*part*')
[ -z "$left" ] || fail "a document was left: $left"
