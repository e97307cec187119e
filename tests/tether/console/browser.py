"""What a browser does with `tether console`, and what no browser does. Standard library only."""

import contextlib
import json
import os
import pathlib
import re
import signal
import socket
import subprocess
import threading
import time

# Long enough for a machine that is busy with other things; nothing waits for it that goes well.
PATIENCE = 60


class Wrong(AssertionError):
    """The server did what it must not do."""


class Skipped(Exception):
    """It cannot be played here, and why."""


def require(condition, what):
    if not condition:
        raise Wrong(what)


class Response:
    def __init__(self, status, headers, body):
        self.status = status
        self.headers = headers  # by their names in small letters
        self.body = body

    def json(self):
        return json.loads(self.body)

    def __repr__(self):
        return f"{self.status} {self.headers} {self.body[:200]!r}"


class Connection:
    """One connection, on which bytes are written as they are."""

    def __init__(self, port, buffer=None):
        self.socket = socket.socket()
        self.socket.settimeout(PATIENCE)
        if buffer:
            self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, buffer)
        self.socket.connect(("127.0.0.1", port))
        self.read = b""

    def write(self, data):
        with contextlib.suppress(BrokenPipeError, ConnectionResetError):
            self.socket.sendall(data)

    def _more(self):
        try:
            piece = self.socket.recv(65536)
        except ConnectionResetError:
            piece = b""
        self.read += piece
        return bool(piece)

    def line(self):
        while b"\n" not in self.read:
            if not self._more():
                return None
        line, self.read = self.read.split(b"\n", 1)
        return line.rstrip(b"\r").decode("utf-8", "replace")

    def exactly(self, count):
        while len(self.read) < count:
            require(self._more(), f"the connection ended after {len(self.read)} of {count} bytes")
        data, self.read = self.read[:count], self.read[count:]
        return data

    def head(self):
        """(status, headers), or None at the end of the connection."""
        first = self.line()
        if first is None:
            return None
        require(re.match(r"HTTP/1\.1 \d{3} ", first), f"no status line: {first!r}")
        headers = {}
        while True:
            line = self.line()
            require(line is not None, "the connection ended in the headers")
            if not line:
                return int(first.split()[1]), headers
            name, value = line.split(":", 1)
            require(name.lower() not in headers, f"{name} comes twice: {headers}")
            headers[name.lower()] = value.strip()

    def chunk(self):
        """Empty at the end."""
        data = self.exactly(int(self.line(), 16))
        require(self.exactly(2) == b"\r\n", "no chunk")
        return data

    def response(self, method="GET"):
        """None at the end of the connection."""
        head = self.head()
        if head is None:
            return None
        status, headers = head
        body = b""
        if method == "HEAD" or status == 204:
            pass
        elif headers.get("transfer-encoding") == "chunked":
            while piece := self.chunk():
                body += piece
        else:
            body = self.exactly(int(headers["content-length"]))
        return Response(status, headers, body)

    def is_over(self):
        """Waits for the end; whatever still comes is an answer that nobody asked for."""
        while self._more():
            pass
        return not self.read

    def close(self):
        self.socket.close()


class Stream:
    """GET /events, as it comes in."""

    def __init__(self, console, query="", last=None):
        self.connection = console.connect()
        self.changed = threading.Condition()
        self.told = []  # (event or None, id, message)
        self.over = False
        self.taken = 0
        headers = {"Accept": "text/event-stream", **({"Last-Event-ID": last} if last is not None else {})}
        self.connection.write(console.request_text("GET", "/events" + query, headers=headers))
        status, self.headers = self.connection.head()
        require(status == 200, f"{status} {self.headers}")
        require(self.headers["content-type"] == "text/event-stream", self.headers)
        self.thread = threading.Thread(target=self._read, daemon=True)
        self.thread.start()

    def _read(self):
        text = b""
        with contextlib.suppress(OSError, Wrong, TypeError):
            while piece := self.connection.chunk():
                text += piece
                *whole, text = text.split(b"\n\n")
                for one in whole:
                    self._take(one.decode())
        with self.changed:
            self.over = True
            self.changed.notify_all()

    def _take(self, text):
        fields = dict(line.split(": ", 1) for line in text.split("\n") if not line.startswith(":"))
        if fields:
            with self.changed:
                self.told.append((fields.get("event"), fields.get("id"), json.loads(fields["data"])))
                self.changed.notify_all()

    def wait_until(self, condition, what):
        deadline = time.monotonic() + PATIENCE
        with self.changed:
            while True:
                value = condition()
                if value:
                    return value
                left = deadline - time.monotonic()
                require(left > 0 and not self.over, f"{what} did not come; last: {self.told[-3:]}")
                self.changed.wait(left)

    def next(self, method, wanted=lambda params: True):
        """The next of this kind; those before it are passed over."""
        def found():
            while self.taken < len(self.told):
                message = self.told[self.taken][2]
                self.taken += 1
                if message["method"] == method and wanted(message["params"]):
                    return (message["params"],)
            return None
        return self.wait_until(found, method)[0]

    def last_id(self):
        with self.changed:
            return [one[1] for one in self.told if one[1]][-1]

    def ends(self):
        with self.changed:
            return self.changed.wait_for(lambda: self.over, PATIENCE)

    def close(self):
        # A thread that waits in recv() notices.
        with contextlib.suppress(OSError):
            self.connection.socket.shutdown(socket.SHUT_RDWR)
        self.thread.join()
        self.connection.close()


