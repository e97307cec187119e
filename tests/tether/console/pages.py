"""What pages do: they come, ask, hear, look at pictures, go and come back. Each scenario is a function of a Stage."""

import json
import os
import pathlib
import re
import shutil
import signal
import socket
import struct
import subprocess
import sys
import threading
import time

from browser import PATIENCE, Console, Skipped, Wrong, require

SCENARIOS = {}
SCENE = ("timing instant", "picture 600x400", 'camera "MODEL-A" over USB, card in')


def scenario(function):
    SCENARIOS[function.__name__] = function
    return function


class Stage:
    """A folder of its own and the consoles that are started in it."""

    def __init__(self, build, folder):
        self.build = build
        self.tether = str(build / "bin/tether")
        self.folder = folder
        self.shots = folder / "shots"
        self.shots.mkdir()
        self.consoles = []
        self.has_previews = (build / "bin/tether-preview").exists()

    @property
    def is_sanitized(self):
        program = pathlib.Path(self.tether).read_bytes()  # which is large: only for those who ask
        return any(mark in program for mark in (b"__asan_init", b"__tsan_init"))

    def start(self, *options, scene=SCENE, **more):
        file = self.folder / "scene"
        file.write_text("\n".join(scene) + "\n", encoding="utf-8")
        console = Console(self.tether, self.folder, "--scene", str(file), *options, **more)
        self.consoles.append(console)
        return console

    def connected(self, *options, **more):
        console = self.start(*options, **more)
        require(console.call("connect")["state"] == "ready", "not ready")
        return console

    def needs_previews(self):
        if not self.has_previews:
            raise Skipped("previews are not built here")

    def leave(self):
        for console in self.consoles:
            console.leave()

    def nothing_is_left(self):
        """After each scenario the session ends in order, and leaves nothing."""
        for console in self.consoles:
            if console.process.poll() is None:
                require(console.end() == 0, f"status {console.process.returncode}: {console.complaints!r}")
            require(b"Sanitizer" not in console.complaints, console.complaints.decode(errors="replace"))
        left = [path.name for path in self.folder.iterdir() if path.name.startswith("tether-")]
        require(not left, f"left behind: {left}")


def without_cookie(console, target):
    return console.get(target, {"Cookie": None})


def size_of_jpeg(data):
    """(width, height) of a JPEG."""
    require(data[:2] == b"\xff\xd8" and data[-2:] == b"\xff\xd9", f"no JPEG: {data[:20]!r}")
    at = 2
    while True:
        marker, length = struct.unpack(">HH", data[at:at + 4])
        if 0xFFC0 <= marker <= 0xFFC2:
            height, width = struct.unpack(">HH", data[at + 5:at + 9])
            return width, height
        at += 2 + length


# The address and what stands there.


@scenario
def the_address_lets_in_and_sets_the_cookie(stage):
    console = stage.start()
    page = without_cookie(console, f"/?token={console.token}")
    require(page.headers["set-cookie"]
            == f"tether-{console.port}={console.token}; Path=/; HttpOnly; SameSite=Strict", page)
    # With the cookie alone.
    require(console.get("/").status == page.status, page)
    if page.status == 404 and shutil.which("npm") is None:
        require(b"install npm" in page.body, page)
        raise Skipped("npm is not installed, so the page was not built")
    require(page.status == 200, page)
    require(page.headers["content-type"] == "text/html; charset=utf-8", page)
    names = re.findall(r'(?:src|href)="([^"#:]+)"', page.body.decode())
    require("page.js" in names and "page.css" in names, page.body)
    for name in names:
        require(console.get("/" + name).status == 200, f"{name} is missing")


# tests/console/stand_in.ts has the same.
POLICY = ("default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
          "base-uri 'none'; form-action 'none'; frame-ancestors 'none'")


@scenario
def every_answer_has_the_headers_that_protect(stage):
    console = stage.start()
    answers = [console.get("/"), console.get("/clock"), console.get("/none"), without_cookie(console, "/"),
               console.request("OPTIONS", "/"), console.post(b"x"), console.get("/record")]
    stream = console.events()
    for headers in [*(answer.headers for answer in answers), stream.headers]:
        require(headers["content-security-policy"] == POLICY, headers)
        require(headers["x-content-type-options"] == "nosniff", headers)
        require(headers["referrer-policy"] == "no-referrer", headers)
        require(headers["cross-origin-resource-policy"] == "same-origin", headers)
        require(headers["cache-control"] == "no-store", headers)
        require("access-control-allow-origin" not in headers, headers)


