// The page: what stands where.

import { useLayoutEffect } from "preact/hooks";
import { Glance } from "./glance/glance";
import { Problems } from "./glance/problems";
import { Settings } from "./glance/settings";
import { VirtualCamera } from "./glance/virtual_camera";
import { useStore } from "./parts/hooks";
import { Sheet } from "./sheet/sheet";
import { TimeLine } from "./timeline/time_line";
import type { Session } from "./told/session";
import { useShutter } from "./glance/shutter";

/** What the space bar does something else with. */
const takesSpace = 'input, select, textarea, summary, button:not([aria-disabled="true"])';

export function Page({ session }: { session: Session }) {
  const { store } = session;
  const { told } = store;
  useStore(store);
  const shutter = useShutter(session);

  // With the drawing that lets the shutter be pressed, not behind it.
  useLayoutEffect(() => {
    const press = (event: KeyboardEvent): void => {
      const isFree = !(event.target as Element).matches(takesSpace) && document.querySelector("dialog[open]") === null;
      const isPlain = !event.ctrlKey && !event.altKey && !event.metaKey && !event.shiftKey;
      if (event.code === "Space" && isPlain && isFree) {
        event.preventDefault();
        if (!event.repeat) {
          shutter.press();
        }
      }
    };
    document.addEventListener("keydown", press);
    return () => document.removeEventListener("keydown", press);
  }, [shutter.press]);

  return (
    <>
      <Glance session={session} shutter={shutter} />
      <main>
        <Sheet store={store} />
        <div class="beside">
          <Problems told={told} store={store} />
          <Settings session={session} />
          {told.state?.simulated && <VirtualCamera session={session} />}
        </div>
        <TimeLine store={store} />
      </main>
    </>
  );
}
