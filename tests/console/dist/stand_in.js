import { once } from "node:events";
import { readFile } from "node:fs/promises";
import { createServer } from "node:http";
import { fileURLToPath } from "node:url";
import { image } from "./image.js";
const dist = fileURLToPath(new URL("../../../console/dist/", import.meta.url));
const policy = [
  "default-src 'none'",
  "script-src 'self'",
  "style-src 'self'",
  "img-src 'self' blob: data:",
  "connect-src 'self'",
  "font-src 'self'",
  "manifest-src 'self'",
  "base-uri 'none'",
  "form-action 'none'",
  "frame-ancestors 'none'"
].join("; ");
const types = {
  html: "text/html",
  css: "text/css",
  js: "text/javascript",
  svg: "image/svg+xml"
};
const folder = "/Users/me/shots";
class StandIn {
  pictures = [];
  /** Every request, in order. */
  asked = [];
  answers = {};
  /** With this status, instead of an answer to anything. */
  refusing;
  state = {
    state: "idle",
    camera: null,
    simulated: true,
    folder,
    saveDestination: { asked: "disk", inForce: null },
    fileType: { asked: null, inForce: null },
    restarts: 0,
    problems: []
  };
  #server = createServer((request, response) => void this.#serve(request, response));
  #streams = /* @__PURE__ */ new Set();
  #events = [];
  #startedAt = Date.now();
  #run = 1;
  #port = 0;
  #lastShot = 0;
  static async start() {
    const standIn = new StandIn();
    await standIn.#listen();
    return standIn;
  }
  get url() {
    return `http://127.0.0.1:${this.#port}/`;
  }
  get atMs() {
    return Date.now() - this.#startedAt;
  }
  tell(method, parameters) {
    const id = this.#events.length + 1;
    this.#events.push({ id, data: JSON.stringify({ jsonrpc: "2.0", method, params: parameters }) });
    for (const stream of this.#streams) {
      this.#send(stream, id);
    }
  }
  change(change) {
    this.state = { ...this.state, ...change };
    this.tell("state", this.state);
    return this.state;
  }
  line(direction, text, atMs = this.atMs) {
    this.tell("line", { direction, text, atMs, dropped: 0 });
  }
  ready() {
    return this.change({
      state: "ready",
      camera: "Virtual Camera SIM-1",
      saveDestination: { ...this.state.saveDestination, inForce: "disk" },
      fileType: { ...this.state.fileType, inForce: "jpeg" }
    });
  }
  picture(change = {}) {
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
      bytes: 4391376,
      whole: true,
      at: new Date(Date.UTC(2026, 4, 3, 4, 40) + number * 1e3).toISOString(),
      afterMs: 2955,
      recovered: false,
      ...change
    };
  }
  /** A picture comes. */
  add(change = {}) {
    const picture = this.picture(change);
    this.pictures.push(picture);
    this.tell("picture", picture);
    return picture;
  }
  shot(shot, change = {}) {
    const pictures = this.pictures.filter((picture) => picture.shot === shot);
    return { shot, tag: "", status: "fired", firedAt: (/* @__PURE__ */ new Date()).toISOString(), pictures, problems: [], ...change };
  }
  /** Shoots as the real one does, in no time. */
  capture() {
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
  async goAway() {
    this.#server.closeAllConnections();
    this.#server.close();
    await once(this.#server, "close");
  }
  /** At the same address; another run forgets what the one before has told. */
  async comeBack({ isAnotherRun = false } = {}) {
    if (isAnotherRun) {
      this.#events.length = 0;
      this.#run += 1;
    }
    await this.#listen();
  }
  async close() {
    if (this.#server.listening) {
      await this.goAway();
    }
  }
  async #listen() {
    this.#server.listen(this.#port, "127.0.0.1");
    await once(this.#server, "listening");
    this.#port = this.#server.address().port;
  }
  #send(stream, id) {
    stream.write(`id: ${this.#run}-${id}
data: ${this.#events[id - 1].data}

`);
  }
  async #serve(request, response) {
    const { pathname } = new URL(request.url, this.url);
    response.setHeader("content-security-policy", policy);
    response.setHeader("cache-control", "no-store");
    if (this.refusing !== void 0) {
      response.writeHead(this.refusing).end("This is nobody's business.");
    } else if (pathname === "/rpc") {
      await this.#answer(request, response);
    } else if (pathname === "/events") {
      this.#stream(request, response);
    } else if (pathname === "/clock") {
      response.end(JSON.stringify({ atMs: this.atMs, at: new Date(this.#startedAt + this.atMs).toISOString() }));
    } else if (pathname === "/space") {
      response.end(JSON.stringify({ freeBytes: 54e9, folder: this.state.folder }));
    } else if (pathname === "/record") {
      response.writeHead(200, { "content-disposition": 'attachment; filename="record.txt"' }).end(request.url);
    } else if (pathname.startsWith("/pictures/")) {
      this.#sendPicture(decodeURIComponent(pathname.slice("/pictures/".length)), response);
    } else {
      await this.#sendFile(pathname, response);
    }
  }
  async #answer(request, response) {
    request.setEncoding("utf8");
    let body = "";
    for await (const part of request) {
      body += part;
    }
    const { id, method, params } = JSON.parse(body);
    this.asked.push({ method, parameters: params });
    try {
      const result = await (this.answers[method] ?? this.#usual[method])(params);
      response.end(JSON.stringify({ jsonrpc: "2.0", id, result }));
    } catch (error) {
      const { message, data } = error;
      response.end(JSON.stringify({ jsonrpc: "2.0", id, error: { code: data ? -32e3 : -32602, message, data } }));
    }
  }
  #usual = {
    state: () => this.state,
    connect: () => {
      this.change({ state: "opening" });
      return this.ready();
    },
    disconnect: () => this.change({ state: "idle", camera: null }),
    capture: () => this.capture(),
    configure: ({ saveDestination, fileType, folder: other }) => this.change({
      ...saveDestination && { saveDestination: { asked: saveDestination, inForce: saveDestination } },
      ...fileType && { fileType: { asked: fileType, inForce: fileType } },
      ...other && { folder: other }
    }),
    pictures: ({ after, limit }) => {
      const inFolder = this.pictures.filter(({ path }) => path.startsWith(`${this.state.folder}/`));
      const first = 1 + inFolder.findIndex((picture) => picture.id === after);
      return { pictures: inFolder.slice(first, first + (limit ?? 100)) };
    },
    subscribe: () => ({}),
    simulate: () => ({ lines: ["ok"] })
  };
  #stream(request, response) {
    response.writeHead(200, { "content-type": "text/event-stream" }).flushHeaders();
    const [run, last] = (request.headers["last-event-id"]?.toString() ?? `${this.#run}-0`).split("-").map(Number);
    if (run !== this.#run) {
      response.write(`event: missed
data: ${JSON.stringify({ jsonrpc: "2.0", method: "missed", params: {} })}

`);
    }
    for (const { id } of this.#events.slice(run === this.#run ? last : 0)) {
      this.#send(response, id);
    }
    this.#streams.add(response);
    request.on("close", () => this.#streams.delete(response));
  }
  #sendPicture(path, response) {
    const [id, preview] = path.split("/");
    const index = this.pictures.findIndex((picture2) => picture2.id === id);
    const picture = this.pictures[index];
    const cannotBeShown = preview === void 0 ? picture?.format !== "jpeg" : picture?.format === "heif";
    if (!picture || cannotBeShown) {
      response.writeHead(404).end("There is no preview of this picture");
    } else {
      response.writeHead(200, { "content-type": "image/png" });
      response.end(preview === void 0 ? image(1200, 800, index + 1) : image(240, 160, index + 1));
    }
  }
  async #sendFile(pathname, response) {
    const name = pathname === "/" ? "index.html" : pathname.slice(1);
    const file = await readFile(dist + name).catch(() => void 0);
    if (file) {
      response.writeHead(200, { "content-type": types[name.split(".").at(-1)] ?? "application/octet-stream" }).end(file);
    } else {
      response.writeHead(404).end();
    }
  }
}
export {
  StandIn,
  folder
};
