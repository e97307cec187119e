// The shutter: what Capture and the space bar press.

import { useCallback, useState } from "preact/hooks";
import type { Session } from "../told/session";

export interface Shutter {
  press(): void;
  /** Whether a press fires a shot, now or after those that wait. */
  isFree: boolean;
}

/** Each waits on a connection of its own; a browser has six, and other requests need some. */
const mostWaiting = 3;

export function useShutter(session: Session): Shutter {
  const [waiting, setWaiting] = useState(0);
  const { told } = session.store;
  const canShoot = ["ready", "settling", "lost"].includes(told.state?.state ?? "");
  const isFree = told.reach === "reached" && canShoot && waiting < mostWaiting;
  const press = useCallback(() => {
    if (isFree) {
      setWaiting((count) => count + 1);
      void session.ask("capture", {}).finally(() => setWaiting((count) => count - 1));
    }
  }, [session, isFree]);
  return { press, isFree };
}
