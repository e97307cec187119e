import { strict as assert } from "node:assert";
import { mkdir, readFile } from "node:fs/promises";
import { after, afterEach, beforeEach, test } from "node:test";
import { are, closeBrowser, look, on, reads } from "./browser.js";
import { startConsole } from "./real.js";
let server;
beforeEach(async () => {
  server = await startConsole("picture 2400x1600\n", "--patience=3");
});
afterEach(() => server.end());
after(closeBrowser);
const item = (page, name) => page.getByRole("listitem", { name });
const inForce = (page, id, text) => reads(page.locator(`#${id}-in-force`), text);
async function connect(page) {
  await on(page).button("Connect").click();
  await reads(on(page).status, /ready.*Virtual Camera SIM-1/s);
}
async function scene(page, line) {
  await on(page).field("Scene line").fill(line);
  await on(page).field("Scene line").press("Enter");
  const sent = on(page).virtual.getByRole("listitem").first();
  await reads(sent, `camera-sim ${line}`);
  await sent.locator('.answer[data-ok="true"]').waitFor();
}
const isDrawn = (page, selector) => page.waitForFunction((found) => (document.querySelector(found)?.naturalWidth ?? 0) > 0, selector);
test("an afternoon with each button", () => look(server.url, async (page) => {
  const { button, choice, pictures, problems, status, virtual, timeLine } = on(page);
  await reads(status, "idle");
  await connect(page);
  await inForce(page, "file-type", "In force: JPEG");
  await button("Capture").click();
  await item(page, /^Shot 1, .*JPEG/).waitFor();
  await isDrawn(page, 'li[aria-label^="Shot 1,"] img');
  await choice("File type").selectOption("both");
  await inForce(page, "file-type", "In force: RAW and JPEG");
  await page.evaluate(() => document.activeElement.blur());
  await page.keyboard.press("Space");
  await item(page, /^Shot 2, .*RAW and JPEG/).waitFor();
  await are(pictures, 2);
  await choice("Dial").selectOption("raw");
  await inForce(page, "file-type", "Asked, but not in force. In force: RAW");
  assert.equal(await choice("File type").inputValue(), "both");
  await choice("Dial").selectOption("jpeg");
  await inForce(page, "file-type", "Asked, but not in force. In force: JPEG");
  await button("Press shutter").click();
  await item(page, /^No shot number, .*unasked/).waitFor();
  await are(pictures, 3);
  await choice("Save to").selectOption("both");
  await inForce(page, "save-to", "In force: Computer and card");
  await button("Card out").click();
  await inForce(page, "save-to", "Asked, but not in force. In force: Computer");
  await reads(problems, "card-missing");
  await button("Card in").click();
  await inForce(page, "save-to", "In force: Computer and card");
  await are(problems, 0);
  await scene(page, "next file truncated");
  await button("Capture").click();
  await item(page, /^Shot 3, .*damaged/).waitFor();
  await choice("Dial").selectOption("both");
  await inForce(page, "file-type", "In force: RAW and JPEG");
  await scene(page, "next pair half");
  await button("Capture").click();
  await item(page, /^Shot 4, .*half missing/).waitFor();
  await scene(page, "no focus");
  await button("Capture").click();
  await reads(timeLine.locator(".shot.none"), "Shot 5, no picture");
  await reads(problems, "no-picture");
  await scene(page, "focus 300ms");
  await button("Pull cable").click();
  await page.locator('[role="status"]:not([data-state="ready"])').waitFor();
  await button("Plug cable").click();
  await reads(status, "ready");
  await button("Capture").click();
  await item(page, /^Shot 6, .*RAW and JPEG/).waitFor();
  await reads(virtual, "camera-sim plug");
  await page.getByRole("link", { name: /^Open Shot 6,/ }).click();
  const large = page.getByRole("dialog");
  await reads(large, "2400 \xD7 1600");
  await reads(large, /Camera.*Virtual Camera SIM-1/);
  await page.keyboard.press("Escape");
  await choice("Dial").selectOption("raw");
  await inForce(page, "file-type", "Asked, but not in force. In force: RAW");
  await button("Capture").click();
  await item(page, /^Shot 7, .*RAW/).waitFor();
  await isDrawn(page, 'li[aria-label^="Shot 7,"] img');
  await page.getByRole("link", { name: /^Open Shot 7,/ }).click();
  await reads(large, "Preview, 480");
  await reads(large, /Camera.*Virtual Camera SIM-1/);
  await page.keyboard.press("Escape");
  await timeLine.locator(".moment.call").first().waitFor({ state: "attached" });
  await timeLine.locator(".moment.callback").first().waitFor({ state: "attached" });
  await page.getByLabel("Filter lines").fill("REMOTE_CAPTURED");
  await are(on(page).lines, 7);
  const [download] = await Promise.all([
    page.waitForEvent("download"),
    page.getByRole("link", { name: "with names" }).click()
  ]);
  assert.equal((await readFile(await download.path(), "utf8")).match(/REMOTE_CAPTURED/g)?.length, 7);
  await button("Disconnect").click();
  await reads(status, "idle");
  await are(problems, 0);
}));
test("a reload in mid-shot misses nothing, and another folder has its own pictures", () => look(server.url, async (page) => {
  const { button, field, pictures, status, lines } = on(page);
  await connect(page);
  await button("Capture").click();
  await reads(status, "Shot 1 is under way");
  await page.reload();
  await item(page, /^Shot 1, .*JPEG/).waitFor();
  await reads(on(page).timeLine.locator(".shot"), "Shot 1, complete");
  await page.getByLabel("Filter lines").fill("> CAPTURE");
  await are(lines, 1);
  await mkdir(`${server.folder}/wedding`);
  await page.getByText("Change folder or file names").click();
  await field("Folder").fill(`${server.folder}/wedding`);
  await button("Change").click();
  await page.locator(".path", { hasText: "wedding" }).waitFor();
  await are(pictures, 0);
  await button("Capture").click();
  await are(pictures, 1);
}));
test("two pages at once take pictures by turns", () => look(
  server.url,
  (one) => look(server.url, async (other) => {
    await connect(one);
    await reads(on(other).status, "ready");
    await on(one).button("Capture").click();
    await on(other).button("Capture").click();
    for (const page of [one, other]) {
      await item(page, /^Shot 1,/).waitFor();
      await item(page, /^Shot 2,/).waitFor();
      await reads(on(page).status, "Ready to shoot");
    }
  })
));
test("the page is told when the program has ended", () => look(server.url, async (page) => {
  await connect(page);
  assert.equal(await server.end(), 0);
  await reads(on(page).status, "unreachable");
}));
