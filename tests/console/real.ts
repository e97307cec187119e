// The real `tether console`, with the virtual camera and a folder of its own.

import { spawn, type ChildProcess } from "node:child_process";
import { once } from "node:events";
import { mkdtemp, rm, writeFile } from "node:fs/promises";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { createInterface } from "node:readline";
import { fileURLToPath } from "node:url";

const root = fileURLToPath(new URL("../../../", import.meta.url));
/** The build whose programs are used. */
const build = process.env["CAMERA_WORKER_BUILD"] ?? join(root, "build/dev");

export interface Console {
  url: string;
  folder: string;
  /** As Ctrl-C does; resolved with the exit status. */
  end(): Promise<number | null>;
}

/** Starts it with a scene; the caller ends it. */
export async function startConsole(scene: string, ...options: string[]): Promise<Console> {
  const place = await mkdtemp(join(tmpdir(), "console-"));
  const folder = join(place, "shots");
  await writeFile(join(place, "scene"), scene);
  const child: ChildProcess = spawn(
    join(build, "bin/tether"),
    ["console", `--folder=${folder}`, `--scene=${join(place, "scene")}`, ...options],
    { stdio: ["ignore", "pipe", "inherit"] },
  );
  const ended = once(child, "exit") as Promise<[number | null]>;
  const url = await Promise.race([
    once(createInterface(child.stdout!), "line").then(([line]) => String(line)),
    ended.then(([status]) =>
      Promise.reject(new Error(`tether console ended with ${status} before it said its address`)),
    ),
  ]);
  return {
    url,
    folder,
    async end() {
      child.kill("SIGINT");
      const [status] = await ended;
      await rm(place, { recursive: true, force: true });
      return status;
    },
  };
}
