#!/usr/bin/env bash
# Runs the scripts of docs/recipes.md and docs/viewing.md as they are printed
# there:
#
#   test_recipes.sh PROGRAM SOURCES RECIPE
# shellcheck disable=SC2016 # text of other scripts
source "$(dirname "$0")/check.sh"
need gs ghostscript
need tiffinfo libtiff-tools

# takeScript <name>: writes the block that follows "<!-- script: NAME -->" to
# bin/NAME.
takeScript() {
    mkdir -p bin
    awk -v mark="<!-- script: $1 -->" '
        $0 == mark { found = 1; next }
        found && /^```$/ { exit }
        inside { print }
        found && /^```/ { inside = 1 }' "$sources"/docs/recipes.md "$sources"/docs/viewing.md \
        >"bin/$1"
    [[ -s bin/$1 ]] || fail "the documents have no script $1"
    chmod +x "bin/$1"
}

# standIn <program>: one that notes its arguments, one a line, in PROGRAM.log.
standIn() {
    mkdir -p bin
    printf '#!/bin/sh\nprintf "%%s\\n" "$@" >>"%s"\n' "$work/$1.log" >"bin/$1"
    chmod +x "bin/$1"
}

PATH=$work/bin:$PATH
makeDocuments 1 pdfwrite letter.pdf
makeDocuments 1 pngmono picture.png
echo junk >bad.png

recipe_FaxQueue() {
    takeScript fax-submit
    # The queue takes the file away before the script removes its folder.
    printf '#!/bin/sh\nprintf "%%s " "$1" "$2" "$3" >>queue.log\ncp "$4" queued.tif\n' >bin/sendfax
    chmod +x bin/sendfax
    cp picture.png ./-n.png
    bin/fax-submit 5551234 letter.pdf -n.png || fail "fax-submit failed"
    equal "what sendfax was asked" "$(<queue.log)" "-n -d 5551234 "
    equal "the number of pages" "$(pages queued.tif)" 2

    rm queue.log
    bin/fax-submit 5551234 bad.png 2>message && fail "fax-submit passed with a bad document"
    equal "the message" "$(<message)" "can't write page file 'bad.png', invalid png format"
    [[ ! -e queue.log ]] || fail "a bad document was queued"
}

recipe_FaxQueueConverter() {
    takeScript hylafax-config
    takeScript morvaltide.options
    mkdir -p etc tmp share/morvaltide
    cp bin/morvaltide.options etc
    cp -r "$sources/companions/hylafax" share/morvaltide
    for name in pdf2fax tiff2fax; do
        ln -s morvaltide-ps2fax "share/morvaltide/hylafax/morvaltide-$name"
    done
    cp letter.pdf document.PDF2FaxCmd
    gs -q -sDEVICE=ps2write -o document.PS2FaxCmd letter.pdf
    morvaltide -r superfine -o document.TIFF2FaxCmd letter.pdf
    local option converter
    while read -r option converter; do
        "${converter#/usr/}" -o fax.tif -r 196 -w 1728 -l 297 -3 "document.${option%:}" ||
            fail "$option failed"
        # The text of the page is found below the margin at the top.
        morvaltide -r fine -c g4 -m 0,0.2,0,0 -o expected.tif letter.pdf
        equal "the size after $option" "$(tiffinfo fax.tif | grep 'Image Width')" \
            "$(tiffinfo expected.tif | grep 'Image Width')"
        [[ $option != PDF2FaxCmd: ]] || cmp fax.tif expected.tif || fail "there is no margin"
        rm fax.tif
    done <bin/hylafax-config
}

recipe_FaxQueueLimits() {
    takeScript FaxModify
    limitFor() {
        opt=" -l $1 -w 1728 -r 196 -1"
        # shellcheck disable=SC1091
        . bin/FaxModify
        echo "$opt"
    }
    equal "the limit of A4" "$(limitFor 297)" " -l 298 -w 1728 -r 196 -1 "
    equal "the limit of letter" "$(limitFor 279)" " -l 280 -w 1728 -r 196 -1 "
    equal "the limit of legal" "$(limitFor 355)" " -l 356 -w 1728 -r 196 -1 "
    equal "another limit" "$(limitFor 2970)" " -l 2970 -w 1728 -r 196 -1 "

    # A page is higher than the limit in front and not higher than the new one.
    local paper below above lines
    while read -r paper below above; do
        morvaltide -p "$paper" -r fine -o fax.tif picture.png
        lines=$(tiffinfo fax.tif | sed -n 's/.*Image Length: //p')
        ((lines * 254 > below * 196 * 10 && lines * 254 <= above * 196 * 10)) ||
            fail "a page of $paper has $lines lines, not between $below and $above mm"
    done <<<"a4 297 298
letter 279 280
legal 355 356"
}

