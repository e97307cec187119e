// A long afternoon with the virtual camera: 50 shots, while everything goes wrong that can.

import assert from "node:assert/strict";
import { mkdir, readdir, stat } from "node:fs/promises";
import { join } from "node:path";
import { test } from "node:test";
import { openCamera, startVirtualCamera, type Picture, type Shot } from "camera-worker";
import { visible } from "./conversation.js";
import { delivered, inNewFolder, next, quick, take, tetherProcess, untilState, workerProcess } from "./session.js";
import { tether } from "./tree.js";

const shots = 50;

const promise = "50 pairs, pulled cables, cards, killed processes and new folders: nothing is lost, nothing comes twice";
test(promise, { timeout: 600_000 }, () =>
  inNewFolder(async (top) => {
    const folders = ["morning", "noon", "evening"].map((name) => join(top, name));
    const journal = join(top, "journal");
    await Promise.all(folders.map((folder) => mkdir(folder)));
    await using virtual = await startVirtualCamera(quick, { patience: 60_000 });
    await using camera = await openCamera({
      folder: folders[0]!,
      virtual,
      tether,
      fileType: "both",
      environment: { CAMERA_SIM_JOURNAL: journal },
    });
    const pictures = take(camera.pictures());
    const sameAgain = take(camera.pictures({ after: "" }));
    await camera.connect();

    const fired = (): Promise<Shot> => next(camera, "shot", (shot) => shot.status === "fired");
    const gone = (): Promise<unknown> => next(camera, "problem", (problem) => problem.code === "tether-gone");
    /** Done, and seen to be done: the next shot must not meet it. */
    const losing = async (act: () => Promise<unknown>): Promise<void> => {
      const lost = next(camera, "state", ({ state }) => state !== "ready");
      await act();
      await lost;
    };
    const killWorker = (): Promise<void> => losing(async () => process.kill(await workerProcess(), "SIGKILL"));
    const killTether = (): Promise<unknown> =>
      Promise.all([gone(), tetherProcess().then((pid) => process.kill(pid, "SIGKILL"))]);
    let interrupted = 0;

    // What is done before a shot, and while it is under way. A shot that nothing is done to must be complete.
    const before: Record<number, () => Promise<unknown>> = {
      8: () => virtual.do("card out"),
      11: () => virtual.do("card in"),
      18: () => camera.configure({ folder: folders[1]! }),
      23: () => losing(() => virtual.do("unplug")).then(() => virtual.do("plug")),
      30: () => camera.configure({ saveDestination: "both" }),
      // Until the destination has changed, a shot may be sent to the card that is out.
      32: () => {
        const changed = next(camera, "state", ({ saveDestination }) => saveDestination.inForce === "disk");
        return virtual.do("card out").then(() => changed);
      },
      34: () => virtual.do("card in"),
      37: () => camera.configure({ folder: folders[2]!, saveDestination: "disk" }),
    };
    const meanwhile: Record<number, () => Promise<unknown>> = {
      5: () => losing(() => virtual.do("unplug")).then(() => virtual.do("plug")),
      14: killWorker,
      20: killTether,
      27: () => losing(() => virtual.do("unplug reconnecting")).then(() => virtual.do("plug")),
      33: killWorker,
      40: killTether,
      43: () => losing(() => virtual.do("flap 3")),
      46: () => virtual.do("card out").then(() => virtual.do("card in")),
    };

    const complete: Shot[] = [];
    for (let number = 1; number <= shots; number += 1) {
      await before[number]?.();
      await untilState(camera, "ready");
      const release = fired();
      // The files of a shot that something is done to may never come.
      const shot = camera.capture({ tag: `shot ${number}`, expires: 60, patience: meanwhile[number] ? 2 : 120 });
      shot.catch(() => {});
      await release;
      await meanwhile[number]?.();
      const result = await shot.catch((problem: { code: string }) => {
        assert.equal(problem.code, "tether-gone");
        interrupted += 1;
      });
      if (result?.status === "complete") {
        complete.push(result);
      }
      assert.ok(meanwhile[number] || result?.status === "complete", `shot ${number}: ${JSON.stringify(result)}`);
    }
    await untilState(camera, "ready");
    assert.equal((await camera.close()).worker, "quit");

    // Each picture came once, the same to every reader, and lies where it says.
    const all = await pictures;
    const paths = all.map(({ path }) => path);
    assert.equal(new Set(all.map(({ id }) => id)).size, all.length);
    assert.equal(new Set(paths).size, all.length);
    const inOrder = (list: Picture[]): string[] => list.map(({ id }) => id).sort();
    assert.deepEqual(inOrder(await sameAgain), inOrder(all));
    for (const { path, bytes, whole } of all) {
      assert.ok(whole, path);
      assert.equal((await stat(path)).size, bytes, path);
    }

    // All that lies there came, all that the camera handed over lies there, and nothing is left on its way.
    const lying = (await Promise.all(folders.map(visible))).flat();
    assert.deepEqual(lying.sort(), [...paths].sort());
    assert.deepEqual(all.map(({ cameraName }) => cameraName).sort(), (await delivered(journal)).sort());
    for (const folder of folders) {
      const incoming = await readdir(join(folder, ".incoming"), { withFileTypes: true });
      for (const { name } of incoming.filter((entry) => entry.isDirectory())) {
        assert.deepEqual(await visible(join(folder, ".incoming", name)), []);
      }
      assert.ok(paths.some((path) => path.startsWith(folder)), `pictures in ${folder}`);
    }

    // Each complete shot has both halves, told once, and the two kills of tether each failed one shot at most.
    for (const shot of complete) {
      const halves = all.filter(({ tag }) => tag === shot.tag);
      assert.deepEqual(halves.map(({ kind }) => kind).sort(), ["developed", "raw"], shot.tag);
      assert.equal(new Set(halves.map(({ pair }) => pair)).size, 1);
    }
    assert.ok(complete.length >= shots - Object.keys(meanwhile).length);
    assert.ok(interrupted <= 2);

    // A host that starts again has what it missed, and no more.
    const half = all.filter(({ path }) => path.startsWith(folders[2]!));
    const known = half[Math.floor(half.length / 2)]!;
    await using again = await openCamera({ folder: folders[2]!, virtual, tether });
    const behind = half.slice(half.indexOf(known) + 1);
    assert.deepEqual(await take(again.pictures({ after: known.id }), behind.length), behind);
    await again.connect();
    const [later] = await Promise.all([take(again.pictures({ after: behind.at(-1)!.id }), 1), again.capture()]);
    assert.ok(!all.some(({ id }) => id === later[0]!.id));
  }));
