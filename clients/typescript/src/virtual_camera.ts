// The virtual camera for the tests of a host: what happens to it is said by the test, while the host has it open.

import { mkdtemp, rm, writeFile } from "node:fs/promises";
import { createConnection } from "node:net";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { programs } from "./programs.js";
import { pause } from "./signals.js";

export interface VirtualCameraOptions {
  /** A worker with the virtual camera; without it that of the package camera-worker-virtual. */
  worker?: string;
  /** A folder of your own JPEGs to shoot. */
  pictures?: string;
  /** Milliseconds that a worker may take to have its camera listen. */
  patience?: number;
}

export interface VirtualCamera extends AsyncDisposable {
  /** The program that a host under test gets as its worker. */
  readonly worker: string | undefined;
  /** Variables for that program; openCamera({ virtual: camera }) sets them. */
  readonly environment: Readonly<Record<string, string>>;
  /** Says a line of the scene language, such as "card out". Rejected when the camera does not take it. */
  do(line: string): Promise<string[]>;
  /** What the camera thinks, line by line. */
  state(): Promise<string[]>;
  /** Removes what was made for it. The host's own close() comes first. */
  close(): Promise<void>;
}

/** A camera as the lines of the scene say; each worker that is started in its environment has it at its USB. */
export async function startVirtualCamera(
  scene: string | readonly string[] = [],
  options: VirtualCameraOptions = {},
): Promise<VirtualCamera> {
  const { pictures, patience = 10_000 } = options;
  const worker = options.worker ?? (await programs.virtualWorker());
  const folder = await mkdtemp(join(tmpdir(), "virtual-camera-"));
  const sceneFile = join(folder, "scene");
  const control = join(folder, "control");
  await writeFile(sceneFile, `${typeof scene === "string" ? scene : scene.join("\n")}\n`);

  const say = async (line: string): Promise<string[]> => {
    const answer = await ask(control, line, patience);
    const last = answer.pop();
    if (last !== "ok") {
      throw new Error(last);
    }
    return answer;
  };
  const close = (): Promise<void> => rm(folder, { recursive: true, force: true });
  return {
    worker,
    environment: {
      CAMERA_SIM_SCENE: sceneFile,
      CAMERA_SIM_CONTROL: control,
      ...(pictures !== undefined && { CAMERA_SIM_PICTURES: pictures }),
    },
    do: say,
    state: async () => (await say("state")).map((line) => line.trim()),
    close,
    [Symbol.asyncDispose]: close,
  };
}

/** While a worker is started, or replaced, nobody listens; that is over soon. */
async function ask(control: string, line: string, patience: number): Promise<string[]> {
  const deadline = AbortSignal.timeout(patience);
  for (;;) {
    try {
      return await exchange(control, line);
    } catch (error) {
      const { code } = error as NodeJS.ErrnoException;
      if (deadline.aborted || (code !== "ENOENT" && code !== "ECONNREFUSED")) {
        throw new Error(`The virtual camera cannot be told "${line}": no worker has it open.`, { cause: error });
      }
      await pause(20, deadline);
    }
  }
}

/** Every line of the answer; the last is "ok" or begins with "error: ". */
function exchange(control: string, line: string): Promise<string[]> {
  return new Promise((resolve, reject) => {
    let text = "";
    const socket = createConnection(control, () => socket.write(`${line}\n`));
    socket.setEncoding("utf8");
    socket.on("data", (piece: string) => {
      text += piece;
      const lines = text.split("\n");
      const last = lines.at(-2);
      if (lines.at(-1) === "" && last !== undefined && (last === "ok" || last.startsWith("error: "))) {
        socket.destroy();
        resolve(lines.slice(0, -1));
      }
    });
    socket.on("error", reject);
    socket.on("close", () => reject(new Error("the camera went away before it answered")));
  });
}