recipe_Spool() {
    takeScript spool-fax
    mkdir spool
    bin/spool-fax spool/12.tif letter.pdf picture.png || fail "spool-fax failed"
    equal "the spool" "$(ls -A spool)" 12.tif
    equal "the number of pages" "$(pages spool/12.tif)" 2
    bin/spool-fax spool/13.tif letter.pdf bad.png 2>message && fail "spool-fax hid a failure"
    equal "the spool after a failure" "$(ls -A spool)" 12.tif

    # A stand-in looks into the spool while the fax is being written.
    printf '#!/bin/sh\nls -A spool >during\nexec "%s" "$@"\n' "$program" >bin/morvaltide
    chmod +x bin/morvaltide
    bin/spool-fax spool/14.tif letter.pdf
    equal "the spool during a conversion" "$(<during)" 12.tif
}

recipe_CallFile() {
    takeScript call-fax
    mkdir -p asterisk/tmp asterisk/outgoing
    bin/call-fax PJSIP/5551234@provider /var/spool/fax/12.tif asterisk || fail "call-fax failed"
    equal "the folder of unfinished files" "$(ls -A asterisk/tmp)" ""
    equal "the call file" "$(cat asterisk/outgoing/*.call)" "Channel: PJSIP/5551234@provider
Application: SendFAX
Data: /var/spool/fax/12.tif
MaxRetries: 2
RetryTime: 300"
}

