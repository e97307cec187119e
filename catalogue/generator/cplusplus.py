"""C++ that follows from the catalogue, laid out as clang-format leaves it."""

from generator.catalogue import CatalogueError

COLUMNS = 100
TYPES = {
    "string": "text",
    "number": "number",
    "integer": "integer",
    "boolean": "yes_or_no",
    "object": "object",
}
# A member of a Parameter, in their order, and what says so in a schema.
RANGES = {"least": "minimum", "most": "maximum", "shortest": "minLength", "longest": "maxLength", "most_items": "maxItems"}
# No text may hold U+0000, whatever else it may hold.
PATTERNS = {r"^[^\u0000]*$": [], r"^[^\u0000]+$": [], r"^[^\u0000\r\n]+$": [("one_line", "true")]}


def head(source, *what):
    """How a generated file begins: what it is for, and where to change it."""
    return "".join(f"// {line}\n" for line in what) + f"// Written by catalogue/generate: change {source}.\n"


def name_of(word):
    return word.replace("-", "_")


def quoted(text):
    """A literal. The sources are UTF-8, and so is what they say."""
    if not text.isprintable():
        raise CatalogueError(f"not printable, but meant for C++: {text}")
    return '"' + text.replace("\\", "\\\\").replace('"', '\\"') + '"'


def wrapped(text, indent, behind):
    """A literal over as many lines as it takes, with `behind` after the last."""
    room = COLUMNS - indent - len(quoted("")) - len(behind)
    lines = [""]
    for word in text.split(" "):
        if lines[-1] and len(quoted(lines[-1] + word)) - len(quoted("")) > room:
            lines.append("")
        lines[-1] += word + " "
    lines[-1] = lines[-1][:-1]
    return ("\n" + " " * indent).join(quoted(line) for line in lines) + behind


def problem_codes(catalogue):
    problems = catalogue.problems
    enumerators = "".join(f"    {name_of(problem['code'])},\n" for problem in problems)
    rows = "".join(
        f"    {{Code::{name_of(problem['code'])}, {quoted(problem['code'])}, Severity::{problem['severity']}}},\n"
        for problem in problems
    )
    return f"""{head("catalogue/problems.json", "Everything that can be wrong, by the words on the wire. What each means: problem_texts.h.")}#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace host {{

enum class Severity {{ warning, error }};

enum class Code {{
{enumerators}}};

struct CodeEntry {{
    Code code;
    std::string_view word;
    Severity severity;
}};

// In the order of the enumeration.
inline constexpr std::array<CodeEntry, {len(problems)}> codes{{{{
{rows}}}}};

constexpr std::string_view word(Code code) {{
    return codes[static_cast<std::size_t>(code)].word;
}}

constexpr Severity severity(Code code) {{
    return codes[static_cast<std::size_t>(code)].severity;
}}

}}  // namespace host
"""


def row_of_texts(*texts):
    """Literals in braces, as many on a line as fit."""
    lines = ["    {"]
    for text in texts:
        behind = "}," if text is texts[-1] else ","
        fits = len(lines[-1]) + len(" " + quoted(text) + behind) <= COLUMNS
        if lines[-1] == "    {":
            lines[-1] += wrapped(text, 5, behind)
        elif fits:
            lines[-1] += " " + quoted(text) + behind
        else:
            lines.append("     " + wrapped(text, 5, behind))
    return "\n".join(lines) + "\n"


def problem_texts(catalogue):
    rows = "".join(row_of_texts(problem["meaning"], problem["cause"], problem["advice"]) for problem in catalogue.problems)
    return f"""{head("catalogue/problems.json", "What each problem means, what causes it, and what a photographer can do about it.")}#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "host/values/problem_codes.h"

namespace host {{

struct CodeTexts {{
    std::string_view meaning;
    std::string_view cause;
    std::string_view advice;
}};

// In the order of the enumeration.
inline constexpr std::array<CodeTexts, {len(catalogue.problems)}> code_texts{{{{
{rows}}}}};

constexpr std::string_view meaning(Code code) {{
    return code_texts[static_cast<std::size_t>(code)].meaning;
}}

constexpr std::string_view cause(Code code) {{
    return code_texts[static_cast<std::size_t>(code)].cause;
}}

constexpr std::string_view advice(Code code) {{
    return code_texts[static_cast<std::size_t>(code)].advice;
}}

}}  // namespace host
"""


def sdk_codes(catalogue):
    rows = "".join(row_of_texts(entry["code"], entry["from"], entry["meaning"], entry["cause"], entry["advice"]) for entry in catalogue.sdk_codes)
    return f"""{head("catalogue/sdk_codes.json", "What the codes of the SDK mean that a host can meet, as far as they are known.")}#pragma once

#include <array>
#include <string_view>

namespace host {{

struct SdkCode {{
    std::string_view code;  // as it stands on the wire, "0x00008402"
    std::string_view from;  // "camera", "virtual camera"
    std::string_view meaning;
    std::string_view cause;
    std::string_view advice;
}};

inline constexpr std::array<SdkCode, {len(catalogue.sdk_codes)}> sdk_codes{{{{
{rows}}}}};

}}  // namespace host
"""


