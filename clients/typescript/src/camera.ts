/// <reference lib="esnext.disposable" preserve="true" />
// A camera as its host sees it: requests, what comes by itself, and a new process in the place of one that has ended.

import type {
  CaptureParameters,
  Client,
  ConfigureParameters,
  Ended,
  Initialized,
  Line,
  Methods,
  Picture,
  Problem,
  Shot,
  State,
} from "./generated.js";
import { PictureLog } from "./pictures.js";
import { CameraProblem, isOwn, ownProblem } from "./problem.js";
import { openRpc, type Method, type Rpc, type RpcOptions } from "./rpc.js";
import { pause, unless } from "./signals.js";
import type { Transport, Wishes } from "./transport.js";

// Node 18 has none before 18.18; `await using` is compiled to a look at it.
(Symbol as { asyncDispose?: symbol }).asyncDispose ??= Symbol.for("nodejs.asyncDispose");

/** What on() tells, by its name. Pictures come from pictures(). */
export interface CameraEvents {
  /** The state has changed. */
  state: State;
  /** Something went wrong. Told once, when it happens; what goes on stands in the state. */
  problem: CameraProblem;
  /** A shot was fired, or is over. */
  shot: Shot;
  /** A line to or from the worker, for diagnosis. */
  line: Line;
  /** Everything that comes by itself, as it came, also what only a later version tells. Told before the others. */
  notification: { method: string; parameters: unknown };
}

/** Who hears what from the very first on. */
export type CameraListeners = { readonly [kind in keyof CameraEvents]?: (news: CameraEvents[kind]) => void };

export interface CameraSetup extends RpcOptions {
  client: Client;
  on: CameraListeners;
  wishes: Wishes;
  /** Milliseconds before a process that ended is started again: the first time, the second time in a row, and so on. */
  restarts: readonly number[];
}

/** Milliseconds. A process that has run for so long starts a new row. */
const longEnough = 60_000;

/** Milliseconds before pictures are asked for again when nobody was there to answer. */
const again = 250;

/**
 * Characters. A client that leaves 1 MiB unread is not told of pictures until it reads again; all of that is read after
 * the first one was left out. So whoever asks for what is new this often has them all.
 */
const read = 256 * 1024;

const closed = (): CameraProblem => ownProblem("closed", "The camera was closed.");

