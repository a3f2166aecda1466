#!/usr/bin/env bash
# What a batch refuses, and what it says of jobs that hang or cannot run.
# shellcheck disable=SC2016 # text of another script
source "$(dirname "$0")/check.sh"
need parallel parallel
need ssh openssh-client

batch=$sources/examples/batch/morvaltide-batch
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
refused "short.tsv: job 1 is not written as output, options, cover page, documents" short.tsv
printf 'a.tif\t\t\tx.png\na.tif\t\t\ty.png\n' >double.tsv
refused "double.tsv: more than one job writes a.tif" double.tsv
refused "'none' is not a number above 0" -j none double.tsv
echo host >hosts
printf 'a.tif\t\t\t../x.png\n' >above.tsv
refused "above.tsv: over SSH, documents are named from the current folder, without .." \
    -S hosts above.tsv

standIn 'echo fax >"$4"'
printf '# a remark\n\na.tif\t\t\tx.png\n' >list.tsv
equal "what a batch without failures prints" "$("$batch" list.tsv 2>&1)" \
    "1 of 1 jobs are done, 0 failed"
equal "the result" "$(<a.tif)" fax
printf 'b.tif\t\t\tx.png\n' >>list.tsv
refused "list.tsv has changed since the first run; remove list.tsv.state to begin anew" list.tsv

standIn 'echo half >"$4"; exec sleep 30'
printf 'slow.tif\t\t\tx.png\n' >slow.tsv
equal "what is said of a job that hangs" "$("$batch" -t 1 -r 1 slow.tsv 2>&1)" \
    "0 of 1 jobs are done, 1 failed
slow.tif: stopped after 1 seconds"
equal "what a job that hangs leaves behind" "$(find . -name '*slow.tif*')" ""

printf 'far.tif\t\t\tx.png\n' >far.tsv
printf 'one\ntwo\n' >hosts
printf 'Host *\n    HostName 127.0.0.1\n    Port 9\n    LogLevel QUIET\n' >client
equal "what is said of machines that are down" \
    "$(BATCH_SSH="ssh -F $work/client" "$batch" -j 1 -r 1 -S hosts far.tsv 2>&1)" \
    "0 of 1 jobs are done, 1 failed
far.tif: no machine can be reached"
