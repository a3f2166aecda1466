#!/usr/bin/env python3
"""Adds up what gcov reports as JSON on standard input, one document a line.

coverage-table.py SOURCE-FOLDER [--missing]

Branches that only an exception out of a callee takes are left out, together
with the way on that such a call has otherwise: no test could take the first.
For the same reason closing brackets are no lines: what the compiler puts there
cleans up after exceptions.

What a process does between fork and exec, or before a signal ends it, is never
counted: the counts are written when a process exits.
"""

import collections
import json
import pathlib
import sys


def countable_branches(branches):
    """The numbers of the branches that a decision in the source takes."""
    left_out = set()
    for number, branch in enumerate(branches):
        if branch["throw"]:
            left_out.add(number)
            for other in (number - 1, number + 1):
                if 0 <= other < len(branches) and other not in left_out \
                        and not branches[other]["throw"]:
                    left_out.add(other)
                    break
    return [number for number in range(len(branches)) if number not in left_out]


def read_counts(stream, top):
    """Hits by (file, line) and by (file, line, branch). Several object files
    may contain the same line of a header: their hits are added."""
    lines = collections.Counter()
    branches = collections.Counter()
    for document in filter(str.strip, stream):
        report = json.loads(document)
        folder = pathlib.Path(report["current_working_directory"])
        for source in report["files"]:
            path = (folder / source["file"]).resolve()
            if top not in path.parents:
                continue
            text = path.read_text().splitlines()
            for line in source["lines"]:
                if not text[line["line_number"] - 1].strip(" });"):
                    continue
                place = (path, line["line_number"])
                lines[place] += line["count"]
                for number in countable_branches(line["branches"]):
                    branches[place + (number,)] += line["branches"][number]["count"]
    return lines, branches


def share(hits):
    hits = list(hits)
    if not hits:
        return f"{'none':>19}"
    reached = sum(1 for hit in hits if hit)
    return f"{reached:5} of {len(hits):5} {100 * reached / len(hits):4.0f}%".rjust(19)


def print_row(name, lines, branches):
    print(f"{name:14}{share(lines)}{share(branches)}")


def main():
    top = pathlib.Path(sys.argv[1])
    lines, branches = read_counts(sys.stdin, top)
    if not lines:
        sys.exit("gcov has nothing on " + str(top))
    print(f"\n{'folder':14}{'lines':>19}{'branches':>19}")
    for folder in sorted({place[0].parent for place in lines}):
        print_row(str(folder.relative_to(top)),
                  [hit for place, hit in lines.items() if place[0].parent == folder],
                  [hit for place, hit in branches.items() if place[0].parent == folder])
    print_row("all", lines.values(), branches.values())
    if "--missing" in sys.argv:
        print("\nlines that no test reaches:")
        for path, line in sorted(place for place, hit in lines.items() if not hit):
            print(f"src/{path.relative_to(top)}:{line}")


if __name__ == "__main__":
    main()
