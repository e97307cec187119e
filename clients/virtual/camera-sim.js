#!/usr/bin/env node
// camera-sim, with the arguments as they are.

import { spawnSync } from "node:child_process";
import { constants } from "node:os";
import { cameraSim } from "./index.js";

// A terminal tells both; how it ends is camera-sim's decision.
process.on("SIGINT", () => {});
const { status, signal, error } = spawnSync(cameraSim, process.argv.slice(2), { stdio: "inherit" });
if (error) {
  console.error(error.message);
}
process.exitCode = signal ? 128 + constants.signals[signal] : (status ?? 1);
