// What is in the package, and what its pages and examples say.

import assert from "node:assert/strict";
import { execFile } from "node:child_process";
import { mkdir, readFile, symlink, writeFile } from "node:fs/promises";
import { join } from "node:path";
import { test } from "node:test";
import { promisify } from "node:util";
import { startVirtualCamera } from "camera-worker";
import { visible } from "./conversation.js";
import { inNewFolder, quick } from "./session.js";
import { root, tether } from "./tree.js";

const run = promisify(execFile);
const home = join(root, "clients/typescript");
const environment = { ...process.env, CAMERA_WORKER_TETHER: tether };

const tsc = join(home, "node_modules/typescript/bin/tsc");
const options = ["--strict", "--target", "es2022", "--module", "nodenext", "--types", "node"];

/** A host's own folder, into which the package is installed, with these programs compiled. */
async function inHost(programs: Record<string, string>, use: (folder: string) => Promise<void>): Promise<void> {
  await inNewFolder(async (folder) => {
    await mkdir(join(folder, "node_modules/@types"), { recursive: true });
    await symlink(home, join(folder, "node_modules/camera-worker"));
    await symlink(join(home, "node_modules/@types/node"), join(folder, "node_modules/@types/node"));
    await writeFile(join(folder, "package.json"), '{"type": "module"}');
    const names = Object.keys(programs).map((name) => `${name}.ts`);
    await Promise.all(Object.values(programs).map((text, at) => writeFile(join(folder, names[at]!), text)));
    await run(process.execPath, [tsc, ...options, ...names], { cwd: folder }).catch((error: { stdout: string }) => {
      assert.fail(error.stdout);
    });
    await use(folder);
  });
}

test("nothing but the client is packed, and it needs no other package", async () => {
  const { stdout } = await run("npm", ["pack", "--dry-run", "--json", "--ignore-scripts"], { cwd: home });
  const packed = (JSON.parse(stdout) as [{ files: { path: string }[] }])[0].files.map(({ path }) => path);
  const wanted = /^(README\.md|package\.json|dist\/\w+\.(js|d\.ts))$/;
  assert.deepEqual(packed.filter((path) => !wanted.test(path)), []);
  assert.ok(packed.includes("dist/index.js") && packed.includes("dist/index.d.ts") && packed.includes("README.md"));
  const { dependencies, peerDependencies, optionalDependencies, devDependencies } = JSON.parse(
    await readFile(join(home, "package.json"), "utf8"),
  );
  assert.deepEqual([dependencies, peerDependencies, optionalDependencies], [undefined, undefined, undefined]);
  assert.ok(Object.values(devDependencies).every((version) => /^\d+\.\d+\.\d+$/.test(version as string)));
});

test("every version in the package's files is that of package.json", async () => {
  const { version } = JSON.parse(await readFile(join(home, "package.json"), "utf8"));
  for (const file of ["index", "page"]) {
    const text = await readFile(join(home, `src/${file}.ts`), "utf8");
    assert.deepEqual([...text.matchAll(/version: "(.*?)"/g)].map(([, found]) => found), [version], file);
  }
});

test("a page gets nothing of Node", async () => {
  const seen = new Set<string>();
  const look = async (file: string): Promise<void> => {
    if (!seen.has(file)) {
      seen.add(file);
      const text = await readFile(join(home, "dist", file), "utf8");
      const imported = [...text.matchAll(/from "(.*?)"|import\("(.*?)"\)/g)].map(([, plain, later]) => plain ?? later!);
      assert.deepEqual(imported.filter((name) => !name.startsWith("./")), [], file);
      await Promise.all(imported.map((name) => look(name.slice(2))));
    }
  };
  await look("page.js");
  assert.ok(seen.has("camera.js") && seen.has("fetch.js"));
});

const misuse = `
  import { openCamera, type CameraProblem } from "camera-worker";
  const camera = await openCamera({ folder: "x", worker: "y" });
  // @ts-expect-error: no such parameter
  await camera.capture({ when: "now" });
  // @ts-expect-error: no such file type
  await camera.configure({ fileType: "other" });
  // @ts-expect-error: no such event
  camera.on("weather", () => {});
  camera.on("problem", (problem: CameraProblem) => problem.advice.length);
  // @ts-expect-error: a shot has no mood
  camera.on("shot", ({ mood }) => mood);
  // @ts-expect-error: pictures() is no list
  camera.pictures()[0];`;

