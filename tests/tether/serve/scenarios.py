"""What no conversation can play: clients that do not read, end or are killed, input that is no request, disks that are
stuck. Each scenario is a function of a Stage."""

import contextlib
import json
import os
import pathlib
import random
import re
import signal
import socket
import subprocess
import sys
import time

from host import PATIENCE, Host, Misbehaved

SCENARIOS = {}


class Skipped(Exception):
    """It cannot be played here, and why."""


def scenario(function):
    SCENARIOS[function.__name__] = function
    return function


def require(condition, what):
    if not condition:
        raise Misbehaved(what)


def wait_for(condition, what, patience=PATIENCE):
    deadline = time.monotonic() + patience
    while not condition():
        require(time.monotonic() < deadline, f"{what}: not within {patience} s")
        time.sleep(0.01)


def state_of(process):
    return subprocess.run(["ps", "-o", "stat=", "-p", str(process)], capture_output=True, check=False).stdout.strip()


def is_running(process):
    state = state_of(process)
    return bool(state) and not state.startswith(b"Z")


def is_stopped(process):
    return state_of(process).startswith(b"T")


class Stage:
    """A folder of its own and what a scenario needs in it."""

    def __init__(self, tether, worker, modules, folder):
        self.tether = tether
        self.worker = worker
        self.modules = modules
        self.folder = pathlib.Path(folder)
        self.shots = self.folder / "shots"
        self.shots.mkdir()
        self.control = self.folder / "camera"
        self.hosts = []

    @property
    def is_sanitized(self):
        program = pathlib.Path(self.tether).read_bytes()  # which is large: only for those who ask
        return any(mark in program for mark in (b"__asan_init", b"__tsan_init"))

    def host(self, *options, scene=("timing instant", "picture 600x400"), environment=None, **more):
        arguments = ["--folder", str(self.shots), *options]
        if scene is not None:
            file = self.folder / "scene"
            file.write_text("\n".join(scene) + "\n", encoding="utf-8")
            arguments += ["--scene", str(file)]
        if "--worker" not in options:
            arguments += self.worker_option()
        host = Host(self.tether, arguments, {"TMPDIR": str(self.folder), **(environment or {})}, **more)
        self.hosts.append(host)
        return host

    def program(self, name, text):
        file = self.folder / name
        file.write_text(text, encoding="utf-8")
        file.chmod(0o755)
        return file

    def worker_option(self):
        return ["--worker", str(self.worker)] if self.worker else []

    def camera(self, line):
        """Tells the virtual camera, past the server. For hosts whose environment names self.control."""
        with socket.socket(socket.AF_UNIX) as client:
            client.connect(str(self.control))
            client.sendall(line.encode() + b"\n")
            answer = b""
            while not re.search(rb"^(ok|error: .*)\n\Z", answer, re.MULTILINE):
                piece = client.recv(65536)
                require(piece, f"the camera went away at {line}")
                answer += piece
        require(answer.endswith(b"ok\n"), f"{line}: {answer!r}")

    def memory_is_bounded(self, host):
        """64 MiB are promised for what a worker does; nor may a client take more."""
        status = pathlib.Path(f"/proc/{host.process.pid}/status")
        if status.exists():
            most = int(re.search(r"VmHWM:\s+(\d+) kB", status.read_text(encoding="ascii"))[1]) / 1024
        else:
            now = subprocess.run(["ps", "-o", "rss=", "-p", str(host.process.pid)], capture_output=True, check=True)
            most = int(now.stdout) / 1024
        require(most < 64 or self.is_sanitized, f"{most} MiB")

    def files(self):
        return sorted(path.name for path in self.shots.iterdir() if not path.name.startswith("."))

    def leave(self):
        for host in self.hosts:
            host.kill()

    def nothing_is_left(self, *processes):
        for process in processes:
            wait_for(lambda number=process: not is_running(number), f"process {process} ends")
        left = [path.name for path in self.folder.iterdir() if path.name.startswith("tether-")]
        require(not left, f"left behind: {left}")


# It waits longest, so it begins first.

@scenario
def a_worker_that_says_nothing_is_a_problem_in_time(stage):
    silent = stage.program("silent", "#!/bin/sh\nexec cat >/dev/null\n")
    with stage.host("--worker", str(silent)) as host:
        begun = time.monotonic()
        error = host.error("initialize", client={"name": "tests", "version": "1"})
        took = time.monotonic() - begun
        require(error.problem["code"] == "worker-not-starting", f"it fails with {error.problem}")
        require(took < 31, f"after {took} s")
        host.shut_down()


# Ending.

@scenario
def ends_in_order_when_its_input_ends(stage):
    with stage.host() as host:
        host.connect()
        worker = host.worker()
        host.end_input()
        require(host.end() == 0, "another status")
        require(host.all_told("state")[-1]["state"] == "down", "it does not say that it is down")
    stage.nothing_is_left(worker)


