// Bundles the page into dist/: flat, without source maps, and with nothing that comes from elsewhere.

import { build } from "esbuild";
import { copyFile, mkdir, rm } from "node:fs/promises";
import { fileURLToPath } from "node:url";

const here = (path) => fileURLToPath(new URL(path, import.meta.url));

await rm(here("dist"), { recursive: true, force: true });
await mkdir(here("dist"));
await build({
  entryPoints: { page: here("src/main.tsx") },
  outdir: here("dist"),
  bundle: true,
  minify: true,
  format: "esm",
  target: ["es2022", "chrome100", "firefox115", "safari15.4"],
  // Comments of licences go beside the code, where they are read.
  legalComments: "eof",
  tsconfig: here("tsconfig.json"),
  logLevel: "warning",
});
await build({ entryPoints: [here("src/page.css")], outdir: here("dist"), minify: true, logLevel: "warning" });
for (const name of ["index.html", "icon.svg"]) {
  await copyFile(here(`src/${name}`), here(`dist/${name}`));
}
