// The top of the page: what the session is doing and for how long, and the three buttons that matter.

import { useEvery } from "../parts/hooks";
import { howLong } from "../parts/words";
import type { Session } from "../told/session";
import type { Told } from "../told/store";
import type { Shutter } from "./shutter";

const sentences: Record<string, string> = {
  down: "Nothing is running.",
  starting: "Starting the worker.",
  idle: "No camera is connected.",
  opening: "Looking for a camera.",
  settling: "Setting up the camera.",
  ready: "Ready to shoot: press Capture or the space bar.",
  lost: "The camera went away a moment ago; it may come back.",
  closing: "Letting go of the camera.",
  ending: "Waiting for files that are on their way.",
};

function unreachable({ reach }: Told): string {
  if (!(reach instanceof Error)) {
    return "One moment.";
  }
  return reach.message.endsWith(" 403")
    ? "This address is no longer valid. Open the one that tether console has printed."
    : "No answer. Is tether console running? Trying again.";
}

export function Glance({ session, shutter }: { session: Session; shutter: Shutter }) {
  const { store } = session;
  const { told } = store;
  useEvery(1000);
  const { state } = told;
  const isReached = told.reach === "reached" && state !== undefined;
  const word = isReached ? state.state : told.reach instanceof Error ? "unreachable" : "loading";
  const under = [...told.shots.values()].filter(({ status }) => status === "fired").map(({ shot }) => shot);
  const since = told.states.at(-1);
  const canConnect = isReached && !["ready", "settling", "opening", "ending"].includes(state.state);
  const canDisconnect = isReached && !["ending", "down", "starting"].includes(state.state);

  return (
    <header class="glance">
      <h1 class="unseen">Camera</h1>
      {state?.simulated && <p class="badge">Virtual camera</p>}
      <div class="doing">
        <p role="status" data-state={word}>
          <strong>{word}</strong>
          {isReached && state.camera !== null && <span class="camera"> {state.camera}</span>}
          <span class="sentence">
            {" "}
            {isReached
              ? under.length > 0
                ? `Shot ${under.join(", ")} is under way.`
                : sentences[state.state]
              : unreachable(told)}
          </span>
        </p>
        {isReached && since && <p class="since">for {howLong(store.now() - since.atMs)}</p>}
        {isReached && state.restarts > 0 && (
          <p class="since">
            {state.restarts === 1 ? "the worker was replaced once" : `the worker was replaced ${state.restarts} times`}
          </p>
        )}
      </div>
      <div class="buttons">
        <button type="button" aria-disabled={!canConnect} onClick={() => canConnect && void session.ask("connect", {})}>
          Connect
        </button>
        <button
          type="button"
          aria-disabled={!canDisconnect}
          onClick={() => canDisconnect && void session.ask("disconnect", {})}
        >
          Disconnect
        </button>
        <button
          type="button"
          class="shutter"
          aria-disabled={!shutter.isFree}
          aria-keyshortcuts="Space"
          title="The space bar does the same"
          onClick={shutter.press}
        >
          Capture
        </button>
      </div>
    </header>
  );
}
