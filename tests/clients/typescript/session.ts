// What several tests do with `tether serve` and the virtual camera.

import { execFile } from "node:child_process";
import { mkdtemp, readFile, rm } from "node:fs/promises";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { promisify } from "node:util";
import type { Camera, CameraEvents, Picture } from "camera-worker";

export const quick = ["timing instant", "picture 600x400"];

export async function inNewFolder(use: (folder: string) => Promise<void>): Promise<void> {
  const folder = await mkdtemp(join(tmpdir(), "camera-worker-"));
  try {
    await use(folder);
  } finally {
    await rm(folder, { recursive: true, force: true });
  }
}

/** The next of its kind that is wanted. */
export function next<K extends keyof CameraEvents>(
  camera: Camera,
  kind: K,
  wanted: (news: CameraEvents[K]) => boolean = () => true,
): Promise<CameraEvents[K]> {
  return new Promise((resolve) => {
    const stop = camera.on(kind, (news) => {
      if (wanted(news)) {
        stop();
        resolve(news);
      }
    });
  });
}

/** Resolved once the state is so, which it may be already. */
export async function untilState(camera: Camera, state: string): Promise<void> {
  if (camera.state.state !== state) {
    await next(camera, "state", (news) => news.state === state);
  }
}

/** The children of a process that run this program, by their numbers. */
export async function children(parent: number, program: string): Promise<number[]> {
  const { stdout } = await promisify(execFile)("ps", ["-A", "-o", "pid=,ppid=,stat=,comm="]);
  return stdout
    .split("\n")
    .map((line) => line.trim().split(/\s+/))
    .filter(
      ([, ppid, stat, ...comm]) =>
        Number(ppid) === parent && !stat!.startsWith("Z") && comm.join(" ").endsWith(program),
    )
    .map(([pid]) => Number(pid));
}

export async function tetherProcess(): Promise<number> {
  const [found] = await children(process.pid, "tether");
  if (found === undefined) {
    throw new Error("no tether runs");
  }
  return found;
}

export async function workerProcess(): Promise<number> {
  const [found] = await children(await tetherProcess(), "sony-worker");
  if (found === undefined) {
    throw new Error("no worker runs");
  }
  return found;
}

/** The files that a camera has handed over whole, by the names that it gave them. */
export async function delivered(journal: string): Promise<string[]> {
  const lines = (await readFile(journal, "utf8")).split("\n");
  return lines.flatMap((line) => /OnCompleteDownload "(.*)" 0xFFFFFFFF/.exec(line)?.[1] ?? []);
}

/** So many of them, or all up to the end. */
export async function take(pictures: AsyncIterable<Picture>, count = Infinity): Promise<Picture[]> {
  const taken: Picture[] = [];
  for await (const picture of pictures) {
    taken.push(picture);
    if (taken.length === count) {
      break;
    }
  }
  return taken;
}

