// The camera for a page: a session that `tether console` holds, and that goes on when the page is left.

import { Camera, type CameraListeners } from "./camera.js";
import { overFetch, type FetchOptions } from "./fetch.js";

export type { Camera, CameraEvents, CameraListeners } from "./camera.js";
export { overFetch, type FetchOptions } from "./fetch.js";
export * from "./generated.js";
export { CameraProblem, RequestError, type ClientCode } from "./problem.js";
export type { Connection, Listener, Transport, Wishes } from "./transport.js";

export interface PageOptions extends FetchOptions {
  /** Listeners that are to hear what is told before the camera is open, too. */
  on?: CameraListeners;
  /** Seconds beyond a request's time-out after which it fails with "no-answer"; 5. */
  grace?: number;
}

/** Joins the session whose `rpc` and `events` lie at the address. */
export function openPage(options: PageOptions): Promise<Camera> {
  const { on = {}, grace = 5 } = options;
  const client = { name: "camera-worker for pages", version: "1.0.0" };
  return Camera.open(overFetch(options), { client, on, wishes: {}, patience: 20, grace, restarts: [] });
}