@scenario
def answers_what_was_asked_before_its_input_ended(stage):
    with stage.host() as host:
        host.connect()
        fired = host.fire()
        waiting = host.ask("capture")
        host.end_input()
        require(host.end() == 0, "another status")
        require(host.answer(fired)["status"] == "complete", f"the shot is lost: {host.answer(fired)}")
        require(host.answer(waiting)["status"] == "refused", f"it is fired at the end: {host.answer(waiting)}")
    require(stage.files() == ["DSC00001.JPG"], f"files: {stage.files()}")


@scenario
def ends_in_order_at_half_a_message(stage):
    with stage.host() as host:
        host.connect()
        worker = host.worker()
        host.write(b'{"jsonrpc":"2.0","id":77,"method":"sta')
        host.end_input()
        require(host.end() == 0, "another status")
        require([message["error"]["code"] for message in host.without_id] == [-32700], "half a message is not JSON")
    stage.nothing_is_left(worker)


@scenario
def ends_in_order_at_a_signal(stage):
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        with stage.host() as host:
            host.connect()
            worker = host.worker()
            host.process.send_signal(number)
            require(host.end() == 0, f"another status behind {number.name}")
        stage.nothing_is_left(worker)


@scenario
def ends_at_a_signal_before_it_was_asked_anything(stage):
    with stage.host() as host:
        # Its signals are caught once it answers.
        host.error("state")
        host.process.send_signal(signal.SIGTERM)
        require(host.end() == 0, "another status")
    stage.nothing_is_left()


@scenario
def ends_at_a_signal_that_it_was_told_to_ignore(stage):
    for name in ("INT", "HUP", "TERM"):
        with stage.host(before=("sh", "-c", f"trap '' {name}; exec \"$0\" \"$@\"")) as host:
            host.initialize()
            host.process.send_signal(signal.Signals[f"SIG{name}"])
            require(host.end() == 0, f"another status behind SIG{name}")
        stage.nothing_is_left()


@scenario
def ends_in_order_when_nobody_reads_it_any_more(stage):
    with stage.host(reads=False) as host:
        host.send({"jsonrpc": "2.0", "id": 1, "method": "initialize",
                   "params": {"client": {"name": "tests", "version": "1"}}})
        while b'"id":1,' not in host.process.stdout.readline():
            pass
        worker = host.worker()
        host.process.stdout.close()
        require(host.process.wait(PATIENCE) == 0, "another status")
    stage.nothing_is_left(worker)


@scenario
def waits_for_the_files_of_a_shot_that_is_under_way(stage):
    with stage.host(scene=("timing instant", "picture 600x400", "next file late 3s")) as host:
        host.connect()
        shot = host.fire()
        end = host.ask("shutdown", patience=20)
        require(host.answer(shot)["status"] == "complete", f"the shot is lost: {host.answer(shot)}")
        require(host.answer(end)["worker"] == "quit", "the worker was not asked")
        require(host.order[-1].get("id") == end, "the answer to shutdown is not the last message")
        require(host.end() == 0, "another status")
    require(stage.files() == ["DSC00001.JPG"], f"files: {stage.files()}")


@scenario
def a_hundred_requests_to_end_are_each_answered_and_the_shot_is_waited_for(stage):
    with stage.host(scene=("timing instant", "picture 600x400", "next file late 2s")) as host:
        host.connect()
        shot = host.fire()
        ends = [host.ask("shutdown") for _ in range(100)]
        require(host.end() == 0, "another status")
        require(host.answer(shot)["status"] == "complete", f"the shot is lost: {host.answer(shot)}")
        answers = [host.answers[end] for end in ends]
        refused = [answer["error"]["data"]["code"] for answer in answers if "error" in answer]
        require(refused == ["busy"] * 37, f"refused: {refused}")
        require(all(answer["result"]["worker"] == "quit" for answer in answers if "result" in answer), f"{answers}")


@scenario
def a_camera_that_is_not_given_back_is_answered_in_time(stage):
    with stage.host(scene=("timing instant", "picture 600x400", "every Disconnect hangs")) as host:
        host.connect()
        worker = host.worker()
        begun = time.monotonic()
        request = host.ask("disconnect")
        host.wait_until(lambda: host.answers.get(request), "an answer")
        require(time.monotonic() - begun < 21, f"after {time.monotonic() - begun} s")
        # A worker that hangs in a call does not see the end of its input: who leaves in order leaves none behind.
        host.shut_down()
    stage.nothing_is_left(worker)


@scenario
def a_signal_cuts_the_patience_of_a_shutdown_short(stage):
    scene = ("timing instant", "picture 600x400", "next file late 600s")
    with stage.host("--patience", "3600", scene=scene) as host:
        host.connect()
        shot = host.fire()
        # All that a client may ask for; the signal still has its place.
        ends = [host.ask("shutdown", patience=3600) for _ in range(70)]
        host.next("state", lambda state: state["state"] == "ending")
        host.wait_until(lambda: host.answers.get(ends[-1]), "the last one is refused")
        begun = time.monotonic()
        host.process.send_signal(signal.SIGTERM)
        require(host.answer(ends[0])["worker"] == "quit", "the worker was not asked")
        took = time.monotonic() - begun
        require(9 < took < 25, f"after {took} s")
        require(host.answer(shot)["status"] == "none", f"the shot: {host.answer(shot)}")
        require(host.end() == 0, "another status")


