// Where the programs are that this package starts. They come with packages of their own, so that an installation gets
// those of its system and a host that ships gets no virtual camera.

import { createRequire } from "node:module";
import { CameraProblem, ownProblem } from "./problem.js";

const { platform, arch } = process;
// For both of the processors that macOS runs on.
const system = platform === "darwin" ? platform : `${platform}-${arch}`;

/** The `tether` of the package for this system; undefined when that is not installed. */
function packagedTether(): string | undefined {
  try {
    return createRequire(import.meta.url).resolve(`camera-worker-${system}/bin/tether`);
  } catch {
    return undefined;
  }
}

/** `tether`: the one that CAMERA_WORKER_TETHER names, or the one of the package for this system. */
function tether(): string {
  const found = process.env["CAMERA_WORKER_TETHER"] || packagedTether();
  if (!found) {
    const advice =
      `Install camera-worker from a folder with the archive of camera-worker-${system} beside it, ` +
      "or build tether and name it in the option tether or in the variable CAMERA_WORKER_TETHER.";
    throw ownProblem("tether-missing", `There is no tether for ${platform}-${arch}.`, advice);
  }
  return found;
}

/** The worker of the package camera-worker-virtual; undefined when that is not installed. */
async function virtualWorker(): Promise<string | undefined> {
  const name = "camera-worker-virtual";
  try {
    const { worker } = (await import(name)) as { worker: string };
    return worker;
  } catch (error) {
    if ((error as NodeJS.ErrnoException).code === "ERR_MODULE_NOT_FOUND") {
      return undefined;
    }
    throw error;
  }
}

/** The same, for this tether. One that was built has a worker beside it: then undefined means that one. */
async function virtualWorkerFor(tether: string): Promise<string | undefined> {
  const worker = await virtualWorker();
  if (worker === undefined && tether === packagedTether()) {
    throw new CameraProblem({
      code: "worker-missing",
      severity: "error",
      text: "The package with the virtual camera is not installed.",
      advice: "Install the archive of camera-worker-virtual as a development dependency.",
      sdk: null,
      shot: null,
    });
  }
  return worker;
}

export const programs = { tether, virtualWorker, virtualWorkerFor };
