"""The reference parts of documents: tables between two comments, in prose that is written by hand."""

import json
import re
import textwrap

from generator.catalogue import CatalogueError

REGION = re.compile(r"(<!-- (?P<name>[a-z ]+): written by catalogue/generate -->\n).*?(<!-- end of (?P=name) -->\n)", re.DOTALL)


def filled(name, text, regions):
    """The text with each of its regions written anew; every region must be there once."""
    found = [region["name"] for region in REGION.finditer(text)]
    if sorted(found) != sorted(regions):
        raise CatalogueError(f"{name} must have the regions {', '.join(regions)}, once each, and has {', '.join(found) or 'none'}")
    return REGION.sub(lambda region: region[1] + "\n" + regions[region["name"]] + "\n" + region[3], text)


def cell(text):
    return text.replace("|", "\\|")


def table(head, rows):
    lines = ["| " + " | ".join(head) + " |", "|" + "---|" * len(head)]
    return "".join(line + "\n" for line in lines + ["| " + " | ".join(map(cell, row)) + " |" for row in rows])


def paragraph(text):
    return textwrap.fill(text, 120, break_long_words=False, break_on_hyphens=False) + "\n"


def code(text):
    return f"`{text}`"


def listed(texts):
    return ", ".join(map(code, texts))


# The worker's own protocol.


def written(command):
    """How a host writes a command: with its arguments, without those that it may leave out, and by other names."""
    name = command["name"]
    text = code(name)
    for argument in command["arguments"]:
        words = argument.get("words", [])
        if argument["required"] and "words" in argument and not argument.get("others"):
            text = ", ".join([code(f"{name}|{words[0]}"), *map(code, words[1:])])
        elif argument["required"]:
            text = code(f"{name}|{argument['name']}")
        else:
            text += " or " + code(f"{name}|{argument['name']}")
    also = command.get("synonyms", [])
    return text + (f" (also {listed(also)})" if also else "")


def commands_table(protocol, internal):
    rows = [(written(one), one["does"], one["answered"]) for one in protocol["commands"] if one["internal"] == internal]
    if not internal:
        rows.append(("anything else", protocol["unknown"]["does"], protocol["unknown"]["answered"]))
    return table(("Command", "Does", "Answers"), rows)


def lines_table(protocol):
    return table(("Line", "Means"), [(line["shown"], line["means"]) for line in protocol["lines"]])


def texts_tables(protocol):
    """Every text of the lines that have many."""
    parts = []
    for line in protocol["lines"]:
        if line["name"] in ("STATUS", "ERROR", "LOG"):
            parts.append(table((f"{line['name']} line", "When"), [(code(text["text"]), text["when"]) for text in line["texts"]]))
    rows = []
    for name, placeholder in protocol["placeholders"].items():
        values = [value.strip() for value in placeholder.get("values", []) if value.strip()]
        rows.append((code("{" + name + "}"), placeholder["summary"] + (f"; {listed(values)}" if values else "")))
    parts.append(table(("Filled in", "What it is"), rows))
    return "\n".join(parts)


def protocol(catalogue, text):
    described = catalogue.protocol
    return filled("docs/protocol.md", text, {
        "commands": commands_table(described, internal=False),
        "lines": lines_table(described),
        "texts": texts_tables(described),
        "internal commands": commands_table(described, internal=True),
    })


# tether serve.


def quoted(value):
    return code(json.dumps(value))


def linked(reference):
    name = reference.rsplit("/", 1)[1]
    return f"[{name}](#type-{name.lower()})"


def range_of(schema):
    if "minimum" in schema and "maximum" in schema:
        return f", {schema['minimum']} to {schema['maximum']}"
    if "minimum" in schema:
        return f", from {schema['minimum']} on"
    if "maxLength" in schema:
        return f", at most {schema['maxLength']:,} characters"
    return ""


