"""What must not get in, and must not cost a shot. Every scenario ends with one that comes whole."""

import contextlib
import json
import pathlib
import socket
import threading
import time

from browser import PATIENCE, Skipped, require

SCENARIOS = {}
STATE = b'{"jsonrpc":"2.0","id":1,"method":"state"}'
CAPTURE = b'{"jsonrpc":"2.0","id":1,"method":"capture"}'
EVERYWHERE = ("/", "/page.js", "/events", "/clock", "/space", "/record", "/pictures/0123456789abcdef",
              "/pictures/0123456789abcdef/preview", "/none")


def attack(function):
    """Under attack, and behind it, shots come whole; what was refused has fired none. It returns how many it took."""
    def play(stage):
        console = stage.connected()
        taken = function(stage, console) or 0
        console.shot()
        pictures = console.call("pictures")["pictures"]
        require(len(pictures) == taken + 1, f"{len(pictures)} pictures of {taken + 1} shots")
        memory = console.memory()
        require(memory is None or memory < 256, f"{memory} MiB")
    SCENARIOS[function.__name__] = play
    return function


def refused(console, status, method, target, body=None, headers=None):
    answer = console.request(method, target, body, headers)
    require(answer.status == status, f"{method} {target} {headers}: {answer}")
    require(answer.headers["content-type"] == "text/plain; charset=utf-8", answer)
    return answer


@attack
def a_request_without_token(_, console):
    for target in EVERYWHERE:
        answer = refused(console, 403, "GET", target, headers={"Cookie": None})
        require("set-cookie" not in answer.headers, answer)
    refused(console, 403, "POST", "/rpc", CAPTURE, {"Cookie": None})


@attack
def a_request_with_another_token(_, console):
    other = ("0" if console.token[0] != "0" else "1") + console.token[1:]
    for wrong in (other, "", console.token[:-1], console.token + "0", "%30" + console.token):
        refused(console, 403, "GET", "/?token=" + wrong, headers={"Cookie": None})
        refused(console, 403, "POST", "/rpc", CAPTURE, {"Cookie": f"tether-{console.port}={wrong}"})
        refused(console, 403, "POST", "/rpc?token=" + wrong, CAPTURE, {"Cookie": None})
    refused(console, 403, "POST", "/rpc", CAPTURE, {"Cookie": f"tether={console.token}"})


@attack
def a_foreign_host(_, console):
    for host in ("evil.example", f"evil.example:{console.port}", f"localhost:{console.port}", "127.0.0.1",
                 f"127.0.0.1:{console.port + 1}", f"127.0.0.1:{console.port}@evil.example", "", None):
        refused(console, 403, "GET", f"/?token={console.token}", headers={"Host": host})
        refused(console, 403, "POST", "/rpc", CAPTURE, {"Host": host})


@attack
def a_foreign_origin(_, console):
    for origin in ("http://evil.example", "null", "", f"https://127.0.0.1:{console.port}",
                   f"http://127.0.0.1:{console.port + 1}", f"http://localhost:{console.port}", "file://"):
        refused(console, 403, "POST", "/rpc", CAPTURE, {"Origin": origin})
        refused(console, 403, "GET", "/events", headers={"Origin": origin})
    refused(console, 403, "POST", "/rpc", CAPTURE, {"Origin": None})
    refused(console, 403, "POST", "/rpc", CAPTURE, {"Sec-Fetch-Site": "same-site"})
    refused(console, 403, "GET", "/pictures/0123456789abcdef", headers={"Sec-Fetch-Site": "cross-site"})


@attack
def a_form_of_another_page(_, console):
    for kind in ("text/plain", "application/x-www-form-urlencoded", "multipart/form-data; boundary=x", None):
        refused(console, 415, "POST", "/rpc", CAPTURE, {"Content-Type": kind})


