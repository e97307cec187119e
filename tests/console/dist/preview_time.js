import { once } from "node:events";
import { createInterface } from "node:readline";
import { Readable } from "node:stream";
import { closeBrowser, look, on, reads } from "./browser.js";
import { startConsole } from "./real.js";
const shots = 20;
const promised = 300;
const server = await startConsole("");
const told = /* @__PURE__ */ new Map();
const events = new URL("events", server.url);
events.search = new URL(server.url).search;
const ending = new AbortController();
const { body } = await fetch(events, { signal: ending.signal });
const lines = createInterface(Readable.fromWeb(body).on("error", () => {
}));
lines.on("error", () => {
});
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
      const loaded = window.loaded = /* @__PURE__ */ new Map();
      const load = ({ target }) => loaded.set(target.getAttribute("src") ?? "", Date.now());
      document.addEventListener("load", load, true);
    });
    await on(page).button("Connect").click();
    await reads(on(page).status, "ready");
    const times = [];
    for (let shot = 1; shot <= shots; ++shot) {
      const picture = once(lines, "picture");
      await on(page).button("Capture").click();
      const [id] = await picture;
      const address = `pictures/${encodeURIComponent(id)}/preview`;
      await page.waitForFunction((src) => window.loaded.has(src), address);
      const shown = await page.evaluate((src) => window.loaded.get(src), address);
      times.push(shown - told.get(id));
    }
    times.sort((one, other) => one - other);
    const median = times[times.length / 2];
    console.log(`preview of 24 megapixels: median ${median} ms, slowest ${times.at(-1)} ms, of ${shots}`);
    process.exitCode = median <= promised ? 0 : 1;
  });
} finally {
  ending.abort();
  await closeBrowser();
  await server.end();
}
