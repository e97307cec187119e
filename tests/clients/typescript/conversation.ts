// Plays a conversation of clients/corpus through the client, as a host would: to the stand-in, or to `tether serve` and
// the virtual camera. clients/corpus/README.md says what the steps mean.

import assert from "node:assert/strict";
import { mkdir, mkdtemp, readFile, readdir, rm, writeFile } from "node:fs/promises";
import { tmpdir } from "node:os";
import { dirname, join, relative } from "node:path";
import {
  CameraProblem,
  RequestError,
  openCamera,
  startVirtualCamera,
  type Camera,
  type OpenOptions,
  type Picture,
} from "camera-worker";
import { mismatch } from "./pattern.js";
import { root } from "./tree.js";

type Step = Record<string, any>;

export interface Conversation {
  title: string;
  wire?: boolean;
  standIn?: boolean;
  scene?: string[];
  options?: Partial<OpenOptions>;
  timing?: Pick<OpenOptions, "grace" | "restarts">;
  before?: Record<string, string>;
  passesOver?: string[];
  steps: Step[];
}

const counted = ["picture", "shot", "problem"];
/** Long enough for a machine that is busy with other things; nothing waits for it that goes well. */
const patience = 60_000;
const standIn = join(root, "tests/clients/stand_in");
const corpus = join(root, "clients/corpus");

export async function conversations(): Promise<Map<string, Conversation>> {
  const files = (await readdir(corpus)).filter((name) => name.endsWith(".json")).sort();
  const read = async (name: string): Promise<[string, Conversation]> => [
    name.slice(0, -".json".length),
    JSON.parse(await readFile(join(corpus, name), "utf8")),
  ];
  return new Map(await Promise.all(files.map(read)));
}

/** Where a conversation is played: its options beside those of the conversation, and whether there is a camera. */
interface Stage {
  options: Partial<OpenOptions>;
  isReal: boolean;
  /** What went wrong on the other side. */
  wrong(): Promise<string | undefined>;
  leave(): Promise<void>;
}

export async function playToStandIn(name: string, conversation: Conversation): Promise<void> {
  await inNewFolder(async (folder) => {
    const environment = { CONVERSATION: join(corpus, `${name}.json`), CONVERSATION_STATE: folder };
    const stage: Stage = {
      options: { worker: "/a/worker", tether: standIn, environment },
      isReal: false,
      wrong: () => readFile(join(folder, "wrong"), "utf8").catch(() => undefined),
      leave: async () => {},
    };
    await play(conversation, folder, stage);
  });
}

export async function playToTether(tether: string, conversation: Conversation): Promise<void> {
  await inNewFolder(async (folder) => {
    const virtual = await startVirtualCamera(conversation.scene ?? ["timing instant", "picture 600x400"]);
    const stage: Stage = {
      options: { virtual, tether, environment: { TMPDIR: folder } },
      isReal: true,
      wrong: async () => undefined,
      leave: () => virtual.close(),
    };
    await play(conversation, folder, stage);
  });
}

async function inNewFolder(use: (folder: string) => Promise<void>): Promise<void> {
  const folder = await mkdtemp(join(tmpdir(), "conversation-"));
  try {
    await use(folder);
  } finally {
    await rm(folder, { recursive: true, force: true });
  }
}

async function play(conversation: Conversation, folder: string, stage: Stage): Promise<void> {
  const player = new Player(conversation, folder, stage);
  try {
    await player.play();
  } catch (error) {
    throw new Error((await stage.wrong()) ?? (error as Error).message, { cause: error });
  } finally {
    await player.leave();
    await stage.leave();
  }
  assert.equal(await stage.wrong(), undefined);
}

class Player {
  readonly #told = new Map<string, unknown[]>();
  readonly #readers = new Map<string, Picture[]>();
  readonly #answers = new Map<string, Promise<unknown>>();
  readonly #signals = new Map<string, AbortController>();
  readonly #names: Map<string, unknown>;
  readonly #shots: string;
  #changed = (): void => {};
  #camera: Camera | undefined;
  #stopLines: (() => void) | undefined;
  #reading: Promise<unknown> | undefined;

  constructor(
    readonly conversation: Conversation,
    readonly folder: string,
    readonly stage: Stage,
  ) {
    this.#shots = join(folder, "shots");
    this.#names = new Map([["folder", this.#shots]]);
  }

