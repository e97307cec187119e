// Everything the page knows: the notifications, applied in the order in which they came, and nothing else.

import type { Line, Picture, Problem, Shot, State } from "camera-worker/page";

/** One call to the camera's SDK, or one callback, from the virtual camera's journal. */
export interface Call {
  /** Milliseconds, on the clock of Line.atMs. */
  atMs: number;
  /** null: it has not come back, or is a callback. */
  durationMs: number | null;
  thread: string;
  call: string;
  result: string;
}

/** What was told of, and when. */
export interface At<T> {
  atMs: number;
  what: T;
}

/** A line of the wire, with a number that stays its own when older lines are dropped. */
export interface WireLine extends Line {
  number: number;
}

export interface Space {
  freeBytes: number;
  folder: string;
}

export interface Told {
  /** undefined: not yet asked; an error: why nobody answers. */
  reach: "reached" | Error | undefined;
  state: State | undefined;
  /** States by their words, each from when it began. */
  states: At<State["state"]>[];
  pictures: Map<string, Picture>;
  /** Counts changes of the pictures and of what is known of their shots. */
  picturesVersion: number;
  shots: Map<number, Shot>;
  problems: At<Problem>[];
  lines: WireLine[];
  calls: Call[];
  /** The time of day, in milliseconds since 1970, at which atMs was 0. */
  zero: number | undefined;
  space: Space | undefined;
}

/** Lines, and calls: what a whole day writes stays below, a flood is cut. The record has the lines. */
const mostKept = 20_000;
/** Milliseconds that telling what has been takes at most. */
const toldAgain = 1_500;
/** Of problems and states. */
const mostEvents = 2_000;

function keep<T>(list: T[], item: T, most: number): void {
  list.push(item);
  // A quarter at once, or each one that comes would move all.
  if (list.length > most * 1.25) {
    list.splice(0, list.length - most);
  }
}

const nothingYet = (): Pick<Told, "states" | "shots" | "problems" | "lines" | "calls"> => ({
  states: [],
  shots: new Map(),
  problems: [],
  lines: [],
  calls: [],
});

export interface Store {
  readonly told: Told;
  hear(method: string, parameters: unknown): void;
  /** Sets what does not come as a notification. */
  set(facts: Partial<Pick<Told, "reach" | "zero" | "space">>): void;
  /** Milliseconds on the clock of the lines, now. */
  now(): number;
  /** Calls back once a frame when something has changed, until the function that it gives back is called. */
  subscribe(listener: () => void): () => void;
}

export function createStore(clock: () => number = Date.now): Store {
  const told: Told = {
    reach: undefined,
    state: undefined,
    pictures: new Map(),
    picturesVersion: 0,
    zero: undefined,
    space: undefined,
    ...nothingYet(),
  };
  const listeners = new Set<() => void>();
  let latest = 0;
  let lineNumber = 0;
  let isDue = false;
  let reachedAt = 0;

  const changed = (): void => {
    if (isDue) {
      return;
    }
    isDue = true;
    requestAnimationFrame(() => {
      isDue = false;
      for (const listener of listeners) {
        listener();
      }
    });
  };

  const now = (): number => (told.zero === undefined ? latest : clock() - told.zero);

  /**
   * When a notification was told: it says so itself, or it comes now, or, while what has been is told, with the line
   * before.
   */
  const moment = ({ atMs }: { atMs?: unknown }): number => {
    if (typeof atMs === "number") {
      return atMs;
    }
    return performance.now() - reachedAt > toldAgain ? now() : latest;
  };

  const apply: Record<string, (parameters: never) => void> = {
    state(state: State) {
      const atMs = moment(state as { atMs?: number });
      // The first answer may have come before what is remembered was told.
      while (told.states.length > 0 && told.states.at(-1)!.atMs > atMs) {
        told.states.pop();
      }
      if (state.state !== told.states.at(-1)?.what) {
        keep(told.states, { atMs, what: state.state }, mostEvents);
      }
      told.state = state;
    },
    picture(picture: Picture) {
      told.pictures.set(picture.id, picture);
      told.picturesVersion += 1;
    },
    shot(shot: Shot) {
      told.shots.set(shot.shot, shot);
      told.picturesVersion += 1;
    },
    problem(problem: Problem) {
      keep(told.problems, { atMs: moment(problem as { atMs?: number }), what: problem }, mostEvents);
    },
    line(line: Line) {
      latest = Math.max(latest, line.atMs);
      keep(told.lines, { ...line, number: ++lineNumber }, mostKept);
    },
    call(call: Call) {
      latest = Math.max(latest, call.atMs);
      keep(told.calls, call, mostKept);
    },
    // What is remembered is told again, from its beginning.
    missed() {
      Object.assign(told, nothingYet());
      told.picturesVersion += 1;
    },
  };

  return {
    told,
    now,
    hear(method, parameters) {
      if (Object.hasOwn(apply, method)) {
        apply[method]!(parameters as never);
        changed();
      }
    },
    set(facts) {
      if (facts.reach === "reached" && told.reach !== "reached") {
        reachedAt = performance.now();
      }
      Object.assign(told, facts);
      changed();
    },
    subscribe(listener) {
      listeners.add(listener);
      return () => listeners.delete(listener);
    },
  };
}
