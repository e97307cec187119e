// A stand-in for `tether console`, for what the real one does only once a year: it tells what a test has it tell. The
// addresses, the events with their ids and the security policy are the real one's.

import { once } from "node:events";
import { readFile } from "node:fs/promises";
import { createServer, type IncomingMessage, type ServerResponse } from "node:http";
import type { AddressInfo } from "node:net";
import { fileURLToPath } from "node:url";
import type { Picture, Problem, Shot, State } from "camera-worker/page";
import { image } from "./image.js";

const dist = fileURLToPath(new URL("../../../console/dist/", import.meta.url));
const policy = [
  "default-src 'none'",
  "script-src 'self'",
  "style-src 'self'",
  "img-src 'self'",
  "connect-src 'self'",
  "base-uri 'none'",
  "form-action 'none'",
  "frame-ancestors 'none'",
].join("; ");
const types: Record<string, string> = {
  html: "text/html",
  css: "text/css",
  js: "text/javascript",
  svg: "image/svg+xml",
};

export const folder = "/Users/me/shots";

/** The answer to a request; an Error becomes a JSON-RPC error. */
type Answer = (parameters: any) => unknown;

export class StandIn {
  readonly pictures: Picture[] = [];
  /** Every request, in order. */
  readonly asked: { method: string; parameters: Record<string, unknown> }[] = [];
  readonly answers: Record<string, Answer> = {};
  /** With this status, instead of an answer to anything. */
  refusing: number | undefined;
  state: State = {
    state: "idle",
    camera: null,
    simulated: true,
    folder,
    saveDestination: { asked: "disk", inForce: null },
    fileType: { asked: null, inForce: null },
    restarts: 0,
    problems: [],
  };

  readonly #server = createServer((request, response) => void this.#serve(request, response));
  readonly #streams = new Set<ServerResponse>();
  readonly #events: { id: number; data: string }[] = [];
  readonly #startedAt = Date.now();
  #run = 1;
  #port = 0;
  #lastShot = 0;

  static async start(): Promise<StandIn> {
    const standIn = new StandIn();
    await standIn.#listen();
    return standIn;
  }

  get url(): string {
    return `http://127.0.0.1:${this.#port}/`;
  }

  get atMs(): number {
    return Date.now() - this.#startedAt;
  }

  tell(method: string, parameters: object): void {
    const id = this.#events.length + 1;
    this.#events.push({ id, data: JSON.stringify({ jsonrpc: "2.0", method, params: parameters }) });
    for (const stream of this.#streams) {
      this.#send(stream, id);
    }
  }

  change(change: Partial<State>): State {
    this.state = { ...this.state, ...change };
    this.tell("state", this.state);
    return this.state;
  }

  line(direction: "<" | ">", text: string, atMs = this.atMs): void {
    this.tell("line", { direction, text, atMs, dropped: 0 });
  }

  ready(): State {
    return this.change({
      state: "ready",
      camera: "Virtual Camera SIM-1",
      saveDestination: { ...this.state.saveDestination, inForce: "disk" },
      fileType: { ...this.state.fileType, inForce: "jpeg" },
    });
  }

  picture(change: Partial<Picture> = {}): Picture {
    const number = this.pictures.length + 1;
    const camera = `DSC${String(number).padStart(5, "0")}.JPG`;
    return {
      id: `id${number}`,
      shot: number,
      tag: "",
      pair: `pair-${number}`,
      kind: "developed",
      format: "jpeg",
      path: `${this.state.folder}/${camera}`,
      cameraName: camera,
      bytes: 4_391_376,
      whole: true,
      at: new Date(Date.UTC(2026, 4, 3, 4, 40) + number * 1000).toISOString(),
      afterMs: 2955,
      recovered: false,
      ...change,
    };
  }

  /** A picture comes. */
  add(change: Partial<Picture> = {}): Picture {
    const picture = this.picture(change);
    this.pictures.push(picture);
    this.tell("picture", picture);
    return picture;
  }

  shot(shot: number, change: Partial<Shot> = {}): Shot {
    const pictures = this.pictures.filter((picture) => picture.shot === shot);
    return { shot, tag: "", status: "fired", firedAt: new Date().toISOString(), pictures, problems: [], ...change };
  }

