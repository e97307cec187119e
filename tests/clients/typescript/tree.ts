// Where the tests find what they are about.

import { fileURLToPath } from "node:url";

/** The top of the tree. The tests are compiled into clients/typescript/dist-tests. */
export const root = fileURLToPath(new URL("../../../", import.meta.url));
/** The build whose programs are used. */
export const build = process.env["CAMERA_WORKER_BUILD"] ?? `${root}build/dev`;
export const tether = `${build}/bin/tether`;
