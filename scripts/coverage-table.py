#!/usr/bin/env python3
"""Adds up what llvm-cov exports as LCOV on standard input.

coverage-table.py SOURCE-FOLDER [--missing]

Closing brackets are no lines: they are reached with what is before them.
"""

import pathlib
import sys


def read_counts(stream, top):
    """Hits by (file, line), and by (file, line, block, branch)."""
    lines, branches = {}, {}
    path, text = None, []
    for record in stream:
        kind, _, value = record.strip().partition(":")
        if kind == "SF":
            path = pathlib.Path(value)
            path = path if top in path.parents else None
            text = path.read_text().splitlines() if path else []
        elif path and kind in ("DA", "BRDA"):
            *place, hits = value.split(",")
            if kind == "BRDA":
                branches[path, *place] = 0 if hits == "-" else int(hits)
            elif text[int(place[0]) - 1].strip(" });"):
                lines[path, int(place[0])] = int(hits)
    return lines, branches


def share(hits):
    hits = list(hits)
    if not hits:
        return f"{'none':>19}"
    reached = sum(1 for hit in hits if hit)
    return f"{reached:5} of {len(hits):5} {100 * reached / len(hits):4.0f}%".rjust(19)


def print_row(name, lines, branches):
    print(f"{name:18}{share(lines)}{share(branches)}")


def main():
    top = pathlib.Path(sys.argv[1])
    lines, branches = read_counts(sys.stdin, top)
    if not lines:
        sys.exit("nothing is counted of " + str(top))
    print(f"\n{'folder':18}{'lines':>19}{'branches':>19}")
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