@scenario
def the_end_of_input_leaves_a_shutdown_its_patience(stage):
    with stage.host(scene=("timing instant", "picture 600x400", "next file late 12s")) as host:
        host.connect()
        shot = host.fire()
        host.ask("shutdown", patience=60)
        host.end_input()
        require(host.end() == 0, "another status")
        require(host.answer(shot)["status"] == "complete", f"the shot is lost: {host.answer(shot)}")


@scenario
def what_is_asked_behind_a_shutdown_is_answered_before_it(stage):
    with stage.host() as host:
        host.initialize()
        # As much as a pipe takes in one go.
        asked = [json.dumps({"jsonrpc": "2.0", "id": "end", "method": "shutdown"})]
        while len("\n".join(asked)) < 65000:
            method = ("state", "pictures", "nothing", "cancel")[len(asked) % 4]
            params = {"tag": "x"} if method == "cancel" else {}
            asked.append(json.dumps({"jsonrpc": "2.0", "id": f"r{len(asked)}", "method": method, "params": params}))
        host.write("\n".join([*asked, ""]).encode())
        require(host.end() == 0, "another status")
        missing = [number for number in range(1, len(asked)) if f"r{number}" not in host.answers]
        require(not missing, f"{len(missing)} of {len(asked)} have no answer: {missing[:10]}")
        require(host.order[-1].get("id") == "end", "the answer to shutdown is not the last message")
    stage.nothing_is_left()


@scenario
def its_output_may_be_a_file(stage):
    output = stage.folder / "output"
    requests = [{"jsonrpc": "2.0", "id": 1, "method": "initialize", "params": {"client": {"name": "a", "version": "1"}}},
                {"jsonrpc": "2.0", "id": 2, "method": "state"}]
    with open(output, "wb") as file:
        done = subprocess.run([stage.tether, "serve", "--folder", str(stage.shots), *stage.worker_option()],
                              input="".join(json.dumps(request) + "\n" for request in requests).encode(), stdout=file,
                              stderr=subprocess.PIPE, timeout=PATIENCE, check=False,
                              env={**os.environ, "TMPDIR": str(stage.folder)})
    require(done.returncode == 0, f"{done}")
    answered = {message.get("id") for message in map(json.loads, output.read_bytes().splitlines())}
    require({1, 2} <= answered, f"answered {answered}")


@scenario
def says_how_a_worker_that_hangs_was_ended(stage):
    with stage.host(scene=("timing instant", "every Disconnect hangs", "during Release deliver late.JPG 1")) as host:
        host.connect()
        worker = host.worker()
        ended = host.call("shutdown", patience=0)
        require(set(ended) == {"worker", "status"}, f"it says {ended}")
        require(host.end() == 0, "another status")
    stage.nothing_is_left(worker)


# Input that is no request.

@scenario
def takes_five_hundred_messages_of_garbage(stage):
    dice = random.Random(4711)
    good = b'{"jsonrpc":"2.0","id":1,"method":"capture","params":{"tag":"x","patience":2}}'

    def garbage():
        kind = dice.randrange(5)
        if kind == 0:
            return bytes(dice.randrange(256) for _ in range(dice.randrange(1, 200)))
        if kind == 1:
            return good[:dice.randrange(1, len(good))]
        if kind == 2:
            at = dice.randrange(len(good))
            return good[:at] + bytes([dice.randrange(128, 256)]) + good[at:]
        if kind == 3:
            return dice.choice([b"{", b"[", b'"', b"{\"a\":"]) * dice.randrange(1, 20000)
        return json.dumps({"jsonrpc": "2.0", "id": "g", "method": dice.choice(["", "x" * 3000, "Capture", "rpc.discover"]),
                           "params": {}}).encode()[:dice.choice([None, 40])]

    with stage.host() as host:
        host.connect()
        before = host.call("state")
        sent = 0
        while sent < 500:
            message = garbage().replace(b"\n", b" ")
            with_id = False
            try:
                with_id = json.loads(message.decode("utf-8")).get("id") == "g"
            except (ValueError, AttributeError, RecursionError):
                pass
            if with_id:
                message = message.replace(b'"g"', b'"g%d"' % sent)
            host.write(message + b"\n")
            sent += 1
        require(host.call("state") == before, "the state is another one")
        require(host.call("capture")["status"] == "complete", "no picture")
        answered = len(host.without_id) + len([id for id in host.answers if isinstance(id, str)])
        require(answered == 500, f"{answered} answers to 500 messages")
        for message in [*host.without_id, *(host.answers[id] for id in host.answers if isinstance(id, str))]:
            require(message["error"]["code"] in (-32700, -32600, -32601), f"answered {message}")
        stage.memory_is_bounded(host)
        host.shut_down()


