"""Small changes to C++ source, each of which some test should notice.

The worker's sources are formatted by one tool and written in one style, so a list of tokens is enough to find
operators, conditions and statements; what does not compile is left out later.
"""

import dataclasses
import hashlib
import re

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/)
      | (?P<directive>^[ \t]*\#(?:[^\n\\]|\\.|\\\n)*)
      | (?P<string>"(?:[^"\\\n]|\\.)*")
      | (?P<char>'(?:[^'\\\n]|\\.)*')
      | (?P<number>\b(?:0[xX][0-9A-Fa-f]+|[0-9]+)[uUlL]*\b)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<operator>->|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+|&*/]=|::|\[\[|\]\]|[^\s\w])""",
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)

# Binary ones stand between blanks; the same signs without them are templates, references and signs of numbers.
BINARY = {
    "==": ["!="], "!=": ["=="], "<": ["<="], "<=": ["<"], ">": [">="], ">=": [">"],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "&": ["|"], "|": ["&"],
    ">>": ["<<"], "<<": [">>"], "|=": ["&=", "="], "+=": ["="], "-=": ["+="],
}  # fmt: skip
WORDS = {
    "true": "false", "false": "true", "break": "continue", "continue": "break",
    "front": "back", "back": "front", "pop_front": "pop_back", "push_back": "push_front", "pop_back": "clear",
    "SIG_BLOCK": "SIG_UNBLOCK", "SIG_DFL": "SIG_IGN", "SIG_IGN": "SIG_DFL", "EBADF": "EINVAL",
    "FSETLOCKING_BYCALLER": "FSETLOCKING_INTERNAL", "find": "rfind", "rfind": "find", "toupper": "tolower",
    "exit": "abort", "fputs": "perror",
}  # fmt: skip
# Changes that a look at one token does not find: what a hasty author of threads would write.
PASSAGES = [
    (r"!watchdog_armed\.compare_exchange_strong\(attempt, 0\)", "watchdog_armed.exchange(0) == 0"),
    (r"connected\.exchange\(false\)\) \{", "connected.load()) {"),
    (r"\bwhile \((?=g_cmds)", "if ("),
    (r"const std::uint32_t attempt = connect_attempt\.fetch_add\(1\) \+ 1;",
     "const std::uint32_t attempt = connect_attempt.fetch_add(1);"),
    (r"std::uint32_t attempt = watchdog_armed;\s*if \(attempt == 0 \|\|",
     "std::uint32_t attempt = connect_attempt; if (watchdog_armed == 0 ||"),
    (r"to_string\(attempt\)", "to_string(connect_attempt)"),
]  # fmt: skip
LEFT_OUT = ("worker/threads/thread_annotations.h", "worker/threads/main_thread.h", "host/process/thread_annotations.h",
            "host/example.cpp")  # fmt: skip
# Every change of such a file is noticed: ./check writes it anew and compares.
GENERATED = "Written by catalogue/generate"


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str
    line: int
    text: str  # of the line it begins in
    before: str
    after: str
    start: int
    end: int

    @property
    def change(self):
        return f"{squeezed(self.before)} => {squeezed(self.after)}"

    @property
    def name(self):
        """The same for as long as the line and the change are."""
        return hashlib.sha1(f"{self.file}|{self.text}|{self.start_in_line}|{self.change}".encode()).hexdigest()[:10]

    start_in_line: int = 0

    @property
    def row(self):
        """As survivors names it."""
        return f"{self.file} | {self.text} | {self.change}"

    @property
    def changes_nothing(self):
        return self.before == self.after

    def applied_to(self, source):
        return source[: self.start] + self.after + source[self.end :]


# The worker as it is, by way of a header, which is compiled into more than a source is, and by way of no line, which
# takes every transcript.
CONTROL = Mutant("worker/protocol/fields.h", 0, "the worker as it is", "", "", 0, 0)
HOST_CONTROL = Mutant("host/values/time.h", 0, "the host's side as it is", "", "", 0, 0)


def squeezed(text):
    return re.sub(r"\s+", " ", text).strip() or "nothing"


def tokens_of(source):
    return [m for m in TOKEN.finditer(source) if m.lastgroup not in ("comment", "directive")]


def stands_between_blanks(source, token):
    return source[token.start() - 1].isspace() and source[token.end() : token.end() + 1].isspace()


def changed_number(text):
    digits = text.rstrip("uUlL")
    if digits[:2].lower() == "0x":
        return [hex(int(digits, 0) ^ 1)]
    if digits[0] == "0" and len(digits) > 1:
        return [f"0{int(digits, 8) ^ 0o200:o}"]  # the mode of a file, without what it is for
    value = int(digits)
    if value >= 100:
        return [str(value * 2), str(value // 2)]
    return [str(value + 1)]


# Only whether there is one counts: it is found from either end.
ONLY_WHETHER = re.compile(r"""r?find\((?:"[^"]*"|'[^']*'|\w+)\)\s+[!=]=\s+std::string(_view)?::npos""")
# Without it, or with another number, everything happens as before, a little later.
SAVES_TIME = re.compile(r"\.reserve\(")


