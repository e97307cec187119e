"""Writes many mutants into one source, each behind a switch that the running program reads, so that one build holds
thousands of them.

Where an operand begins and ends is found in the tokens alone. What is taken for too much or too little does not
compile; such a mutant, and one that stands where only constants may, is left out here and built by itself.
"""

import bisect
import collections
import re

from mutations import stands_between_blanks, tokens_of

OPENING, CLOSING = ("(", "[", "{"), (")", "]", "}")
# The looser it binds, the smaller the number.
BINDS = {
    "=": 0, "+=": 0, "-=": 0, "|=": 0, "&=": 0, "*=": 0, "/=": 0, "?": 1, ":": 1, "||": 2, "&&": 3, "|": 4, "^": 5,
    "&": 6, "==": 7, "!=": 7, "<": 8, ">": 8, "<=": 8, ">=": 8, "<<": 9, ">>": 9, "+": 10, "-": 10, "*": 11, "/": 11,
    "%": 11,
}  # fmt: skip
TIGHTEST = 12
BEFORE_EXPRESSIONS = ("return", "else", "do", "case", "throw", "const", "auto", "delete", ";", ",")
BY_THEMSELVES = ("true", "false", "SIG_BLOCK", "SIG_DFL", "SIG_IGN", "EBADF")
DECLARATION = re.compile(r"(?!(?:delete|throw|else|goto)\b)(?:::)?[A-Za-z_][\w:]*(?:<[^;(){}]*>)?(?:\s*[*&]+\s*|\s+)[A-Za-z_\[]\w*")


class Passage:
    """A part of the source with the mutants that begin and end where it does."""

    def __init__(self, start, end, is_statement):
        self.start, self.end, self.is_statement = start, end, is_statement
        self.mutants = []
        self.inner = []


class Expressions:
    """Where the operands of an operator begin and end."""

    def __init__(self, source):
        self.source = source
        self.tokens = tokens_of(source)
        self.starts = [token.start() for token in self.tokens]

    def at(self, offset):
        return bisect.bisect_left(self.starts, offset)

    def binds(self, index):
        token = self.tokens[index]
        text = token.group()
        if text not in BINDS or (text not in ("?", ":") and not stands_between_blanks(self.source, token)):
            return TIGHTEST
        return BINDS[text]

    def left_of(self, index, binds):
        """The first token of what stands left of an operator that binds so."""
        depth = 0
        for position in range(index - 1, -1, -1):
            token = self.tokens[position]
            text = token.group()
            if text in CLOSING:
                if text == "}" and depth == 0 and "\n" in self.source[token.end() : self.tokens[position + 1].start()]:
                    return position + 1  # the end of a block
                depth += 1
            elif text in OPENING:
                if depth == 0:
                    return position + 1
                depth -= 1
            elif depth == 0 and (text in BEFORE_EXPRESSIONS or self.binds(position) < min(binds, TIGHTEST)
                                 or binds == TIGHTEST and self.is_unary(position)):  # fmt: skip
                return position + 1
        return 0

    def is_unary(self, position):
        token = self.tokens[position]
        return token.group() in ("!", "*", "&", "-", "++", "--") and not self.source[token.end()].isspace()

    def right_of(self, index, binds):
        """The last token of what stands right of an operator that binds so."""
        depth = 0
        for position in range(index + 1, len(self.tokens)):
            text = self.tokens[position].group()
            if text in OPENING:
                depth += 1
            elif text in CLOSING:
                if depth == 0:
                    return position - 1
                depth -= 1
            elif depth == 0 and (text in (";", ",") or self.binds(position) <= binds and binds > 0
                                 and self.binds(position) < TIGHTEST):  # fmt: skip
                return position - 1
        return index

    def around(self, first, last):
        return self.tokens[first].start(), self.tokens[last].end()


