import { strict as assert } from "node:assert";
import { existsSync } from "node:fs";
import { chromium } from "playwright-core";
const program = [
  process.env["CHROMIUM"],
  "/usr/bin/chromium",
  "/Applications/Chromium.app/Contents/MacOS/Chromium"
].find((path) => path && existsSync(path));
const usual = { viewport: { width: 1280, height: 900 }, reducedMotion: "reduce" };
const longest = 24e4;
let browser;
function launched() {
  const args = process.getuid?.() === 0 ? ["--no-sandbox"] : [];
  browser ??= chromium.launch({ ...program && { executablePath: program }, args });
  return browser;
}
async function closeBrowser() {
  await (await browser)?.close();
}
async function look(url, body, options = {}) {
  const context = await (await launched()).newContext({ ...usual, ...options });
  context.setDefaultTimeout(longest);
  try {
    const page = await context.newPage();
    const complaints = [];
    page.on("pageerror", (error) => complaints.push(String(error.stack)));
    page.on("console", (message) => {
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
const on = (page) => ({
  button: (name) => page.getByRole("button", { name, exact: true }),
  choice: (name) => page.getByRole("combobox", { name, exact: true }),
  field: (name) => page.getByRole("textbox", { name, exact: true }),
  status: page.getByRole("status"),
  pictures: page.getByRole("list", { name: "Pictures", exact: true }).getByRole("listitem"),
  problems: page.getByRole("list", { name: "Problems", exact: true }).getByRole("listitem"),
  timeLine: page.getByRole("region", { name: "Time line", exact: true }),
  lines: page.getByRole("list", { name: "Lines of the wire" }).getByRole("listitem"),
  virtual: page.getByRole("region", { name: "Virtual camera", exact: true })
});
async function reads(locator, text) {
  await locator.filter({ hasText: text }).first().waitFor();
}
async function are(locator, count) {
  await (count === 0 ? locator.first().waitFor({ state: "detached" }) : locator.nth(count - 1).waitFor({ state: "attached" }));
  await locator.nth(count).waitFor({ state: "detached" });
}
async function tabTo(page, locator) {
  for (let presses = 0; presses < 80; ++presses) {
    await page.keyboard.press("Tab");
    if (await locator.evaluate((element) => element === document.activeElement)) {
      return;
    }
  }
  assert.fail(`Tab does not come to ${locator}`);
}
export {
  are,
  closeBrowser,
  look,
  on,
  reads,
  tabTo
};