@scenario
def it_is_served_to_this_machine_only(stage):
    console = stage.start()
    if not sys.platform.startswith("linux"):
        raise Skipped("only Linux has a 127.0.0.2, where what listens everywhere is reached")
    with socket.create_server(("", 0)) as everywhere:
        socket.create_connection(("127.0.0.2", everywhere.getsockname()[1]), PATIENCE).close()
    for address in ("127.0.0.2", "::1"):
        try:
            socket.create_connection((address, console.port), PATIENCE).close()
        except OSError:
            continue
        raise Wrong(f"it is reached at {address}")


@scenario
def the_port_can_be_chosen_and_one_that_is_taken_is_said(stage):
    with socket.socket() as taken:
        taken.bind(("127.0.0.1", 0))
        taken.listen()
        port = taken.getsockname()[1]
        found = subprocess.run([stage.tether, "console", "--folder", str(stage.shots), "--port", str(port)],
                               capture_output=True, check=False, timeout=PATIENCE)
        require(found.returncode == 2 and str(port).encode() in found.stderr and not found.stdout, found)
    console = stage.start("--port", str(port))
    require(console.port == port, console.address)
    require(console.end() == 0, "status")
    # At once again, with connections of the last run still in the system's memory, and with another token.
    again = stage.start("--port", str(port))
    require(again.port == port and again.token != console.token, again.address)
    require(again.get("/", {"Cookie": f"tether-{port}={console.token}"}).status == 403, "an old token lets in")


@scenario
def an_address_that_cannot_be_written_is_said_and_ends_it(stage):
    if not os.path.exists("/dev/full"):
        raise Skipped("this system has no /dev/full")
    with open("/dev/full", "wb") as full:
        found = subprocess.run([stage.tether, "console", "--folder", str(stage.shots)],
                               stdout=full, stderr=subprocess.PIPE, check=False, timeout=PATIENCE)
    require(found.returncode == 2 and b"tether: cannot write the page's address: " in found.stderr, found)


# JSON-RPC.


@scenario
def requests_are_answered_as_by_tether_serve(stage):
    console = stage.start()
    require(console.call("state")["state"] in ("starting", "idle"), "state")
    state = console.call("connect")
    require(state["state"] == "ready" and state["simulated"], state)
    shot = console.shot(tag="a")
    require(shot["tag"] == "a" and len(shot["pictures"]) == 1, shot)
    require([one["id"] for one in console.call("pictures")["pictures"]] == [shot["pictures"][0]["id"]], "pictures")
    require(console.call("configure", saveDestination="both")["saveDestination"]["inForce"] == "both", "configure")
    require(console.call("simulate", line="state")["lines"][-1] == "ok", "simulate")
    require(console.call("cancel", tag="none") == {}, "cancel")
    require(console.call("disconnect")["state"] == "idle", "disconnect")


@scenario
def every_page_may_initialize(stage):
    # Also before there is anything to tell.
    console = stage.start()
    client = {"name": "page", "version": "1"}
    first = console.call("initialize", client=client)
    require(first["worker"]["simulated"] and first["protocol"] == 1, first)
    require(console.call("initialize", client=client, protocols=[1, 2]) == first, "the second one")
    for params in ({}, {"client": client, "protocols": [2]}, {"client": client, "more": 1}):
        error = console.post({"jsonrpc": "2.0", "id": 1, "method": "initialize", "params": params}).json()["error"]
        require(error["code"] == -32602, error)


@scenario
def errors_are_answers_and_change_nothing(stage):
    console = stage.start()
    for body, code in ((b"", -32700), (b"{", -32700), (b"\xff", -32700), (b"[]", -32600), (b"1", -32600),
                       (b'{"jsonrpc":"2.0","id":7,"method":"none"}', -32601),
                       (b'{"jsonrpc":"2.0","id":7,"method":"capture","params":{"patience":0}}', -32602),
                       (b'{"jsonrpc":"2.0","id":7,"method":"subscribe","params":{}}', -32602),
                       (b'{"jsonrpc":"2.0","id":[],"method":"state"}', -32600),
                       (b"[" * 100000, -32600)):
        answer = console.post(body)
        require(answer.status == 200 and answer.headers["content-type"] == "application/json", answer)
        require(answer.json()["error"]["code"] == code, f"{body[:80]!r}: {answer}")