def passage_of(mutant, expressions):
    """(start, end, whether it is a statement) of what a switch must enclose, or None."""
    source, tokens = expressions.source, expressions.tokens
    before = mutant.before
    if mutant.after == ";" or before.endswith(";"):
        return None if DECLARATION.match(before) and not before.startswith("return") else (mutant.start, mutant.end, True)
    if mutant.after in ("true", "false") and before not in ("true", "false"):
        return None if declares(before) else (mutant.start, mutant.end, False)
    index = expressions.at(mutant.start)
    token = tokens[index]
    if token.end() != mutant.end:
        return None
    if before in ("break", "continue"):
        return mutant.start, tokens[index + 1].end(), True
    if token.lastgroup in ("number", "string", "char") or before in BY_THEMSELVES:
        return mutant.start, mutant.end, False
    if before in ("!", "++", "--"):
        if before != "!" and (source[mutant.end].isspace() or source[mutant.end] in ";)"):
            return None
        return *expressions.around(index, expressions.right_of(index, TIGHTEST)), False
    if token.lastgroup == "word":
        return *expressions.around(expressions.left_of(index, TIGHTEST), expressions.right_of(index, TIGHTEST)), False
    binds = BINDS[before]
    return *expressions.around(expressions.left_of(index, binds), expressions.right_of(index, binds)), False


def declares(condition):
    return bool(re.match(r"(const|auto|[\w:<>]+[*&]? \w+ = )", condition))


def nested(passages):
    """The passages as a tree, and the mutants of those that lie across another."""
    left_out, roots, open_ones = [], [], []
    for passage in sorted(passages, key=lambda one: (one.start, -one.end, not one.is_statement)):
        while open_ones and open_ones[-1].end <= passage.start:
            open_ones.pop()
        if open_ones and passage.end > open_ones[-1].end:
            left_out += passage.mutants
            continue
        (open_ones[-1].inner if open_ones else roots).append(passage)
        open_ones.append(passage)
    return roots, left_out


def with_a_variable(line):
    """As long as before, so that everything stays in its place."""
    return re.sub(r"constexpr (const )?", lambda found: "const".ljust(len(found.group())), line)


class Switched:
    """A source with its mutants behind switches."""

    def __init__(self, source, numbered, variables=()):
        """numbered: {mutant: number}; variables: lines in which a constant of the compiler becomes one of the program."""
        for line in variables:
            source = source.replace(line, with_a_variable(line))
        self.source, self.numbered = source, numbered
        expressions = Expressions(source)
        passages, self.left_out = {}, []
        for mutant in numbered:
            place = passage_of(mutant, expressions)
            if place is None or place[0] > mutant.start or place[1] < mutant.end:
                self.left_out.append(mutant)
                continue
            passages.setdefault(place, Passage(*place)).mutants.append(mutant)
        roots, across = nested(passages.values())
        self.left_out += across
        self.pieces, self.line = [], 1
        self.mutants_at = collections.defaultdict(list)  # by the lines of what is written here
        self.passages_at = collections.defaultdict(list)
        self.write_between(0, len(source), roots)
        self.text = "".join(self.pieces)

    def write(self, text):
        self.pieces.append(text)
        self.line += text.count("\n")

    def write_between(self, start, end, passages):
        for passage in passages:
            self.write(self.source[start : passage.start])
            self.write_passage(passage)
            start = passage.end
        self.write(self.source[start:end])

    def write_passage(self, passage):
        first = self.line
        # Of two kinds, one would quietly be made into the other: a truth, by way of true and false, into a number.
        is_truth = any(mutant.after in ("true", "false") or mutant.before == "!" for mutant in passage.mutants)
        value = "static_cast<bool>(" if is_truth else "("
        self.write("{ " if passage.is_statement else "(")
        for mutant in passage.mutants:
            begun = self.line
            switch = f"mutants::on({self.numbered[mutant]})"
            self.write(f"if ({switch}) {{\n" if passage.is_statement else f"{switch} ?\n{value}")
            self.write(self.source[passage.start : mutant.start] + mutant.after + self.source[mutant.end : passage.end])
            self.write("\n} else " if passage.is_statement else ") :\n")
            for line in range(begun, self.line):
                self.mutants_at[line].append(mutant)
        self.write("{\n" if passage.is_statement else value)
        self.write_between(passage.start, passage.end, passage.inner)
        self.write("\n}\n}" if passage.is_statement else "\n))")
        for line in range(first, self.line + 1):
            self.passages_at[line].append(passage)

    def source_line_of(self, line):
        """The line of the source that begins what is written in this line."""
        text = self.text.split("\n")[line - 1]
        begun = re.split(r"\(mutants::on|\{ if \(mutants::on", text)[0]
        return next((row for row in self.source.split("\n") if begun.strip() and row.startswith(begun)), "")

    def blamed_for(self, line):
        """The mutants that an error in this line of what is written here comes from."""
        if self.mutants_at[line]:
            return self.mutants_at[line]
        around = self.passages_at[line]
        return min(around, key=lambda one: one.end - one.start).mutants if around else []
