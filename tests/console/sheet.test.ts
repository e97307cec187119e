// The contact sheet and the large view.

import { strict as assert } from "node:assert";
import { after, afterEach, beforeEach, test } from "node:test";
import type { Page } from "playwright-core";
import { are, closeBrowser, look, on, reads } from "./browser.js";
import { StandIn } from "./stand_in.js";

let standIn: StandIn;
beforeEach(async () => {
  standIn = await StandIn.start();
});
afterEach(() => standIn.close());
after(closeBrowser);

const names = (page: Page): Promise<(string | null)[]> =>
  on(page).pictures.evaluateAll((items) => items.map((item) => item.getAttribute("aria-label")));

test("both halves of a pair are one item, newest first", () =>
  look(standIn.url, async (page) => {
    const { pictures } = on(page);
    standIn.ready();
    standIn.add();
    standIn.add({ shot: 2, pair: "two", kind: "raw", format: "arw", path: `${standIn.state.folder}/DSC00002.ARW` });
    await are(pictures, 2);
    standIn.add({ shot: 2, pair: "two" });
    await page.getByRole("listitem", { name: /Shot 2, .*RAW and JPEG/ }).waitFor();
    await are(pictures, 2);
    assert.match((await names(page))[0]!, /^Shot 2, DSC0000[23], RAW and JPEG, /);
    assert.match((await names(page))[1]!, /^Shot 1, DSC00001, JPEG, /);
  }));

test("recovered, unasked, half missing and damaged pictures are seen to be", () =>
  look(standIn.url, async (page) => {
    const { pictures } = on(page);
    standIn.ready();
    standIn.add({ recovered: true });
    standIn.add({ shot: null, afterMs: null });
    standIn.add({ shot: 3 });
    standIn.add({ whole: false });
    const problem = {
      code: "half-missing" as const,
      severity: "error" as const,
      text: "The RAW is missing.",
      advice: "",
      sdk: null,
      shot: 3,
    };
    standIn.tell("shot", standIn.shot(3, { status: "incomplete", problems: [problem] }));
    await reads(page.locator(".remark"), "half missing");
    await are(pictures, 4);
    const found = (await names(page)).map((name) => name!.split(", ").at(-1));
    assert.deepEqual(found, ["damaged", "half missing", "unasked", "recovered"]);
    assert.match((await names(page))[2]!, /^No shot number, /);
  }));

test("a picture is seen by the preview of whichever half has one", () =>
  look(standIn.url, async (page) => {
    standIn.ready();
    standIn.add({ pair: "one", format: "heif" });
    standIn.add({ pair: "one", kind: "raw", format: "arw" });
    await page.locator('.frame img[src="pictures/id2/preview"]').waitFor();
    standIn.add({ pair: "two", format: "heif" });
    await page.getByText("No preview").waitFor();
  }));

test("the folder's earlier pictures are there, and those of another folder are not", async () => {
  for (let count = 0; count < 3; ++count) {
    standIn.pictures.push(standIn.picture());
  }
  await look(standIn.url, async (page) => {
    const { pictures } = on(page);
    await are(pictures, 3);
    standIn.change({ folder: "/Users/me/wedding" });
    await are(pictures, 0);
    standIn.add();
    await are(pictures, 1);
    standIn.change({ folder: "/Users/me/shots" });
    await are(pictures, 3);
  });
});

test("of 2,000 pictures those that are seen are in the document, and all can be reached", async () => {
  for (let count = 0; count < 2000; ++count) {
    standIn.pictures.push(standIn.picture());
  }
  standIn.ready();
  await look(standIn.url, async (page) => {
    const { pictures } = on(page);
    const scroller = page.locator(".pictures");
    await page.getByText("2,000 in this folder").waitFor();
    await page.getByRole("listitem", { name: /^Shot 2000,/ }).waitFor();
    assert.ok((await pictures.count()) < 60, `${await pictures.count()} are in the document`);
    assert.equal(await pictures.first().getAttribute("aria-setsize"), "2000");
    await scroller.evaluate((element) => element.scrollTo({ top: element.scrollHeight / 2 }));
    await page.getByRole("listitem", { name: /^Shot 1000,/ }).waitFor();
    await scroller.evaluate((element) => element.scrollTo({ top: element.scrollHeight }));
    await page.getByRole("listitem", { name: /^Shot 1,/ }).waitFor();
    assert.ok((await pictures.count()) < 60, `${await pictures.count()} are in the document`);

    // New ones do not push along what is looked at.
    const before = await page.getByRole("listitem", { name: /^Shot 1,/ }).boundingBox();
    standIn.add();
    await page.getByRole("button", { name: "1 new, show it" }).waitFor();
    assert.deepEqual(await page.getByRole("listitem", { name: /^Shot 1,/ }).boundingBox(), before);
    await page.getByRole("button", { name: "1 new, show it" }).click();
    await page.getByRole("listitem", { name: /^Shot 2001,/ }).waitFor();
  });
});

