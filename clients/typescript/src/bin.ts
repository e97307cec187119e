#!/usr/bin/env node
// The package's `tether`, with the arguments as they are: `npx camera-worker doctor`. Where they name no worker it is
// that of camera-worker-virtual, when that is installed.

import { spawn } from "node:child_process";
import { constants } from "node:os";
import { CameraProblem } from "./problem.js";
import { programs } from "./programs.js";

try {
  const tether = programs.tether();
  const worker = await programs.virtualWorker();
  const child = spawn(tether, process.argv.slice(2), {
    stdio: "inherit",
    env: { ...(worker !== undefined && { TETHER_WORKER: worker }), ...process.env },
  });
  // A terminal tells both; what to do is its decision.
  process.on("SIGINT", () => {});
  process.on("SIGTERM", () => child.kill("SIGTERM"));
  child.on("error", (error) => {
    console.error(error.message);
    process.exitCode = 1;
  });
  child.on("exit", (status, signal) => {
    process.exitCode = signal ? 128 + constants.signals[signal] : (status ?? 1);
  });
} catch (error) {
  if (!(error instanceof CameraProblem)) {
    throw error;
  }
  console.error(`${error.text} ${error.advice}`);
  process.exitCode = 1;
}