@scenario
def takes_a_message_of_a_mebibyte_and_refuses_a_longer_one(stage):
    with stage.host() as host:
        host.initialize()
        request = b'{"jsonrpc":"2.0","id":"%s","method":"state"}'
        host.write((request % b"fits").ljust(1 << 20) + b"\n")
        host.wait_until(lambda: host.answers.get("fits"), "an answer to a message of 1 MiB")
        host.write((request % b"long").ljust((1 << 20) + 1) + b"\n")
        host.wait_until(lambda: host.without_id, "an answer to a longer one")
        require(host.without_id[0]["error"]["code"] == -32700, f"answered {host.without_id}")
        require("long" not in host.answers, "it was done")
        # A line without an end is answered once and takes no memory.
        for _ in range(100):
            host.write(b"x" * (1 << 20))
        host.write(b"\n")
        require(host.call("state")["state"] == "idle", "it does not go on")
        require(len(host.without_id) == 2, f"{len(host.without_id)} answers")
        stage.memory_is_bounded(host)


@scenario
def does_everything_that_came_in_one_piece_in_order(stage):
    with stage.host() as host:
        def request(number, method, **params):
            return json.dumps({"jsonrpc": "2.0", "id": number, "method": method, "params": params})

        host.write("\n".join([request(1, "initialize", client={"name": "a", "version": "1"}), request(2, "connect"),
                              request(3, "state"), request(4, "shutdown"), ""]).encode())
        require(host.end() == 0, "another status")
        require(set(host.answers) == {1, 2, 3, 4}, f"answered {sorted(host.answers)}")
        require(host.order[-1].get("id") == 4, "the answer to shutdown is not the last message")


@scenario
def bad_options_say_so_on_standard_error_only(stage):
    for options in (["--nonsense"], ["--patience", "0"], ["--file-type", "tiff"], ["--redact"],
                    ["--record", str(stage.folder)]):
        done = subprocess.run([stage.tether, "serve", "--folder", str(stage.shots), *options], input=b"",
                              capture_output=True, timeout=PATIENCE, check=False)
        require(done.returncode == 2, f"{options}: status {done.returncode}")
        require(done.stdout == b"" and done.stderr.startswith(b"tether: "), f"{options}: {done}")


@scenario
def refuses_what_is_wrong_in_the_words_of_the_catalogue(stage):
    catalogue = json.loads((pathlib.Path(__file__).parents[3] / "catalogue/openrpc.json").read_text(encoding="utf-8"))
    refused = 0
    with stage.host() as host:
        for method in catalogue["methods"]:
            for example in method.get("x-error-examples", []):
                if example["error"]["code"] != -32602:
                    continue
                request = host.ask(method["name"], **{one["name"]: one["value"] for one in example["params"]})
                error = host.wait_until(lambda one=request: host.answers.get(one), "an answer")["error"]
                require(error == example["error"], f"{method['name']}: {error} and not {example['error']}")
                refused += 1
            if method["name"] == "initialize":
                host.initialize()
        require(refused >= 3, f"only {refused} examples")
        error = host.error("capture")
        require(error.problem["text"] == "No camera has been connected yet.", f"{error.problem}")
        lines = host.call("simulate", line="fly")["lines"]
        require(lines == ['error: "fly" is no word of the scene language'], f"{lines}")


# Clients that do not read.

def _fill(host, most=8 << 20):
    """Asks for the state until no more is taken, by a server that waits and is not only slow. How many were asked whole,
    and the rest of the last."""
    os.set_blocking(host.process.stdin.fileno(), False)
    asked, rest, quiet = 0, b"", 0
    while quiet < 20 and asked * 50 < most:
        if not rest:
            asked += 1
            rest = b'{"jsonrpc":"2.0","id":"s%d","method":"state"}\n' % asked
        written = host.process.stdin.write(rest)
        if written is None:
            quiet = quiet + 1 if state_of(host.process.pid).startswith(b"S") else 0
            time.sleep(0.05)
        else:
            quiet = 0
            rest = rest[written:]
    os.set_blocking(host.process.stdin.fileno(), True)
    return asked, rest


@scenario
def a_client_that_does_not_read_loses_no_picture_and_no_answer(stage):
    with stage.host(environment={"CAMERA_SIM_CONTROL": str(stage.control)}, reads=False) as host:
        host.send({"jsonrpc": "2.0", "id": "i", "method": "initialize",
                   "params": {"client": {"name": "tests", "version": "1"}}})
        host.send({"jsonrpc": "2.0", "id": "l", "method": "subscribe", "params": {"lines": True}})
        host.send({"jsonrpc": "2.0", "id": "c", "method": "connect"})
        while b'"id":"c",' not in host.process.stdout.readline():
            pass
        asked, rest = _fill(host)
        require(rest, "any number of requests is taken from a client that does not read")
        for _ in range(100):
            stage.camera("shutter")
            stage.camera("wait")
        wait_for(lambda: len(stage.files()) == 100, "a hundred pictures in the folder")
        stage.memory_is_bounded(host)
        host.reading()
        host.write(rest)
        host.wait_until(lambda: f"s{asked}" in host.answers, "the last answer")
        require(all(f"s{number}" in host.answers for number in range(1, asked + 1)), "an answer is missing")
        known = host.call("pictures", limit=1000)["pictures"]
        require(sorted(picture["cameraName"] for picture in known) == stage.files(), "a picture is missing")
        told = [picture["id"] for picture in host.all_told("picture")]
        require(len(told) < 100, "nothing was left to the list of pictures")
        require(set(told) <= {picture["id"] for picture in known}, "a picture was told that is in no list")
        require(any(line["dropped"] > 0 for line in host.all_told("line")) or
                (host.camera("shutter"), host.next("line", lambda line: line["dropped"] > 0)), "no line was dropped")
        host.shut_down()


