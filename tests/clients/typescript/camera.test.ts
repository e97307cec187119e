// What a host relies on beside the conversations: how a camera is opened and closed, and what happens to processes.

import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { readFile } from "node:fs/promises";
import { join } from "node:path";
import { createInterface } from "node:readline";
import { test } from "node:test";
import { CameraProblem, RequestError, openCamera, startVirtualCamera, type Camera } from "camera-worker";
import { children, inNewFolder, next, quick, take, tetherProcess, untilState, workerProcess } from "./session.js";
import { root, tether } from "./tree.js";

/** A camera that is open and ready. */
async function withCamera(use: (camera: Camera, folder: string) => Promise<void>): Promise<void> {
  await inNewFolder(async (folder) => {
    await using virtual = await startVirtualCamera(quick);
    await using camera = await openCamera({ folder, virtual, tether });
    await camera.connect();
    await use(camera, folder);
  });
}

test("await using ends tether and its worker in order", () =>
  inNewFolder(async (folder) => {
    {
      await using camera = await openCamera({ folder, virtual: true, tether });
      assert.equal(camera.state.state, "idle");
      assert.equal(camera.initialized?.worker.simulated, true);
      assert.equal((await children(process.pid, "tether")).length, 1);
    }
    assert.deepEqual(await children(process.pid, "tether"), []);
  }));

test("close() says how it ended, is done once, and nothing can be asked after it", () =>
  withCamera(async (camera) => {
    const pictures = take(camera.pictures());
    await camera.capture();
    const [first, second] = await Promise.all([camera.close(), camera.close({ patience: 1 })]);
    assert.deepEqual(first, { worker: "quit", status: 0 });
    assert.equal(second, first);
    assert.equal(camera.state.state, "down");
    assert.equal((await pictures).length, 1);
    await assert.rejects(camera.capture(), { name: "CameraProblem", code: "closed" });
  }));

test("a tether that is not there is a problem with an advice", () =>
  inNewFolder(async (folder) => {
    const opening = openCamera({ folder, virtual: true, tether: join(folder, "nothing") });
    await assert.rejects(opening, (problem: unknown) => {
      assert.ok(problem instanceof CameraProblem);
      assert.equal(problem.code, "tether-missing");
      assert.match(problem.text, /nothing.*\.$/);
      assert.notEqual(problem.advice, "");
      return true;
    });
  }));

test("a worker that is not there is a problem", () =>
  inNewFolder(async (folder) => {
    const opening = openCamera({ folder, worker: join(folder, "nothing"), tether });
    await assert.rejects(opening, { name: "CameraProblem", code: "worker-missing" });
    assert.deepEqual(await children(process.pid, "tether"), []);
  }));

test("an option that tether does not take is a problem in tether's own words", () =>
  inNewFolder(async (folder) => {
    const opening = openCamera({ folder, virtual: true, tether, patience: 4000 });
    await assert.rejects(opening, { code: "tether-gone", text: /ended with status [1-9].*patience/i });
  }));

test("openCamera takes a worker or the virtual camera, not both and not neither", async () => {
  await assert.rejects(openCamera({ folder: "x" }), TypeError);
  await assert.rejects(openCamera({ folder: "x", worker: "y", virtual: true }), TypeError);
});

test("a parameter out of its range is a mistake of the host's, not a problem", () =>
  withCamera(async (camera) => {
    await assert.rejects(camera.capture({ patience: 0 }), (error: unknown) => {
      return error instanceof RequestError && error.code === -32602 && /patience/.test(error.message);
    });
  }));

test("a signal that was given before asks for nothing", () =>
  withCamera(async (camera) => {
    const told: string[] = [];
    camera.on("shot", ({ status }) => told.push(status));
    const reason = new Error("the guest has gone");
    await assert.rejects(camera.capture({ signal: AbortSignal.abort(reason) }), reason);
    await assert.rejects(take(camera.pictures({ signal: AbortSignal.abort(reason) })), reason);
    await camera.request("state", {});
    assert.deepEqual(told, []);
  }));

test("a signal ends pictures() while it waits", () =>
  withCamera(async (camera) => {
    const giving = new AbortController();
    const waiting = take(camera.pictures({ signal: giving.signal }));
    giving.abort();
    await assert.rejects(waiting, { name: "AbortError" });
  }));

