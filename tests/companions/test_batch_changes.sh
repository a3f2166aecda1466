#!/usr/bin/env bash
# Jobs are told by their line and their documents: when a list grows or a
# document changes, just that is converted.
# shellcheck source=../packaging/check.sh
source "$(dirname "$0")/../packaging/check.sh"
need parallel parallel
need gs ghostscript

batch=$sources/companions/morvaltide-batch
export PARALLEL_HOME=$work/parallel
mkdir "$PARALLEL_HOME" in out

makeDocuments 5 pngmono in/%d.png
for i in 1 2 3 4 5; do printf 'out/%d.tif\t\t\tin/%d.png\n' $i $i; done >list
printf 'out/gone.tif\t\t\tin/gone.png\n' >>list

# again <when> <what is expected>: runs the batch and lists what it has written,
# which is what has another inode than before.
again() {
    # shellcheck disable=SC2012 # the names are known
    ls -i out | LC_ALL=C sort >before
    "$batch" -j 2 -r 1 list 2>words
    # shellcheck disable=SC2012
    equal "what is written $1" \
        "$(ls -i out | LC_ALL=C sort | comm -23 - before | awk '{ print $2 }' | sort | paste -sd ' ')" "$2"
}
again "at first" "1.tif 2.tif 3.tif 4.tif 5.tif"
equal "the summary" "$(sed '1s/;.*//' words)" \
    "5 of 6 jobs are done, 0 of them with remarks, 1 failed
out/gone.tif: can't write page file 'in/gone.png', file not found"
again "when nothing has changed" ""
cp in/1.png in/gone.png
again "after one document was mended" "gone.tif"
equal "the summary" "$(<words)" "6 of 6 jobs are done, 0 of them with remarks, 0 failed; 6 pages, \
$(cat out/*.tif | wc -c) bytes"
{
    printf 'out/new.tif\t\t\tin/2.png\n'
    tac list
} >grown && mv grown list
again "after the order changed and a line came" "new.tif"
sed -i 's|^\(out/1.tif\t\)|\1-c g4|' list
again "after the options of a line changed" "1.tif"
cp in/3.png in/2.png
touch in/4.png
rm in/5.png
again "after a document changed, one was touched and one removed" "2.tif new.tif"
mkdir sent
mv out/3.tif sent
again "after a fax was taken away" ""