@scenario
def a_client_that_never_reads_can_be_left(stage):
    with stage.host(reads=False) as host:
        host.send({"jsonrpc": "2.0", "id": "i", "method": "initialize",
                   "params": {"client": {"name": "tests", "version": "1"}}})
        while b'"id":"i",' not in host.process.stdout.readline():
            pass
        worker = host.worker()
        _fill(host)
        begun = time.monotonic()
        host.process.send_signal(signal.SIGTERM)
        require(host.process.wait(PATIENCE) == 0, "another status")
        require(time.monotonic() - begun < 30, f"it took {time.monotonic() - begun} s")
    stage.nothing_is_left(worker)


# Ends without order.

@scenario
def a_picture_that_was_not_told_is_told_after_a_kill_with_the_same_id(stage):
    with stage.host(environment={"CAMERA_SIM_CONTROL": str(stage.control)}, reads=False) as host:
        host.send({"jsonrpc": "2.0", "id": "i", "method": "initialize",
                   "params": {"client": {"name": "tests", "version": "1"}}})
        host.send({"jsonrpc": "2.0", "id": "c", "method": "connect"})
        while b'"id":"c",' not in host.process.stdout.readline():
            pass
        _fill(host)
        stage.camera("shutter")
        wait_for(lambda: stage.files() == ["DSC00001.JPG"], "the picture in the folder")
        host.kill()
    ledger = (stage.shots / ".incoming" / "ledger").read_text(encoding="utf-8", errors="replace")
    with stage.host() as host:
        host.initialize()
        told = host.next("picture", patience=20)
        require(told["cameraName"] == "DSC00001.JPG", f"told {told}")
        require(told["id"] in ledger, f"{told['id']} is not the id from before: {ledger}")
        require([picture["id"] for picture in host.call("pictures")["pictures"]] == [told["id"]], "another list")
        host.shut_down()
    # Now it is known.
    with stage.host() as host:
        host.initialize()
        require(host.call("pictures")["pictures"][0]["id"] == told["id"], "another id")
        require(host.all_told("picture") == [], "it is told again")


@scenario
def a_file_that_came_while_the_server_was_killed_is_brought_in(stage):
    with stage.host(environment={"CAMERA_SIM_CONTROL": str(stage.control)},
                    scene=("timing instant", "picture 600x400", "next file late 2s")) as host:
        host.connect()
        worker = host.worker()
        host.ask("capture", tag="lost")
        host.next("shot", lambda params: params["status"] == "fired")
        # The worker goes on until it notices; the file may come, or not.
        os.kill(worker, signal.SIGSTOP)
        host.kill()
    staged = list((stage.shots / ".incoming").glob("*/"))
    (staged[0] / "DSC00077.JPG").write_bytes(b"\xff\xd8\xff\xe0 no whole picture")
    # The system may have ended it: whoever is stopped when its parent goes is hung up.
    with contextlib.suppress(ProcessLookupError):
        os.kill(worker, signal.SIGKILL)
    with stage.host() as host:
        host.initialize()
        told = host.next("picture")
        require(told["recovered"] and told["cameraName"] == "DSC00077.JPG" and not told["whole"], f"told {told}")
        require("DSC00077.JPG" in stage.files(), f"files: {stage.files()}")
        host.shut_down()


@scenario
def a_worker_that_is_killed_is_replaced(stage):
    with stage.host() as host:
        host.connect()
        os.kill(host.worker(), signal.SIGKILL)
        host.next("problem", lambda problem: problem["code"] == "worker-gone")
        host.next("state", lambda state: state["state"] == "ready" and state["restarts"] == 1)
        require(host.call("capture")["status"] == "complete", "no picture")
        host.shut_down()


@scenario
def workers_that_die_too_often_mean_down_with_one_problem_until_connect(stage):
    with stage.host() as host:
        host.connect()
        for restarts in range(6):
            os.kill(host.worker(), signal.SIGKILL)
            if restarts < 5:
                host.next("state", lambda state, count=restarts + 1:
                          state["state"] == "ready" and state["restarts"] == count)
        down = host.next("state", lambda state: state["state"] == "down")
        require([problem["code"] for problem in down["problems"]] == ["worker-gone"], f"it says {down['problems']}")
        begun = time.monotonic()
        require(host.call("connect")["state"] == "ready", "no session")
        require(time.monotonic() - begun < 30, "connect waits for the minute to be over")
        require(host.call("capture")["status"] == "complete", "no picture")
        host.shut_down()