test("what README and example show compiles and does what they say, and what is wrong does not compile", async () => {
  const readme = await readFile(join(home, "README.md"), "utf8");
  const [first, second, ...more] = [...readme.matchAll(/```ts\n(.*?)```/gs)].map(([, text]) => text!);
  assert.equal(more.length, 0);
  const testing = `import { openCamera } from "camera-worker";\nconst folder = "test";\n${second}`;
  const booth = await readFile(join(home, "example/booth.ts"), "utf8");
  await using virtual = await startVirtualCamera(quick);
  // Full-size pictures take a busy machine longer than a shot waits.
  const env = { ...environment, CAMERA_SIM_SCENE: virtual.environment["CAMERA_SIM_SCENE"] };
  await inHost({ first: first!, testing, booth, misuse }, async (folder) => {
    const host = (...program: string[]): Promise<{ stdout: string }> =>
      run(process.execPath, program, { cwd: folder, env });

    assert.match((await host("first.js")).stdout, /opening[^]*ready[^]*complete \[\s*'.*\/shots\/DSC00001\.JPG'\s*\]/);
    assert.match((await host("testing.js")).stdout, /card out/);

    const { stdout } = await host("booth.js", "party");
    assert.equal([...stdout.matchAll(/^Pose \d: complete$/gm)].length, 4);
    const printed = [...stdout.matchAll(/^Printing (.*)$/gm)].map(([, path]) => path!);
    assert.deepEqual(printed.sort(), (await visible(join(folder, "party"))).sort());
    const failing = host("booth.js", "party", "no-worker");
    await assert.rejects(
      failing,
      (error: { code: number; stderr: string }) => error.code === 1 && /worker/i.test(error.stderr),
    );
  });
});

test("docs/hosts.md shows the hosts that are proven, and names every problem", async () => {
  const page = await readFile(join(root, "docs/hosts.md"), "utf8");
  const shown = (language: string): string[] =>
    [...page.matchAll(new RegExp(`\`\`\`${language}\\n(.*?)\`\`\``, "gs"))].map(([, text]) => text!);
  const [first, booth, ...more] = shown("ts");
  assert.equal(more.length, 0);
  for (const [text, file] of [
    [shown("cpp")[0]!, "host/example.cpp"],
    [shown("swift")[0]!, "clients/swift/Example/FirstHost.swift"],
    [booth!, "clients/typescript/example/booth.ts"],
  ] as const) {
    assert.ok(text.length > 500, file);
    assert.ok((await readFile(join(root, file), "utf8")).endsWith(`\n${text}`), file);
  }

  const codes = [...(await readFile(join(root, "catalogue/problems.json"), "utf8")).matchAll(/"code": "(.*?)"/g)];
  assert.ok(codes.length > 20);
  assert.deepEqual(codes.map(([, code]) => code!).filter((code) => !page.includes(`\`${code}\``)), []);

  await using virtual = await startVirtualCamera(quick);
  const env = { ...environment, CAMERA_SIM_SCENE: virtual.environment["CAMERA_SIM_SCENE"] };
  await inHost({ first: first! }, async (folder) => {
    const { stdout } = await run(process.execPath, ["first.js", "shots"], { cwd: folder, env });
    assert.match(stdout, /\/shots\/DSC00001\.JPG\n$/);
    const failing = run(process.execPath, ["first.js", "shots", "no-worker"], { cwd: folder, env });
    await assert.rejects(
      failing,
      (error: { code: number; stderr: string }) => error.code === 1 && /worker/i.test(error.stderr),
    );
  });
});

test("npx camera-worker is tether", async () => {
  const bin = join(home, "dist/bin.js");
  const { stdout } = await run(process.execPath, [bin, "--help"], { env: environment });
  assert.match(stdout, /doctor/);
  const plain = await run(tether, ["fly"]).catch((error: { code: number }) => error);
  assert.ok("code" in plain && plain.code > 0);
  await assert.rejects(run(process.execPath, [bin, "fly"], { env: environment }), { code: plain.code });
  const missing = run(process.execPath, [bin], { env: { ...process.env, CAMERA_WORKER_TETHER: "" } });
  await assert.rejects(missing, { code: 1, stderr: /CAMERA_WORKER_TETHER/ });
});