def in_tokens(source, tokens):
    """(start, end, replacement) for every change of one token."""
    saves_time = [range(m.start(), source.index(";", m.start())) for m in SAVES_TIME.finditer(source)]
    for index, token in enumerate(tokens):
        text = token.group()
        before = tokens[index - 1].group() if index else ""
        if ONLY_WHETHER.match(source, token.start()) or any(token.start() in span for span in saves_time):
            continue
        if token.lastgroup == "operator" and text in BINARY and stands_between_blanks(source, token):
            yield from ((*token.span(), new) for new in BINARY[text])
        elif text == "!" and before in ("(", "&&", "||", "return", "="):
            yield (*token.span(), "")
        elif text in ("++", "--"):
            yield (*token.span(), "--" if text == "++" else "++")
        elif token.lastgroup == "number":
            yield from ((*token.span(), new) for new in changed_number(text))
        elif token.lastgroup == "string" and before != "extern":
            yield (*token.span(), '"~' + text[1:])
        elif token.lastgroup == "char":
            yield (*token.span(), "'~'")
        elif token.lastgroup == "word" and text in WORDS:
            yield (*token.span(), WORDS[text])


def matching(tokens, index, opening, closing):
    depth = 0
    for position in range(index, len(tokens)):
        depth += (tokens[position].group() == opening) - (tokens[position].group() == closing)
        if depth == 0:
            return position
    return None


def in_conditions(tokens):
    for index, token in enumerate(tokens[:-1]):
        if token.group() in ("if", "while") and tokens[index + 1].group() == "(":
            end = matching(tokens, index + 1, "(", ")")
            if any(t.group() == ";" for t in tokens[index + 1 : end]):
                continue
            span = tokens[index + 2].start(), tokens[end - 1].end()
            yield (*span, "false")
            if token.group() == "if":
                yield (*span, "true")


def statements_of(tokens):
    """Groups of neighbours: the spans of the plain statements of one block of code, in order."""
    groups, stack, begin, parens, last = [], [], None, 0, ""
    for token in tokens:
        text = token.group()
        parens += (text in ("(", "[")) - (text in (")", "]"))
        if parens == 0 and text == "{":
            # Other braces hold initial values, classes and namespaces.
            stack.append([] if last in (")", "else", "do", "const", "override", "noexcept") else None)
            groups.append(stack[-1])
            begin = None
        elif parens == 0 and text == "}":
            if stack:
                stack.pop()
            begin = None
        elif parens == 0 and text in (";", ":"):
            if text == ";" and begin is not None and stack and stack[-1] is not None:
                stack[-1].append((begin, token.end()))
            begin = None
        elif begin is None:
            begin = token.start()
        last = text
    return [group for group in groups if group]


NO_STATEMENT = re.compile(r"(using|static|constexpr|const|return) ")


# What the host, the camera or another thread can see; the order of anything else is nobody's business.
SEEN = re.compile(
    r"\b(emit|emit_log|post_command|sleep_for|notify_one|detach|leave|exit|write|return|continue|break)\b|sdk::|send_")
SHARED = re.compile(r"\b(exchange|publish|MutexLock|wait)\b")


def order_matters(first, second):
    counts = all(SEEN.search(text) or SHARED.search(text) for text in (first, second))
    return counts and bool(SEEN.search(first + second))


def ends_of_switches(tokens):
    """Where the break stands that ends a switch: without it everything happens as before."""
    for index, token in enumerate(tokens):
        if token.group() == "switch":
            begin = matching(tokens, index + 1, "(", ")") + 1
            end = matching(tokens, begin, "{", "}")
            if tokens[end - 2].group() == "break":
                yield tokens[end - 2].start()


def in_statements(source, tokens):
    left_out = set(ends_of_switches(tokens))
    for group in statements_of(tokens):
        plain = [span for span in group if not NO_STATEMENT.match(source[slice(*span)])]
        for start, end in plain:
            if start not in left_out and not SAVES_TIME.search(source[start:end]):
                yield (start, end, ";")
        for first, second in zip(group, group[1:]):
            between = source[first[1] : second[0]]
            texts = source[slice(*first)], source[slice(*second)]
            if first in plain and second in plain and not between.strip() and order_matters(*texts):
                yield (first[0], second[1], texts[1] + between + texts[0])


def in_passages(source):
    for pattern, new in PASSAGES:
        for match in re.finditer(pattern, source):
            yield (match.start(), match.end(), match.expand(new))


def mutants_of(file, source):
    if file in LEFT_OUT or GENERATED in source:
        return []
    tokens = tokens_of(source)
    changes = [*in_tokens(source, tokens), *in_conditions(tokens), *in_statements(source, tokens), *in_passages(source)]
    mutants = {}
    for start, end, after in changes:
        before = source[start:end]
        line_start = source.rfind("\n", 0, start) + 1
        text = source[line_start : source.find("\n", start)].strip()
        line = source.count("\n", 0, start) + 1
        if squeezed(before) != squeezed(after):
            mutant = Mutant(file, line, text, before, after, start, end, start - line_start)
            mutants[mutant.name] = mutant
    return list(mutants.values())