@scenario
def ids_come_back_as_they_were(stage):
    console = stage.start()
    for number in (0, -1, 1.5, 2**53, 2**64 - 1, "x", "", "\u00e4\n", None):
        answer = console.post({"jsonrpc": "2.0", "id": number, "method": "state", "params": {}}).json()
        require(answer["id"] == number and "result" in answer, f"{number!r}: {answer}")
    # Two pages count the same way, and each hears its own answer.
    console.events("?after=0").next("state", lambda state: state["state"] == "idle")
    answers = []

    def ask(method):
        answers.append((method, console.post({"jsonrpc": "2.0", "id": 1, "method": method}).json()))

    threads = [threading.Thread(target=ask, args=(method,)) for method in ("state", "pictures") * 8]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    require(len(answers) == 16, answers)
    for method, answer in answers:
        if "error" in answer:
            require(answer["error"]["data"]["code"] == "busy", (method, answer))
        else:
            require(("pictures" in answer["result"]) == (method == "pictures"), (method, answer))
    require({method for method, answer in answers if "result" in answer} == {"state", "pictures"}, answers)


@scenario
def a_request_without_id_is_done_and_not_answered(stage):
    console = stage.connected()
    stream = console.events()
    answer = console.post({"jsonrpc": "2.0", "method": "capture", "params": {"tag": "quiet"}})
    require(answer.status == 204 and not answer.body, answer)
    stream.next("shot", lambda shot: shot["tag"] == "quiet" and shot["status"] == "complete")


@scenario
def a_page_can_end_the_program(stage):
    console = stage.connected()
    stream = console.events()
    require(console.call("shutdown")["worker"] == "quit", "shutdown")
    require(console.ended() == 0, console.process.returncode)
    require(stream.ends(), "the stream goes on")


@scenario
def each_signal_to_end_ends_in_order(stage):
    for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        console = stage.connected()
        stream = console.events()
        console.shot()
        require(console.end(number) == 0, f"{number}: {console.process.returncode} {console.complaints!r}")
        require(stream.ends(), "the stream goes on")


@scenario
def under_nohup_it_outlives_the_terminal(stage):
    console = stage.connected(under=("nohup",))
    console.process.send_signal(signal.SIGHUP)
    console.shot()


@scenario
def pages_come_and_go_and_the_shoot_does_not_mind(stage):
    console = stage.connected()
    for _ in range(40):
        stream = console.events("?after=0&lines=1")
        stream.next("state")
        stream.close()
        leaving = console.connect()
        leaving.write(console.request_text("POST", "/rpc", b'{"jsonrpc":"2.0","id":1,"method":"state"}'))
        leaving.close()
    console.shot()


@scenario
def a_page_that_leaves_while_it_waits_costs_nothing(stage):
    console = stage.connected()
    stream = console.events()
    console.camera("exposure 300ms")
    body = json.dumps({"jsonrpc": "2.0", "id": 1, "method": "capture", "params": {"tag": "left"}}).encode()
    leaving = console.connect()
    leaving.write(console.request_text("POST", "/rpc", body))
    stream.next("shot", lambda shot: shot["status"] == "fired")
    leaving.close()
    stream.next("shot", lambda shot: shot["status"] == "complete")
    console.shot()


# Events.


@scenario
def two_pages_hear_the_same(stage):
    console = stage.start()
    one, other = console.events(), console.events()
    console.call("connect")
    console.shot()
    for stream in (one, other):
        stream.next("state", lambda state: state["state"] == "ready")
        stream.next("shot", lambda shot: shot["status"] == "fired")
        stream.next("picture")
        stream.next("shot", lambda shot: shot["status"] == "complete")
    require(one.told[-4:] == other.told[-4:], "they differ")


@scenario
def events_begin_with_the_state(stage):
    console = stage.connected()
    console.shot()
    stream = console.events()
    stream.wait_until(lambda: stream.told, "anything")
    event, number, message = stream.told[0]
    require(event is None and number and message["method"] == "state", stream.told)
    require(message["params"]["state"] == "ready", stream.told)
    console.shot()
    stream.next("picture")
    require([message["method"] for _, _, message in stream.told].count("picture") == 1, "what was before")


