// Measures how long after a picture's notification its preview stands on the page, for 24 megapixels, with the real
// server and its virtual camera:
//
//     node tests/console/dist/preview_time.js        once tests/console/check, which runs it too, has translated it
//
// It ends with 1 when the median is beyond what the page promises.

import { once } from "node:events";
import { createInterface } from "node:readline";
import { Readable } from "node:stream";
import type { ReadableStream } from "node:stream/web";
import { closeBrowser, look, on, reads } from "./browser.js";
import { startConsole } from "./real.js";

const shots = 20;
/** Milliseconds. */
const promised = 300;

const server = await startConsole("");
/** When each picture was told, by its id. */
const told = new Map<string, number>();
const events = new URL("events", server.url);
events.search = new URL(server.url).search;
const ending = new AbortController();
const { body } = await fetch(events, { signal: ending.signal });
const lines = createInterface(Readable.fromWeb(body as ReadableStream).on("error", () => {}));
// The stream's error, when this ends, becomes that of the lines as well.
lines.on("error", () => {});
lines.on("line", (line) => {
  const { method, params } = line.startsWith("data: ") ? JSON.parse(line.slice("data: ".length)) : {};
  if (method === "picture") {
    told.set(params.id, Date.now());
    lines.emit("picture", params.id);
  }
});

try {
  await look(server.url, async (page) => {
    await page.evaluate(() => {
      const loaded = ((window as any).loaded = new Map<string, number>());
      const load = ({ target }: Event) =>
        loaded.set((target as HTMLImageElement).getAttribute("src") ?? "", Date.now());
      document.addEventListener("load", load, true);
    });
    await on(page).button("Connect").click();
    await reads(on(page).status, "ready");
    const times: number[] = [];
    for (let shot = 1; shot <= shots; ++shot) {
      const picture = once(lines, "picture");
      await on(page).button("Capture").click();
      const [id] = await picture;
      const address = `pictures/${encodeURIComponent(id)}/preview`;
      await page.waitForFunction((src) => (window as any).loaded.has(src), address);
      const shown = await page.evaluate((src) => (window as any).loaded.get(src) as number, address);
      times.push(shown - told.get(id)!);
    }
    times.sort((one, other) => one - other);
    const median = times[times.length / 2]!;
    console.log(`preview of 24 megapixels: median ${median} ms, slowest ${times.at(-1)} ms, of ${shots}`);
    process.exitCode = median <= promised ? 0 : 1;
  });
} finally {
  ending.abort();
  await closeBrowser();
  await server.end();
}
