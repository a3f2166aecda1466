"""The faults that can be planted in a source of C++."""

import hashlib
import pathlib
import re

# With blanks on both sides, as clang-format writes operators with two operands,
# these are no references, pointers or template brackets.
OPERATORS = {
    "==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">", "&&": "||", "||": "&&",
    "+": "-", "-": "+", "*": "/", "/": "*", "%": "*", "&": "|", "|": "&", "<<": ">>", ">>": "<<",
    "+=": "-=", "-=": "+=", "|=": "&=", "&=": "|=",
}
# Comments, preprocessor lines and literals are passed over.
TOKEN = re.compile(r"""
    (?P<skip> //[^\n]* | /\*.*?\*/ | ^[ ]*\#(?:\\\n|[^\n])* | R"(\w*)\(.*?\)\2"
            | "(?:\\.|[^"\\\n])*" | '(?:\\.|[^'\\\n])+' )
  | (?P<operator> (?<=[ ])(?:""" + "|".join(map(re.escape, sorted(OPERATORS, key=len, reverse=True)))
    + r""")(?=[ \n]) )
  | (?P<step> \+\+ | -- )
  | (?P<negation> !(?=[\w(]) )
  | (?P<constant> (?<![\w.])(?:\d+(?=U?L*\b(?![.\w'])) | true\b | false\b) )
  | (?P<condition> (?<=\bif[ ]\()(?=[^;{]*?\)\ \{\n) )
  | (?P<statement> (?<=\n)[ ]+ (?!return|throw|using|delete|case|break|continue|else|const\b|static)
      [\w:.>\[\]-]+ (?: \([^;{}]*\) | [ ][-+|&^]?=[ ][^;{}]* ) ;(?=\n) )
  | (?P<word> \w+ )
  """, re.X | re.S | re.M)


def closing_bracket(text, start):
    """Where the bracket closes that was opened just before `start`."""
    depth = 1
    for position in range(start, len(text)):
        depth += {"(": 1, ")": -1}.get(text[position], 0)
        if depth == 0:
            return position
    return None


def faults_in(text):
    """All (start, end, replacement) of a source."""
    position = 0
    while match := TOKEN.search(text, position):
        token, start, end = match.group(), match.start(), match.end()
        kind = next(name for name, value in match.groupdict().items() if value is not None)
        position = end
        if kind == "operator":
            yield start, end, OPERATORS[token]
        elif kind == "step":
            yield start, end, {"++": "--", "--": "++"}[token]
        elif kind == "negation":
            yield start, end, ""
        elif kind == "constant":
            yield start, end, {"true": "false", "false": "true"}.get(token) or str(int(token) + 1)
        elif kind == "condition":
            position = start + 1
            close = closing_bracket(text, start)
            if close is not None and ";" not in text[start:close]:
                yield start, close, f"!({text[start:close]})"
        elif kind == "statement":
            yield start, end, ";"
            # There are faults to plant inside, too.
            position = end - len(token.lstrip())


class Fault:
    """One change of one source."""

    def __init__(self, file, text, start, end, replacement):
        self.file = file
        self.span = start, end
        self.replacement = replacement
        self.replaced = text[start:end].strip()
        blanks = len(text[start:end]) - len(text[start:end].lstrip())
        self.line = text.count("\n", 0, start + blanks) + 1
        digest = hashlib.sha256(text.encode()).hexdigest()[:12]
        # Of another state of the source it is another fault.
        self.key = f"{file}:{digest}:{start}:{end}:{replacement}"

    def __str__(self):
        return f"{self.file}:{self.line}: {self.replaced!r} -> {self.replacement!r}"

    def planted(self, text):
        """The text of the source with the fault."""
        start, end = self.span
        return text[:start] + self.replacement + text[end:]


def all_faults(top):
    """What could be planted in the sources below `top`, in a fixed order."""
    faults = []
    for path in sorted(pathlib.Path(top, "src").rglob("*.cpp")):
        text = path.read_text()
        file = str(path.relative_to(top))
        faults += [Fault(file, text, *change) for change in faults_in(text)]
    return faults