  async play(): Promise<void> {
    const { steps, before = {} } = this.conversation;
    await mkdir(this.#shots);
    for (const [name, text] of Object.entries(before)) {
      await mkdir(dirname(join(this.#shots, name)), { recursive: true });
      await writeFile(join(this.#shots, name), text);
    }
    // The client initializes by itself, and only once.
    const opening = steps.findIndex(({ ask, fails }) => ask === "initialize" && (fails?.code ?? -32000) === -32000);
    for (const [at, step] of [...steps.entries()].slice(opening)) {
      try {
        await within(this.#do(step, at === opening));
      } catch (error) {
        throw new Error(`step ${at + 1}, ${JSON.stringify(step).slice(0, 300)}: ${(error as Error).message}`, {
          cause: error,
        });
      }
    }
    await within(this.#finish());
  }

  async leave(): Promise<void> {
    await this.#camera?.close().catch(() => {});
  }

  #do(step: Step, opens: boolean): unknown {
    if ("ask" in step) {
      return opens ? this.#expect(this.#open(), step) : this.#ask(step);
    } else if ("answer" in step) {
      return this.#answer(step);
    } else if ("abort" in step) {
      return this.#signals.get(step["abort"])!.abort();
    } else if ("camera" in step) {
      return this.#say(step);
    } else if ("sees" in step) {
      return this.#sees(step);
    } else if ("reads" in step) {
      return void this.#startReader(step);
    } else if ("brings" in step) {
      return this.#brings(step);
    } else if ("files" in step) {
      return this.stage.isReal && this.#files(step["files"]);
    } else if ("make" in step) {
      return this.#make(step);
    } else if ("ends" in step) {
      return this.#camera!.close();
    }
    // The rest is the stand-in's.
    return assert.ok(
      ["asked", "writes", "late", "dies", "started"].some((verb) => verb in step),
      "there is no such step",
    );
  }

  #filledIn(value: any): any {
    if (typeof value === "string" && value.startsWith("$")) {
      const [name, ...rest] = value.slice(1).split("/");
      return [this.#names.get(name!), ...rest].join("/");
    }
    if (typeof value === "object" && value !== null && !Array.isArray(value)) {
      return Object.fromEntries(Object.entries(value).map(([key, inside]) => [key, this.#filledIn(inside)]));
    }
    return value;
  }

  #check(pattern: unknown, value: unknown, what: string): void {
    const wrong = mismatch(pattern, value, this.#names, what);
    if (wrong !== undefined) {
      throw new Error(`${wrong}; whole: ${JSON.stringify(value)?.slice(0, 2000)}`);
    }
  }

  // What is asked.

  async #open(): Promise<unknown> {
    this.#camera = await openCamera({
      folder: this.#shots,
      client: { name: "corpus", version: "1" },
      on: {
        state: (state) => this.#hear("state", state),
        shot: (shot) => this.#hear("shot", shot),
        problem: (problem) => this.#hear("problem", problem),
      },
      ...this.stage.options,
      ...this.conversation.options,
      ...this.conversation.timing,
    });
    this.#reading = this.#read(this.#camera.pictures());
    return this.#camera.initialized;
  }

  async #read(pictures: AsyncIterable<Picture>): Promise<void> {
    for await (const picture of pictures) {
      this.#hear("picture", picture);
    }
  }

  #ask(step: Step): unknown {
    const answer = this.#request(step["ask"], this.#filledIn(step["with"] ?? {}), this.#signalFor(step["as"]));
    if (!("as" in step)) {
      return this.#expect(answer, step);
    }
    answer.catch(() => {}); // looked at later
    this.#answers.set(step["as"], answer);
    return undefined;
  }

  #signalFor(name: string | undefined): { signal?: AbortSignal } {
    if (!this.conversation.steps.some(({ abort }) => abort !== undefined && abort === name)) {
      return {};
    }
    const controller = new AbortController();
    this.#signals.set(name!, controller);
    return { signal: controller.signal };
  }

  /** By the client's own operation, where it has one for these parameters. */
  async #request(method: any, parameters: any, signal: { signal?: AbortSignal }): Promise<unknown> {
    const camera = this.#camera!;
    const isPlain = Object.keys(parameters).length === 0;
    if (method === "connect" && isPlain) {
      return camera.connect(signal);
    } else if (method === "disconnect" && isPlain) {
      return camera.disconnect();
    } else if (method === "capture") {
      return camera.capture({ ...parameters, ...signal });
    } else if (method === "cancel" && typeof parameters.tag === "string") {
      await camera.cancel(parameters.tag);
      return {};
    } else if (method === "configure") {
      return camera.configure(parameters);
    } else if (method === "subscribe" && typeof parameters.lines === "boolean") {
      this.#stopLines?.();
      this.#stopLines = parameters.lines ? camera.on("line", (line) => this.#hear("line", line)) : undefined;
      return {};
    } else if (method === "shutdown" && !(parameters.patience < 0)) {
      return camera.close(parameters);
    }
    return camera.request(method, parameters, signal);
  }

  #answer(step: Step): Promise<void> {
    const name: string = step["answer"];
    const answer = this.#answers.get(name)!;
    this.#answers.delete(name);
    return this.#expect(answer, step);
  }

  async #expect(answer: Promise<unknown>, step: Step): Promise<void> {
    let result;
    try {
      result = await answer;
    } catch (error) {
      if (!("fails" in step)) {
        throw error;
      }
      this.#check(step["fails"], shown(error), "the error");
      return;
    }
    assert.ok(!("fails" in step), `it did not fail: ${JSON.stringify(result)}`);
    this.#check(step["gives"] ?? {}, result, "the result");
  }

  async #say(step: Step): Promise<void> {
    const line: string = step["camera"].replaceAll("$folder", this.#shots);
    this.#check(step["says"] ?? ["ok"], await this.#camera!.simulate(line), "the camera's answer");
  }

  // What is told.

  #hear(kind: string, news: unknown): void {
    this.#untaken(kind).push(news);
    this.#changed();
  }