  /** Shoots as the real one does, in no time. */
  capture(): Shot {
    const shot = Math.max(this.#lastShot, ...this.pictures.map((picture) => picture.shot ?? 0)) + 1;
    this.#lastShot = shot;
    this.line(">", "CAPTURE");
    this.tell("shot", this.shot(shot));
    this.line("<", "REMOTE_CAPTURED|OK");
    this.line("<", `DOWNLOADED|${folder}/DSC${shot}.JPG`);
    this.add({ shot });
    const over = this.shot(shot, { status: "complete" });
    this.tell("shot", over);
    return over;
  }

  /** Nobody can reach it any more. */
  async goAway(): Promise<void> {
    this.#server.closeAllConnections();
    this.#server.close();
    await once(this.#server, "close");
  }

  /** At the same address; another run forgets what the one before has told. */
  async comeBack({ isAnotherRun = false } = {}): Promise<void> {
    if (isAnotherRun) {
      this.#events.length = 0;
      this.#run += 1;
    }
    await this.#listen();
  }

  async close(): Promise<void> {
    if (this.#server.listening) {
      await this.goAway();
    }
  }

  async #listen(): Promise<void> {
    this.#server.listen(this.#port, "127.0.0.1");
    await once(this.#server, "listening");
    this.#port = (this.#server.address() as AddressInfo).port;
  }

  #send(stream: ServerResponse, id: number): void {
    stream.write(`id: ${this.#run}-${id}\ndata: ${this.#events[id - 1]!.data}\n\n`);
  }

  async #serve(request: IncomingMessage, response: ServerResponse): Promise<void> {
    const { pathname } = new URL(request.url!, this.url);
    response.setHeader("content-security-policy", policy);
    response.setHeader("cache-control", "no-store");
    if (this.refusing !== undefined) {
      response.writeHead(this.refusing).end("This is nobody's business.");
    } else if (pathname === "/rpc") {
      await this.#answer(request, response);
    } else if (pathname === "/events") {
      this.#stream(request, response);
    } else if (pathname === "/clock") {
      response.end(JSON.stringify({ atMs: this.atMs, at: new Date(this.#startedAt + this.atMs).toISOString() }));
    } else if (pathname === "/space") {
      response.end(JSON.stringify({ freeBytes: 54_000_000_000, folder: this.state.folder }));
    } else if (pathname === "/record") {
      response.writeHead(200, { "content-disposition": 'attachment; filename="record.txt"' }).end(request.url);
    } else if (pathname.startsWith("/pictures/")) {
      this.#sendPicture(decodeURIComponent(pathname.slice("/pictures/".length)), response);
    } else {
      await this.#sendFile(pathname, response);
    }
  }

  async #answer(request: IncomingMessage, response: ServerResponse): Promise<void> {
    request.setEncoding("utf8");
    let body = "";
    for await (const part of request) {
      body += part;
    }
    const { id, method, params } = JSON.parse(body);
    this.asked.push({ method, parameters: params });
    try {
      const result = await (this.answers[method] ?? this.#usual[method]!)(params);
      response.end(JSON.stringify({ jsonrpc: "2.0", id, result }));
    } catch (error) {
      const { message, data } = error as Error & { data?: Problem };
      response.end(JSON.stringify({ jsonrpc: "2.0", id, error: { code: data ? -32000 : -32602, message, data } }));
    }
  }

  readonly #usual: Record<string, Answer> = {
    state: () => this.state,
    connect: () => {
      this.change({ state: "opening" });
      return this.ready();
    },
    disconnect: () => this.change({ state: "idle", camera: null }),
    capture: () => this.capture(),
    configure: ({ saveDestination, fileType, folder: other }) =>
      this.change({
        ...(saveDestination && { saveDestination: { asked: saveDestination, inForce: saveDestination } }),
        ...(fileType && { fileType: { asked: fileType, inForce: fileType } }),
        ...(other && { folder: other }),
      }),
    pictures: ({ after, limit }) => {
      const inFolder = this.pictures.filter(({ path }) => path.startsWith(`${this.state.folder}/`));
      const first = 1 + inFolder.findIndex((picture) => picture.id === after);
      return { pictures: inFolder.slice(first, first + (limit ?? 100)) };
    },
    subscribe: () => ({}),
    simulate: () => ({ lines: ["ok"] }),
  };

  #stream(request: IncomingMessage, response: ServerResponse): void {
    response.writeHead(200, { "content-type": "text/event-stream" }).flushHeaders();
    const [run, last] = (request.headers["last-event-id"]?.toString() ?? `${this.#run}-0`).split("-").map(Number);
    if (run !== this.#run) {
      response.write(`event: missed\ndata: ${JSON.stringify({ jsonrpc: "2.0", method: "missed", params: {} })}\n\n`);
    }
    for (const { id } of this.#events.slice(run === this.#run ? last : 0)) {
      this.#send(response, id);
    }
    this.#streams.add(response);
    request.on("close", () => this.#streams.delete(response));
  }

  #sendPicture(path: string, response: ServerResponse): void {
    const [id, preview] = path.split("/");
    const index = this.pictures.findIndex((picture) => picture.id === id);
    const picture = this.pictures[index];
    const cannotBeShown = preview === undefined ? picture?.format !== "jpeg" : picture?.format === "heif";
    if (!picture || cannotBeShown) {
      response.writeHead(404).end("There is no preview of this picture");
    } else {
      response.writeHead(200, { "content-type": "image/png" });
      response.end(preview === undefined ? image(1200, 800, index + 1) : image(240, 160, index + 1));
    }
  }

  async #sendFile(pathname: string, response: ServerResponse): Promise<void> {
    const name = pathname === "/" ? "index.html" : pathname.slice(1);
    const file = await readFile(dist + name).catch(() => undefined);
    if (file) {
      response
        .writeHead(200, { "content-type": types[name.split(".").at(-1)!] ?? "application/octet-stream" })
        .end(file);
    } else {
      response.writeHead(404).end();
    }
  }
}
