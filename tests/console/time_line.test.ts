// The time line: shots as bars, the SDK's calls on the same clock, every line of the wire.

import { strict as assert } from "node:assert";
import { after, afterEach, beforeEach, test } from "node:test";
import { are, closeBrowser, look, on, reads } from "./browser.js";
import { StandIn } from "./stand_in.js";

let standIn: StandIn;
beforeEach(async () => {
  standIn = await StandIn.start();
});
afterEach(() => standIn.close());
after(closeBrowser);

/** A shot of a pair that was fired this many milliseconds ago, as worker and virtual camera tell it. */
function shoot(ago: number, { withCalls }: { withCalls: boolean }): void {
  const at = standIn.atMs - ago;
  const call = (atMs: number, call: string) =>
    withCalls && standIn.tell("call", { atMs, durationMs: 0.02, thread: "main", call, result: "0x00000000" });
  standIn.line(">", "CAPTURE", at);
  call(at + 1, "SetDeviceProperty 0x0001 2");
  call(at + 711, "SendCommand 0 1");
  call(at + 756, "SendCommand 0 0");
  standIn.line("<", "REMOTE_CAPTURED|OK", at + 758);
  const firedAt = new Date(Date.now() - ago).toISOString();
  standIn.tell("shot", standIn.shot(1, { firedAt }));
  standIn.line("<", "DOWNLOADED|/Users/me/shots/DSC00001.ARW", at + 1500);
  standIn.add({ shot: 1, pair: "one", kind: "raw", format: "arw", afterMs: 1500 });
  standIn.line("<", "DOWNLOADED|/Users/me/shots/DSC00001.JPG", at + 2100);
  standIn.add({ shot: 1, pair: "one", afterMs: 2100 });
  standIn.tell("shot", standIn.shot(1, { status: "complete", firedAt }));
}

test("a shot is drawn from its half-press to its last file, and stands in a table", () =>
  look(standIn.url, async (page) => {
    const { timeLine } = on(page);
    standIn.ready();
    shoot(8000, { withCalls: false });
    const bars = timeLine.locator(".shot");
    await reads(bars, "Shot 1, complete");
    for (const bar of ["half-press, 0.72 s", "release, 35 ms", "RAW 1.50 s", "JPEG 2.10 s"]) {
      await bars.locator("title", { hasText: bar }).waitFor({ state: "attached" });
    }
    await timeLine.getByText("Shots as a table").click();
    await reads(timeLine.getByRole("row"), /^1.*0\.72 s.*35 ms.*1\.50 s.*2\.10 s.*complete/);
  }));

test("with the journal of the virtual camera the shutter is drawn to the millisecond, above the calls", () =>
  look(standIn.url, async (page) => {
    const { timeLine } = on(page);
    standIn.ready();
    shoot(8000, { withCalls: true });
    await timeLine.locator(".shot title", { hasText: "half-press, 0.71 s" }).waitFor({ state: "attached" });
    await timeLine.locator(".shot title", { hasText: "release, 45 ms" }).waitFor({ state: "attached" });
    await reads(timeLine.locator(".shot"), "release 45 ms");
    await reads(timeLine.locator(".lane-name"), "SDK: calls above, callbacks below");
    // One clock: the half-press begins where the call stands that presses it.
    const left = (selector: string) =>
      timeLine
        .locator(selector)
        .first()
        .evaluate((rect) => Number(rect.getAttribute("x")));
    const pixels = Math.abs((await left(".half-press rect")) - (await left(".moment.call rect")));
    assert.ok(pixels < 1, `${pixels} pixels apart`);
  }));

test("a shot without a picture says why", () =>
  look(standIn.url, async (page) => {
    const { timeLine } = on(page);
    standIn.ready();
    standIn.line(">", "CAPTURE");
    const firedAt = new Date().toISOString();
    standIn.tell("shot", standIn.shot(1, { firedAt }));
    await reads(timeLine.locator(".shot"), "waiting for files");
    const problem = {
      code: "no-picture" as const,
      severity: "error" as const,
      text: "No file came.",
      advice: "Look at the focus.",
      sdk: null,
      shot: 1,
    };
    standIn.tell("problem", problem);
    standIn.tell("shot", standIn.shot(1, { status: "none", firedAt, problems: [problem] }));
    await reads(timeLine.locator(".shot"), "Shot 1, no picture");
    await reads(timeLine.locator(".moment.problem"), "no-picture");
  }));

