"""Messages of `tether serve` held against catalogue/openrpc.json: whoever tests what speaks it can use this."""

import copy
import json
import pathlib

from jsonschema import Draft7Validator

ROOT = pathlib.Path(__file__).resolve().parents[2]
# They stand in no method's list.
ERRORS_OF_ANY_REQUEST = {"ParseError", "InvalidRequest", "InvalidParams", "InternalError"}


def closed(schema):
    """The same, but a field that is not listed is wrong. A client must bear new fields; the program may not invent any."""
    if isinstance(schema, list):
        return [closed(one) for one in schema]
    if not isinstance(schema, dict):
        return schema
    schema = {name: closed(value) for name, value in schema.items()}
    if schema.get("type") == "object" and "properties" in schema:
        schema["additionalProperties"] = False
    return schema


class OpenRpc:
    def __init__(self, document=None):
        self.document = document or json.loads((ROOT / "catalogue/openrpc.json").read_text(encoding="utf-8"))
        self.components = self.document["components"]
        self.methods = {method["name"]: method for method in self.document["methods"]}
        self.notifications = {one["name"]: one for one in self.document["x-notifications"]}
        self.errors = self.components["errors"]

    def wrong(self, value, schema):
        """What is wrong with a value, a line each."""
        whole = {"allOf": [closed(schema)], "components": closed(copy.deepcopy(self.components))}
        return [f"{'.'.join(map(str, error.absolute_path)) or 'all of it'}: {error.message}"
                for error in Draft7Validator(whole).iter_errors(value)]

    def parameters(self, method):
        """The schema of a method's params."""
        given = self.methods[method]["params"]
        return {
            "type": "object",
            "properties": {one["name"]: one["schema"] for one in given},
            "required": [one["name"] for one in given if one.get("required")],
            "additionalProperties": False,
        }

    def wrong_request(self, method, params):
        if method not in self.methods:
            return [f"there is no method {method}"]
        return self.wrong(params, self.parameters(method))

    def wrong_result(self, method, result):
        return self.wrong(result, self.methods[method]["result"]["schema"])

    def wrong_error(self, method, error):
        """An error object: one that this method may have, with its data."""
        names = {reference["$ref"].rsplit("/", 1)[1] for reference in self.methods[method].get("errors", [])} if method else set()
        codes = {self.errors[name]["code"] for name in names | ERRORS_OF_ANY_REQUEST}
        wrong = [] if error.get("code") in codes else [f"{method} has no error {error.get('code')}"]
        schema = self.document["x-error-data"].get(str(error.get("code")))
        if schema and "data" not in error:
            wrong.append(f"error {error['code']} without data")
        elif schema:
            wrong += self.wrong(error["data"], schema)
        if not isinstance(error.get("message"), str) or not error["message"]:
            wrong.append("an error without a message")
        return wrong

    def wrong_notification(self, method, params):
        if method not in self.notifications:
            return [f"there is no notification {method}"]
        return self.wrong(params, self.notifications[method]["params"])


def wrong_conversation(rpc, lines):
    """What is wrong with lines that begin with "> ", from the client, and "< ", from the program."""
    wrong, asked, answered = [], {}, set()
    for at, line in enumerate(lines, 1):
        try:
            message = json.loads(line[2:])
        except json.JSONDecodeError as error:
            # Whoever tests the program may have sent it on purpose.
            if line[0] == "<":
                wrong.append(f"line {at}: {error}")
            continue
        found = []
        if line[0] == ">":
            if isinstance(message, dict) and "id" in message and "method" in message:
                asked[json.dumps(message["id"])] = message
        elif not isinstance(message, dict) or message.get("jsonrpc") != "2.0":
            found.append("this is no message of JSON-RPC 2.0")
        elif "method" in message:
            found = rpc.wrong_notification(message["method"], message.get("params"))
            if set(message) != {"jsonrpc", "method", "params"}:
                found.append("a notification has jsonrpc, method and params")
        else:
            identity = json.dumps(message.get("id"))
            request = asked.get(identity)
            method = request["method"] if request and request["method"] in rpc.methods else None
            if identity in answered and identity != "null":
                found.append(f"{identity} was answered before")
            answered.add(identity)
            if set(message) == {"jsonrpc", "id", "error"}:
                found += rpc.wrong_error(method, message["error"]) if method else []
            elif set(message) != {"jsonrpc", "id", "result"}:
                found.append("an answer has jsonrpc, id, and result or error")
            elif method is None:
                found.append(f"a result for {identity}, which nobody asked for")
            else:
                found += rpc.wrong_result(method, message["result"])
        wrong += [f"line {at}: {one}" for one in found]
    wrong += [f"{identity} was never answered" for identity in asked if identity not in answered]
    return wrong
