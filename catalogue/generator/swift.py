"""Types for Swift that follow from the catalogue: all that is said on the wire, and how long each answer may take."""

import re
import textwrap

from generator.catalogue import CatalogueError

COLUMNS = 120
TYPES = {"string": "String", "number": "Double", "integer": "Int", "boolean": "Bool"}
# Words that the language has taken, and those that are no names.
KEYWORDS = {"protocol"}
NAMES = {"<": "fromWorker", ">": "toWorker"}
HEAD = """// All that is said on the wire, and how long each answer may take.
// Written by catalogue/generate: change catalogue/openrpc.json.
"""


def capital(word):
    return word[0].upper() + word[1:]


def name_of(word):
    """camera-not-found is cameraNotFound."""
    first, *rest = NAMES.get(word, word).split("-")
    name = first + "".join(capital(part) for part in rest)
    if not name.isidentifier():
        raise CatalogueError(f"no name for Swift: {word}")
    return f"`{name}`" if name in KEYWORDS else name


def indented(text):
    return textwrap.indent(text, "    ")


def comment(text):
    """Indented twice at the most, so that much of a line is left to it."""
    return "".join(f"/// {line}\n" for line in textwrap.wrap(re.sub(r"\bnull\b", "nil", text), COLUMNS - 12))


class Swift:
    def __init__(self, catalogue):
        self.catalogue = catalogue
        self.schemas = catalogue.schemas
        self.words = {tuple(schema["enum"]): name for name, schema in self.schemas.items() if "enum" in schema}

    def type_of(self, schema, name):
        """What a value is, and the declaration of a type of its own where it needs one."""
        if "$ref" in schema:
            target = schema["$ref"].rsplit("/", 1)[1]
            described = self.schemas[target]
            if "properties" in described or "enum" in described or described.get("maxProperties") == 0:
                return target, ""
            return self.type_of(described, name)
        kinds = schema["type"] if isinstance(schema["type"], list) else [schema["type"]]
        mark = "?" if "null" in kinds else ""
        [kind] = [one for one in kinds if one != "null"]
        if "enum" in schema:
            words = tuple(word for word in schema["enum"] if word is not None)
            if words in self.words:
                return self.words[words] + mark, ""
            own = capital(name)
            return own + mark, self.open_enumeration(own, schema["description"], words)
        if kind == "array":
            inside, declaration = self.type_of(schema["items"], name)
            return f"[{inside}]{mark}", declaration
        if kind not in TYPES:
            raise CatalogueError(f"no type for Swift: {schema}")
        return TYPES[kind] + mark, ""

    def description(self, schema):
        return schema.get("description") or self.catalogue.resolved(schema).get("description", "")

    def open_enumeration(self, name, description, words):
        """A later version has words that this one does not know: so these are no closed set."""
        meanings = {problem["code"]: problem["meaning"] for problem in self.catalogue.problems}

        def constant(word):
            explained = re.search(rf"(?:^|[.;] ){re.escape(word)}: ([^.;]*)", description)
            meaning = meanings.get(word) or (capital(explained[1]) + "." if explained else "")
            return indented(comment(meaning)) + f'    public static let {name_of(word)} = {name}("{word}")\n'

        return f"""{comment(description)}public struct {name}: CameraWord {{
    /// As on the wire.
    public let rawValue: String

    /// Any word, known or not.
    public init(rawValue: String) {{
        self.rawValue = rawValue
    }}

{"".join(map(constant, words))}}}
"""

    @staticmethod
    def structure(name, description, members):
        """`members`: name, description, type, declaration of that type, and what it is when it is not given, or None."""
        fields = "".join(f"{comment(about)}public var {name_of(member)}: {kind}\n" for member, about, kind, _, _ in members)
        own = "".join("\n" + declaration for _, _, _, declaration, _ in members if declaration)
        takes = [f"{name_of(member)}: {kind}" + (f" = {given}" if given else "") for member, _, kind, _, given in members]
        line = ", ".join(takes)
        if len(line) > COLUMNS - 30:
            line = "\n" + indented(",\n".join(takes)) + "\n"
        sets = "".join(f"    self.{member} = {name_of(member)}\n" for member, *_ in members)
        start = "/// With these values.\n" if members else "/// It has no members.\n"
        start += f"public init({line}) {{\n{sets}}}\n" if members else "public init() {}\n"
        body = indented(fields + ("\n" if fields else "") + start + own)
        return f"{comment(description)}public struct {name}: Codable, Hashable, Sendable {{\n{body}}}\n"

    def schema_type(self, name, schema):
        if "enum" in schema:
            return self.open_enumeration(name, schema["description"], schema["enum"])
        members = []
        for member, inside in schema.get("properties", {}).items():
            kind, declaration = self.type_of(inside, member)
            required = member in schema["required"]
            if not required:
                kind = kind.removesuffix("?") + "?"
            members.append((member, self.description(inside), kind, declaration, None if required else "nil"))
        return self.structure(name, schema["description"], members)

    def parameters(self, method):
        members = []
        for parameter in method["params"]:
            kind, declaration = self.type_of(parameter["schema"], parameter["name"])
            required = parameter.get("required", False)
            kind = kind if required else kind + "?"
            members.append((parameter["name"], parameter["summary"], kind, declaration, None if required else "nil"))
        name = capital(method["name"]) + "Parameters"
        return self.structure(name, f"What {method['name']} takes.", members)

    def method(self, method):
        name, takes = method["name"], capital(method["name"]) + "Parameters"
        result, _ = self.type_of(method["result"]["schema"], method["result"]["name"])
        return (
            f"extension Camera.Method where Parameters == Camera.{takes}, Answer == Camera.{result} {{\n"
            f"{indented(comment(method['summary']))}"
            f'    public static var {name}: Self {{ Self("{name}") }}\n}}\n'
        )

    @staticmethod
    def time_out(method):
        said = method["x-time-out"]
        schemas = {parameter["name"]: parameter["schema"] for parameter in method["params"]}
        defaults = [f'"{name}": {schemas[name].get("default", "nil")}' for name in said.get("parameters", [])]
        parameters = f"[{', '.join(defaults)}]" if defaults else "[:]"
        turn = "true" if said.get("turn") else "false"
        return f'    "{method["name"]}": TimeOut(seconds: {said["seconds"]}, turn: {turn}, parameters: {parameters}),\n'


def types(catalogue):
    swift = Swift(catalogue)
    methods = catalogue.openrpc["methods"]
    named = [
        swift.schema_type(name, schema)
        for name, schema in catalogue.schemas.items()
        if "enum" in schema or "properties" in schema or schema.get("maxProperties") == 0
    ]
    named += [swift.parameters(method) for method in methods]
    return f"""{HEAD}
extension Camera {{
{indented(chr(10).join(named))}}}

{chr(10).join(swift.method(method) for method in methods)}
/// By the method's name.
let timeOuts: [String: TimeOut] = [
{"".join(swift.time_out(method) for method in methods)}]
"""