test("a capture that is given up is cancelled at the camera", () =>
  withCamera(async (camera) => {
    await camera.simulate("next file late 5s");
    const giving = new AbortController();
    const over = next(camera, "shot", ({ status }) => status !== "fired");
    camera.on("shot", ({ status }) => status === "fired" && giving.abort());
    await assert.rejects(camera.capture({ signal: giving.signal }), { name: "AbortError" });
    const { status, problems } = await over;
    assert.equal(status, "none");
    assert.deepEqual(problems.map(({ code }) => code), ["cancelled"]);
  }));

test("a listener that throws keeps nobody else from hearing", () =>
  withCamera(async (camera) => {
    const thrown = new Error("a mistake of the host's");
    const stop = camera.on("state", () => {
      stop();
      throw thrown;
    });
    // Thrown where nobody catches it, it would end this test.
    const { queueMicrotask } = globalThis;
    const thrower = new Promise<() => void>((resolve) => (globalThis.queueMicrotask = resolve));
    try {
      const told = next(camera, "state");
      await camera.disconnect();
      await told;
    } finally {
      globalThis.queueMicrotask = queueMicrotask;
    }
    assert.throws(await thrower, thrown);
  }));

test("a listener that was taken away hears nothing more", () =>
  withCamera(async (camera) => {
    let heard = 0;
    const stop = camera.on("state", () => (heard += 1));
    stop();
    await camera.disconnect();
    assert.equal(heard, 0);
  }));

test("a worker that is killed is replaced, and the session is ready again", () =>
  withCamera(async (camera) => {
    const lost = next(camera, "state", ({ state }) => state !== "ready");
    process.kill(await workerProcess(), "SIGKILL");
    await lost;
    await untilState(camera, "ready");
    assert.equal((await camera.capture()).status, "complete");
  }));

test("a tether that is killed fails what waits at once, and is started again with the camera connected", () =>
  withCamera(async (camera) => {
    await camera.simulate("next file late 600s");
    const fired = next(camera, "shot");
    const shot = camera.capture({ patience: 3600 });
    await fired;
    process.kill(await tetherProcess(), "SIGKILL");
    await assert.rejects(shot, { name: "CameraProblem", code: "tether-gone", text: /SIGKILL/ });
    assert.equal(camera.state.state, "down");
    await untilState(camera, "ready");
    assert.equal((await camera.capture()).status, "complete");
  }));

test("settings outlive a tether that is killed", () =>
  withCamera(async (camera, folder) => {
    await camera.configure({
      folder: join(folder, "second"),
      fileType: "raw",
      saveDestination: "both",
      name: "-{n:3}",
    });
    process.kill(await tetherProcess(), "SIGKILL");
    await next(camera, "problem", ({ code }) => code === "tether-gone");
    await untilState(camera, "ready");
    assert.equal(camera.state.fileType.inForce, "raw");
    assert.equal(camera.state.saveDestination.inForce, "both");
    const { pictures } = await camera.capture();
    assert.deepEqual(pictures.map(({ path }) => path), [join(folder, "second", "-001.ARW")]);
  }));

test("a host that is killed leaves nothing running, and the next one has every picture", () =>
  inNewFolder(async (folder) => {
    await using virtual = await startVirtualCamera(quick);
    const host = spawn(process.execPath, [join(root, "clients/typescript/dist-tests/killed_host.js"), tether, folder], {
      stdio: ["ignore", "pipe", "inherit"],
      env: { ...process.env, ...virtual.environment },
    });
    const lines = createInterface(host.stdout)[Symbol.asyncIterator]();
    const first: string = (await lines.next()).value;
    await lines.next(); // a second shot is under way
    host.kill("SIGKILL");
    // Waits for the folder's lock, which the killed host's tether holds until it has ended.
    await using camera = await openCamera({ folder, virtual: true, tether });
    const [known] = await take(camera.pictures({ after: "" }), 1);
    assert.equal(known!.id, first);
    const [missed] = await take(camera.pictures({ after: first }), 1);
    assert.equal(missed!.cameraName, "DSC00002.JPG");
  }));

test("a Ctrl-C in the host's terminal is the host's to answer", () =>
  withCamera(async (camera) => {
    const groups = (await readFile(`/proc/${await tetherProcess()}/stat`, "utf8")).split(") ")[1]!.split(" ");
    const own = (await readFile("/proc/self/stat", "utf8")).split(") ")[1]!.split(" ");
    assert.notEqual(groups[2], own[2]);
    assert.equal((await camera.request("state", {})).state, "ready");
  }));

