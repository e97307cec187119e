// A real Chromium that looks at the page, and complains of whatever the page should not do.

import { strict as assert } from "node:assert";
import { existsSync } from "node:fs";
import { chromium, type Browser, type BrowserContextOptions, type Locator, type Page } from "playwright-core";

/** CHROMIUM names another one. */
const program = [
  process.env["CHROMIUM"],
  "/usr/bin/chromium",
  "/Applications/Chromium.app/Contents/MacOS/Chromium",
].find((path) => path && existsSync(path));

/** The time line moves by itself; once a second is enough to look at. */
const usual: BrowserContextOptions = { viewport: { width: 1280, height: 900 }, reducedMotion: "reduce" };
/** Milliseconds that a test waits for anything, on a machine that has much else to do. */
const longest = 240_000;

let browser: Promise<Browser> | undefined;

/** The file's one. */
function launched(): Promise<Browser> {
  // Its sandbox refuses to work for root, as in containers.
  const args = process.getuid?.() === 0 ? ["--no-sandbox"] : [];
  browser ??= chromium.launch({ ...(program && { executablePath: program }), args });
  return browser;
}

export async function closeBrowser(): Promise<void> {
  await (await browser)?.close();
}

/** Opens the address, and fails when the page throws, or does what its security policy forbids. */
export async function look(
  url: string,
  body: (page: Page) => Promise<void>,
  options: BrowserContextOptions = {},
): Promise<void> {
  const context = await (await launched()).newContext({ ...usual, ...options });
  context.setDefaultTimeout(longest);
  try {
    const page = await context.newPage();
    const complaints: string[] = [];
    page.on("pageerror", (error) => complaints.push(String(error.stack)));
    page.on("console", (message) => {
      // A preview that does not exist is an answer, and a server that is gone a part of the test.
      if (message.type() === "error" && !/Failed to load resource|net::ERR_/.test(message.text())) {
        complaints.push(message.text());
      }
    });
    await page.goto(url);
    await body(page);
    assert.deepEqual(complaints, []);
  } finally {
    await context.close();
  }
}

/** What a test finds by role and name. */
export const on = (page: Page) => ({
  button: (name: string): Locator => page.getByRole("button", { name, exact: true }),
  choice: (name: string): Locator => page.getByRole("combobox", { name, exact: true }),
  field: (name: string): Locator => page.getByRole("textbox", { name, exact: true }),
  status: page.getByRole("status"),
  pictures: page.getByRole("list", { name: "Pictures", exact: true }).getByRole("listitem"),
  problems: page.getByRole("list", { name: "Problems", exact: true }).getByRole("listitem"),
  timeLine: page.getByRole("region", { name: "Time line", exact: true }),
  lines: page.getByRole("list", { name: "Lines of the wire" }).getByRole("listitem"),
  virtual: page.getByRole("region", { name: "Virtual camera", exact: true }),
});

/** Waits until the text is read there. */
export async function reads(locator: Locator, text: string | RegExp): Promise<void> {
  await locator.filter({ hasText: text }).first().waitFor();
}

/** Waits until there are so many. */
export async function are(locator: Locator, count: number): Promise<void> {
  await (count === 0
    ? locator.first().waitFor({ state: "detached" })
    : locator.nth(count - 1).waitFor({ state: "attached" }));
  // One that is too many may still go; one that stays is a mistake.
  await locator.nth(count).waitFor({ state: "detached" });
}

/** Presses Tab until the element has the focus. */
export async function tabTo(page: Page, locator: Locator): Promise<void> {
  for (let presses = 0; presses < 80; ++presses) {
    await page.keyboard.press("Tab");
    if (await locator.evaluate((element) => element === document.activeElement)) {
      return;
    }
  }
  assert.fail(`Tab does not come to ${locator}`);
}