def type_text(schema):
    if "$ref" in schema:
        return linked(schema["$ref"])
    if "const" in schema:
        return quoted(schema["const"])
    if "enum" in schema:
        return ", ".join(map(quoted, schema["enum"]))
    kind = schema["type"]
    if isinstance(kind, list):
        plain = {name: value for name, value in schema.items() if name != "type"}
        return " or ".join("`null`" if one == "null" else type_text({**plain, "type": one}) for one in kind)
    if kind == "array":
        return f"list of {type_text(schema['items'])}" + ("" if "$ref" in schema["items"] else "s")
    return kind + range_of(schema)


def time_out_text(time_out):
    parts = ["its turn"] if time_out.get("turn") else []
    parts += [code(name) for name in time_out.get("parameters", [])]
    if time_out["seconds"]:
        parts.append(f"{time_out['seconds']} s")
    if not parts:
        return "at once"
    return ", ".join(parts[:-1]) + (" and " if parts[:-1] else "") + parts[-1]


def error_text(catalogue, reference):
    name = reference["$ref"].rsplit("/", 1)[1]
    return f"{name} ({catalogue.openrpc['components']['errors'][name]['code']})"


def fields_table(head, fields, needed):
    rows = []
    for name, schema, summary in fields:
        default = f"; without it {quoted(schema['default'])}" if "default" in schema else ""
        shown = code(name) + ("" if name in needed else "?")
        rows.append((shown, type_text(schema) + default, summary))
    return table(head, rows)


def method_text(catalogue, method):
    text = f"### {method['name']}\n\n" + paragraph(f"{method['summary']} {method.get('description', '')}")
    if method["params"]:
        fields = [(one["name"], one["schema"], one["summary"]) for one in method["params"]]
        needed = {one["name"] for one in method["params"] if one.get("required")}
        text += "\n" + fields_table(("Parameter", "Type", "Meaning"), fields, needed)
    errors = ", ".join(error_text(catalogue, reference) for reference in method["errors"])
    result = type_text(method["result"]["schema"])
    return text + f"\nResult: {result}. Time-out: {time_out_text(method['x-time-out'])}." + (f" Errors: {errors}.\n" if errors else "\n")


def notifications_table(catalogue):
    return table(("Notification", "Parameters", "When"),
                 [(code(one["name"]), linked(one["params"]["$ref"]), one["summary"]) for one in catalogue.openrpc["x-notifications"]])


def type_section(catalogue, name, schema):
    text = f"### Type {name}\n\n" + paragraph(schema["description"])
    if schema["type"] != "object":
        return text + "\n" + paragraph(f"{type_text(schema)[0].upper()}{type_text(schema)[1:]}.")
    if not schema.get("properties"):
        return text + "\n`{}`.\n"
    fields = []
    for field, of_field in schema["properties"].items():
        fields.append((field, of_field, catalogue.resolved(of_field)["description"]))
    return text + "\n" + fields_table(("Field", "Type", "Meaning"), fields, set(schema.get("required", [])))


def errors_table(catalogue):
    rows = [(str(error["code"]), name, error["message"]) for name, error in catalogue.openrpc["components"]["errors"].items()]
    return table(("Code", "Name", "When"), rows)


def problems_table(catalogue):
    return table(("Code", "Severity", "Means", "What to do"),
                 [(code(one["code"]), one["severity"], one["meaning"], one["advice"]) for one in catalogue.problems])


def sdk_codes_table(catalogue):
    return table(("Code", "From", "Means", "What to do"),
                 [(code(one["code"]), one["from"], one["meaning"], one["advice"]) for one in catalogue.sdk_codes])


def serve(catalogue, text):
    return filled("docs/serve.md", text, {
        "methods": "\n".join(method_text(catalogue, method) for method in catalogue.openrpc["methods"]),
        "notifications": notifications_table(catalogue),
        "types": "\n".join(type_section(catalogue, name, schema) for name, schema in catalogue.schemas.items()),
        "errors": errors_table(catalogue),
        "problems": problems_table(catalogue),
        "sdk codes": sdk_codes_table(catalogue),
    })
