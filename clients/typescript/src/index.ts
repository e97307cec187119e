// One USB camera for a host application.
//
//     const camera = await openCamera({ folder: "shots", worker: "Booth.app/Contents/MacOS/sony-worker" });
//     camera.on("state", ({ state }) => show(state));
//     camera.on("problem", ({ text, advice }) => show(text, advice));
//     await camera.connect();
//
//     const shot = await camera.capture({ signal: AbortSignal.timeout(30_000) });
//     for (const { path, whole } of shot.pictures) console.log(path, whole);
//
//     for await (const picture of camera.pictures({ after: lastOneThatIHave })) importFile(picture.path);
//
//     await camera.close();    // or: await using camera = await openCamera(...)
//
// Every request fails with a CameraProblem (code, text, advice) when camera, worker or disk stand in its way.

import { resolve } from "node:path";
import { Camera, type CameraListeners } from "./camera.js";
import { childProcess } from "./child_process.js";
import type { Client, FileType, SaveDestination } from "./generated.js";
import { programs } from "./programs.js";
import type { Wishes } from "./transport.js";
import type { VirtualCamera } from "./virtual_camera.js";

export type { Camera, CameraEvents, CameraListeners } from "./camera.js";
export { childProcess, type ChildProcessOptions } from "./child_process.js";
export { overFetch, type FetchOptions } from "./fetch.js";
export * from "./generated.js";
export { CameraProblem, RequestError, type ClientCode } from "./problem.js";
export type { Connection, Listener, Transport, Wishes } from "./transport.js";
export { startVirtualCamera, type VirtualCamera, type VirtualCameraOptions } from "./virtual_camera.js";

export interface OpenOptions {
  /** Where pictures go; its last part is made where it is missing. */
  folder: string;
  /** The program that drives the camera. A host in production names it. */
  worker?: string;
  /** The virtual camera instead, from the package camera-worker-virtual, or one that startVirtualCamera() gave. */
  virtual?: boolean | VirtualCamera;

  /** Where the camera saves; "disk" when it is not given. */
  saveDestination?: SaveDestination;
  /** What the camera shoots; what is set on it when it is not given. */
  fileType?: FileType;
  /** How files are named: "{camera}", or such as "wedding/{date}-{n:4}". */
  name?: string;
  /** Seconds that a shot's files are waited for, 0.1 to 3600; 20. */
  patience?: number;
  /** A file that gets every line to and from the worker, with its time. */
  record?: string;
  /** Keeps paths and names out of the record. */
  redact?: boolean;

  /** The `tether` program; without it the package's own. */
  tether?: string;
  /** Variables for tether and the worker, beside those of this process. */
  environment?: Readonly<Record<string, string>>;
  /** Listeners that are to hear what is told before the camera is open, too. */
  on?: CameraListeners;
  /** Who is speaking, for the record. */
  client?: Client;
  /** Seconds beyond a request's time-out after which it fails with "no-answer"; 5. */
  grace?: number;
  /** Milliseconds before tether is started again, after its first end in a row, its second, and so on. */
  restarts?: readonly number[];
}

/** Starts `tether serve`. Rejected with a CameraProblem when that, its worker or the folder does not do. */
export async function openCamera(options: OpenOptions): Promise<Camera> {
  const { virtual = false, patience = 20, grace = 5, restarts = [0, 500, 1000, 2000, 4000, 8000] } = options;
  if ((options.worker === undefined) === !virtual) {
    throw new TypeError("openCamera takes either a worker or virtual: true");
  }
  const own = typeof virtual === "object" ? virtual : undefined;
  const tether = options.tether ?? programs.tether();
  const worker = options.worker ?? own?.worker ?? (await programs.virtualWorkerFor(tether));
  const wishes: Wishes = { folder: resolve(options.folder) };
  for (const wish of ["saveDestination", "fileType", "name"] as const) {
    if (options[wish] !== undefined) {
      Object.assign(wishes, { [wish]: options[wish] });
    }
  }
  const transport = childProcess({
    tether,
    arguments: [
      `--patience=${patience}`,
      ...(worker === undefined ? [] : [`--worker=${worker}`]),
      ...(options.record === undefined ? [] : [`--record=${options.record}`]),
      ...(options.redact ? ["--redact"] : []),
    ],
    environment: { ...own?.environment, ...options.environment },
  });
  const client = options.client ?? { name: "camera-worker for Node", version: "1.0.0" };
  return Camera.open(transport, { client, on: options.on ?? {}, wishes, patience, grace, restarts });
}