@scenario
def a_page_that_comes_back_misses_nothing(stage):
    console = stage.connected()
    stream = console.events()
    ids = [console.shot()["pictures"][0]["id"]]
    stream.next("shot", lambda shot: shot["status"] == "complete")
    last = stream.last_id()
    stream.close()
    ids += [console.shot()["pictures"][0]["id"] for _ in range(3)]
    for again in (console.events(last=last), console.events("?after=" + last), console.events("?after=0", last=last)):
        heard = [again.next("picture")["id"] for _ in range(3)]
        require(heard == ids[1:], f"{heard} of {ids}")
        again.next("shot", lambda shot: shot["status"] == "complete")
        require(not any(event == "missed" for event, _, _ in again.told), again.told)


@scenario
def a_page_that_is_loaded_again_is_told_everything(stage):
    console = stage.connected()
    shots = [console.shot() for _ in range(3)]
    stream = console.events("?after=0&lines=1")
    for shot in shots:
        stream.next("shot", lambda told, shot=shot: told["shot"] == shot["shot"] and told["status"] == "fired")
        require(stream.next("picture")["id"] == shot["pictures"][0]["id"], "another picture")
        stream.next("shot", lambda told: told["status"] == "complete")
    texts = [message["params"]["text"] for _, _, message in stream.told if message["method"] == "line"]
    require(texts.count("CAPTURE") == 3 and "READY|OK" in texts, texts)


@scenario
def a_page_of_an_earlier_run_is_told_that_it_missed_something(stage):
    console = stage.connected()
    stream = console.events()
    console.shot()
    last = stream.last_id()
    require(console.end() == 0, "status")
    again = stage.start()
    stream = again.events(last=last)
    stream.wait_until(lambda: len(stream.told) >= 2, "anything")
    require([event for event, _, _ in stream.told[:2]] == ["missed", None], stream.told)
    require([message["method"] for _, _, message in stream.told[:2]] == ["missed", "state"], stream.told)
    stream.next("state", lambda state: state["state"] == "idle")
    require(len(again.call("pictures")["pictures"]) == 1, "the picture of the earlier run")


@scenario
def lines_are_for_pages_that_want_them(stage):
    console = stage.connected()
    quiet, all_lines = console.events(), console.events("?lines=1")
    console.shot()
    line = all_lines.next("line", lambda line: line["text"] == "CAPTURE")
    require(line["direction"] == ">" and line["dropped"] == 0, line)
    quiet.next("shot", lambda shot: shot["status"] == "complete")
    require(not any(message["method"] in ("line", "call") for _, _, message in quiet.told), quiet.told)
    require(console.call("subscribe", lines=True) == {}, "subscribe")
    console.shot()
    quiet.next("line", lambda line: line["text"] == "CAPTURE" and line["dropped"] == 0)
    require(console.call("subscribe", lines=False) == {}, "subscribe")


@scenario
def calls_of_the_sdk_are_on_the_clock_of_the_lines(stage):
    console = stage.connected()
    stream = console.events("?after=0&lines=1")
    console.shot()
    said = stream.next("line", lambda line: line["text"] == "CAPTURE")
    call = stream.next("call", lambda call: call["call"].startswith("SendCommand"))
    require(call["thread"] == "main" and call["result"] and call["durationMs"] >= 0, call)
    # The line goes out before the call, and both are counted from the same moment; a busy machine puts time between.
    require(-5 <= call["atMs"] - said["atMs"] < PATIENCE * 1000, (said, call))
    now = console.get("/clock").json()
    require(call["atMs"] <= now["atMs"] and re.fullmatch(r"\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z", now["at"]), now)


@scenario
def a_new_worker_writes_on_in_the_same_journal(stage):
    console = stage.connected()
    stream = console.events("?lines=1")
    listed = subprocess.run(["ps", "-A", "-o", "pid=,ppid="], capture_output=True, check=True).stdout.split()
    worker = next(int(child) for child, parent in zip(listed[::2], listed[1::2])
                  if int(parent) == console.process.pid)
    os.kill(worker, signal.SIGKILL)
    stream.wait_until(lambda: any(message["method"] == "call" and message["params"]["call"].startswith("Init")
                                  for _, _, message in stream.told), "Init")
    stream.next("state", lambda state: state["restarts"] == 1 and state["state"] == "ready")
    console.shot()


