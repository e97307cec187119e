// Where the programs of this package lie. Importing it fails where there are none for this system.

import { existsSync } from "node:fs";
import { fileURLToPath } from "node:url";

const { platform, arch } = process;
// Those for macOS are for both of its processors.
const system = platform === "darwin" ? platform : `${platform}-${arch}`;
const programs = fileURLToPath(new URL(`programs/${system}/`, import.meta.url));

export const worker = `${programs}Contents/MacOS/sony-worker`;
export const cameraSim = `${programs}bin/camera-sim`;

if (!existsSync(worker)) {
  throw new Error(`camera-worker-virtual has no programs for ${platform}-${arch}.`);
}
