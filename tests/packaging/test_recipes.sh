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

recipe_MailGateway() {
    need python3 python3
    takeScript mail-to-fax
    mkdir out
    {
        printf '%s\n' 'From: "Eve <b>" <eve@example.org>' 'To: fax@example.org' \
            'Subject: =?utf-8?q?Gr=C3=BC=C3=9Fe_=3Cimg_src=3D/x=3E?=' 'MIME-Version: 1.0' \
            'Content-Type: multipart/mixed; boundary=B' '' '--B' \
            'Content-Type: text/plain; charset=utf-8' '' 'See <below> & reply' '--B' \
            'Content-Type: application/octet-stream' \
            'Content-Disposition: attachment; filename="../../-o evil.PDF"' \
            'Content-Transfer-Encoding: base64' ''
        base64 letter.pdf
        printf '%s\n' '--B' 'Content-Type: image/png' 'Content-Transfer-Encoding: base64' ''
        base64 picture.png
        printf '%s\n' '--B--'
    } >message
    # A stand-in keeps the cover page and the names for the comparison.
    printf '#!/bin/sh\ncp "$2" cover.html\nfor name; do echo "${name##*/}"; done >names\nexec "%s" "$@"\n' \
        "$program" >bin/morvaltide
    chmod +x bin/morvaltide
    bin/mail-to-fax out/fax.tif <message || fail "mail-to-fax failed"
    equal "the number of pages" "$(pages out/fax.tif)" 3
    equal "what is in the folder" "$(ls -A out)" fax.tif
    equal "the documents" "$(tail -n 2 names)" "0001.pdf
0002.png"
    grep -qF '<b>Subject:</b> Grüße &lt;img src=/x&gt;</p>' cover.html ||
        fail "the subject is not on the cover page: $(<cover.html)"
    grep -qF 'See &lt;below&gt; &amp; reply' cover.html || fail "the text is not escaped"

    printf 'Subject: none\n\njust words\n' >message
    bin/mail-to-fax out/none.tif <message 2>error && fail "a mail without documents passed"
    equal "the message" "$(<error)" "the message has no document that can be faxed"
    equal "what is in the folder after a failure" "$(ls -A out)" fax.tif
}

recipe_WatchedFolder() {
    takeScript fax-watch
    mkdir -p fax/incoming
    cp letter.pdf bad.png fax/incoming
    cp picture.png 'fax/incoming/-o two words.png'
    cp picture.png fax/incoming/.unfinished.png
    bin/fax-watch fax || fail "fax-watch failed"
    bin/fax-watch fax || fail "fax-watch failed in an empty folder"
    equal "what is done" "$(ls -A fax/done)" "-o two words.png.tif
letter.pdf.tif"
    equal "what has failed" "$(ls -A fax/failed)" "bad.png
bad.png.txt"
    equal "the message" "$(<fax/failed/bad.png.txt)" \
        "can't write page file 'work/bad.png', invalid png format"
    equal "what is left to do" "$(ls -A fax/incoming)" .unfinished.png
    equal "the number of pages" "$(pages fax/done/letter.pdf.tif)" 1
}

recipe_WatchedFolderUnits() {
    need systemd-analyze systemd
    mkdir units
    takeScript fax-watch.path
    takeScript fax-watch.service
    cat bin/fax-watch.path >units/fax-watch.path
    # The program has to exist for the check.
    sed "s|/usr/local/bin/fax-watch|/bin/true|" bin/fax-watch.service >units/fax-watch.service
    equal "what systemd says of the units" \
        "$(systemd-analyze verify --man=no units/fax-watch.path units/fax-watch.service 2>&1 |
            grep fax-watch)" ""
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
        "$(od -An -tu1 -j16 -N8 page-2.png | tr -s ' ')" " 0 0 3 79 0 0 4 145"
}

"recipe_$3"