export class Camera implements AsyncDisposable {
  readonly #transport: Transport;
  readonly #setup: CameraSetup;
  readonly #listeners: { [kind in keyof CameraEvents]: Set<(news: CameraEvents[kind]) => void> } = {
    state: new Set(),
    problem: new Set(),
    shot: new Set(),
    line: new Set(),
    notification: new Set(),
  };
  readonly #pictures = new PictureLog();
  readonly #closing = new AbortController();
  #closed: Promise<Ended> | undefined;

  // The connection that takes requests, or will: while a process is started again everybody waits here.
  #ready: Promise<Rpc>;
  #initialized: Initialized | undefined;
  #wishes: Wishes;
  #wantsCamera = false;
  #endsInARow = 0;
  #startedAt = 0;

  #state: State;
  #statesTold = 0;
  #folder: string | undefined;
  /** The last one told of this folder. */
  #lastPicture: string | undefined;
  #unasked = 0;
  #catchingUp = Promise.resolve();

  private constructor(transport: Transport, setup: CameraSetup) {
    this.#transport = transport;
    this.#setup = setup;
    this.#wishes = { ...setup.wishes };
    this.#state = {
      state: "down",
      camera: null,
      simulated: false,
      folder: setup.wishes.folder ?? "",
      saveDestination: { asked: setup.wishes.saveDestination ?? "disk", inForce: null },
      fileType: { asked: setup.wishes.fileType ?? null, inForce: null },
      restarts: 0,
      problems: [],
    };
    for (const [kind, listener] of Object.entries(setup.on)) {
      (this.#listeners[kind as keyof CameraEvents] as Set<typeof listener>).add(listener);
    }
    this.#ready = this.#start();
  }

  /** @internal Use openCamera(), or openPage(). */
  static async open(transport: Transport, setup: CameraSetup): Promise<Camera> {
    const camera = new Camera(transport, setup);
    await camera.#ready;
    return camera;
  }

  /** The state as it was told last. */
  get state(): State {
    return this.#state;
  }

  /** Who is behind the pipe; of a session that somebody else holds it is not known. */
  get initialized(): Initialized | undefined {
    return this.#initialized;
  }

  /**
   * Connects the camera and keeps it connected from now on. Rejected with the problem that stands in the way when it is
   * not ready within 60 s; it goes on trying all the same, also when the signal gives up waiting.
   */
  async connect({ signal }: { signal?: AbortSignal } = {}): Promise<State> {
    return this.request("connect", {}, { signal });
  }

  /** Gives the camera back and leaves it alone until the next connect(). */
  async disconnect(): Promise<State> {
    return this.request("disconnect", {});
  }

  /**
   * Takes one picture. Resolved when its files are there, or when it is clear that they are not: `status` and
   * `problems` say why. The signal cancels every capture with this one's tag and rejects with its reason; what comes of
   * the shot is told by on("shot"), and its files by pictures().
   */
  async capture({ signal, ...parameters }: CaptureParameters & { signal?: AbortSignal } = {}): Promise<Shot> {
    if (!signal) {
      return this.request("capture", parameters);
    }
    const tag = parameters.tag ?? `capture-${Math.random().toString(36).slice(2)}`;
    const cancel = (): void => void this.cancel(tag).catch(() => {});
    signal.addEventListener("abort", cancel, { once: true });
    try {
      return await this.request("capture", { ...parameters, tag }, { signal });
    } finally {
      signal.removeEventListener("abort", cancel);
    }
  }

  /** Gives up every capture with this tag: one that waits is refused, one that was fired is over with what it has. */
  async cancel(tag: string): Promise<void> {
    await this.request("cancel", { tag });
  }

  /** Changes the folder, the destination, the file type or how files are named, between two shots. */
  async configure(wishes: ConfigureParameters): Promise<State> {
    try {
      const state = await this.request("configure", wishes);
      this.#wishes = { ...this.#wishes, ...wishes, folder: state.folder };
      return state;
    } catch (error) {
      if (error instanceof CameraProblem && !isOwn(error)) {
        // Wishes stand, also when they are not in force; only the folder stays as it was.
        const { folder: _, ...others } = wishes;
        this.#wishes = { ...this.#wishes, ...others };
      }
      throw error;
    }
  }

  /**
   * Every picture, once, in the order in which they were told: those since the camera was opened and those to come, or,
   * with `after`, all of the folder behind the picture with this id ("" stands before the first). Misses none, also
   * when the process or this program was started again. Ends with close().
   */
  pictures({ after, signal }: { after?: string; signal?: AbortSignal } = {}): AsyncIterableIterator<Picture> {
    return this.#pictures.read(after, (id) => this.#older(id), signal);
  }

  /** Says one line of the scene language to the virtual camera. The last line of the answer is "ok", or an error. */
  async simulate(line: string): Promise<string[]> {
    return (await this.request("simulate", { line })).lines;
  }

  /** Calls the listener for each one from now on, until the function that it gives back is called. */
  on<K extends keyof CameraEvents>(kind: K, listener: (news: CameraEvents[K]) => void): () => void {
    const listeners = this.#listeners[kind];
    listeners.add(listener);
    const subscribe = (lines: boolean): void => {
      // Whoever starts it again, or has closed it, sees to it.
      this.request("subscribe", { lines }).catch(() => {});
    };
    if (kind === "line" && listeners.size === 1) {
      subscribe(true);
    }
    return () => {
      if (listeners.delete(listener) && kind === "line" && listeners.size === 0) {
        subscribe(false);
      }
    };
  }

  /** Any request as it stands in the catalogue. What this client has no name for goes this way, too. */
  async request<M extends Method>(
    method: M,
    parameters: Methods[M]["parameters"],
    { signal }: { signal?: AbortSignal | undefined } = {},
  ): Promise<Methods[M]["result"]> {
    signal?.throwIfAborted();
    if (this.#closed) {
      throw closed();
    }
    // Everybody waits for the same, so requests go out in the order in which they were asked.
    const answer = this.#ready.then((rpc) => {
      signal?.throwIfAborted();
      this.#wantsCamera = method === "connect" || (this.#wantsCamera && method !== "disconnect");
      return rpc.request(method, parameters);
    });
    return unless(signal, answer);
  }

  /**
   * Waits for files on their way (10 s, or `patience`), gives the camera back and ends its processes; how is told. A
   * session that somebody else holds is left alone.
   */
  close({ patience }: { patience?: number } = {}): Promise<Ended> {
    this.#closed ??= this.#end(patience === undefined ? {} : { patience });
    return this.#closed;
  }

  async [Symbol.asyncDispose](): Promise<void> {
    await this.close();
  }

  async #end(parameters: { patience?: number }): Promise<Ended> {
    this.#closing.abort(closed());
    try {
      const rpc = await this.#ready;
      try {
        return this.#transport.owns ? await rpc.request("shutdown", parameters) : { worker: "gone", status: 0 };
      } finally {
        await rpc.close();
      }
    } catch (error) {
      if (error instanceof CameraProblem && (error.code === "tether-gone" || error.code === "closed")) {
        return { worker: "gone", status: 0 };
      }
      throw error;
    } finally {
      this.#pictures.end();
    }
  }

  async #start(): Promise<Rpc> {
    this.#startedAt = performance.now();
    const rpc = openRpc(this.#transport, this.#wishes, this.#setup, {
      notification: (method, parameters) => this.#hear(method, parameters),
      received: (length) => this.#hasRead(length),
      gap: () => this.#missedSomething(),
      closed: (why) => this.#hasEnded(why),
    });
    try {
      if (this.#transport.owns) {
        await this.#initialize(rpc);
      } else {
        await this.#askState(() => rpc.request("state", {}));
      }
      return rpc;
    } catch (error) {
      await rpc.close();
      throw error;
    }
  }

  async #initialize(rpc: Rpc): Promise<void> {
    this.#initialized = await rpc.request("initialize", { client: this.#setup.client, protocols: [1] });
    // As it was before, if it was. What stands in the way is told.
    if (this.#listeners.line.size > 0) {
      rpc.request("subscribe", { lines: true }).catch(() => {});
    }
    if (this.#wantsCamera) {
      rpc.request("connect", {}).catch(() => {});
    }
  }

  #hasEnded(why: Error): void {
    if (this.#initialized === undefined || this.#closing.signal.aborted) {
      return;
    }
    const isStable = performance.now() - this.#startedAt > longEnough;
    this.#endsInARow = isStable ? 1 : this.#endsInARow + 1;
    const { restarts } = this.#setup;
    const delay = restarts[Math.min(this.#endsInARow, restarts.length) - 1] ?? 0;
    this.#ready = pause(delay, this.#closing.signal).then(() => {
      this.#closing.signal.throwIfAborted();
      return this.#start();
    });
    this.#ready.catch(() => {}); // whoever waits for it is told, and maybe nobody does
    const { saveDestination, fileType } = this.#state;
    this.#hear("state", {
      ...this.#state,
      state: "down",
      camera: null,
      saveDestination: { ...saveDestination, inForce: null },
      fileType: { ...fileType, inForce: null },
    });
    this.#tell("problem", why instanceof CameraProblem ? why : ownProblem("tether-gone", why.message));
  }

  #hear(method: string, parameters: unknown): void {
    this.#tell("notification", { method, parameters });
    if (method === "state") {
      this.#statesTold += 1;
      const state = parameters as State;
      // Before the folder is opened it is shown as it was given.
      if (state.state !== "starting" && state.state !== "down" && state.folder !== this.#folder) {
        this.#folder = state.folder;
        this.#lastPicture = undefined; // the new folder does not know it
      }
      this.#state = state;
      this.#tell("state", state);
    } else if (method === "picture") {
      this.#take(parameters as Picture);
    } else if (method === "problem") {
      this.#tell("problem", new CameraProblem(parameters as Problem));
    } else if (method === "shot" || method === "line") {
      this.#tell(method, parameters as Shot & Line);
    }
  }

  #tell<K extends keyof CameraEvents>(kind: K, news: CameraEvents[K]): void {
    for (const listener of [...this.#listeners[kind]]) {
      try {
        listener(news);
      } catch (error) {
        // A mistake of the host's must not keep anybody else from hearing.
        queueMicrotask(() => {
          throw error;
        });
      }
    }
  }

  #take(picture: Picture): void {
    // A late one may belong to the folder before.
    if (this.#folder !== undefined && picture.path.startsWith(this.#folder)) {
      this.#lastPicture = picture.id;
    }
    this.#pictures.add(picture);
  }

  #hasRead(length: number): void {
    this.#unasked += length;
    if (this.#unasked > read) {
      this.#unasked = 0;
      this.#catchUp();
    }
  }

  #missedSomething(): void {
    this.#askState(() => this.request("state", {})).catch(() => {});
    this.#catchUp();
  }

  /**
   * The answer comes another way than what is told: one that was told meanwhile is newer, or followed by a newer one.
   */
  async #askState(ask: () => Promise<State>): Promise<void> {
    const told = this.#statesTold;
    const state = await ask();
    if (this.#statesTold === told) {
      this.#hear("state", state);
    }
  }

  /** Asks for pictures that were not told. */
  #catchUp(): void {
    this.#catchingUp = this.#catchingUp.then(async () => {
      if (this.#lastPicture !== undefined) {
        for await (const picture of this.#older(this.#lastPicture)) {
          this.#take(picture);
        }
      }
    }).catch(() => {}); // the next time
  }

  /** What the folder has behind this picture. Ends early when another folder takes its place. */
  async *#older(after: string): AsyncGenerator<Picture, void, undefined> {
    const folder = this.#folder;
    for (;;) {
      let page: Picture[];
      try {
        page = (await this.request("pictures", { after, limit: 1000 })).pictures;
      } catch (error) {
        const code = error instanceof CameraProblem && error.code;
        if (code === "closed") {
          return;
        } else if (code === "tether-gone") {
          await pause(again, this.#closing.signal); // it is started again, or comes back
          continue;
        }
        throw error;
      }
      const last = page.at(-1);
      if (!last || this.#folder !== folder) {
        return;
      }
      yield* page;
      after = last.id;
    }
  }
}
