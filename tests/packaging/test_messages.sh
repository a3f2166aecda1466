#!/usr/bin/env bash
# Every message that the program can be made to print is in the man page.
source "$(dirname "$0")/check.sh"
need man man-db
need gs ghostscript
text=$(LC_ALL=C.UTF-8 MANWIDTH=500 man -E ASCII --no-hyphenation --no-justification -l "$3" |
    col -b | tr -s ' ' | sed -E "s/'[^' ]*'/'X'/g; s/ KIND / X /g")

# explained <message as in the page> <argument>...
explained() {
    local expected=$1 message
    shift
    message=$("$program" "$@" 2>&1 >/dev/null </dev/null) && fail "morvaltide $* was successful"
    # The names of files, formats, options and values are variable.
    # Lines that begin so are libtiff's.
    message=$(grep -v '^TIFF' <<<"$message" | tail -n 1 | sed -E "s/'[^' ]*'/'X'/g; s/(ed|id) [a-z]* format/\1 X format/
        s/matches.*/matches .../")
    equal "the message of morvaltide $*" "$message" "$expected"
    message=${message#"can't write page file 'X', "}
    message=${message#"can't write cover page file 'X', "}
    [[ $text == *"$message"* ]] || fail "the man page does not explain: $message"
}

makeDocuments 1 pngmono good.png
makeDocuments 1 pdfwrite good.pdf
echo text >text.txt
echo junk >junk.png
echo junk >junk.tif
echo words >words.html
ln -s /dev/full full.tif
mkdir folder

explained "can't open file 'X'" -o folder good.png
explained "can't write page file 'X', file not found" -o out.tif gone.png
explained "can't write page file 'X', unsupported X format" -o out.tif words.html
explained "can't write page file 'X', unsupported X format" -o out.tif text.txt
explained "can't write page file 'X', invalid X format" -o out.tif junk.png
explained "can't write page file 'X', invalid render size" -o out.tif -m nan good.png
explained "can't write page file 'X', invalid data" -o out.tif junk.tif
explained "can't write page file 'X', failed to write" -o /dev/stdout good.png
explained "can't write cover page file 'X', unsupported X format" -o out.tif -C good.pdf good.png
explained "can't write cover page file 'X', invalid data" -o out.tif -C words.html good.png
explained "the option 'X' is required but missing" good.png
explained "the argument ('X') for option 'X' is invalid" -o out.tif -p a5 good.png
explained "the argument ('X') for option 'X' is too large" -o out.tif -m 9 good.png
explained "unrecognised option 'X'" --bogus
explained "option 'X' is ambiguous and matches ..." --co g4
explained "the required argument for option 'X' is missing" -o
explained "option 'X' does not take any arguments" --help=yes
explained "option 'X' cannot be specified more than once" -o a -o b good.png

message=$("$program" --help 2>&1 >/dev/full)
[[ -n $message && $text == *"$message"* ]] || fail "the man page does not explain: $message"
