// The client of a page: requests over fetch, and what comes by itself as server-sent events.

import assert from "node:assert/strict";
import { once } from "node:events";
import { createServer, type IncomingMessage, type Server, type ServerResponse } from "node:http";
import type { AddressInfo } from "node:net";
import { test } from "node:test";
import { openPage, type Picture, type State } from "camera-worker/page";
import { next, take } from "./session.js";

const state: State = {
  state: "ready",
  camera: "MODEL-A",
  simulated: true,
  folder: "/shots",
  saveDestination: { asked: "disk", inForce: "disk" },
  fileType: { asked: null, inForce: "jpeg" },
  restarts: 0,
  problems: [],
};

function picture(id: string): Picture {
  const place = { path: `/shots/${id}.JPG`, cameraName: `${id}.JPG`, bytes: 1, whole: true, recovered: false };
  const at = "2026-05-03T14:07:22Z";
  return { id, shot: null, tag: "", pair: id, kind: "developed", format: "jpeg", at, afterMs: null, ...place };
}

type Answer = (method: string, parameters: any) => unknown;

/** Holds a session as `tether console` does. */
class Console {
  readonly asked: string[] = [];
  /** The header Last-Event-ID of each page that came for events. */
  readonly came: (string | undefined)[] = [];
  answer: Answer = () => state;
  status = 200;
  #events: ServerResponse | undefined;
  readonly #server: Server = createServer((request, response) => void this.#take(request, response));

  static async with(use: (console: Console, url: string) => Promise<void>): Promise<void> {
    const console = new Console();
    console.#server.listen(0, "127.0.0.1");
    await once(console.#server, "listening");
    try {
      await use(console, `http://127.0.0.1:${(console.#server.address() as AddressInfo).port}/`);
    } finally {
      console.#server.closeAllConnections();
      console.#server.close();
    }
  }

  write(text: string): void {
    this.#events!.write(text);
  }

  tell(method: string, params: unknown, id = ""): void {
    this.write(`${id && `id: ${id}\n`}data: ${JSON.stringify({ jsonrpc: "2.0", method, params })}\n\n`);
  }

  hangUp(): void {
    this.#events!.destroy();
  }

  async #take(request: IncomingMessage, response: ServerResponse): Promise<void> {
    response.statusCode = this.status;
    if (request.url === "/events") {
      this.came.push(request.headers["last-event-id"] as string | undefined);
      this.#events = response;
      response.writeHead(this.status, { "content-type": "text/event-stream" }).flushHeaders();
      return;
    }
    const text = (await request.toArray()).join("");
    const { id, method, params } = JSON.parse(text);
    this.asked.push(method);
    try {
      response.end(JSON.stringify({ jsonrpc: "2.0", id, result: this.answer(method, params) }));
    } catch (error) {
      response.end(JSON.stringify({ jsonrpc: "2.0", id, error }));
    }
  }
}

test("a page joins a session, asks and is told, and leaves it running", () =>
  Console.with(async (console, url) => {
    const camera = await openPage({ url });
    assert.deepEqual(camera.state, state);
    const told = next(camera, "state");
    console.tell("state", { ...state, state: "lost" });
    assert.equal((await told).state, "lost");
    console.answer = (method, parameters) => ({ method, parameters });
    assert.deepEqual(await camera.capture({ tag: "ü" }), { method: "capture", parameters: { tag: "ü" } });
    await camera.close();
    assert.deepEqual(console.asked, ["state", "capture"]);
  }));

test("problems come as errors, from requests and by themselves", () =>
  Console.with(async (console, url) => {
    await using camera = await openPage({ url });
    const problem = { code: "busy", severity: "error", text: "Too many.", advice: "Wait.", sdk: null, shot: null };
    console.answer = () => {
      throw { code: -32000, message: problem.text, data: problem };
    };
    await assert.rejects(camera.capture(), { name: "CameraProblem", code: "busy", advice: "Wait." });
    const told = next(camera, "problem");
    console.tell("problem", problem);
    assert.equal((await told).text, "Too many.");
  }));

test("events are read as the standard has them, wherever the stream is cut", () =>
  Console.with(async (console, url) => {
    await using camera = await openPage({ url });
    const texts: string[] = [];
    const last = next(camera, "problem", ({ text }) => {
      texts.push(text);
      return text === "last";
    });
    const message = (text: string): string => JSON.stringify({ jsonrpc: "2.0", method: "problem", params: { text } });
    const whole = Buffer.from(
      `: a comment\r\nid: 7\r\nevent: problem\r\ndata: ${message("ü")}\r\n\r\n` +
        `data:${message("two").replace(",", ",\ndata: ")}\n\nretry: 5\ndata\n\ndata: ${message("last")}\n\n`,
    );
    const socket = console as unknown as { write(bytes: Buffer): void };
    const half = whole.indexOf("ü") + 1;
    socket.write(whole.subarray(0, half));
    await camera.request("state", {}); // so that the rest comes apart
    socket.write(whole.subarray(half));
    await last;
    assert.deepEqual(texts, ["ü", "two", "last"]);
  }));

test("a page whose events break off comes back where it was, and asks for what it missed", () =>
  Console.with(async (console, url) => {
    await using camera = await openPage({ url, retry: 1 });
    const pictures = camera.pictures();
    console.tell("state", state);
    console.tell("picture", picture("a"), "41");
    assert.equal((await take(pictures, 1))[0]!.id, "a");
    const asked: unknown[] = [];
    console.answer = (method, parameters) => {
      asked.push([method, parameters.after]);
      return method === "pictures"
        ? { pictures: parameters.after === "a" ? [picture("b")] : [] }
        : { ...state, state: "idle" };
    };
    const back = next(camera, "state");
    const missed = take(camera.pictures({ after: "a" }), 1);
    console.hangUp();
    assert.equal((await back).state, "idle");
    assert.equal((await missed)[0]!.id, "b");
    assert.deepEqual(console.came, [undefined, "41"]);
    assert.ok(asked.some((one) => JSON.stringify(one) === '["pictures","a"]'));
  }));

test("a page that is told that events are forgotten asks for what it missed", () =>
  Console.with(async (console, url) => {
    await using camera = await openPage({ url });
    const told = next(camera, "state");
    console.answer = (method) => (method === "pictures" ? { pictures: [] } : { ...state, state: "lost" });
    console.write('event: missed\ndata: {"jsonrpc":"2.0","method":"missed","params":{}}\n\n');
    assert.equal((await told).state, "lost");
    assert.deepEqual(console.came, [undefined]);
  }));

test("a session that is not there is a problem", async () => {
  let address = "";
  await Console.with(async (console, url) => {
    address = url;
    const camera = await openPage({ url, retry: 1 });
    console.status = 403;
    await assert.rejects(camera.capture(), { code: "tether-gone", text: /403/ });
    console.hangUp();
    await camera.close();
    await assert.rejects(camera.capture(), { code: "closed" });
  });
  await assert.rejects(openPage({ url: address, retry: 1, grace: 0.1 }), { code: "no-answer" });
});
