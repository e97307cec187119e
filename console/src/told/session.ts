// What the page asks of the session, and what it does with the answers.

import { CameraProblem, openPage, type Camera, type Methods, type PageOptions, type Problem } from "camera-worker/page";
import { createStore, type Space, type Store } from "./store";

export interface Session {
  readonly store: Store;
  /** Asks, and tells what went wrong beside the problems. Resolved in any case; undefined: it went wrong. */
  ask<M extends keyof Methods>(
    method: M,
    parameters: Methods[M]["parameters"],
  ): Promise<Methods[M]["result"] | undefined>;
}

/** Milliseconds between two looks at the disk. */
const spaceEvery = 15_000;

/** Milliseconds before something that went wrong is tried again. */
const again = 1_000;
/** Seconds beyond its time-out that an answer may take: requests wait for one of the browser's few connections. */
const grace = 30;

const pause = (milliseconds: number): Promise<void> => new Promise((resolve) => setTimeout(resolve, milliseconds));

async function opened(options: PageOptions, store: Store): Promise<Camera> {
  for (;;) {
    try {
      return await openPage(options);
    } catch {
      // Why nobody answers is told by reach. What was heard so far is told again.
      await pause(again);
      store.hear("missed", {});
    }
  }
}

/** What lies at the address beside the requests; undefined when it cannot be had now. */
async function fact<T>(name: string): Promise<T | undefined> {
  try {
    const response = await fetch(name, { credentials: "same-origin" });
    return response.ok ? ((await response.json()) as T) : undefined;
  } catch {
    return undefined;
  }
}

/** An error as it stands beside problems that were told. */
function asProblem(error: unknown): Problem {
  if (error instanceof CameraProblem) {
    const { code, severity, text, advice, sdk, shot } = error;
    return { code: code as Problem["code"], severity, text, advice, sdk, shot };
  }
  const text = error instanceof Error ? error.message : String(error);
  return { code: "camera-error", severity: "error", text, advice: "", sdk: null, shot: null };
}

export function openSession(): Session {
  const store = createStore();

  const look = async (): Promise<void> => {
    const space = await fact<Space>("space");
    if (space) {
      store.set({ space });
    }
  };
  const synchronise = async (): Promise<void> => {
    const clock = await fact<{ atMs: number; at: string }>("clock");
    if (clock) {
      store.set({ zero: Date.parse(clock.at) - clock.atMs });
    }
    await look();
  };

  let folder: string | undefined;
  let listing = new AbortController();
  /** The folder's earlier pictures, and those to come. */
  const list = async (): Promise<void> => {
    listing.abort();
    listing = new AbortController();
    const { signal } = listing;
    while (!signal.aborted) {
      try {
        for await (const picture of (await camera).pictures({ after: "", signal })) {
          store.hear("picture", picture);
        }
        return;
      } catch {
        await pause(again);
      }
    }
  };

  const options: PageOptions = {
    url: new URL(".", location.href),
    events: "events?after=0&lines=1",
    grace,
    reach(how) {
      const was = store.told.reach;
      store.set({ reach: how });
      if (how === "reached" && was !== how) {
        void synchronise();
      }
    },
    on: {
      notification({ method, parameters }) {
        store.hear(method, parameters);
        if (method === "missed") {
          void synchronise();
        }
      },
      state(state) {
        // While it starts, the folder is shown as it was given.
        if (state.state !== "down" && state.state !== "starting" && state.folder !== folder) {
          folder = state.folder;
          void list();
          void look();
        }
      },
      shot(shot) {
        if (shot.status !== "fired") {
          void look();
        }
      },
    },
  };
  const camera = opened(options, store);
  setInterval(() => {
    if (document.visibilityState === "visible") {
      void look();
    }
  }, spaceEvery);

  return {
    store,
    async ask(method, parameters) {
      try {
        return await (await camera).request(method, parameters);
      } catch (error) {
        const problem = asProblem(error);
        const stands = store.told.state?.problems.some(
          ({ code, text }) => code === problem.code && text === problem.text,
        );
        const wasTold = store.told.problems.at(-1)?.what.text === problem.text;
        if (!stands && !wasTold) {
          store.hear("problem", { ...problem, atMs: store.now() });
        }
        return undefined;
      }
    },
  };
}