# Pictures.


@scenario
def pictures_are_sent_as_they_are(stage):
    console = stage.connected("--file-type", "both")
    pictures = console.shot()["pictures"]
    require(len(pictures) == 2, pictures)
    types = {"jpeg": "image/jpeg", "arw": "image/x-sony-arw", "dng": "image/x-adobe-dng"}
    for picture in pictures:
        sent = console.get(f"/pictures/{picture['id']}")
        require(sent.status == 200 and sent.body == pathlib.Path(picture["path"]).read_bytes(), sent)
        require(sent.headers["content-type"] == types[picture["format"]], sent.headers)
        require("private" in sent.headers["cache-control"], sent.headers)
        head = console.request("HEAD", f"/pictures/{picture['id']}")
        require(head.status == 200 and int(head.headers["content-length"]) == picture["bytes"], head)
        saved = console.get(f"/pictures/{picture['id']}?download=1")
        name = pathlib.Path(picture["path"]).name
        require(saved.headers["content-disposition"] == f'attachment; filename="{name}"', saved.headers)


@scenario
def pictures_of_earlier_runs_are_there_too(stage):
    console = stage.connected()
    ids = [console.shot()["pictures"][0]["id"] for _ in range(3)]
    require(console.end() == 0, "status")
    again = stage.start()
    again.events("?after=0").next("state", lambda state: state["state"] == "idle")
    for number in reversed(ids):
        require(again.get(f"/pictures/{number}").status == 200, number)


@scenario
def thousands_of_pictures_are_there_too(stage):
    console = stage.connected()
    picture = console.shot()["pictures"][0]
    require(console.end() == 0, "status")
    ledger = stage.shots / ".incoming/ledger"
    placing = next(line for line in map(json.loads, ledger.read_text(encoding="utf-8").splitlines()) if "placing" in line)
    with ledger.open("a", encoding="utf-8") as file:
        for number in range(1, 3001):
            os.link(picture["path"], stage.shots / f"many{number}.JPG")
            for line in ({**placing, "placing": f"{number:016x}", "to": f"many{number}.JPG"},
                         {"placed": f"{number:016x}"}, {"told": f"{number:016x}"}):
                file.write(json.dumps(line, separators=(",", ":")) + "\n")
    again = stage.start()
    again.events("?after=0").next("state", lambda state: state["state"] == "idle")
    # Before anybody has asked for the list, the last one too. On a machine that has much else to do the disk may not
    # answer in time, which is said as such, and never that there is no such picture: whoever is told so asks again.
    while (status := again.get(f"/pictures/{3000:016x}").status) == 503:
        pass
    require(status == 200, "the last one")
    ids = []
    while True:
        answer = again.ask("pictures", limit=1000, **({"after": ids[-1]} if ids else {}))
        if answer.get("error", {}).get("data", {}).get("code") == "folder-gone":
            continue
        if not answer["result"]["pictures"]:
            break
        ids += [one["id"] for one in answer["result"]["pictures"]]
    require(ids == [picture["id"], *(f"{number:016x}" for number in range(1, 3001))], f"{len(ids)} pictures")
    for number in ids[::300]:
        require(again.get(f"/pictures/{number}").status == 200, number)
        require(not stage.has_previews or again.get(f"/pictures/{number}/preview").status == 200, number)


@scenario
def a_picture_that_is_gone_is_said_to_be(stage):
    console = stage.connected()
    pictures = [console.shot()["pictures"][0] for _ in range(3)]
    for picture in pictures:
        os.unlink(picture["path"])
    # Whoever may write into the folder must not get at other files through this program.
    secret = stage.folder / "secret"
    secret.write_text("secret", encoding="ascii")
    os.symlink(secret, pictures[1]["path"])
    os.mkfifo(pictures[2]["path"])
    for picture in pictures:
        for end in ("", "/preview"):
            answer = console.get(f"/pictures/{picture['id']}{end}")
            require(answer.status == 410 and b"secret" not in answer.body, answer)