FLOOD = """#!/bin/sh
# One line that never ends; then lines without end; then it is a worker.
if mkdir {folder}/line 2>/dev/null; then
    exec tr '\\000' x </dev/zero
elif mkdir {folder}/lines 2>/dev/null; then
    exec yes 'LOG|[SONY] and so on'
fi
exec {worker} "$@"
"""


@scenario
def workers_that_flood_cost_no_memory_and_are_replaced(stage):
    worker = stage.worker or pathlib.Path(stage.tether).parents[1] / "Contents/MacOS/sony-worker"
    script = stage.program("worker", FLOOD.format(folder=stage.folder, worker=worker))
    with stage.host("--worker", str(script)) as host:
        require(host.connect()["restarts"] == 2, f"restarts: {host.call('state')['restarts']}")
        codes = [problem["code"] for problem in host.all_told("problem")]
        require("worker-floods" in codes, f"problems: {codes}")
        require(host.call("capture")["status"] == "complete", "no picture")
        stage.memory_is_bounded(host)
        host.shut_down()


@scenario
def goes_on_after_it_was_stopped(stage):
    with stage.host() as host:
        host.connect()
        host.process.send_signal(signal.SIGSTOP)
        wait_for(lambda: is_stopped(host.process.pid), "it is stopped")
        # Longer than the silence that a worker is allowed.
        time.sleep(16)
        host.process.send_signal(signal.SIGCONT)
        require(host.call("capture")["status"] == "complete", "no picture")
        state = host.call("state")
        require(state["restarts"] == 0 and not state["problems"], f"{state}")
        host.shut_down()


@scenario
def a_folder_that_is_moved_away_is_gone_and_nothing_is_made_in_its_stead(stage):
    with stage.host() as host:
        host.connect()
        require(host.call("capture")["status"] == "complete", "no picture")
        elsewhere = stage.folder / "elsewhere"
        stage.shots.rename(elsewhere)
        shot = host.call("capture")
        require(shot["status"] == "refused" and [one["code"] for one in shot["problems"]] == ["folder-gone"], f"{shot}")
        require(not stage.shots.exists(), "something was made in its stead")
        elsewhere.rename(stage.shots)
        require(host.call("capture")["status"] == "complete", "no picture once it is back")
        require(stage.files() == ["DSC00001.JPG", "DSC00002.JPG"], f"files: {stage.files()}")
        host.shut_down()


@scenario
def two_servers_on_one_folder_do_not_mix(stage):
    with stage.host() as first, stage.host() as second:
        first.initialize()
        begun = time.monotonic()
        error = second.error("initialize", client={"name": "tests", "version": "1"})
        took = time.monotonic() - begun
        require(error.code == -32000 and error.problem["code"] == "folder-in-use", f"it fails with {error.problem}")
        require(19 < took < 31, f"after {took} s")
        first.shut_down()
        # It may be asked once more.
        second.initialize()
        require(second.call("state")["state"] == "idle", "it is not ready for a camera")
        second.shut_down()


# The first host.

def _host_of_the_documentation(stage, scene):
    text = (pathlib.Path(__file__).parents[3] / "docs/hosts.md").read_text(encoding="utf-8")
    script = stage.folder / "host.py"
    script.write_text(re.search(r"^```python\n(.*?)^```$", text, re.DOTALL | re.MULTILINE)[1], encoding="utf-8")
    (stage.folder / "scene").write_text(scene, encoding="utf-8")
    environment = {**os.environ, "TMPDIR": str(stage.folder), "CAMERA_SIM_SCENE": str(stage.folder / "scene")}
    return subprocess.run([sys.executable, str(script), stage.tether, str(stage.shots)], capture_output=True,
                          check=False, env=environment, timeout=PATIENCE)


@scenario
def the_host_of_the_documentation_takes_its_picture(stage):
    done = _host_of_the_documentation(stage, "timing instant\npicture 600x400\n")
    require(done.returncode == 0 and done.stdout.decode() == f"{stage.shots.resolve()}/DSC00001.JPG\n", f"{done}")


@scenario
def the_host_of_the_documentation_says_why_there_is_no_picture(stage):
    done = _host_of_the_documentation(stage, "timing instant\nno focus\n")
    require(done.returncode == 1 and done.stdout == b"" and b"focus" in done.stderr, f"{done}")


# Options.

@scenario
def shoots_pictures_of_the_users_own(stage):
    own = stage.folder / "own"
    own.mkdir()
    picture = b"\xff\xd8\xff\xe0\x00\x04JF" + b"\xff\xda\x00\x02mine\xff\xd9"
    (own / "a.JPG").write_bytes(picture)
    with stage.host("--pictures", str(own)) as host:
        host.connect()
        host.call("capture")
        require((stage.shots / "DSC00001.JPG").read_bytes() == picture, "another picture")


