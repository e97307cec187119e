// The virtual camera as the test of a host has it.

import assert from "node:assert/strict";
import { access } from "node:fs/promises";
import { dirname } from "node:path";
import { test } from "node:test";
import { openCamera, startVirtualCamera } from "camera-worker";
import { inNewFolder, next, quick, untilState, workerProcess } from "./session.js";
import { build, tether } from "./tree.js";

test("what the test says happens to the host's camera, and state() tells of it", () =>
  inNewFolder(async (folder) => {
    await using virtual = await startVirtualCamera(quick);
    await using camera = await openCamera({ folder, virtual, tether, saveDestination: "both" });
    await camera.connect();
    assert.ok((await virtual.state()).includes("session open"));
    const missing = next(camera, "problem", ({ code }) => code === "card-missing");
    assert.deepEqual(await virtual.do("card out"), []);
    assert.notEqual((await missing).advice, "");
    assert.ok((await virtual.state()).some((line) => line.includes("card out")));
  }));

test("a line that the camera does not take is rejected in its own words", () =>
  inNewFolder(async (folder) => {
    await using virtual = await startVirtualCamera(quick);
    await using camera = await openCamera({ folder, virtual, tether });
    assert.equal(camera.state.state, "idle");
    await assert.rejects(virtual.do("fly"), /error: .*"fly"/);
  }));

test("it is there again after its worker was replaced", () =>
  inNewFolder(async (folder) => {
    await using virtual = await startVirtualCamera([...quick, "camera MODEL-A over USB, card in"]);
    await using camera = await openCamera({ folder, virtual, tether });
    await camera.connect();
    assert.equal(camera.state.camera, "MODEL-A");
    const lost = next(camera, "state", ({ state }) => state !== "ready");
    process.kill(await workerProcess(), "SIGKILL");
    await lost;
    assert.ok((await virtual.state()).some((line) => line.includes("MODEL-A")));
    await untilState(camera, "ready");
  }));

test("without a host that has it open, a line fails after its patience", async () => {
  await using virtual = await startVirtualCamera(quick, { patience: 1 });
  await assert.rejects(virtual.do("card out"), /no worker has it open/);
});

test("a host that names its worker gets the camera by its variables", () =>
  inNewFolder(async (folder) => {
    const worker = `${build}/Contents/MacOS/sony-worker`;
    await using virtual = await startVirtualCamera("timing instant\npicture 600x400\nno camera", { worker });
    assert.equal(virtual.worker, worker);
    await using camera = await openCamera({ folder, worker, environment: virtual.environment, tether });
    const missing = next(camera, "problem", ({ code }) => code === "camera-not-found");
    const connected = camera.connect();
    await missing;
    await virtual.do("camera MODEL-B over USB");
    assert.equal((await connected).camera, "MODEL-B");
  }));

test("close() removes what was made for it", async () => {
  const virtual = await startVirtualCamera(quick);
  const made = dirname(virtual.environment["CAMERA_SIM_SCENE"]!);
  await access(made);
  await virtual.close();
  await assert.rejects(access(made), { code: "ENOENT" });
});
