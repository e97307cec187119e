// State at a glance, settings, problems and the virtual camera's panel.

import { strict as assert } from "node:assert";
import { after, afterEach, beforeEach, test } from "node:test";
import { are, closeBrowser, look, on, reads } from "./browser.js";
import { folder, StandIn } from "./stand_in.js";

let standIn: StandIn;
beforeEach(async () => {
  standIn = await StandIn.start();
});
afterEach(() => standIn.close());
after(closeBrowser);

const askedFor = (method: string) => standIn.asked.filter((one) => one.method === method).map((one) => one.parameters);

test("the status reads what the session is doing, and for how long", () =>
  look(standIn.url, async (page) => {
    const { status, button } = on(page);
    await reads(status, "idle");
    standIn.ready();
    await reads(status, /ready.*Virtual Camera SIM-1/s);
    await page.getByText(/^for \d+ s$/).waitFor();
    for (const state of ["lost", "closing", "opening", "settling", "starting", "down", "ending"] as const) {
      standIn.change({ state });
      await reads(status, state);
    }
    assert.equal(await button("Capture").getAttribute("aria-disabled"), "true");
    standIn.change({ state: "ready", restarts: 2 });
    await page.getByText("the worker was replaced 2 times").waitFor();
  }));

test("the token leaves the address", () =>
  look(`${standIn.url}?token=0123456789abcdef`, async (page) => {
    await reads(on(page).status, "idle");
    assert.equal(page.url(), standIn.url);
  }));

test("Connect, Capture and Disconnect do what they say", () =>
  look(standIn.url, async (page) => {
    const { status, button, pictures } = on(page);
    await button("Connect").click();
    await reads(status, "ready");
    await button("Capture").click();
    await are(pictures, 1);
    await button("Disconnect").click();
    await reads(status, "idle");
    assert.deepEqual(
      standIn.asked.map(({ method }) => method).filter((method) => /connect|capture/.test(method)),
      ["connect", "capture", "disconnect"],
    );
  }));

test("the space bar shoots, once for each press, and not where it types or presses something else", () =>
  look(standIn.url, async (page) => {
    const { status, field, button, pictures, virtual } = on(page);
    standIn.ready();
    await reads(status, "ready");
    await page.keyboard.down("Space");
    await page.keyboard.down("Space");
    await page.keyboard.up("Space");
    await are(pictures, 1);
    await field("Scene line").fill("card");
    await page.keyboard.press("Space");
    await button("Card out").focus();
    await page.keyboard.press("Space");
    await reads(virtual, "camera-sim card out");
    assert.equal(await field("Scene line").inputValue(), "card ");
    assert.equal(askedFor("capture").length, 1);
  }));

test("three captures wait at most, so that other requests find a connection", () =>
  look(standIn.url, async (page) => {
    const { status, button, choice } = on(page);
    standIn.answers["capture"] = () => new Promise(() => {});
    standIn.ready();
    await reads(status, "ready");
    for (let press = 0; press < 3; ++press) {
      await button("Capture").click();
    }
    await page.locator('.shutter[aria-disabled="true"]').waitFor();
    await choice("Save to").selectOption("card");
    await reads(page.locator("#save-to-in-force"), "In force: Memory card");
    assert.equal(askedFor("capture").length, 3);
  }));

test("what was asked and what is in force are told apart when they differ", () =>
  look(standIn.url, async (page) => {
    const { choice } = on(page);
    const inForce = page.locator("#save-to-in-force");
    standIn.ready();
    await reads(inForce, "In force: Computer");
    standIn.answers["configure"] = () => standIn.change({ saveDestination: { asked: "both", inForce: "disk" } });
    await choice("Save to").selectOption("both");
    await reads(inForce, "Asked, but not in force. In force: Computer");
    assert.equal(await choice("Save to").inputValue(), "both");
    assert.deepEqual(askedFor("configure"), [{ saveDestination: "both" }]);
    await choice("File type").selectOption("raw");
    standIn.change({ fileType: { asked: "raw", inForce: "other" } });
    await reads(page.locator("#file-type-in-force"), "In force: something else, such as RAW and HEIF");
  }));

test("folder and names are changed, and a refusal is told", () =>
  look(standIn.url, async (page) => {
    const { field, button } = on(page);
    standIn.ready();
    await page.getByText("Change folder or file names").click();
    await field("Folder").fill("/Users/me/wedding");
    await field("File names").fill("{date}-{n:4}");
    await button("Change").click();
    await page.locator(".path", { hasText: "/Users/me/wedding" }).waitFor();
    assert.deepEqual(askedFor("configure"), [{ folder: "/Users/me/wedding", name: "{date}-{n:4}" }]);
    standIn.answers["configure"] = () => {
      throw new Error('"name" must not contain ..');
    };
    await field("File names").fill("../{n}");
    await button("Change").click();
    await page.getByText("Earlier problems").click();
    await reads(page.getByRole("list", { name: "Lately" }), '"name" must not contain ..');
  }));

test("problems stand with their advice until they are over", () =>
  look(standIn.url, async (page) => {
    const { problems } = on(page);
    standIn.ready();
    const problem = {
      code: "camera-not-found" as const,
      severity: "error" as const,
      text: "No camera was found.",
      advice: "Look at the cable.",
      sdk: "0x00008703",
      shot: null,
    };
    standIn.change({ problems: [problem] });
    await are(problems, 1);
    await reads(problems, /Error No camera was found\..*Look at the cable\..*camera-not-found · 0x00008703/s);
    standIn.change({ problems: [] });
    await are(problems, 0);
    standIn.tell("problem", { ...problem, code: "no-picture", text: "Shot 4 brought no picture.", shot: 4 });
    await page.getByText("Earlier problems (1)").click();
    await reads(page.getByRole("list", { name: "Lately" }), /Shot 4 brought no picture.*shot 4/s);
    await are(problems, 0);
  }));