@attack
def a_path_with_dots(stage, console):
    (stage.folder / "secret").write_text("secret", encoding="ascii")
    for target in ("/../secret", "/../../../../../../etc/passwd", "/%2e%2e/secret", "/..%2fsecret", "/%2e%2e%2fsecret",
                   "/pictures/../secret", "/pictures/..%2f..%2fsecret", "/pictures/%2e%2e/preview",
                   "/pictures/../../secret/preview", "/....//secret", "/..\\secret", "/%c0%ae%c0%ae/secret",
                   "/.", "/..", "/./page.js", "//etc/passwd", "/pictures/.incoming%2fledger", "/%00",
                   "/index.html%00.js", "/pictures/", "/pictures", "/%"):
        answer = console.get(target)
        require(answer.status == 404, f"{target}: {answer}")
        require(b"secret" not in answer.body and b"root:" not in answer.body, f"{target}: {answer}")


@attack
def a_picture_id_that_is_none(_, console):
    for number in ("0123456789abcdef", "0", "x", "0123456789ABCDEF", "0123456789abcdef0", "-1",
                   "0123456789abcde%00", "'", "0123456789abcdef%20", "*", "a" * 1000):
        for end in ("", "/preview", "/", "/preview/"):
            refused(console, 404, "GET", f"/pictures/{number}{end}")
    for end in ("", "/preview"):
        refused(console, 405, "POST", "/pictures/0123456789abcdef" + end, b"{}")


@attack
def a_body_over_1_mib(_, console):
    most = 1 << 20
    require(console.post(STATE + b" " * (most - len(STATE))).status == 200, "1 MiB is taken")
    connection = console.connect()
    connection.write(console.request_text("POST", "/rpc", CAPTURE + b" " * (most + 1 - len(CAPTURE))))
    require(connection.response().status == 413, "one byte more is not")
    require(connection.is_over(), "the connection goes on")
    for length in ("1048577", "4294967296", "18446744073709551615", "9" * 1000):
        refused(console, 413, "POST", "/rpc", headers={"Content-Length": length})
    # Nobody without the token can make it take anything in.
    refused(console, 403, "POST", "/rpc", headers={"Cookie": None, "Content-Length": "1048576"})


@attack
def five_hundred_idle_connections(_, console):
    idle = [console.connect() for _ in range(500)]
    console.shot()
    stream = console.events()
    stream.next("state")
    console.shot()
    stream.next("picture")
    # Those that have half asked are worth no more.
    for connection in idle:
        connection.write(b"GET / HTTP/1.1\r\n")
    for connection in [console.connect() for _ in range(500)]:
        connection.write(b"POST /rpc HTTP/1.1\r\nHost: x")
    console.shot()
    stream.next("picture")
    return 3


@attack
def a_slow_sender(_, console):
    slow = [console.connect() for _ in range(100)]
    text = console.request_text("POST", "/rpc", CAPTURE)
    begun = time.monotonic()
    over = threading.Event()

    def write():
        # A byte now and then: that is the attack, and not a wait for anything.
        for at in range(len(text) - 1):
            for connection in slow:
                with contextlib.suppress(OSError):
                    connection.socket.send(text[at:at + 1])
            if over.wait(0.25):
                return

    writing = threading.Thread(target=write)
    writing.start()
    try:
        console.shot()
        # Each is closed 10 s after its first byte, however it goes on.
        for connection in slow:
            require(connection.is_over(), "a slow sender was answered")
        require(time.monotonic() - begun < PATIENCE, "slow senders are waited for")
    finally:
        over.set()
        writing.join()
    return 1


@attack
def a_slow_reader(_, console):
    before = console.threads()
    if not before:
        raise Skipped("this system does not tell how many threads a program has")
    picture = console.shot()["pictures"][0]
    path = pathlib.Path(picture["path"])
    path.write_bytes(path.read_bytes() + bytes(32 << 20))
    before = console.threads()
    slow = [console.connect(buffer=4096) for _ in range(20)]
    for connection in slow:
        connection.write(console.request_text("GET", f"/pictures/{picture['id']}"))
    listening = [console.connect(buffer=4096) for _ in range(5)]
    for connection in listening:
        connection.write(console.request_text("GET", "/events?after=0&lines=1"))
    for _ in range(3):
        console.shot()
    # Whoever takes nothing for 10 s is let go of: a thread and a file are theirs until then.
    deadline = time.monotonic() + PATIENCE
    while console.threads() > before + len(listening):
        require(time.monotonic() < deadline, "slow readers are waited for")
    for connection in slow:
        require(connection.head()[0] == 200, "it was answered")
    return 4