  #untaken(kind: string): unknown[] {
    if (!this.#told.has(kind)) {
      this.#told.set(kind, []);
    }
    return this.#told.get(kind)!;
  }

  async #sees(step: Step): Promise<void> {
    const { sees: kind, with: pattern = {} } = step as { sees: string; with?: unknown };
    const isCounted = counted.includes(kind) && !this.conversation.passesOver?.includes(kind);
    for (;;) {
      const news = this.#untaken(kind).shift();
      if (news === undefined) {
        await new Promise<void>((resolve) => (this.#changed = resolve));
        continue;
      }
      // A state may be passed through quickly or slowly.
      if (isCounted || mismatch(pattern, news, new Map(this.#names)) === undefined) {
        this.#check(pattern, news, kind);
        return;
      }
    }
  }

  #startReader(step: Step): void {
    const brought: Picture[] = [];
    this.#readers.set(step["as"], brought);
    const read = async (): Promise<void> => {
      for await (const picture of this.#camera!.pictures(this.#filledIn(step["reads"]))) {
        brought.push(picture);
        this.#changed();
      }
    };
    this.#reading = Promise.all([this.#reading, read()]);
  }

  async #brings(step: Step): Promise<void> {
    const brought = this.#readers.get(step["brings"])!;
    while (brought.length < step["with"].length) {
      await new Promise<void>((resolve) => (this.#changed = resolve));
    }
    this.#check(step["with"], brought.splice(0), "what it brings");
  }

  // The folder.

  async #files(wanted: unknown): Promise<void> {
    this.#check(wanted, (await visible(this.#shots)).map((path) => relative(this.#shots, path)).sort(), "the folder");
  }

  async #make(step: Step): Promise<void> {
    const path: string = this.#filledIn(step["make"]);
    await (step["text"] === undefined ? mkdir(path) : writeFile(path, step["text"]));
  }

  async #finish(): Promise<void> {
    await this.#camera?.close();
    await this.#reading;
    assert.deepEqual([...this.#answers.keys()], [], "no step has these answers");
    assert.deepEqual([...this.#readers.values()].flat(), [], "no step has these pictures");
    for (const kind of counted.filter((one) => !this.conversation.passesOver?.includes(one))) {
      assert.deepEqual(this.#untaken(kind), [], `no step sees these of ${kind}`);
    }
  }
}

function shown(error: unknown): unknown {
  if (error instanceof CameraProblem) {
    const { code, severity, text, advice, sdk, shot } = error;
    return { code: -32000, problem: { code, severity, text, advice, sdk, shot } };
  } else if (error instanceof RequestError) {
    return { code: error.code, problem: null };
  } else if (error instanceof DOMException && error.name === "AbortError") {
    return { aborted: true };
  }
  throw error;
}

/** Every file in the folder and below it, hidden ones left out. */
export async function visible(folder: string): Promise<string[]> {
  const entries = (await readdir(folder, { withFileTypes: true })).filter(({ name }) => !name.startsWith("."));
  const found = entries.map((entry) => {
    const path = join(folder, entry.name);
    return entry.isDirectory() ? visible(path) : [path];
  });
  return (await Promise.all(found)).flat();
}

async function within<T>(done: T | Promise<T>): Promise<T> {
  let timer: ReturnType<typeof setTimeout> | undefined;
  const late = new Promise<never>((_, reject) => {
    timer = setTimeout(() => reject(new Error("nothing came")), patience);
  });
  try {
    return await Promise.race([done, late]);
  } finally {
    clearTimeout(timer);
  }
}