test("what was wrong with the last shot stands among the problems until the next one is fired", () =>
  look(standIn.url, async (page) => {
    const { problems } = on(page);
    standIn.ready();
    const problem = {
      code: "no-picture" as const,
      severity: "error" as const,
      text: "Shot 1 brought no picture.",
      advice: "Look at the focus.",
      sdk: null,
      shot: 1,
    };
    standIn.tell("shot", standIn.shot(1));
    standIn.tell("problem", problem);
    standIn.tell("shot", standIn.shot(1, { status: "none", problems: [problem] }));
    await are(problems, 1);
    await reads(problems, /Shot 1 brought no picture\..*Look at the focus\./s);
    standIn.tell("shot", standIn.shot(2));
    await are(problems, 0);
  }));

test("no button is called as another one is, however much was sent and written", () =>
  look(standIn.url, async (page) => {
    const { status, virtual, lines } = on(page);
    standIn.ready();
    standIn.capture();
    await reads(status, "ready");
    for (const name of ["Pull cable", "Plug cable", "Card out", "Card in", "Press shutter"]) {
      await virtual.getByRole("button", { name }).click();
      await reads(virtual.getByRole("listitem").first(), "ok");
    }
    await are(lines, 3);
    for (const name of ["Disconnect", "Capture", "Pull cable", "Plug cable", "Card out", "Card in", "Press shutter"]) {
      await are(page.getByRole("button", { name }), 1);
    }
  }));

test("the room is told in pictures", () =>
  look(standIn.url, async (page) => {
    standIn.ready();
    await page.getByText("54.0 GB free.", { exact: true }).waitFor();
    standIn.add({ bytes: 20_000_000, kind: "raw", format: "arw", pair: "a" });
    standIn.add({ bytes: 7_000_000, pair: "a" });
    await page.getByText("Room for about 2,000 pictures, 54.0 GB free.").waitFor();
  }));

test("each control of the virtual camera sends its line, and shows it for a scene or a test", () =>
  look(
    standIn.url,
    async (page) => {
      const { button, choice, field, virtual } = on(page);
      await page.locator(".badge", { hasText: "Virtual camera" }).waitFor();
      for (const name of ["Pull cable", "Plug cable", "Card out", "Card in", "Press shutter"]) {
        await button(name).click();
      }
      await choice("Dial").selectOption("raw");
      await field("Scene line").fill('next 2 file late 10s named "it\'s.JPG"');
      await field("Scene line").press("Enter");
      await virtual.getByText("camera-sim 'next 2 file late 10s named \"it'\\''s.JPG\"'").waitFor();
      standIn.answers["simulate"] = () => ({ lines: ['error: "frobnicate" is no command'] });
      await field("Scene line").fill("frobnicate");
      await button("Send").click();
      await reads(virtual, 'error: "frobnicate" is no command');
      assert.deepEqual(
        askedFor("simulate").map(({ line }) => line),
        [
          "unplug",
          "plug",
          "card out",
          "card in",
          "shutter",
          "dial raw",
          'next 2 file late 10s named "it\'s.JPG"',
          "frobnicate",
        ],
      );
      const turned = virtual.getByRole("listitem").filter({ hasText: "camera-sim dial raw" });
      await turned.getByRole("button", { name: "Copy", exact: true }).click();
      await reads(virtual, "Copied");
      assert.equal(await page.evaluate(() => navigator.clipboard.readText()), "camera-sim dial raw");
    },
    { permissions: ["clipboard-read", "clipboard-write"] },
  ));

test("a real camera has no badge and no panel", () =>
  look(standIn.url, async (page) => {
    standIn.change({ simulated: false, camera: "MODEL-A", state: "ready" });
    await reads(on(page).status, "MODEL-A");
    await are(on(page).virtual, 0);
    await are(page.locator(".badge"), 0);
  }));

test("names and texts from the camera are text, never markup", () =>
  look(standIn.url, async (page) => {
    const { status, pictures, problems } = on(page);
    const markup = '<img src=x onerror="document.title=1"><b>bold</b>';
    standIn.change({
      state: "ready",
      camera: markup,
      problems: [{ code: "camera-error", severity: "error", text: markup, advice: markup, sdk: null, shot: null }],
    });
    standIn.line("<", markup);
    standIn.add({ path: `${folder}/${markup}.JPG`, cameraName: markup });
    await reads(status, markup);
    await reads(problems, markup);
    await are(pictures, 1);
    assert.equal(await page.locator("b, img[src=x]").count(), 0);
    assert.equal(await page.title(), "Camera");
  }));

test("the record can be downloaded, with names and without", () =>
  look(standIn.url, async (page) => {
    for (const [name, address] of [
      ["with names", "/record"],
      ["without names", "/record?redacted=1"],
    ] as const) {
      const [download] = await Promise.all([
        page.waitForEvent("download"),
        page.getByRole("link", { name, exact: true }).click(),
      ]);
      assert.equal(new URL(download.url()).pathname + new URL(download.url()).search, address);
    }
  }));
