// Pages come and go, several at once, and so may the program behind them.

import { strict as assert } from "node:assert";
import { after, afterEach, beforeEach, test } from "node:test";
import type { Shot } from "camera-worker/page";
import { are, closeBrowser, look, on, reads } from "./browser.js";
import { StandIn } from "./stand_in.js";

let standIn: StandIn;
beforeEach(async () => {
  standIn = await StandIn.start();
});
afterEach(() => standIn.close());
after(closeBrowser);

test("a reload in mid-shot misses nothing", () =>
  look(standIn.url, async (page) => {
    const { status, pictures, lines, timeLine } = on(page);
    standIn.ready();
    standIn.capture();
    await are(pictures, 1);
    let over: (shot: Shot) => void;
    standIn.answers["capture"] = () => new Promise((resolve) => (over = resolve));
    await on(page).button("Capture").click();
    standIn.line(">", "CAPTURE");
    const firedAt = new Date().toISOString();
    standIn.tell("shot", standIn.shot(2, { firedAt }));
    standIn.tell("problem", {
      code: "card-missing",
      severity: "warning",
      text: "No card.",
      advice: "",
      sdk: null,
      shot: null,
    });
    await reads(status, "Shot 2 is under way");
    await page.reload();
    await reads(status, "Shot 2 is under way");
    await are(pictures, 1);
    await are(lines, 4);
    await page.getByText("Earlier problems (1)").waitFor();
    standIn.add({ shot: 2, pair: "two", kind: "raw", format: "arw", afterMs: 900 });
    standIn.add({ shot: 2, pair: "two", afterMs: 1000 });
    const shot = standIn.shot(2, { status: "complete", firedAt });
    standIn.tell("shot", shot);
    over!(shot);
    await page.getByRole("listitem", { name: /^Shot 2, .*RAW and JPEG/ }).waitFor();
    await reads(status, "Ready to shoot");
    await are(timeLine.locator(".shot.complete"), 2);
    await are(pictures, 2);
  }));

test("two pages at once show the same", () =>
  look(standIn.url, (one) =>
    look(standIn.url, async (other) => {
      standIn.ready();
      await reads(on(one).status, "ready");
      await on(one).button("Capture").click();
      await are(on(other).pictures, 1);
      await on(other).button("Capture").click();
      await are(on(one).pictures, 2);
      await on(other).choice("File type").selectOption("both");
      await reads(one.locator("#file-type-in-force"), "In force: RAW and JPEG");
      assert.equal(await on(one).choice("File type").inputValue(), "both");
    }),
  ));

test("when nobody answers the page says so, and misses nothing when somebody does again", () =>
  look(standIn.url, async (page) => {
    const { status, pictures, lines, button } = on(page);
    standIn.ready();
    standIn.capture();
    await are(pictures, 1);
    await are(lines, 3);
    await standIn.goAway();
    await reads(status, /unreachable.*No answer\. Is tether console running\?/s);
    assert.equal(await button("Capture").getAttribute("aria-disabled"), "true");
    standIn.capture();
    await standIn.comeBack();
    await reads(status, "ready");
    await are(pictures, 2);
    await are(lines, 6);
    await button("Capture").click();
    await are(pictures, 3);
  }));

test("another run tells what it remembers, and the page forgets the time line of the run before", () =>
  look(standIn.url, async (page) => {
    const { status, pictures, lines } = on(page);
    standIn.ready();
    standIn.capture();
    await are(lines, 3);
    await standIn.goAway();
    await reads(status, "unreachable");
    await standIn.comeBack({ isAnotherRun: true });
    standIn.change({ state: "idle", camera: null });
    await reads(status, "idle");
    await are(lines, 0);
    await are(pictures, 1);
    standIn.line("<", "READY|OK");
    await are(lines, 1);
  }));

test("an address that is no longer good is said to be", () =>
  look(standIn.url, async (page) => {
    const { status } = on(page);
    standIn.ready();
    await reads(status, "ready");
    await standIn.goAway();
    standIn.refusing = 403;
    await standIn.comeBack();
    await reads(status, "This address is no longer valid. Open the one that tether console has printed.");
  }));
