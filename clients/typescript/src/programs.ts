// Where the programs are that this package starts.

import { access } from "node:fs/promises";
import { fileURLToPath } from "node:url";
import { ownProblem } from "./problem.js";

/** `tether`: the one that CAMERA_WORKER_TETHER names, or the package's own for this system. */
async function tether(): Promise<string> {
  const named = process.env["CAMERA_WORKER_TETHER"];
  if (named) {
    return named;
  }
  const own = fileURLToPath(new URL(`../programs/${process.platform}-${process.arch}/tether`, import.meta.url));
  try {
    await access(own);
  } catch {
    const advice = "Build it, and name it in the option tether or in the variable CAMERA_WORKER_TETHER.";
    throw ownProblem("tether-missing", `There is no tether for ${process.platform}-${process.arch} in this package.`, advice);
  }
  return own;
}

/** The worker of the package camera-worker-virtual; undefined: tether has one beside it. */
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

export const programs = { tether, virtualWorker };