test("arrows, Home and End move over the pictures, and what has the focus keeps it", async () => {
  for (let count = 0; count < 300; ++count) {
    standIn.pictures.push(standIn.picture());
  }
  await look(standIn.url, async (page) => {
    const focused = (shot: number) => page.locator(`li[aria-label^="Shot ${shot},"] a:focus`).waitFor();
    await page.getByText("300 in this folder").waitFor();
    await page.getByRole("link", { name: /^Open Shot 300,/ }).focus();
    await page.keyboard.press("ArrowRight");
    await focused(299);
    await page.keyboard.press("End");
    await focused(1);
    await page.keyboard.press("ArrowLeft");
    await focused(2);
    await page.keyboard.press("Home");
    await focused(300);
    await page.locator(".pictures").evaluate((element) => element.scrollTo({ top: element.scrollHeight }));
    await page.getByRole("listitem", { name: /^Shot 1,/ }).waitFor();
    await focused(300);
  });
});

test("the large view goes on with arrows and shows each pixel at 100 %", () =>
  look(standIn.url, async (page) => {
    standIn.ready();
    for (let count = 0; count < 3; ++count) {
      standIn.add();
    }
    await page.getByRole("link", { name: /^Open Shot 2,/ }).click();
    const large = page.getByRole("dialog", { name: "Large view" });
    await reads(large, "1200 × 800");
    await reads(large, /Files.*DSC00002\.JPG \(4\.4 MB\).*Shutter to file.*JPEG 2\.96 s.*Shot.*2/s);
    await page.keyboard.press("ArrowRight");
    await reads(large, "DSC00001.JPG");
    await page.keyboard.press("ArrowLeft");
    await page.keyboard.press("ArrowLeft");
    await reads(large, "DSC00003.JPG");
    await reads(large, "1200 × 800");
    const image = large.getByRole("img");
    await large.getByRole("button", { name: "Zoom to 100 %" }).click();
    await page.locator(".stage.zoomed img").waitFor();
    assert.deepEqual(await image.evaluate((element: HTMLImageElement) => [element.width, element.height]), [1200, 800]);
    await page.keyboard.press("z");
    await page.locator(".stage:not(.zoomed) img").waitFor();
    await image.click({ position: { x: 300, y: 200 } });
    await page.locator(".stage.zoomed img").waitFor();
    await page.keyboard.press("Escape");
    await large.waitFor({ state: "detached" });
    await page.locator('li[aria-label^="Shot 3,"] a:focus').waitFor();
  }));

test("a pixel of the picture is one of the screen, also on a screen with two to a unit", () =>
  look(
    standIn.url,
    async (page) => {
      standIn.ready();
      standIn.add();
      await page.getByRole("link", { name: /^Open Shot 1,/ }).click();
      await page.getByText("1200 × 800").waitFor();
      await page.keyboard.press("z");
      await page.locator(".stage.zoomed img").waitFor();
      assert.equal(
        await page
          .getByRole("dialog")
          .getByRole("img")
          .evaluate((image: HTMLImageElement) => image.width),
        600,
      );
    },
    { deviceScaleFactor: 2 },
  ));

test("a picture that no browser shows is said to be there all the same", () =>
  look(standIn.url, async (page) => {
    standIn.ready();
    standIn.add({ format: "heif" });
    await page.getByRole("link", { name: /^Open Shot 1,/ }).click();
    await page.getByText("This picture cannot be shown here.").waitFor();
    await page.getByRole("link", { name: "Download HEIF" }).waitFor();
  }));