def wire_texts(catalogue):
    """Every command, by all its names, and every line of the worker."""
    protocol = catalogue.protocol
    commands = [(name, command) for command in protocol["commands"] for name in [command["name"], *command.get("synonyms", [])]]
    of_commands = "".join(row_of_texts(name, command["name"], command["does"], command["answered"]) for name, command in commands)
    texts = [(line, text) for line in protocol["lines"] for text in line["texts"]]
    of_lines = "".join(row_of_texts(text["text"], text["when"], line["means"], text.get("problem", "")) for line, text in texts)
    return f"""{head("catalogue/protocol.json", "Everything that is said between a host and its worker, and what it means.")}#pragma once

#include <array>
#include <string_view>

namespace explain {{

struct CommandText {{
    std::string_view name;
    std::string_view meant;  // the name that it is a synonym of; its own
    std::string_view does;
    std::string_view answered;
}};

inline constexpr std::array<CommandText, {len(commands)}> command_texts{{{{
{of_commands}}}}};

struct LineText {{
    std::string_view text;  // what is filled in stands in braces
    std::string_view when;
    std::string_view means;    // any line that begins so
    std::string_view problem;  // that it tells of; empty: none
}};

inline constexpr std::array<LineText, {len(texts)}> line_texts{{{{
{of_lines}}}}};

}}  // namespace explain
"""


def methods_header(catalogue):
    names = "".join(
        f"inline constexpr const char* {notification['name']} = {quoted(notification['name'])};\n"
        for notification in catalogue.openrpc["x-notifications"]
    )
    return f"""{head("catalogue/openrpc.json", "What a client can ask for, with which parameters, and what it is told unasked.")}#pragma once

#include <vector>

#include "tether/rpc/method.h"

namespace serve {{

const std::vector<rpc::Method>& methods();

namespace notification {{
{names}}}  // namespace notification

}}  // namespace serve
"""


def fields_of(catalogue, name, required, schema):
    """The members of a Parameter that differ from what they are by themselves, in their order."""
    schema = catalogue.resolved(schema)
    kind = schema["type"]
    if kind == "array":
        if schema["items"] != {"type": "integer"}:
            raise CatalogueError(f"openrpc.json: parameter {name}: C++ knows lists of integers only")
        of_kind = "list_of_integers"
    elif kind in TYPES:
        of_kind = TYPES[kind]
    else:
        raise CatalogueError(f"openrpc.json: parameter {name}: C++ knows no type {kind}")
    fields = [("name", quoted(name)), ("type", f"Type::{of_kind}")]
    if required:
        fields.append(("required", "true"))
    for member, key in RANGES.items():
        if key in schema:
            fields.append((member, repr(schema[key])))
    if "pattern" in schema:
        if schema["pattern"] not in PATTERNS:
            raise CatalogueError(f"openrpc.json: parameter {name}: C++ knows no pattern {schema['pattern']}")
        fields += PATTERNS[schema["pattern"]]
    if "contains" in schema:
        fields.append(("contains", repr(schema["contains"]["const"])))
    if "enum" in schema:
        fields.append(("words", "{" + ", ".join(quoted(word) for word in schema["enum"]) + "}"))
    elif kind == "string" and "maxLength" not in schema:
        raise CatalogueError(f"openrpc.json: parameter {name} has no maxLength")
    return fields


def parameters_of(catalogue, function, parameters):
    """A function that lists them, behind the functions that list the members of those that are objects."""
    functions = ""
    rows = ""
    for name, required, schema in parameters:
        schema = catalogue.resolved(schema)
        fields = fields_of(catalogue, name, required, schema)
        if schema["type"] == "object":
            needed = schema.get("required", [])
            members = [(member, member in needed, of_member) for member, of_member in schema["properties"].items()]
            functions += parameters_of(catalogue, f"in_{name}", members)
            fields.append(("members", f"in_{name}()"))
        fields = [f".{field} = {value}" for field, value in fields]
        row = "        {" + ", ".join(fields) + "},\n"
        if len(row) > COLUMNS + 1:
            row = "        {" + ",\n         ".join(fields) + "},\n"
        rows += row
    return functions + f"std::vector<Parameter> {function}() {{\n    return {{\n{rows}    }};\n}}\n\n"


def methods_table(catalogue):
    functions = ""
    rows = ""
    for method in catalogue.openrpc["methods"]:
        name = method["name"]
        if method["params"]:
            parameters = [(one["name"], one.get("required", False), one["schema"]) for one in method["params"]]
            functions += parameters_of(catalogue, f"of_{name}", parameters)
            rows += f"        {{{quoted(name)}, of_{name}()}},\n"
        else:
            rows += f"        {{{quoted(name)}, {{}}}},\n"
    return f"""{head("catalogue/openrpc.json")}#include "tether/serve/methods.h"

namespace serve {{

using rpc::Method;
using rpc::Parameter;
using rpc::Type;

namespace {{

{functions}}}  // namespace

const std::vector<Method>& methods() {{
    static const std::vector<Method> all{{
{rows}    }};
    return all;
}}

}}  // namespace serve
"""