@attack
def huge_headers(_, console):
    refused(console, 431, "GET", "/", headers={"X": "x" * 20000})
    refused(console, 431, "GET", "/", headers={f"X-{count}": "1" for count in range(100)})
    refused(console, 414, "GET", "/" + "a" * 3000)
    connection = console.connect()
    connection.write(b"GET / HTTP/1.1\r\nX: ")
    for _ in range(100):
        connection.write(b"x" * 10000)
    require(connection.response().status == 431, "an endless header")
    connection = console.connect()
    connection.write(b"G" * 100000)
    require(connection.response().status == 431, "an endless line")
    # The cookies of other programs on this machine are not ours, and lock nobody out.
    many = "; ".join(f"other{count}=\u00e4" for count in range(500)) + f"; tether-{console.port}={console.token}"
    require(console.get("/clock", {"Cookie": many}).status == 200, "other cookies")


@attack
def head_options_and_unknown_methods(_, console):
    for method in ("OPTIONS", "PUT", "DELETE", "PATCH", "TRACE", "CONNECT", "PROPFIND", "X"):
        answer = refused(console, 405, method, "/")
        require(answer.headers["allow"] == "GET, HEAD, POST", answer)
    for target in ("/clock", "/record", "/events", "/space"):
        answer = console.request("HEAD", target)
        require(answer.status == 200 and not answer.body, answer)
    require(console.request("HEAD", "/none").status == 404, "HEAD of nothing")
    require(console.request("HEAD", "/clock", headers={"Cookie": None}).status == 403, "HEAD without token")
    answer = refused(console, 405, "GET", "/rpc")
    require(answer.headers["allow"] == "POST", answer)
    for target in ("/", "/events", "/clock", "/none"):
        refused(console, 405, "POST", target, STATE)
    # A header that others take for the method.
    refused(console, 405, "GET", "/rpc", headers={"X-HTTP-Method-Override": "POST"})


@attack
def request_smuggling(_, console):
    inner = console.request_text("POST", "/rpc", CAPTURE)
    host = f"Host: 127.0.0.1:{console.port}\r\nCookie: tether-{console.port}={console.token}\r\n" \
           f"Origin: http://127.0.0.1:{console.port}\r\nContent-Type: application/json\r\n"

    def post(headers):
        return f"POST /rpc HTTP/1.1\r\n{host}{headers}\r\n".encode() + b"0\r\n\r\n" + inner

    def get(first_line, headers=""):
        return f"{first_line}\r\n{host}{headers}\r\n".encode() + inner

    for text in (post("Content-Length: 5\r\nTransfer-Encoding: chunked\r\n"),
                 post("Transfer-Encoding: chunked\r\nContent-Length: 5\r\n"),
                 post("Transfer-Encoding: chunked\r\n"),
                 post("Transfer-Encoding: xchunked\r\n"),
                 post("Transfer-Encoding : chunked\r\nContent-Length: 5\r\n"),
                 post("Transfer-Encoding:\tchunked\r\nContent-Length: 5\r\n"),
                 post("Content-Length: 5\r\nContent-Length: 0\r\n"),
                 post("Content-Length: 5, 5\r\n"),
                 post("Content-Length: +5\r\n"),
                 post("Content-Length: 0x5\r\n"),
                 post("Content-Length: %35\r\n"),
                 post("Content-Length: 5\r\n folded\r\n"),
                 post("Content-Length:\r\n 5\r\n"),
                 post("X: y\rContent-Length: 0\r\n"),
                 post("X: y\nContent-Length: 0\r\n"),
                 post("X: y\0\r\nContent-Length: 0\r\n"),
                 get("GET / HTTP/1.1", "Content-Length: 100\r\n"),
                 get("GET / HTTP/1.1", "Host: x\r\n"),
                 get("GET /\n HTTP/1.1"),
                 get("GET http://127.0.0.1/ HTTP/1.1")):
        connection = console.connect()
        connection.write(text)
        answer = connection.response()
        require(answer.status in (400, 411), f"{text[:300]!r}: {answer}")
        require(connection.is_over(), f"{text[:300]!r}: more than one answer: {connection.read!r}")
        connection.close()


