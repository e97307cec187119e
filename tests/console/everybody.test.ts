// For everybody: keyboard alone, screen readers, small windows, large letters, light and dark, less motion.

import { strict as assert } from "node:assert";
import { readFile } from "node:fs/promises";
import { createRequire } from "node:module";
import { after, afterEach, beforeEach, test } from "node:test";
import type { AxeResults } from "axe-core";
import type { Page } from "playwright-core";
import { are, closeBrowser, look, on, reads, tabTo } from "./browser.js";
import { StandIn } from "./stand_in.js";

let standIn: StandIn;
beforeEach(async () => {
  standIn = await StandIn.start();
});
afterEach(() => standIn.close());
after(closeBrowser);

const axe = await readFile(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

/** What axe finds, in words. */
async function findings(page: Page): Promise<string[]> {
  await page.evaluate(`${axe}; undefined`);
  const { violations, passes } = (await page.evaluate("axe.run(document)")) as AxeResults;
  assert.ok(passes.length > 10, "axe looked at nothing");
  return violations.flatMap(({ id, help, nodes }) =>
    nodes.map(({ html, failureSummary }) => `${id}: ${help}\n${html}\n${failureSummary}`),
  );
}

/** All that can stand on the page at once. */
function fill(): void {
  standIn.ready();
  standIn.capture();
  standIn.add({ recovered: true, kind: "raw", format: "arw" });
  standIn.add({ whole: false });
  standIn.add({ shot: null, afterMs: null });
  const problem = {
    code: "card-missing" as const,
    severity: "warning" as const,
    text: "No card.",
    advice: "Put one in.",
    sdk: null,
    shot: null,
  };
  standIn.change({
    problems: [problem, { ...problem, code: "camera-error", severity: "error", sdk: "0x00008402" }],
    saveDestination: { asked: "both", inForce: "disk" },
  });
  standIn.tell("problem", problem);
  standIn.tell("call", {
    atMs: standIn.atMs,
    durationMs: 3,
    thread: "main",
    call: "Connect 1",
    result: "0x00008402",
  });
}

const views: Record<string, (page: Page) => Promise<unknown>> = {
  "the page as it is opened": (page) => reads(on(page).status, "ready"),
  "everything folded out": async (page) => {
    for (const name of ["Earlier problems", "Change folder or file names", "Shots as a table"]) {
      await page.getByText(name).click();
    }
    await on(page).button("Card out").click();
    await reads(on(page).virtual, "camera-sim card out");
    await on(page).lines.first().getByRole("link").click();
  },
  "the large view": async (page) => {
    await page.getByRole("link", { name: /^Open Shot 1,/ }).click();
    await page.getByText("1200 × 800").waitFor();
  },
  "the large view at 100 %": async (page) => {
    await page.getByRole("link", { name: /^Open Shot 1,/ }).click();
    await page.getByText("1200 × 800").waitFor();
    await page.keyboard.press("z");
    await page.locator(".stage.zoomed img").waitFor();
  },
  "a server that is gone": async (page) => {
    await standIn.goAway();
    await reads(on(page).status, "unreachable");
  },
};

for (const [name, show] of Object.entries(views)) {
  for (const colorScheme of ["light", "dark"] as const) {
    test(`axe finds nothing: ${name}, ${colorScheme}`, () =>
      look(
        standIn.url,
        async (page) => {
          fill();
          await are(on(page).problems, 2);
          await show(page);
          assert.deepEqual(await findings(page), []);
        },
        { colorScheme, reducedMotion: "reduce" },
      ));
  }
}

test("axe finds nothing: no camera and no picture", () =>
  look(standIn.url, async (page) => {
    await reads(on(page).status, "idle");
    assert.deepEqual(await findings(page), []);
  }));

for (const [name, options] of [
  ["360 pixels wide", { viewport: { width: 360, height: 640 } }],
  ["at 200 % zoom", { viewport: { width: 640, height: 450 }, deviceScaleFactor: 2 }],
] as const) {
  test(`${name}, all of it can be seen and used without scrolling sideways`, () =>
    look(
      standIn.url,
      async (page) => {
        const { pictures, virtual, timeLine, button } = on(page);
        fill();
        await are(pictures, 4);
        const wide = () =>
          page.evaluate(() => document.scrollingElement!.scrollWidth - document.documentElement.clientWidth);
        assert.equal(await wide(), 0);
        await button("Capture").click();
        await are(pictures, 5);
        await virtual.getByRole("button", { name: "Pull cable" }).click();
        await reads(virtual, "camera-sim unplug");
        await timeLine.getByRole("button", { name: "Earlier" }).click();
        await page.getByRole("link", { name: /^Open Shot 1,/ }).click();
        await page.getByText("1200 × 800").waitFor();
        assert.deepEqual(await findings(page), []);
        await button("Close").click();
        assert.equal(await wide(), 0);
      },
      options,
    ));
}

test("the keyboard alone connects, shoots, looks, changes a setting, drives the virtual camera, searches lines", () =>
  look(standIn.url, async (page) => {
    const { button, choice, field, status, pictures, virtual, lines, timeLine } = on(page);
    const { keyboard } = page;
    await reads(status, "idle");
    await tabTo(page, button("Connect"));
    await keyboard.press("Enter");
    await reads(status, "ready");
    await tabTo(page, button("Capture"));
    await keyboard.press("Space");
    await are(pictures, 1);
    await keyboard.press("Enter");
    await are(pictures, 2);
    await tabTo(page, page.getByRole("link", { name: /^Open Shot 2,/ }));
    await keyboard.press("ArrowRight");
    await keyboard.press("Enter");
    await reads(page.getByRole("dialog"), "Shot1");
    await keyboard.press("Escape");
    await page.locator('li[aria-label^="Shot 1,"] a:focus').waitFor();
    await tabTo(page, choice("Save to"));
    await keyboard.type("Mem");
    await reads(page.locator("#save-to-in-force"), "In force: Memory card");
    await tabTo(page, button("Card out"));
    await keyboard.press("Enter");
    await reads(virtual, "camera-sim card out");
    await tabTo(page, field("Scene line"));
    await keyboard.type("wake");
    await keyboard.press("Enter");
    await reads(virtual, "camera-sim wake");
    await tabTo(page, page.getByLabel("Filter lines"));
    await keyboard.type("REMOTE");
    await are(lines, 2);
    await tabTo(page, lines.first().getByRole("link"));
    await keyboard.press("ArrowDown");
    await keyboard.press("Enter");
    await reads(timeLine.locator(".picked-line"), "REMOTE_CAPTURED|OK");
  }));

test("what has the focus can be seen to have it", () =>
  look(standIn.url, async (page) => {
    await reads(on(page).status, "idle");
    await tabTo(page, on(page).button("Connect"));
    const outline = await on(page)
      .button("Connect")
      .evaluate((element) => getComputedStyle(element).outlineStyle);
    assert.equal(outline, "solid");
  }));

test("who wants less motion gets none", () =>
  look(
    standIn.url,
    async (page) => {
      fill();
      await are(on(page).pictures, 4);
      const moving = await page.evaluate(() => document.getAnimations().length);
      const durations = await page.evaluate(() =>
        [...document.querySelectorAll("*")]
          .map((element) => getComputedStyle(element).transitionDuration)
          .filter((time) => time !== "0s"),
      );
      assert.deepEqual([moving, durations], [0, []]);
    },
    { reducedMotion: "reduce" },
  ));

test("states and problems are read aloud, once, and time passing is not", () =>
  look(standIn.url, async (page) => {
    fill();
    await are(on(page).problems, 2);
    assert.equal(await page.getByRole("list", { name: "Problems" }).getAttribute("aria-live"), "polite");
    await are(on(page).status, 1);
    assert.equal(
      await on(page)
        .status.getByText(/^for \d/)
        .count(),
      0,
    );
  }));
