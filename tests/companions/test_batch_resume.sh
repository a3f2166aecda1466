#!/usr/bin/env bash
# A batch of 50 jobs, 10 of them bad, is killed in the middle and resumed: the
# result is that of a batch that was not.
# shellcheck disable=SC2012 # the names are known
# shellcheck source=../packaging/check.sh
source "$(dirname "$0")/../packaging/check.sh"
need parallel parallel
need gs ghostscript

batch=$sources/companions/morvaltide-batch
export PARALLEL_HOME=$work/parallel
mkdir "$PARALLEL_HOME"

mkdir in
makeDocuments 34 pngmono in/%d.png
makeDocuments 6 pdfwrite in/%d.pdf
echo '<h1>Fax</h1>' >cover.html
for i in 1 2 3 4; do echo junk >"in/junk$i.png"; done
for i in 1 2 3; do : >"in/empty$i.pdf"; done
for i in 1 2; do echo text >"in/text$i.txt"; done
ls in | awk '{ printf "OUT/%s.tif\t%s\t%s\tin/%s\n", $1,
    NR % 3 ? "" : "-r standard -c g4", NR % 5 ? "" : "cover.html", $1 }' >list
printf 'OUT/gone.tif\t\t\tin/gone.png\n' >>list
equal "the number of jobs" "$(wc -l <list)" 50
sed 's/^OUT/whole/' list >whole.tsv
sed 's/^OUT/killed/' list >killed.tsv

bytes() {
    cat "$1"/*.tif | wc -c
}
"$batch" -j 2 -r 1 whole.tsv 2>whole.err
equal "the exit status with bad jobs" $? 1
equal "the summary" "$(head -n 1 whole.err)" \
    "40 of 50 jobs are done, 0 of them with remarks, 10 failed; 48 pages, $(bytes whole) bytes"
expectedFailures() {
    for i in 1 2 3; do
        echo "$1/empty$i.pdf.tif: can't write page file 'in/empty$i.pdf', invalid pdf format"
    done
    echo "$1/gone.tif: can't write page file 'in/gone.png', file not found"
    for i in 1 2 3 4; do
        echo "$1/junk$i.png.tif: can't write page file 'in/junk$i.png', invalid png format"
    done
    for i in 1 2; do
        echo "$1/text$i.txt.tif: can't write page file 'in/text$i.txt', unsupported  format"
    done
}
equal "the list of failures" "$(tail -n +2 whole.err | LC_ALL=C sort)" "$(expectedFailures whole)"
equal "the number of results" "$(ls -A whole | wc -l)" 40

setsid "$batch" -j 2 -r 1 killed.tsv 2>/dev/null &
group=$!
for ((i = 0; i < 600; ++i)); do
    (($(ls killed 2>/dev/null | wc -l) >= 15)) && break
    sleep 0.05
done
kill -KILL -- "-$group"
wait "$group" 2>/dev/null
before=$(ls killed | wc -l)
((before >= 15 && before < 40)) || fail "the batch was not killed in the middle but after $before"
# What was done has an inode that a second conversion would change.
ls -i killed | LC_ALL=C sort >before
cp whole/9.png.tif killed/.9.png.tif.123.part

"$batch" -j 2 -r 1 killed.tsv 2>killed.err
equal "the exit status of the resumed batch" $? 1
equal "the summary of the resumed batch" "$(head -n 1 killed.err)" \
    "$(head -n 1 whole.err)"
equal "the failures of the resumed batch" "$(tail -n +2 killed.err | LC_ALL=C sort)" \
    "$(expectedFailures killed)"
equal "the result" "$(tree killed)" "$(tree whole)"
# A kill between the renaming and the record of it leaves a job to be done again:
# at most one for each that ran at a time.
again=$(ls -i killed | LC_ALL=C sort | comm -13 - before | wc -l)
((again <= 2)) || fail "$again jobs were done again"