test("losses, settings and calls that hang are drawn", () =>
  look(standIn.url, async (page) => {
    const { timeLine } = on(page);
    standIn.ready();
    standIn.line("<", "SAVE_DEST|disk");
    standIn.line("<", "FILE_TYPE|raw");
    standIn.change({ state: "lost" });
    standIn.tell("call", {
      atMs: standIn.atMs,
      durationMs: null,
      thread: "main",
      call: "Disconnect 1",
      result: "hangs",
    });
    for (const kind of [".bar.ready", ".bar.lost", ".moment.setting", ".moment.call.failed"]) {
      await timeLine.locator(kind).first().waitFor({ state: "attached" });
    }
  }));

test("every line of the wire is listed and can be searched, and a click shows it in the drawing", () =>
  look(standIn.url, async (page) => {
    const { timeLine, lines } = on(page);
    standIn.ready();
    shoot(60_000, { withCalls: false });
    await are(lines, 4);
    await page.getByLabel("Filter lines").fill("< downloaded arw");
    await are(lines, 1);
    await reads(timeLine, "1 of 4 lines");
    await lines.getByRole("link").click();
    await reads(timeLine.locator(".picked-line"), "< DOWNLOADED|/Users/me/shots/DSC00001.ARW");
    // It was not seen before: the drawing followed the time.
    const [mark, frame] = [
      await timeLine.locator("line.picked").boundingBox(),
      await timeLine.locator(".chart").boundingBox(),
    ];
    const middle = frame!.x + frame!.width / 2;
    assert.ok(Math.abs(mark!.x + mark!.width / 2 - middle) < 2, `at ${mark!.x}, the middle is ${middle}`);
    await page.getByLabel("Filter lines").fill("");
    await are(lines, 4);
    // And back: a click into the drawing finds the nearest line.
    await timeLine.getByRole("button", { name: "Closer" }).click();
    await timeLine.locator(".chart").click({ position: { x: 3, y: 100 } });
    await reads(timeLine.locator(".picked-line"), "> CAPTURE");
    await lines
      .getByRole("link")
      .and(page.locator('[aria-current="true"]'))
      .filter({ hasText: "> CAPTURE" })
      .waitFor();
  }));

test("the drawing is moved and widened by its buttons, and follows the time again", () =>
  look(standIn.url, async (page) => {
    const { timeLine } = on(page);
    const press = (name: string) => timeLine.getByRole("button", { name, exact: true }).click();
    standIn.ready();
    shoot(100_000, { withCalls: false });
    await press("Wider");
    await reads(timeLine, "Showing 1 min");
    await are(timeLine.locator(".shot"), 0);
    await press("Earlier");
    await press("Earlier");
    await reads(timeLine.locator(".shot"), "Shot 1");
    await press("Later");
    await press("Later");
    await are(timeLine.locator(".shot"), 0);
    await press("Follow");
    await timeLine.locator("line.now").waitFor({ state: "attached" });
  }));

test("thousands of lines scroll freely, and the end stays in sight until somebody reads elsewhere", () =>
  look(standIn.url, async (page) => {
    const { lines, timeLine } = on(page);
    const list = page.locator(".wire-lines");
    for (let number = 1; number <= 5000; ++number) {
      standIn.line("<", `LOG|line ${number}`);
    }
    await reads(timeLine, "5,000 lines");
    await page.getByText("LOG|line 5000").waitFor();
    assert.ok((await lines.count()) < 60);
    await list.evaluate((element) => element.scrollTo({ top: 0 }));
    await lines.getByText(/LOG\|line 1$/).waitFor();
    standIn.line("<", "LOG|line 5001");
    await reads(timeLine, "5,001 lines");
    await lines.getByText(/LOG\|line 1$/).waitFor();
  }));