@scenario
def pictures_go_to_shots_when_no_folder_is_named(stage):
    stage.shots.rmdir()
    scene = stage.folder / "scene"
    scene.write_text("timing instant\npicture 600x400\n", encoding="utf-8")
    there = ("sh", "-c", 'cd "$0" && exec "$@"', str(stage.folder))
    environment = {"TMPDIR": str(stage.folder), "CAMERA_SIM_SCENE": str(scene)}
    with Host(os.path.abspath(stage.tether), stage.worker_option(), environment, before=there) as host:
        stage.hosts.append(host)
        require(pathlib.Path(host.connect()["folder"]) == stage.shots.resolve(), f"{host.call('state')['folder']}")
        host.call("capture")
        require(stage.files() == ["DSC00001.JPG"], f"files: {stage.files()}")


# Workers.

@scenario
def a_worker_that_is_missing_is_a_problem(stage):
    with stage.host("--worker", str(stage.folder / "nothing")) as host:
        error = host.error("initialize", client={"name": "tests", "version": "1"})
        require(error.problem["code"] == "worker-missing", f"it fails with {error.problem}")
        # As if it had never been tried; only what was begun can be ended.
        for method, parameters in (("state", {}), ("connect", {}), ("capture", {}), ("pictures", {}), ("disconnect", {}),
                                   ("configure", {}), ("cancel", {"tag": ""}), ("subscribe", {"lines": True}),
                                   ("simulate", {"line": "card out"})):
            refused = host.error(method, **parameters)
            require(refused.code == -32600 and refused.problem is None, f"{method} fails with {refused}")
        error = host.error("initialize", client={"name": "tests", "version": "1"})
        require(error.problem["code"] == "worker-missing", f"the second time it fails with {error.problem}")
        require(host.call("shutdown")["worker"] == "gone", "there was a worker")
        require(host.end() == 0, "another status")


@scenario
def an_empty_worker_is_missing_like_any_other(stage):
    with stage.host("--worker", "") as host:
        error = host.error("initialize", client={"name": "tests", "version": "1"})
        require(error.problem["code"] == "worker-missing", f"it fails with {error.problem}")
        host.shut_down()


REAL_WORKER = """#!{python}
import sys
print("CPP_WORKER|START sony-1.0", flush=True)
print("READY|OK", flush=True)
for line in sys.stdin:
    command, _, rest = line.strip().partition("|")
    if command == "PRIME":
        print("PRIME_DONE|OK", flush=True)
    elif command == "SET_DOWNLOAD_DIR":
        print("DOWNLOAD_DIR|" + rest, flush=True)
    elif command == "QUIT":
        break
"""


# It minds neither the end of its input nor SIGTERM.
STUBBORN_WORKER = REAL_WORKER.replace("        break\n", "        sys.exit()\n") + """
import signal
signal.signal(signal.SIGTERM, signal.SIG_IGN)
while True:
    signal.pause()
"""


@scenario
def a_worker_that_outlived_its_server_is_ended_by_the_next(stage):
    script = stage.program("worker", STUBBORN_WORKER.format(python=sys.executable))
    with stage.host("--worker", str(script), scene=None) as host:
        host.initialize()
        worker = host.worker()
        host.kill()
    with stage.host("--worker", str(script), scene=None) as host:
        begun = time.monotonic()
        host.initialize()
        took = time.monotonic() - begun
        require(took > 4, f"it is not given 4 s to end by itself: {took} s")
        require(not is_running(worker), "it runs on")
        require(host.call("shutdown") == {"worker": "quit", "status": 0}, "the next worker was not asked")
        require(host.end() == 0, "another status")


@scenario
def a_relative_worker_counts_from_the_folder_of_the_start(stage):
    (stage.folder / "bin").mkdir()
    stage.program("bin/worker", REAL_WORKER.format(python=sys.executable))
    there = ("sh", "-c", 'cd "$0" && exec "$@"', str(stage.folder))
    # Not in PATH, where there is one of that name.
    os.symlink("/bin/false", stage.folder / "worker")
    with stage.host("--worker", "bin/worker", scene=None, before=there,
                    environment={"PATH": f"{stage.folder}:{os.environ['PATH']}"}) as host:
        require(host.initialize()["worker"]["path"] == str(stage.folder / "bin/worker"), "another worker")
        host.shut_down()


@scenario
def simulate_is_not_found_with_a_real_camera(stage):
    worker = stage.program("worker", REAL_WORKER.format(python=sys.executable))
    with stage.host("--worker", str(worker), scene=None) as host:
        require(host.initialize()["worker"] == {"path": str(worker), "banner": "START sony-1.0", "simulated": False},
                "another worker")
        error = host.error("simulate", line="card out")
        require(error.code == -32601 and error.problem is None, f"it fails with {error}")
        host.shut_down()


@scenario
def a_virtual_camera_that_does_not_answer_holds_nothing_up(stage):
    with stage.host() as host:
        host.connect()
        host.camera("next file late 5s")
        host.call("subscribe", lines=True)
        shot = host.ask("capture")
        host.next("line", lambda line: line["text"] == "REMOTE_CAPTURED|OK")
        begun = time.monotonic()
        waits = [host.ask("simulate", line="wait") for _ in range(12)]
        host.call("state")
        for wait in waits:
            host.wait_until(lambda request=wait: request in host.answers, "an answer")
        took = time.monotonic() - begun
        codes = [host.answers[wait]["error"]["data"]["code"] for wait in waits]
        require(codes.count("camera-no-answer") >= 8 and set(codes) <= {"camera-no-answer", "busy"}, f"{codes}")
        require(took < 2.5, f"answered after {took} s")
        require(host.answer(shot)["status"] == "complete", "the shot is lost")


