import { spawn } from "node:child_process";
import { once } from "node:events";
import { mkdtemp, rm, writeFile } from "node:fs/promises";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { createInterface } from "node:readline";
import { fileURLToPath } from "node:url";
const root = fileURLToPath(new URL("../../../", import.meta.url));
const build = process.env["CAMERA_WORKER_BUILD"] ?? join(root, "build/dev");
async function startConsole(scene, ...options) {
  const place = await mkdtemp(join(tmpdir(), "console-"));
  const folder = join(place, "shots");
  await writeFile(join(place, "scene"), scene);
  const child = spawn(
    join(build, "bin/tether"),
    ["console", `--folder=${folder}`, `--scene=${join(place, "scene")}`, ...options],
    { stdio: ["ignore", "pipe", "inherit"] }
  );
  const ended = once(child, "exit");
  const url = await Promise.race([
    once(createInterface(child.stdout), "line").then(([line]) => String(line)),
    ended.then(
      ([status]) => Promise.reject(new Error(`tether console ended with ${status} before it said its address`))
    )
  ]);
  return {
    url,
    folder,
    async end() {
      child.kill("SIGINT");
      const [status] = await ended;
      await rm(place, { recursive: true, force: true });
      return status;
    }
  };
}
export {
  startConsole
};