recipe_Files() {
    local script name
    for script in "$sources"/examples/recipes/*; do
        name=$(basename "$script")
        takeScript "$name"
        equal "the script $name in the document" "$(<"bin/$name")" "$(<"$script")"
        grep -q "examples/recipes/$name\b" "$sources/cmake/Companions.cmake" ||
            fail "$name is not installed"
    done
    [[ -e bin/spool-fax ]] || fail "there are no scripts"
}

recipe_MailGateway() {
    need tiffcp libtiff-tools
    takeScript mail-to-fax
    ln -s "$sources/companions/morvaltide-mail" bin/morvaltide-mail
    # The queue takes the file away before the script removes its folder.
    printf '#!/bin/sh\nprintf "%%s " "$1" "$2" "$3" >>queue.log\ncp "$4" queued.tif\n' >bin/sendfax
    chmod +x bin/sendfax
    standIn logger
    printf 'From: Ann <ann@example.org>\nSubject: Hello\n\nwords\n' >message
    bin/mail-to-fax 5551234 <message || fail "mail-to-fax failed"
    equal "what sendfax was asked" "$(<queue.log)" "-n -d 5551234 "
    equal "the number of pages" "$(pages queued.tif)" 1

    rm queue.log queued.tif
    # A part that cannot be faxed is noted, and the rest is sent.
    printf 'Content-Type: application/zip; name=a.zip\n\nPK\003\004\n' >message
    bin/mail-to-fax 5551234 <message || fail "mail-to-fax failed for a part that cannot be faxed"
    equal "the number of pages" "$(pages queued.tif)" 1
    equal "what was noted" "$(<logger.log)" "-t
mail-to-fax"

    rm queue.log
    bin/mail-to-fax 5551234 </dev/null 2>words
    equal "the exit status for an empty mail" $? 69
    equal "what the sender is told" "$(<words)" "morvaltide-mail: the message is empty"
    [[ ! -e queue.log ]] || fail "an empty mail was queued"
}

recipe_FaxToMail() {
    need tiff2pdf libtiff-tools
    need python3 python3
    takeScript fax-to-mail
    printf '#!/bin/sh\nprintf "%%s\\n" "$@" >sendmail.log\ncat >mail\n' >bin/sendmail
    chmod +x bin/sendmail
    morvaltide -r fine -o fax.tif letter.pdf picture.png
    bin/fax-to-mail fax.tif office@example.org $'+49 12\nBcc: x@example.org' ||
        fail "fax-to-mail failed"
    equal "what sendmail was asked" "$(<sendmail.log)" "-i
--
office@example.org"
    equal "the headings" "$(sed '/^$/q' mail | grep -v '^Content\|^MIME')" "To: office@example.org
Subject: Fax from +49 12Bcc xexample.org"
    python3 -c 'import email, sys
message = email.message_from_binary_file(open("mail", "rb"))
open("mailed.pdf", "wb").write(message.get_payload(decode=True))'
    # Drawn at the very dots of the fax, the document has the same pages.
    gs -q -sDEVICE=tiffg4 -r204x196 -g1728x2292 -o drawn.tif mailed.pdf
    equal "the number of pages" "$(pages drawn.tif)" 2
    local page file
    for page in 0 1; do
        for file in fax drawn; do
            tiffcp -c none "$file.tif,$page" "$file$page.tif"
        done
        PYTHONPATH=$sources/companions python3 -B -c 'import sys
from morvaltide_companions import tiff
def dots(path):
    (page,) = tiff.read(path)[1]
    data = b"".join(page.strips())
    return data if page.numbers(tiff.PHOTOMETRIC) == [0] else bytes(255 - byte for byte in data)
first, second = map(dots, sys.argv[1:])
sys.exit(first != second or not any(first))' "fax$page.tif" "drawn$page.tif" ||
            fail "page $page is another one"
    done
}

recipe_CoverTemplate() {
    takeScript make-cover
    # shellcheck disable=SC2016
    printf '%s\n' 'A & B <script>' '$(touch evil) `touch evil` \0' |
        bin/make-cover '<b>Ann</b>' 'Bob "$HOME"' '&lt; @TO@ \1 &' >cover.html
    for expected in '<td>&lt;b&gt;Ann&lt;/b&gt;</td>' '<td>Bob &quot;$HOME&quot;</td>' \
        '<td>&amp;lt; @TO@ \1 &amp;</td>' 'A &amp; B &lt;script&gt;<br>' \
        '$(touch evil) `touch evil` \0<br>'; do
        grep -qF -- "$expected" cover.html || fail "the page lacks $expected: $(<cover.html)"
    done
    [[ ! -e evil ]] || fail "the text was run as a command"
    morvaltide -o fax.tif -C cover.html picture.png || fail "the page cannot be converted"
    equal "the number of pages" "$(pages fax.tif)" 2
}

recipe_ParallelFolder() {
    need parallel parallel
    takeScript fax-all
    export PARALLEL_HOME=$work/parallel
    mkdir "$PARALLEL_HOME" docs
    mv letter.pdf docs/a.pdf
    cp docs/a.pdf 'docs/b c.pdf'
    (cd docs && sh ../bin/fax-all) || fail "fax-all failed"
    equal "what is in the folder" "$(ls -A docs)" "a.pdf
a.tif
b c.pdf
b c.tif
fax.log"
}

recipe_SlurmArray() {
    takeScript fax-array
    printf 'one.tif\tletter.pdf\ntwo words.tif\tpicture.png\n' >list
    SLURM_ARRAY_TASK_ID=2 bin/fax-array list || fail "fax-array failed"
    equal "the number of pages" "$(pages 'two words.tif')" 1
    [[ ! -e one.tif ]] || fail "another task was run too"
}

recipe_ViewAsPdf() {
    need tiff2pdf libtiff-tools
    takeScript fax-to-pdf
    morvaltide -r standard -o fax.tif letter.pdf
    sh bin/fax-to-pdf || fail "fax-to-pdf failed"
    # In points: 1728 dots of 1/204 inch, 1146 lines of 1/98 inch.
    equal "the size of the page" \
        "$(gs -q -dNODISPLAY -dNOSAFER -dBATCH -c '(fax.pdf) (r) file runpdfbegin
            1 pdfgetpage /MediaBox get aload pop round cvi = round cvi = pop pop quit')" "842
610"
}

recipe_ViewAsPng() {
    need tiff2pdf libtiff-tools
    takeScript fax-to-png
    morvaltide -r standard -o fax.tif letter.pdf picture.png
    sh bin/fax-to-png || fail "fax-to-png failed"
    # Width and height are the 17th to 24th byte of a PNG file.
    equal "the size of the second picture" \
        "$(od -An -tu1 -j16 -N8 page-2.png | tr -s ' ')" " 0 0 3 96 0 0 4 169"
}

"recipe_$3"
