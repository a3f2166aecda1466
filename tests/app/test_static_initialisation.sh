#!/usr/bin/env bash
# Before main() nothing runs but the initialisation of the standard streams and
# of the format table: what runs there runs for --version as well, and what fails
# there cannot be reported.
#
#   test_static_initialisation.sh PROGRAM    a program with its symbols
set -euo pipefail

# The functions that run before main() bear the names of their source files or, in
# code that is not position-independent, of the first function in them. Each does
# its work itself, or in a function that is called for no other file.
initialisers=$(LC_ALL=C objdump --disassemble --no-show-raw-insn "$1" | awk '
    /^[0-9a-f]+ <.*>:$/ {
        name = substr($2, 2, length($2) - 3)
        address = $1
        sub(/^0+/, "", address)
        isWanted = name ~ /^_GLOBAL__sub_I_|static_initialization_and_destruction|__cxx_global_var_init/
        if (name ~ /^_GLOBAL__sub_I_/) {
            file[address] = substr(name, length("_GLOBAL__sub_I_") + 1)
            # What the optimiser has moved out of the way.
            sub(/\.cold$/, "", file[address])
            sub(/^_ZN18FileFormatDatabase.*/, "FileFormatDatabase.cpp", file[address])
        }
        next
    }
    # Everything else that the function names, other places in itself left out.
    isWanted && match($0, /<[^>+]+>/) {
        symbol = substr($0, RSTART + 1, RLENGTH - 2)
        sub(/@.*/, "", symbol)
        if (symbol ~ /static_initialization_and_destruction|__cxx_global_var_init/) {
            match($0, /[0-9a-f]+ </)
            parent[substr($0, RSTART, RLENGTH - 2)] = address
        } else {
            uses[++count] = address " " symbol
        }
    }
    END {
        for (i = 1; i <= count; ++i) {
            split(uses[i], use)
            owner = use[1] in parent ? parent[use[1]] : use[1]
            print file[owner], use[2]
        }
    }')

# The test itself would be void if it found nothing.
if ! grep -q '^FileFormatDatabase.cpp ' <<<"$initialisers"; then
    echo "the initialisation of the format table was not found" >&2
    exit 1
fi

# The streams of the standard library, and the constants of Boost, which are empty.
# Guards and unwinding are means: what is guarded is named as well. A build for coverage
# maps the file of its counters there.
if others=$(grep -vE '^(FileFormatDatabase|InstrProfilingRuntime)\.cpp ' <<<"$initialisers" |
    grep -vE ' (_ZNSt8ios_base4Init[CD]1Ev|_ZStL8__ioinit|__dso_handle|__cxa_atexit)$' |
    grep -vE ' (__cxa_guard_(acquire|release|abort)|_Unwind_Resume)$' |
    grep -vE ' (_Z|_ZGV)N5boost(4none|6none_t|11optional_ns)'); then
    echo "these run before main(): $others" >&2
    exit 1
fi