@attack
def what_makes_the_library_work_hard(_, console):
    """Ranges without number, packed bodies, forms of a thousand parts, expectations, somebody else's address."""
    answer = console.get("/clock", {"Range": "bytes=" + ",".join(f"{count}-{count}" for count in range(1000))})
    require(answer.status == 200, answer)
    require(console.get("/clock", {"Range": "bytes=5-1"}).status == 200, "a range backwards")
    refused(console, 415, "POST", "/rpc", CAPTURE, {"Content-Encoding": "gzip"})
    refused(console, 417, "POST", "/rpc", CAPTURE, {"Expect": "100-continue"})
    answer = console.get("/clock", {"Accept-Encoding": "br, gzip", "X-Forwarded-For": "1.2.3.4",
                                    "REMOTE_ADDR": "1.2.3.4", "Upgrade": "websocket", "Connection": "Upgrade",
                                    "Sec-WebSocket-Key": "x"})
    require(answer.status == 200 and "content-encoding" not in answer.headers, answer)
    require(console.get("/clock?" + "&".join(f"a{count}=b" for count in range(300))).status == 200, "parameters")
    # Whatever is in an address never becomes a header of the answer.
    answer = console.get("/none%0d%0aSet-Cookie:%20a=b")
    require(answer.status == 404 and "set-cookie" not in answer.headers, answer)
    answer = console.get("/clock", {"Last-Event-ID": "%0d%0aX:%20y"})
    require(answer.status == 200 and "x" not in answer.headers, answer)


@attack
def keep_alive_limits(_, console):
    connection = console.connect()
    text = console.request_text("GET", "/clock")
    for count in range(1, 1001):
        connection.write(text)
        answer = connection.response()
        require(answer.status == 200, answer)
        require(("close" in answer.headers.get("connection", "")) == (count == 1000), f"{count}: {answer.headers}")
    require(connection.is_over(), "the connection goes on")
    for headers, version in (({"Connection": "close"}, b"1.1"), ({}, b"1.0")):
        connection = console.connect()
        connection.write(console.request_text("GET", "/clock", headers=headers).replace(b"HTTP/1.1", b"HTTP/" + version))
        require(connection.response().status == 200 and connection.is_over(), "the last one of its connection")


@attack
def requests_in_one_go(_, console):
    connection = console.connect()
    connection.write(console.request_text("GET", "/clock") + console.request_text("POST", "/rpc", STATE)
                     + console.request_text("GET", "/none"))
    require([connection.response().status for _ in range(3)] == [200, 200, 404], "in order")


@attack
def too_many_requests_at_once(_, console):
    """64 wait for an answer; the rest is told so, and the camera does not mind."""
    stream = console.events()
    console.camera("exposure 500ms")
    waiting = [console.connect() for _ in range(100)]
    for connection in waiting:
        connection.write(console.request_text("POST", "/rpc", CAPTURE))
    statuses = [connection.response().status for connection in waiting]
    require(set(statuses) <= {200, 503} and 200 in statuses, statuses)
    console.camera("timing instant")
    console.shot(tag="last")
    stream.next("shot", lambda shot: shot["tag"] == "last" and shot["status"] == "complete")
    over = [message["params"]["status"] for _, _, message in stream.told if message["method"] == "shot"]
    require("incomplete" not in over and "none" not in over, over)
    return over.count("complete")


@attack
def rubbish(_, console):
    for text in (b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\x03\x03" + bytes(200), bytes(1000) + b"\r\n\r\n",
                 b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", b"\r\n\r\n", b"GET / HTTP/1.1\r\n\xff\xfe: \xff\r\n\r\n",
                 b"\n" * 100 + b"\r\n\r\n"):
        connection = console.connect()
        connection.write(text)
        connection.socket.shutdown(socket.SHUT_WR)
        answer = connection.response()
        require(answer is None or answer.status in (400, 405), f"{text!r}: {answer}")
        connection.close()