class Console:
    """One `tether console`, and a browser that was given its address."""

    def __init__(self, tether, folder, *options, environment=None, under=()):
        arguments = ["--folder", str(pathlib.Path(folder) / "shots"), *options]
        self.process = subprocess.Popen([*under, tether, "console", *arguments], stdin=subprocess.DEVNULL,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                        env={**os.environ, "TMPDIR": str(folder), **(environment or {})})
        self.complaints = b""
        self.reader = threading.Thread(target=self._read_complaints, daemon=True)
        self.reader.start()
        self.streams = []
        self.connections = []
        self.last_id = 0
        self.address = self.process.stdout.readline().decode().strip()
        found = re.fullmatch(r"http://127\.0\.0\.1:(\d+)/\?token=([0-9a-f]{32})", self.address)
        if not found:
            self.process.kill()
            self.process.wait(PATIENCE)
            self.reader.join(PATIENCE)
            raise Wrong(f"no address but {self.address!r}; {self.complaints!r}")
        self.port = int(found[1])
        self.token = found[2]

    def _read_complaints(self):
        for piece in iter(lambda: self.process.stderr.read1(65536), b""):
            self.complaints += piece

    def connect(self, **more):
        connection = Connection(self.port, **more)
        self.connections.append(connection)
        return connection

    def request_text(self, method, target, body=None, headers=None):
        """`headers` add to what a browser sends; None takes one out."""
        usual = {"Host": f"127.0.0.1:{self.port}", "Cookie": f"tether-{self.port}={self.token}"}
        if method == "POST":
            usual.update({"Origin": f"http://127.0.0.1:{self.port}", "Content-Type": "application/json",
                          "Content-Length": str(len(body or b""))})
        usual.update(headers or {})
        lines = [f"{method} {target} HTTP/1.1"]
        lines += [f"{name}: {value}" for name, value in usual.items() if value is not None]
        return "\r\n".join(lines).encode("latin-1") + b"\r\n\r\n" + (body or b"")

    def request(self, method, target, body=None, headers=None):
        connection = Connection(self.port)
        try:
            connection.write(self.request_text(method, target, body, headers))
            response = connection.response(method)
            require(response is not None, f"{method} {target} was not answered")
            return response
        finally:
            connection.close()

    def get(self, target, headers=None):
        return self.request("GET", target, headers=headers)

    def post(self, message):
        body = message if isinstance(message, bytes) else json.dumps(message).encode()
        return self.request("POST", "/rpc", body)

    def ask(self, method, **params):
        """The whole answer, with its result or its error."""
        self.last_id += 1
        number = self.last_id
        response = self.post({"jsonrpc": "2.0", "id": number, "method": method, "params": params})
        require(response.status == 200, f"{method}: {response}")
        answer = response.json()
        require(answer["id"] == number, f"{answer} is not for {number}")
        return answer

    def call(self, method, **params):
        answer = self.ask(method, **params)
        require("result" in answer, f"{method}: {answer}")
        return answer["result"]

    def camera(self, line):
        lines = self.call("simulate", line=line)["lines"]
        require(lines[-1] == "ok", f"{line}: {lines}")

    def shot(self, **params):
        """One that must come whole."""
        shot = self.call("capture", **params)
        require(shot["status"] == "complete", f"a shot was lost: {shot}")
        for picture in shot["pictures"]:
            require(pathlib.Path(picture["path"]).stat().st_size == picture["bytes"], picture)
        return shot

    def events(self, query="", last=None):
        stream = Stream(self, query, last)
        self.streams.append(stream)
        return stream

    def memory(self):
        """MiB, or None where the system does not tell."""
        status = pathlib.Path(f"/proc/{self.process.pid}/status")
        if not status.exists():
            return None
        return int(re.search(r"VmHWM:\s+(\d+) kB", status.read_text(encoding="ascii"))[1]) / 1024

    def threads(self):
        """How many it has; 0 where the system does not tell."""
        tasks = pathlib.Path(f"/proc/{self.process.pid}/task")
        return len(list(tasks.iterdir())) if tasks.exists() else 0

    def end(self, number=signal.SIGINT):
        """In order; its exit status."""
        self.process.send_signal(number)
        return self.ended()

    def ended(self):
        status = self.process.wait(PATIENCE)
        self.reader.join(PATIENCE)
        return status

    def leave(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        for one in [*self.streams, *self.connections]:
            one.close()
        self.process.stdout.close()
        self.reader.join(PATIENCE)
        self.process.stderr.close()
