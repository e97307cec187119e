"""Plays a conversation of clients/corpus to `tether serve` and the virtual camera. clients/corpus/README.md says what the
steps mean."""

import json
import os
import pathlib

from host import Host, Misbehaved, RequestFailed
from pattern import mismatch

OPTIONS = {"saveDestination": "--save-dest", "fileType": "--file-type", "name": "--name", "patience": "--patience"}
KINDS = ("state", "picture", "shot", "problem", "line")
# What a conversation has to account for, each in its order.
COUNTED = ("picture", "shot", "problem")


def load(path):
    with open(path, encoding="utf-8") as file:
        conversation = json.load(file)
    unknown = set(conversation) - {"title", "wire", "scene", "options", "before", "passesOver", "steps"}
    if unknown or "title" not in conversation or not conversation.get("steps"):
        raise ValueError(f"{path}: a conversation has a title and steps, and no {unknown or 'such'}")
    return conversation


class Player:
    def __init__(self, conversation, tether, worker, folder):
        self.conversation = conversation
        self.folder = pathlib.Path(folder)
        self.shots = self.folder / "shots"
        self.names = {"folder": str(self.shots)}
        self.requests = {}
        self.taken = dict.fromkeys(KINDS, 0)
        self.ended = False
        self.shots.mkdir()
        for name, text in conversation.get("before", {}).items():
            path = self.shots / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        scene = self.folder / "scene"
        scene.write_text("\n".join(conversation.get("scene", ["timing instant", "picture 600x400"])) + "\n",
                         encoding="utf-8")
        arguments = ["--folder", str(self.shots), "--scene", str(scene)]
        if worker:
            arguments += ["--worker", str(worker)]
        for option, value in conversation.get("options", {}).items():
            arguments += [OPTIONS[option], str(value)]
        self.host = Host(tether, arguments, {"TMPDIR": str(self.folder)})

    def play(self):
        try:
            for number, step in enumerate(self.conversation["steps"], 1):
                try:
                    self._do(step)
                except (AssertionError, RequestFailed, KeyError) as problem:
                    raise Misbehaved(f"step {number}, {json.dumps(step)[:300]}: {problem!r}") from None
            self._finish()
        finally:
            self.host.kill()

    def _do(self, step):
        verbs = {"ask": self._ask, "answer": self._answer, "camera": self._camera, "sees": self._sees,
                 "files": self._files, "make": self._make, "send": self._send, "ends": self._ends}
        found = [verb for verb in verbs if verb in step]
        if len(found) != 1:
            raise ValueError(f"a step has one of {', '.join(verbs)}: {step}")
        verbs[found[0]](step)

    def _check(self, pattern, value, what):
        wrong = mismatch(pattern, value, self.names, what)
        if wrong:
            raise Misbehaved(f"{wrong}; whole: {json.dumps(value)[:2000]}")

    def _filled_in(self, value):
        """"$NAME" in what is asked stands for what was bound to it, "$folder" for the folder."""
        if isinstance(value, dict):
            return {key: self._filled_in(inside) for key, inside in value.items()}
        if isinstance(value, str) and value.startswith("$"):
            name, slash, rest = value[1:].partition("/")
            return self.names[name] + slash + rest
        return value

    def _ask(self, step):
        request = self.host.ask(step["ask"], **self._filled_in(step.get("with", {})))
        if "as" in step:
            self.requests[step["as"]] = request
        else:
            self._expect(request, step)

    def _answer(self, step):
        self._expect(self.requests.pop(step["answer"]), step)

    def _expect(self, request, step):
        try:
            result = self.host.answer(request)
        except RequestFailed as failed:
            if "fails" not in step:
                raise
            self._check(step["fails"], {"code": failed.code, "problem": failed.problem}, "the error")
            return
        if "fails" in step:
            raise Misbehaved(f"it did not fail: {json.dumps(result)[:2000]}")
        self._check(step.get("gives", {}), result, "the result")

    def _camera(self, step):
        lines = self.host.call("simulate", line=step["camera"].replace("$folder", self.names["folder"]))["lines"]
        self._check(step.get("says", ["ok"]), lines, "the camera's answer")

    def _sees(self, step):
        kind, pattern = step["sees"], step.get("with", {})

        def found():
            while True:
                of_kind = [params for name, params in self.host.told if name == kind]
                if len(of_kind) <= self.taken[kind]:
                    return None
                params = of_kind[self.taken[kind]]
                self.taken[kind] += 1
                wrong = mismatch(pattern, params, dict(self.names))
                if wrong is None:
                    return (params,)
                # A state may be passed through quickly or slowly.
                if kind in COUNTED and kind not in self.conversation.get("passesOver", []):
                    raise Misbehaved(f"{wrong}; whole: {json.dumps(params)[:2000]}")

        params = self.host.wait_until(found, f"{kind} like {json.dumps(pattern)}")[0]
        self._check(pattern, params, kind)

    def _files(self, step):
        visible = sorted(
            str((pathlib.Path(folder) / name).relative_to(self.shots))
            for folder, folders, names in os.walk(self.shots) for name in names
            if not any(part.startswith(".") for part in (pathlib.Path(folder) / name).relative_to(self.shots).parts))
        self._check(step["files"], visible, "the folder")

    def _make(self, step):
        path = pathlib.Path(self._filled_in(step["make"]))
        if step.get("text") is None:
            path.mkdir()
        else:
            path.write_text(step["text"], encoding="utf-8")

    def _send(self, step):
        text = step["send"] * step.get("times", 1)
        before = len(self.host.order)
        self.host.write(text.encode() + b"\n")
        if "receives" not in step:
            return

        def answer():
            answers = [message for message in self.host.order[before:] if "method" not in message]
            return answers[:1]

        self._check(step["receives"], self.host.wait_until(answer, "an answer")[0], "what came")

    def _ends(self, step):
        self._check(step["ends"], self.host.end(), "the status")
        self.ended = True

    def _finish(self):
        if not self.ended:
            self.host.call("shutdown")
            self._check(0, self.host.end(), "the status")
        if self.requests:
            raise Misbehaved(f"no step has the answer to {', '.join(self.requests)}")
        for kind in COUNTED:
            rest = self.host.all_told(kind)[self.taken[kind]:]
            if rest and kind not in self.conversation.get("passesOver", []):
                raise Misbehaved(f"no step sees {len(rest)} more of {kind}: {json.dumps(rest)[:2000]}")
        leftovers = [entry.name for entry in self.folder.iterdir() if entry.name.startswith("tether-")]
        if leftovers:
            raise Misbehaved(f"left behind: {leftovers}")
