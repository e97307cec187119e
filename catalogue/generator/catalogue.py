"""What stands in the catalogue's files, read once and held against each other."""

import json
import re


class CatalogueError(Exception):
    """The catalogue contradicts itself; the text says where."""


def parse(path):
    """A file of the catalogue. A name that stands twice in one object would lose one of its values without a word."""

    def unique(pairs):
        names = [name for name, _ in pairs]
        twice = sorted({name for name in names if names.count(name) > 1})
        if twice:
            raise CatalogueError(f"{path.name}: {', '.join(twice)} stands twice in one object")
        return dict(pairs)

    try:
        return json.loads(path.read_text(encoding="utf-8"), object_pairs_hook=unique)
    except json.JSONDecodeError as error:
        raise CatalogueError(f"{path.name}: {error}") from error


class Catalogue:
    def __init__(self, openrpc, problems, protocol, sdk_codes):
        self.openrpc = openrpc
        self.problems = problems
        self.protocol = protocol
        self.sdk_codes = sdk_codes
        self.schemas = openrpc["components"]["schemas"]
        self.check()

    @classmethod
    def read(cls, folder):
        names = ("openrpc.json", "problems.json", "protocol.json", "sdk_codes.json")
        return cls(*(parse(folder / name) for name in names))

    def check(self):
        """The same codes in both files, and every reference leads somewhere."""
        codes = [problem["code"] for problem in self.problems]
        if self.schemas["ProblemCode"]["enum"] != codes:
            raise CatalogueError("ProblemCode in openrpc.json has other codes than problems.json, or in another order")
        severities = self.schemas["Severity"]["enum"]
        for problem in self.problems:
            if set(problem) != {"code", "severity", "meaning", "cause", "advice"} or problem["severity"] not in severities:
                raise CatalogueError(f"problems.json: {problem['code']} needs code, severity, meaning, cause and advice")
        for entry in self.sdk_codes:
            if set(entry) != {"code", "from", "meaning", "cause", "advice"} or not re.fullmatch("0x[0-9A-F]{8}", entry["code"]):
                raise CatalogueError(f"sdk_codes.json: {entry.get('code')} needs a code like 0x00008402, from, meaning, cause and advice")
        for text in (text for line in self.protocol["lines"] for text in line["texts"]):
            if text.get("problem", codes[0]) not in codes:
                raise CatalogueError(f"protocol.json: {text['text']} tells of {text['problem']}, which is no problem")
        for method in self.openrpc["methods"]:
            for parameter in method["params"]:
                self.resolved(parameter["schema"])

    def resolved(self, schema):
        """A schema, or the one that its $ref names."""
        while "$ref" in schema:
            found = self.openrpc
            for part in schema["$ref"].removeprefix("#/").split("/"):
                if part not in found:
                    raise CatalogueError(f"openrpc.json: {schema['$ref']} leads nowhere")
                found = found[part]
            schema = found
        return schema