@scenario
def scripts_of_the_user_can_direct_the_camera_too(stage):
    with stage.host(environment={"CAMERA_SIM_CONTROL": str(stage.control)}) as host:
        host.connect()
        stage.camera("dial raw")
        host.next("state", lambda state: state["fileType"]["inForce"] == "raw")
        host.camera("dial jpeg")
        host.next("state", lambda state: state["fileType"]["inForce"] == "jpeg")


@scenario
def names_that_are_no_utf_8_are_escaped(stage):
    with stage.host(scene=("timing instant", 'camera "50% A\\xFF" over USB, card in')) as host:
        state = host.connect()
        require(state["camera"] == "50%25 A%FF", f"the camera is {state['camera']}")


# A disk that is stuck.

@scenario
def a_stuck_disk_holds_up_neither_the_state_nor_the_list_of_pictures(stage):
    if sys.platform != "linux":
        raise Skipped("it needs Linux")
    if stage.is_sanitized:
        raise Skipped("a sanitizer wants to be the first library")
    module = stage.modules / "stuck_disk.so"
    stuck = stage.folder / "stuck"
    with stage.host(environment={"LD_PRELOAD": str(module), "STUCK_WHILE": str(stuck),
                                 "STUCK_BELOW": str(stage.shots)}) as host:
        host.connect()
        require(host.call("capture")["status"] == "complete", "no picture")
        stuck.touch()
        shot = host.ask("capture", patience=2, expires=30)
        lists = []
        for _ in range(10):
            begun = time.monotonic()
            lists.append(host.ask("pictures"))
            host.call("state")
            require(time.monotonic() - begun < 1.5, f"the state took {time.monotonic() - begun} s")
        begun = time.monotonic()
        failures = [host.wait_until(lambda request=one: host.answers.get(request), "a list") for one in lists]
        require(time.monotonic() - begun < 3, f"the lists took {time.monotonic() - begun} s")
        codes = {failure["error"]["data"]["code"] for failure in failures}
        require(codes <= {"folder-gone", "busy"} and "folder-gone" in codes, f"{failures}")
        stuck.unlink()
        require(host.answer(shot)["status"] in ("complete", "refused", "none"), f"{host.answer(shot)}")
        host.next("state", lambda state: state["state"] == "ready" and not state["problems"])
        require(len(host.call("pictures")["pictures"]) >= 1, "the list is empty")
        host.shut_down()


# The record.

@scenario
def a_record_has_both_directions_and_standard_error(stage):
    record = stage.folder / "record"
    with stage.host("--record", str(record)) as host:
        host.connect()
        host.call("capture")
        host.shut_down()
    lines = record.read_text(encoding="utf-8").splitlines()
    for wanted in (r" # \d{4}-\d\d-\d\d", r" # client: tests 1$", r" ! camera-sim: simulated SDK",
                   r" < READY\|OK$", r" > CONNECT$", r" > CAPTURE$", r" < DOWNLOADED\|/", r" > QUIT$"):
        require(any(re.search(wanted, line) for line in lines), f"no line like {wanted}: {lines}")
    times = [float(line.split()[0]) for line in lines]
    require(times == sorted(times) and times[-1] < PATIENCE * 10, f"times: {times}")


@scenario
def a_redacted_record_names_no_folder_and_no_camera(stage):
    record = stage.folder / "record"
    with stage.host("--record", str(record), "--redact") as host:
        host.connect()
        host.call("capture")
        host.shut_down()
    text = record.read_text(encoding="utf-8")
    # Of standard error nobody knows what stands in it.
    for secret in (str(stage.folder), "SIM-1", "DSC0", "camera-sim", "tests"):
        require(secret not in text, f"{secret} stands in it: {text}")


@scenario
def a_record_that_ends_early_is_said_at_once_and_costs_no_picture(stage):
    record = stage.folder / "record"
    os.mkfifo(record)
    # A pipe whose reader goes away stands for a disk that is full.
    reader = os.open(record, os.O_RDONLY | os.O_NONBLOCK)
    with stage.host("--record", str(record)) as host:
        host.initialize()
        os.close(reader)
        host.call("connect")
        wait_for(lambda: b"\n" in host.complaints, "a complaint")
        require(host.call("capture")["status"] == "complete", "no picture")
        host.shut_down()
        require(host.complaints == b"tether: the record ends here: Broken pipe\n", f"{host.complaints}")


@scenario
def a_record_replaces_nothing(stage):
    record = stage.folder / "record"
    record.write_text("mine\n", encoding="utf-8")
    with stage.host("--record", str(record)) as host:
        require(host.end() == 2, "another status")
        require(host.order == [] and b"replaces nothing" in host.complaints, f"{host.complaints}")
    require(record.read_text(encoding="utf-8") == "mine\n", "it is another file")
