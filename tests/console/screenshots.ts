// Takes the four pictures of the page that stand in docs/, with the real server and its virtual camera:
//
//     tests/console/check && node tests/console/dist/screenshots.js docs/console

import { mkdir, stat } from "node:fs/promises";
import { chromium, type Page } from "playwright-core";
import { closeBrowser, look, on, reads } from "./browser.js";
import { startConsole } from "./real.js";

const folder = process.argv[2];
if (folder === undefined) {
  console.error(`${chromium.name()} puts the pictures into a folder: node screenshots.js FOLDER`);
  process.exit(2);
}
await mkdir(folder, { recursive: true });

async function shoot(page: Page, shot: number): Promise<void> {
  await on(page).button("Capture").click();
  await page.locator(`.time-line .shot[data-shot="${shot}"]:not(.fired)`).waitFor();
}

async function say(page: Page, line: string): Promise<void> {
  await on(page).field("Scene line").fill(line);
  await on(page).field("Scene line").press("Enter");
  await on(page).virtual.getByRole("listitem").first().filter({ hasText: line }).locator('[data-ok="true"]').waitFor();
}

async function take(page: Page, name: string, what?: string): Promise<void> {
  const path = `${folder}/${name}`;
  // The button that was pressed last would look pressed, and this folder is nobody's.
  await page.evaluate((folder) => {
    (document.activeElement as HTMLElement | null)?.blur();
    const texts = document.createTreeWalker(document.body, NodeFilter.SHOW_TEXT);
    for (let text = texts.nextNode(); text; text = texts.nextNode()) {
      text.nodeValue = text.nodeValue!.replaceAll(folder, "/Users/me/shots");
    }
  }, server.folder);
  await page.mouse.move(0, 0);
  // Letters are sharp, photographs small.
  const options = name.endsWith(".png") ? { path } : { path, quality: 72, scale: "css" as const };
  await (what === undefined ? page.screenshot(options) : page.locator(what).screenshot(options));
  console.log(`${path}: ${(await stat(path)).size} bytes`);
}

const server = await startConsole("usb 5MB/s\n", "--patience=2");
const wide = { viewport: { width: 1280, height: 860 } };
const tall = { width: 1060, height: 1800 };
try {
  await look(
    server.url,
    async (page) => {
      const { button, choice, status, pictures } = on(page);
      await button("Connect").click();
      await reads(status, "ready");
      for (let shot = 1; shot <= 9; ++shot) {
        await shoot(page, shot);
      }
      await say(page, "next file truncated");
      await shoot(page, 10);
      await button("Press shutter").click();
      await page.getByRole("listitem", { name: /unasked/ }).waitFor();

      // The time line: a pair, a shot without focus, a cable that is pulled and plugged.
      await choice("File type").selectOption("both");
      await reads(page.locator("#file-type-in-force"), "In force: RAW and JPEG");
      await shoot(page, 11);
      await say(page, "no focus");
      await shoot(page, 12);
      await say(page, "focus 300ms");
      await say(page, "unplug reconnecting");
      await reads(status, "lost");
      await page.locator("header").getByText(/^for [1-9]/).waitFor();
      await say(page, "plug");
      await reads(status, "ready");
      await page.locator(".time-line").getByRole("button", { name: "Closer" }).click();
      await page.getByLabel("Filter lines").fill("CAPTURE");
      await page.locator(".wire-lines li a").last().click();
      await page.getByLabel("Filter lines").fill("");
      await page.locator(".time-line").getByRole("button", { name: "Later" }).click();
      await page.locator(".time-line").getByRole("button", { name: "Earlier" }).click();
      await page.setViewportSize(tall);
      await take(page, "time_line.png", ".time-line");
      await page.setViewportSize(wide.viewport);

      await choice("Save to").selectOption("both");
      await reads(page.locator("#save-to-in-force"), "In force: Computer and card");
      await button("Card out").click();
      await reads(page.getByRole("list", { name: "Problems", exact: true }), "card-missing");
      await page.evaluate(() => scrollTo(0, 0));
      await take(page, "sheet.jpeg");

      await page.getByRole("link", { name: /^Open Shot 9,/ }).click();
      await reads(page.getByRole("dialog"), "6000 × 4000");
      await take(page, "large.jpeg");
      await page.keyboard.press("Escape");
      await pictures.first().waitFor();
    },
    { ...wide, deviceScaleFactor: 2 },
  );
  await look(
    server.url,
    async (page) => {
      await page.getByRole("listitem", { name: /^Shot 11,/ }).waitFor();
      await take(page, "narrow_and_dark.jpeg");
    },
    { viewport: { width: 360, height: 780 }, deviceScaleFactor: 2, colorScheme: "dark" },
  );
} finally {
  await closeBrowser();
  await server.end();
}
