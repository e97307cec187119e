"""What the worker's sources say on the wire: the lines that they write, the commands that they know."""

import re

TOKEN = re.compile(
    r"""(?P<skip>\s+|//[^\n]*|/\*.*?\*/|\#[ \t]*include[^\n]*)
    |(?P<text>"(?:[^"\\\n]|\\.)*")
    |(?P<character>'(?:[^'\\\n]|\\.)+')
    |(?P<word>\w+)
    |(?P<sign>.)""",
    re.VERBOSE | re.DOTALL,
)
ESCAPE = re.compile(r'\\(["\\nrt])')
OPENING, CLOSING = "([{", ")]}"


def tokens_of(source):
    """Kind and text of each, without comments and includes."""
    return [(found.lastgroup, found.group()) for found in TOKEN.finditer(source) if found.lastgroup != "skip"]


def text_of(literal):
    return ESCAPE.sub(lambda found: {"n": "\n", "r": "\r", "t": "\t"}.get(found[1], found[1]), literal[1:-1])


def split(tokens, sign):
    """The parts between those signs that stand in no bracket."""
    parts, depth = [[]], 0
    for kind, text in tokens:
        if kind == "sign":
            depth += (text in OPENING) - (text in CLOSING)
        if (kind, text) == ("sign", sign) and depth == 0:
            parts.append([])
        else:
            parts[-1].append((kind, text))
    return parts


def arguments(tokens, start):
    """What stands in the brackets that open at `start`."""
    depth, inside = 0, []
    for kind, text in tokens[start:]:
        if kind == "sign":
            depth += (text in OPENING) - (text in CLOSING)
        if depth == 0:
            return inside[1:]
        inside.append((kind, text))
    raise ValueError("a bracket that is never closed")


class Line:
    """One line that the sources can write. `parts` are texts, and None for what is filled in; `filled` are the names
    that stand where something is filled in."""

    def __init__(self, prefix, parts):
        self.parts = [prefix]
        self.filled = []
        for is_text, part in parts:
            if not is_text:
                self.parts.append(None)
                self.filled.append(part)
            elif self.parts[-1] is None:
                self.parts.append(part)
            else:
                self.parts[-1] += part
        self.form = "".join("{}" if part is None else part for part in self.parts)


def part_of(term):
    """A text, or the names of what is filled in."""
    if [text for _, text in term[:4]] == ["std", ":", ":", "string"] and len(term) >= 7:
        inside = arguments(term, 4)
        if inside and all(kind == "text" for kind, _ in inside):
            term = inside
    if term and all(kind == "text" for kind, _ in term):
        return True, "".join(text_of(text) for _, text in term)
    return False, {text for kind, text in term if kind == "word"}


def lines_of(prefix, expression):
    """The lines that a call with this argument writes: more than one where it chooses between two."""
    chosen = split(expression, "?")
    if len(chosen) == 2:
        return [line for branch in split(chosen[1], ":") for line in lines_of(prefix, branch)]
    return [Line(prefix, [part_of(term) for term in split(expression, "+")])]


class Sources:
    """`files` maps each path below worker/ to its text."""

    def __init__(self, files):
        self.files = files
        self.tokens = {name: tokens_of(source) for name, source in files.items()}
        self.log_prefix = self.one("protocol/emit.cpp", r'void emit_log\(const std::string& text\) \{\s*emit\("(.*)" \+ text\);')
        self.lines = []
        self.posted = []
        for name, tokens in self.tokens.items():
            for at, (kind, text) in enumerate(tokens[:-1]):
                if kind == "word" and tokens[at + 1] == ("sign", "(") and not name.startswith("protocol/emit."):
                    self.call(text, tokens, at + 1)
        self.commands = re.findall(r'^    \{"(\w+)", (\d), (\w+)\},$', files["program/dispatch.cpp"], re.MULTILINE)

    def call(self, function, tokens, at):
        if function == "emit":
            self.lines += lines_of("", arguments(tokens, at))
        elif function == "emit_log":
            self.lines += lines_of(self.log_prefix, arguments(tokens, at))
        elif function == "post_command":
            kind, text = arguments(tokens, at)[0]
            if kind == "text":
                self.posted.append(text_of(text).split("|")[0])

    def one(self, name, pattern):
        found = re.findall(pattern, self.files[name])
        if len(found) != 1:
            raise ValueError(f"worker/{name} has no longer one place like {pattern}")
        return found[0]

    def literals(self):
        """Every text in quotes, with the file it stands in; those that follow each other are one."""
        found = []
        for name, tokens in self.tokens.items():
            before = None
            for kind, text in tokens:
                if kind == "text" and before == "text":
                    found[-1] = (found[-1][0] + text_of(text), name)
                elif kind == "text":
                    found.append((text_of(text), name))
                before = kind
        return found