@scenario
def previews_are_small(stage):
    stage.needs_previews()
    console = stage.connected("--file-type", "both", scene=("timing instant", "picture 6000x4000"))
    for picture in console.shot()["pictures"]:
        preview = console.get(f"/pictures/{picture['id']}/preview")
        require(preview.status == 200 and preview.headers["content-type"] == "image/jpeg", f"{picture} {preview}")
        width, height = size_of_jpeg(preview.body)
        require(max(width, height) == 480 and width > height, f"{width}x{height}")
        again = console.get(f"/pictures/{picture['id']}/preview")
        require(again.body == preview.body, "another preview of the same picture")


def with_orientation(jpeg, orientation):
    """The same picture, with nothing in it but how it lies."""
    at = 2
    while jpeg[at] == 0xFF and 0xE0 <= jpeg[at + 1] <= 0xEF:
        at += 2 + struct.unpack(">H", jpeg[at + 2:at + 4])[0]
    tiff = b"MM\0*" + struct.pack(">IHHHIHHI", 8, 1, 0x0112, 3, 1, orientation, 0, 0)
    exif = b"Exif\0\0" + tiff
    return jpeg[:2] + b"\xff\xe1" + struct.pack(">H", len(exif) + 2) + exif + jpeg[at:]


@scenario
def the_orientation_in_the_file_is_honoured(stage):
    stage.needs_previews()
    console = stage.connected()
    picture = console.shot()["pictures"][0]
    drawn = pathlib.Path(picture["path"]).read_bytes()
    for orientation in range(1, 9):
        # Each needs an id of its own: what is known by one is kept.
        picture = console.shot()["pictures"][0]
        pathlib.Path(picture["path"]).write_bytes(with_orientation(drawn, orientation))
        width, height = size_of_jpeg(console.get(f"/pictures/{picture['id']}/preview").body)
        require((width > height) == (orientation < 5), f"{orientation}: {width}x{height}")


