// A whole afternoon with the real server, worker and virtual camera: each button, and what comes of it.

import { strict as assert } from "node:assert";
import { mkdir, readFile } from "node:fs/promises";
import { after, afterEach, beforeEach, test } from "node:test";
import type { Page } from "playwright-core";
import { are, closeBrowser, look, on, reads } from "./browser.js";
import { startConsole, type Console } from "./real.js";

let server: Console;
beforeEach(async () => {
  server = await startConsole("picture 2400x1600\n", "--patience=3");
});
afterEach(() => server.end());
after(closeBrowser);

const item = (page: Page, name: RegExp) => page.getByRole("listitem", { name });
const inForce = (page: Page, id: string, text: string) => reads(page.locator(`#${id}-in-force`), text);

async function connect(page: Page): Promise<void> {
  await on(page).button("Connect").click();
  await reads(on(page).status, /ready.*Virtual Camera SIM-1/s);
}

/** Says a line to the virtual camera, and waits for its word. */
async function scene(page: Page, line: string): Promise<void> {
  await on(page).field("Scene line").fill(line);
  await on(page).field("Scene line").press("Enter");
  const sent = on(page).virtual.getByRole("listitem").first();
  await reads(sent, `camera-sim ${line}`);
  await sent.locator('.answer[data-ok="true"]').waitFor();
}

/** Whether the browser has drawn it. */
const isDrawn = (page: Page, selector: string) =>
  page.waitForFunction((found) => (document.querySelector<HTMLImageElement>(found)?.naturalWidth ?? 0) > 0, selector);

test("an afternoon with each button", () =>
  look(server.url, async (page) => {
    const { button, choice, pictures, problems, status, virtual, timeLine } = on(page);
    await reads(status, "idle");
    await connect(page);
    await inForce(page, "file-type", "In force: JPEG");

    // A JPEG, with its preview.
    await button("Capture").click();
    await item(page, /^Shot 1, .*JPEG/).waitFor();
    await isDrawn(page, 'li[aria-label^="Shot 1,"] img');

    // A pair, by the space bar.
    await choice("File type").selectOption("both");
    await inForce(page, "file-type", "In force: RAW and JPEG");
    await page.evaluate(() => (document.activeElement as HTMLElement).blur());
    await page.keyboard.press("Space");
    await item(page, /^Shot 2, .*RAW and JPEG/).waitFor();
    await are(pictures, 2);

    // Somebody turns the dial: what was asked stays.
    await choice("Dial").selectOption("raw");
    await inForce(page, "file-type", "Asked, but not in force. In force: RAW");
    assert.equal(await choice("File type").inputValue(), "both");
    await choice("Dial").selectOption("jpeg");
    await inForce(page, "file-type", "Asked, but not in force. In force: JPEG");

    // Somebody presses the button on the body.
    await button("Press shutter").click();
    await item(page, /^No shot number, .*unasked/).waitFor();
    await are(pictures, 3);

    // The card comes out while the camera saves to both.
    await choice("Save to").selectOption("both");
    await inForce(page, "save-to", "In force: Computer and card");
    await button("Card out").click();
    await inForce(page, "save-to", "Asked, but not in force. In force: Computer");
    await reads(problems, "card-missing");
    await button("Card in").click();
    await inForce(page, "save-to", "In force: Computer and card");
    await are(problems, 0);

    // A file that is cut, a half that does not come, a file that does not come at all.
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

    // The cable.
    await button("Pull cable").click();
    await page.locator('[role="status"]:not([data-state="ready"])').waitFor();
    await button("Plug cable").click();
    await reads(status, "ready");
    await button("Capture").click();
    await item(page, /^Shot 6, .*RAW and JPEG/).waitFor();
    await reads(virtual, "camera-sim plug");

    // One of them large; the camera is the one that the file says.
    await page.getByRole("link", { name: /^Open Shot 6,/ }).click();
    const large = page.getByRole("dialog");
    await reads(large, "2400 × 1600");
    await reads(large, /Camera.*Virtual Camera SIM-1/);
    await page.keyboard.press("Escape");

    // A RAW alone has a preview, and says its camera too.
    await choice("Dial").selectOption("raw");
    await inForce(page, "file-type", "Asked, but not in force. In force: RAW");
    await button("Capture").click();
    await item(page, /^Shot 7, .*RAW/).waitFor();
    await isDrawn(page, 'li[aria-label^="Shot 7,"] img');
    await page.getByRole("link", { name: /^Open Shot 7,/ }).click();
    await reads(large, "Preview, 480");
    await reads(large, /Camera.*Virtual Camera SIM-1/);
    await page.keyboard.press("Escape");

    // The time line has the SDK's calls, and the record every line.
    await timeLine.locator(".moment.call").first().waitFor({ state: "attached" });
    await timeLine.locator(".moment.callback").first().waitFor({ state: "attached" });
    await page.getByLabel("Filter lines").fill("REMOTE_CAPTURED");
    await are(on(page).lines, 7);
    const [download] = await Promise.all([
      page.waitForEvent("download"),
      page.getByRole("link", { name: "with names" }).click(),
    ]);
    assert.equal((await readFile(await download.path(), "utf8")).match(/REMOTE_CAPTURED/g)?.length, 7);

    await button("Disconnect").click();
    await reads(status, "idle");
    await are(problems, 0);
  }));

test("a reload in mid-shot misses nothing, and another folder has its own pictures", () =>
  look(server.url, async (page) => {
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

test("two pages at once take pictures by turns", () =>
  look(server.url, (one) =>
    look(server.url, async (other) => {
      await connect(one);
      await reads(on(other).status, "ready");
      await on(one).button("Capture").click();
      await on(other).button("Capture").click();
      for (const page of [one, other]) {
        await item(page, /^Shot 1,/).waitFor();
        await item(page, /^Shot 2,/).waitFor();
        await reads(on(page).status, "Ready to shoot");
      }
    }),
  ));

test("the page is told when the program has ended", () =>
  look(server.url, async (page) => {
    await connect(page);
    assert.equal(await server.end(), 0);
    await reads(on(page).status, "unreachable");
  }));
