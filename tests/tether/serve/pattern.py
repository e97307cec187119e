"""What a conversation expects of a value. clients/corpus/README.md has the language."""

import re

KINDS = {
    "string": lambda value: isinstance(value, str),
    "number": lambda value: isinstance(value, (int, float)) and not isinstance(value, bool),
    "integer": lambda value: isinstance(value, int) and not isinstance(value, bool),
    "boolean": lambda value: isinstance(value, bool),
    "list": lambda value: isinstance(value, list),
    "object": lambda value: isinstance(value, dict),
    "null": lambda value: value is None,
    "anything": lambda value: True,
}


def mismatch(pattern, value, names, where="it"):
    """Why the value is not what the pattern says, or None. `names` keeps what was bound by "$name"."""
    if isinstance(pattern, dict):
        verbs = [key for key in pattern if key.startswith("$")]
        if verbs:
            if len(pattern) != 1:
                raise ValueError(f"{verbs[0]} stands alone in its object: {pattern}")
            return _verb(verbs[0], pattern[verbs[0]], value, names, where)
        if not isinstance(value, dict):
            return f"{where} is {value!r}, not an object"
        for key, inside in pattern.items():
            if key not in value:
                return f"{where} has no {key}"
            wrong = mismatch(inside, value[key], names, f"{where}.{key}")
            if wrong:
                return wrong
        return None
    if isinstance(pattern, list):
        if not isinstance(value, list) or len(value) != len(pattern):
            return f"{where} is {value!r}, not a list of {len(pattern)}"
        for at, inside in enumerate(pattern):
            wrong = mismatch(inside, value[at], names, f"{where}[{at}]")
            if wrong:
                return wrong
        return None
    # 1 is not true, and 1.0 is not "1".
    same = pattern == value and isinstance(pattern, bool) == isinstance(value, bool)
    return None if same else f"{where} is {value!r}, not {pattern!r}"


def _verb(verb, argument, value, names, where):
    if verb == "$is":
        return None if KINDS[argument](value) else f"{where} is {value!r}, not of kind {argument}"
    if verb == "$matches":
        good = isinstance(value, str) and re.search(argument, value)
        return None if good else f"{where} is {value!r} and does not match {argument}"
    if verb == "$oneOf":
        good = any(mismatch(inside, value, dict(names)) is None for inside in argument)
        return None if good else f"{where} is {value!r}, none of {argument!r}"
    if verb == "$has":
        for wanted in argument:
            if not isinstance(value, list) or all(mismatch(wanted, one, dict(names)) for one in value):
                return f"{where} has no {wanted!r} in it: {value!r}"
        return None
    if verb == "$atLeast":
        return None if KINDS["number"](value) and value >= argument else f"{where} is {value!r}, not at least {argument}"
    if verb == "$atMost":
        return None if KINDS["number"](value) and value <= argument else f"{where} is {value!r}, not at most {argument}"
    if verb == "$name":
        if argument not in names:
            names[argument] = value
            return None
        return None if names[argument] == value else f"{where} is {value!r}, not {names[argument]!r} as {argument} before"
    raise ValueError(f"there is no {verb}")
