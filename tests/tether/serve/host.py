"""A host in Python, as its author would write it first: `tether serve` as a child process, a thread that reads, requests
that wait for their answer. Standard library only.
"""

import io
import json
import os
import subprocess
import threading
import time

# Long enough for a machine that is busy with other things; nothing waits for it that goes well.
PATIENCE = 60


class RequestFailed(Exception):
    """A request that was answered with an error."""

    def __init__(self, error):
        super().__init__(f"{error['code']}: {error['message']}")
        self.code = error["code"]
        self.problem = error.get("data")


class Misbehaved(AssertionError):
    """The server did what no server may do."""


class Host:
    """One `tether serve` and what it says. `reads=False`: nothing is read until reading().
    `before`: a command that starts it."""

    def __init__(self, tether, arguments=(), environment=None, reads=True, before=()):
        self.process = subprocess.Popen(
            [*before, tether, "serve", *arguments], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
            env={**os.environ, **(environment or {})}, bufsize=0)
        self.changed = threading.Condition()
        self.answers = {}         # by id: the whole message
        self.without_id = []      # answers under the id null
        self.told = []            # notifications, in order: (method, params)
        self.taken = {}           # how many of each kind have been taken by next()
        self.order = []           # every message, in order
        self.asked = {}           # by id: the method
        self.wrong = None         # what no server may do
        self.over = False         # the server has closed its output
        self.complaints = b""     # its standard error
        self.last_id = 0
        self.writing = threading.Lock()
        self.reader = None
        self.listener = threading.Thread(target=self._read_complaints, daemon=True)
        self.listener.start()
        if reads:
            self.reading()

    # What comes in.

    def reading(self):
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    def _read_complaints(self):
        for piece in iter(lambda: self.process.stderr.read(4096), b""):
            self.complaints += piece

    def _read(self):
        for line in io.BufferedReader(self.process.stdout):  # which would itself read byte by byte
            with self.changed:
                try:
                    self._take(line)
                except (ValueError, KeyError, Misbehaved) as problem:
                    self.wrong = self.wrong or f"{problem!r} in {line[:500]!r}"
                self.changed.notify_all()
        with self.changed:
            self.over = True
            self.changed.notify_all()

    def _take(self, line):
        if not line.endswith(b"\n"):
            raise Misbehaved("a line without its end")
        message = json.loads(line.decode("utf-8"))
        if message["jsonrpc"] != "2.0":
            raise Misbehaved("another version")
        self.order.append(message)
        if "method" in message:
            if "id" in message or set(message) != {"jsonrpc", "method", "params"}:
                raise Misbehaved("no notification")
            self.told.append((message["method"], message["params"]))
        else:
            if ("result" in message) == ("error" in message):
                raise Misbehaved("both or neither of result and error")
            if message["id"] is None:
                self.without_id.append(message)
            elif message["id"] in self.answers:
                raise Misbehaved("answered twice")
            else:
                self.answers[message["id"]] = message

    def wait_until(self, condition, what, patience=PATIENCE):
        """The value of the condition once it is true. It is called with the lock held."""
        deadline = time.monotonic() + patience
        with self.changed:
            while True:
                if self.wrong:
                    raise Misbehaved(self.wrong)
                value = condition()
                if value:
                    return value
                left = deadline - time.monotonic()
                if left <= 0 or self.over:
                    raise Misbehaved(f"{what}: {'the server has ended' if self.over else 'nothing came'}; "
                                     f"last: {json.dumps(self.order[-3:])}; {self.complaints!r}")
                self.changed.wait(left)

    # What goes out.

    def write(self, data):
        with self.writing:
            while data:
                data = data[self.process.stdin.write(data):]

    def send(self, message):
        self.write(json.dumps(message).encode() + b"\n")

    def ask(self, method, **params):
        """The id of a request that is answered some time."""
        self.last_id += 1
        request = self.last_id
        self.asked[request] = method
        self.send({"jsonrpc": "2.0", "id": request, "method": method, "params": params})
        return request

    def answer(self, request, patience=PATIENCE):
        message = self.wait_until(lambda: self.answers.get(request), f"answer to request {request}", patience)
        if "error" in message:
            raise RequestFailed(message["error"])
        return message["result"]

    def call(self, method, **params):
        return self.answer(self.ask(method, **params))

    def error(self, method, **params):
        """The error that a request must fail with."""
        try:
            result = self.call(method, **params)
        except RequestFailed as failed:
            return failed
        raise Misbehaved(f"{method} did not fail: {result}")

    # What comes by itself.

    def next(self, method, wanted=lambda params: True, patience=PATIENCE):
        """The next notification of this kind, or of this kind and wanted; those before it are passed over."""
        def found():
            for at in range(self.taken.get(method, 0), len(self.told)):
                name, params = self.told[at]
                if name == method and wanted(params):
                    self.taken[method] = at + 1
                    return (params,)
            return None
        return self.wait_until(found, f"notification {method}", patience)[0]

    def all_told(self, method):
        with self.changed:
            return [params for name, params in self.told if name == method]

    # The common ways.

    def initialize(self):
        return self.call("initialize", client={"name": "tests", "version": "1"}, protocols=[1])

    def connect(self):
        self.initialize()
        return self.call("connect")

    def fire(self):
        """The id of a capture whose shutter has been released."""
        request = self.ask("capture")
        self.next("shot", lambda shot: shot["status"] == "fired")
        return request

    def camera(self, line):
        lines = self.call("simulate", line=line)["lines"]
        if lines[-1] != "ok":
            raise Misbehaved(f"the virtual camera does not take {line}: {lines[-1]}")
        return lines[:-1]

    def end_input(self):
        self.process.stdin.close()

    def end(self, patience=PATIENCE):
        """The exit status, once everything has been read."""
        status = self.process.wait(patience)
        self.listener.join(patience)
        if self.reader:
            self.reader.join(patience)
        if self.wrong:
            raise Misbehaved(self.wrong)
        return status

    def shut_down(self):
        self.call("shutdown")
        status = self.end()
        if status != 0:
            raise Misbehaved(f"it ended with status {status}")

    def kill(self):
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()

    def worker(self):
        """The number of its worker."""
        listed = subprocess.run(["ps", "-A", "-o", "pid=,ppid="], capture_output=True, check=True).stdout
        return next(int(child) for child, parent in (line.split() for line in listed.splitlines())
                    if int(parent) == self.process.pid)

    def __enter__(self):
        return self

    def __exit__(self, kind, value, trace):
        self.kill()
