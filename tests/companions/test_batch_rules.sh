#!/usr/bin/env bash
# What a batch refuses, and what it says of jobs that hang or cannot run.
# shellcheck disable=SC2016 # text of another script
# shellcheck source=../packaging/check.sh
source "$(dirname "$0")/../packaging/check.sh"
need parallel parallel
need ssh openssh-client
need gs ghostscript
need tiffinfo libtiff-tools

batch=$sources/companions/morvaltide-batch
export PARALLEL_HOME=$work/parallel
mkdir "$PARALLEL_HOME" bin
PATH=$work/bin:$PATH
standIn() {
    printf '#!/bin/sh\n%s\n' "$1" >bin/morvaltide
    chmod +x bin/morvaltide
}

# refused <message> <argument>...
refused() {
    local expected="morvaltide-batch: $1" message
    shift
    message=$("$batch" "$@" 2>&1)
    equal "the exit status of morvaltide-batch $*" $? 2
    equal "the message of morvaltide-batch $*" "$message" "$expected"
}

printf 'a.tif\t-r fine\n' >short.tsv
refused "short.tsv: line 1 is not written as output, options, cover page, documents" short.tsv
printf 'a.tif\t\t\tx.png\na.tif\t\t\ty.png\n' >double.tsv
refused "double.tsv: more than one job writes a.tif" double.tsv
printf 'x.png\t\t\tx.png\n' >same.tsv
echo old >x.png
refused "same.tsv: x.png is both an output and a document" same.tsv
refused "can't read 'none.tsv': No such file or directory" none.tsv
: >empty.tsv
refused "empty.tsv has no jobs" empty.tsv
printf '\n# a remark\n' >remarks.tsv
refused "remarks.tsv has no jobs" remarks.tsv
equal "what refused batches leave behind" "$(find . -name '*.state')" ""
"$batch" -j none double.tsv 2>/dev/null
equal "the exit status with a wrong number" $? 2
echo host >hosts
printf 'far.tif\t\t\tx.png\n' >far.tsv
printf 'a.tif\t\t\t../x.png\n' >above.tsv
refused "above.tsv: over SSH, documents are named from the current folder, without .." \
    -S hosts above.tsv
refused "can't read 'nohosts': No such file or directory" -S nohosts far.tsv

makeDocuments 1 pngmono x.png
printf '# a remark\n\na.tif\t\t\tx.png\n' >list.tsv
equal "what a batch without failures prints" "$("$batch" list.tsv 2>&1)" \
    "1 of 1 jobs are done, 0 of them with remarks, 0 failed; 1 pages, $(wc -c <a.tif) bytes"

# Names that begin with a dash, and a list that was made on Windows.
mkdir -- -in
cp x.png ./-in/-x.png
cp x.png ./-y.png
echo '<h1>Fax</h1>' >-c.html
printf -- '-out/-a.tif\t-r standard\t-c.html\t-in/-x.png\t-y.png\r\n-b.tif\t\t\t-y.png\r\n' >-l.tsv
equal "the summary of names with a dash" "$("$batch" -- -l.tsv 2>&1 | sed 's/;.*//')" \
    "2 of 2 jobs are done, 0 of them with remarks, 0 failed"
equal "the number of pages" "$(pages ./-out/-a.tif) $(pages ./-b.tif)" "3 1"

# A fax that is complete for the program, but not without a remark.
head -c 20000 "$sources/samples/scan.tif" >cut.tif
printf 'ok.tif\t\t\tx.png\nfax/cut.tif\t\t\tcut.tif\n' >cut.tsv
"$batch" cut.tsv 2>cut.err
equal "the exit status with remarks" $? 0
equal "the summary with remarks" "$(sed 's/;.*//; s/: TIFF.*//' cut.err)" \
    "2 of 2 jobs are done, 1 of them with remarks, 0 failed
fax/cut.tif: done, but"
[[ -e fax/cut.tif ]] || fail "there is no fax"
rm -r fax cut.tsv.state
"$batch" --hold cut.tsv 2>cut.err
equal "the exit status when one is held" $? 3
equal "what is held" "$(ls -A fax)" cut.tif.held
grep -q "^fax/cut.tif: held as fax/cut.tif.held: TIFF" cut.err || fail "not told: $(<cut.err)"
mv fax/cut.tif.held fax/released.tif
"$batch" --hold cut.tsv 2>/dev/null
equal "what is there after it was released" "$(ls -A fax)" released.tif

standIn 'while [ "$1" != -o ]; do shift; done; echo half >"$2"; exec sleep 30'
printf 'slow.tif\t\t\tx.png\n' >slow.tsv
equal "what is said of a job that hangs" "$("$batch" -t 1 -r 1 slow.tsv 2>&1)" \
    "0 of 1 jobs are done, 0 of them with remarks, 1 failed; 0 pages, 0 bytes
slow.tif: stopped after 1 seconds"
equal "what a job that hangs leaves behind" "$(find . -name '*slow.tif*')" ""

standIn 'while [ "$1" != -o ]; do shift; done; echo half >"$2"'
printf 'half.tif\t\t\tx.png\n' >half.tsv
equal "what is said of a fax that is none" "$("$batch" -r 1 half.tsv 2>&1 | tail -n 1)" \
    "half.tif: not a TIFF file"
rm bin/morvaltide

printf 'far.tif\t\t\tx.png\n' >far.tsv
printf 'one\ntwo\n' >hosts
printf 'Host *\n    HostName 127.0.0.1\n    Port 9\n    LogLevel QUIET\n' >client
equal "what is said of machines that are down" \
    "$(BATCH_SSH="ssh -F $work/client" "$batch" -j 1 -r 1 -S hosts far.tsv 2>&1)" \
    "0 of 1 jobs are done, 0 of them with remarks, 1 failed; 0 pages, 0 bytes
far.tif: no machine can be reached"