@scenario
def a_damaged_picture_is_shown_as_far_as_it_goes(stage):
    stage.needs_previews()
    console = stage.connected()
    pictures = [console.shot()["pictures"][0] for _ in range(3)]
    path = pathlib.Path(pictures[0]["path"])
    path.write_bytes(path.read_bytes()[:path.stat().st_size * 2 // 3])
    for picture, status, data in ((pictures[0], 200, None), (pictures[1], 404, path.read_bytes()[:100]),
                                  (pictures[2], 404, b"\xff\xd8" + os.urandom(5000) + b"\xff\xd9")):
        if data:
            pathlib.Path(picture["path"]).write_bytes(data)
        found = console.get(f"/pictures/{picture['id']}/preview")
        require(found.status == status, f"{found} and not {status}")


@scenario
def what_brings_the_preview_down_costs_no_shot(stage):
    stage.needs_previews()
    console = stage.connected()
    picture = console.shot()["pictures"][0]
    path = pathlib.Path(picture["path"])
    # A head that promises a picture that no memory holds, and rubbish behind the marks of several kinds of files.
    huge = b"\xff\xd8\xff\xc2\x00\x11\x08\xff\xff\xff\xff\x03\x01\x22\x00\x02\x11\x01\x03\x11\x01"
    for rubbish in (huge + os.urandom(100000), b"II*\0" + os.urandom(100000), b"", os.urandom(1000),
                    b"\xff\xd8", b"FUJIFILM" + os.urandom(10000)):
        path.write_bytes(rubbish)
        require(console.get(f"/pictures/{picture['id']}/preview").status == 404, rubbish[:20])
    console.shot()


@scenario
def many_previews_at_once_are_all_made(stage):
    stage.needs_previews()
    console = stage.connected()
    ids = [console.shot()["pictures"][0]["id"] for _ in range(10)]
    statuses = []

    def look(number):
        statuses.append(console.get(f"/pictures/{number}/preview").status)

    threads = [threading.Thread(target=look, args=(number,)) for number in ids * 4]
    for thread in threads:
        thread.start()
    console.shot()
    for thread in threads:
        thread.join()
    require(statuses == [200] * 40, statuses)


# The rest.


@scenario
def the_record_can_be_had_with_and_without_paths(stage):
    console = stage.connected()
    shot = console.shot()
    name = pathlib.Path(shot["pictures"][0]["path"]).name
    record = ""
    # It is written by a thread of its own.
    deadline = time.monotonic() + PATIENCE
    while "DOWNLOADED|" not in record and time.monotonic() < deadline:
        answer = console.get("/record")
        record = answer.body.decode()
    require(answer.headers["content-disposition"] == 'attachment; filename="record.txt"', answer.headers)
    require(" > CAPTURE\n" in record and name in record and str(stage.shots) in record, record)
    require(console.token not in record and console.token.encode() not in console.complaints, "the token was written down")
    redacted = console.get("/record?redacted=1").body.decode()
    require(" > CAPTURE\n" in redacted and name not in redacted and str(stage.shots) not in redacted, redacted)
    require(redacted.count("\n") >= record.count("\n"), "lines are missing")


@scenario
def the_users_own_record_is_the_one_to_be_had(stage):
    file = stage.folder / "record"
    console = stage.connected("--record", str(file))
    console.shot()
    require(console.end() == 0, "status")
    require(b" > CAPTURE\n" in file.read_bytes(), "nothing was recorded")
    console = stage.connected("--record", str(stage.folder / "again"), "--redact")
    console.shot()
    require(str(stage.shots).encode() not in console.get("/record").body, "a redacted record is not told whole")


@scenario
def the_free_space_is_told(stage):
    console = stage.start()
    console.events("?after=0").next("state", lambda state: state["state"] == "idle")
    space = console.get("/space").json()
    free = os.statvfs(stage.shots)
    require(space["folder"] == str(stage.shots.resolve()), space)
    require(0.5 < space["freeBytes"] / (free.f_bavail * free.f_frsize) < 2, space)


@scenario
def the_clock_goes_on(stage):
    console = stage.start()
    one = console.get("/clock").json()["atMs"]
    other = console.get("/clock").json()["atMs"]
    require(0 <= one < other, (one, other))


@scenario
def a_folder_that_is_in_use_is_said_and_tried_again(stage):
    first = stage.connected()
    second = stage.start()
    stream = second.events("?after=0")
    stream.next("problem", lambda problem: problem["code"] == "folder-in-use")
    # Whether there is such a picture cannot be known.
    answer = second.get("/pictures/0123456789abcdef")
    require(answer.status == 503 and answer.body == b"The pictures cannot be listed now.\n", answer)
    require(first.end() == 0, "status")
    stream.next("state", lambda state: state["state"] == "idle")
    require(second.call("connect")["state"] == "ready", "not ready")
    second.shot()


@scenario
def a_stuck_disk_holds_up_neither_other_pages_nor_the_end(stage):
    if sys.platform != "linux":
        raise Skipped("it needs Linux")
    if stage.is_sanitized:
        raise Skipped("a sanitizer wants to be the first library")
    stuck = stage.folder / "stuck"
    console = stage.connected(environment={"LD_PRELOAD": str(stage.build / "modules/stuck_disk.so"),
                                           "STUCK_WHILE": str(stuck), "STUCK_BELOW": str(stage.shots)})
    picture = console.shot()["pictures"][0]["id"]
    stuck.touch()
    # A browser has six connections, and needs one for the camera.
    waiting = {target: console.connect() for target in ("/space", f"/pictures/{picture}", f"/pictures/{picture}/preview")}
    for target, connection in waiting.items():
        connection.write(console.request_text("GET", target))
    require(console.get("/clock").status == 200, "the clock")
    for target, connection in waiting.items():
        answer = connection.response()
        require(answer.status == 503 and answer.body == b"The disk does not answer.\n", f"{target}: {answer}")
    for _ in range(30):
        console.connect().write(console.request_text("GET", "/space"))
    require(console.call("state")["camera"], "the state")
    stuck.unlink()
    console.shot()
    require(console.get(f"/pictures/{picture}").status == 200, "the picture")
    stuck.touch()
    console.connect().write(console.request_text("GET", "/space"))
    require(console.end() == 0, f"status {console.process.returncode}: {console.complaints!r}")


@scenario
def what_cannot_begin_is_said_at_once(stage):
    for options, words in ((["--folder", str(stage.folder / "none/none")], b"cannot make the folder"),
                           (["--port", "0"], b"--port"), (["--port", "65536"], b"--port"), (["--exec", "x"], b"--exec")):
        found = subprocess.run([stage.tether, "console", *options], capture_output=True, check=False, timeout=PATIENCE)
        require(found.returncode == 2 and words in found.stderr and not found.stdout, found)
