// What the time line shows, worked out of what was told. Times are milliseconds on the clock of the lines.

import type { Picture, Problem } from "camera-worker/page";
import { formatName } from "../told/shots";
import type { At, Call, Told } from "../told/store";

export interface Stretch {
  from: number;
  /** undefined: it goes on. */
  to: number | undefined;
}

export interface FileBar extends Stretch {
  name: string;
  to: number;
  afterMs: number;
}

export interface ShotBars {
  shot: number;
  status: string;
  /** The command. */
  from: number;
  halfPress: Stretch;
  /** undefined: it has not come to that. */
  release: { from: number; to: number } | undefined;
  files: FileBar[];
  /** Up to when it waits, or waited in vain, for files. */
  waits: Stretch | undefined;
  problems: Problem[];
}

/** How long the worker holds the release, and how long one shutter sequence takes at most. */
const releaseTakes = 35;
const sequenceTakes = 3_000;
/** How far the time of day and the clock of the lines may be apart. */
const clocksDiffer = 400;

/** The index of the first item that is not before the time. */
export function firstFrom(list: readonly { atMs: number }[], atMs: number): number {
  let low = 0;
  let high = list.length;
  while (low < high) {
    const middle = (low + high) >> 1;
    if (list[middle]!.atMs < atMs) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

function find<T extends { atMs: number }>(
  list: readonly T[],
  from: number,
  to: number,
  is: (item: T) => boolean,
): T | undefined {
  for (let index = firstFrom(list, from); index < list.length && list[index]!.atMs <= to; ++index) {
    if (is(list[index]!)) {
      return list[index];
    }
  }
  return undefined;
}

const isCall =
  (begin: string) =>
  ({ call }: Call): boolean =>
    call.startsWith(begin);

/** Files by the number of their shot. */
function picturesByShot(told: Told): Map<number, Picture[]> {
  const shots = new Map<number, Picture[]>();
  for (const picture of told.pictures.values()) {
    if (picture.shot !== null) {
      shots.set(picture.shot, [...(shots.get(picture.shot) ?? []), picture]);
    }
  }
  return shots;
}

/** The shots that were fired since the start, oldest first. */
export function shotBars(told: Told): ShotBars[] {
  const { zero } = told;
  if (zero === undefined) {
    return [];
  }
  const pictures = picturesByShot(told);
  const failures = new Map(told.problems.map(({ atMs, what }) => [what.shot, atMs]));
  return [...told.shots.values()]
    .filter(({ firedAt }) => firedAt !== null)
    .map(({ shot, status, firedAt, problems }) => {
      const fired = Date.parse(firedAt!) - zero;
      const command = find(
        told.lines,
        fired - clocksDiffer,
        fired + clocksDiffer,
        ({ direction, text }) => direction === ">" && text === "CAPTURE",
      );
      const from = command?.atMs ?? fired;
      const sent = find(told.lines, from, from + sequenceTakes, ({ text }) =>
        text.startsWith("REMOTE_CAPTURED|"),
      )?.atMs;
      // The journal of the virtual camera knows it to the millisecond.
      const half = find(told.calls, from, from + sequenceTakes, isCall("SetDeviceProperty 0x0001 2"));
      const down = find(told.calls, half?.atMs ?? from, from + sequenceTakes, isCall("SendCommand 0 1"));
      const up = find(told.calls, down?.atMs ?? from, from + sequenceTakes, isCall("SendCommand 0 0"));
      const pressed = down?.atMs ?? (sent === undefined ? undefined : sent - releaseTakes);
      const release =
        pressed === undefined ? undefined : { from: pressed, to: up?.atMs ?? sent ?? pressed + releaseTakes };
      const begin = release?.to ?? from;
      const files = (pictures.get(shot) ?? [])
        .filter(({ afterMs }) => afterMs !== null)
        .map((picture) => ({
          name: formatName(picture),
          from: begin,
          to: from + picture.afterMs!,
          afterMs: picture.afterMs!,
        }))
        .sort((one, other) => one.to - other.to);
      const failed = failures.get(shot);
      const waits =
        status === "fired"
          ? { from: begin, to: undefined }
          : files.length === 0 || status === "incomplete"
            ? { from: begin, to: Math.max(failed ?? begin, begin) }
            : undefined;
      return {
        shot,
        status,
        from,
        halfPress: { from: half?.atMs ?? from, to: release?.from },
        release,
        files,
        waits,
        problems,
      };
    });
}

/** When its last file came, or nothing more was waited for; the time given, while it waits. */
export const shotEnd = ({ from, release, files, waits }: ShotBars, now: number): number =>
  Math.max(release?.to ?? from, ...files.map(({ to }) => to), waits ? (waits.to ?? now) : from);

/** When a setting in force became another. */
export function settingChanges(told: Told): At<string>[] {
  const inForce = new Map<string, string>();
  const changes: At<string>[] = [];
  for (const { direction, text, atMs } of told.lines) {
    const [, name, word] = (direction === "<" && /^(SAVE_DEST|FILE_TYPE)\|(.*)$/.exec(text)) || [];
    if (name !== undefined && inForce.get(name) !== word) {
      inForce.set(name, word!);
      changes.push({ atMs, what: `${name === "SAVE_DEST" ? "save to" : "type"} ${word}` });
    }
  }
  return changes;
}

/** Each state with its end. */
export const stateStretches = ({ states }: Told): (Stretch & { state: string })[] =>
  states.map(({ atMs, what }, index) => ({ from: atMs, to: states[index + 1]?.atMs, state: what }));

/** Pictures that nobody asked for. */
export function unasked(told: Told): At<string>[] {
  const { zero } = told;
  return zero === undefined
    ? []
    : [...told.pictures.values()]
        .filter(({ shot }) => shot === null)
        .map((picture) => ({ atMs: Date.parse(picture.at) - zero, what: `unasked ${picture.cameraName}` }))
        .filter(({ atMs }) => atMs >= 0);
}

/** Where every SDK call is that came back, or will: callbacks are written when they begin. */
export const isCallback = ({ thread }: Call): boolean => thread !== "main";

const memory = new Map<(told: Told) => unknown, { version: string; value: unknown }>();

/** What the function gives, worked out again only when something was told of what it looks at. */
export function remembered<T>(told: Told, work: (told: Told) => T): T {
  const version = [
    told.zero,
    told.picturesVersion,
    told.lines.at(-1)?.number,
    told.calls.length,
    told.calls.at(-1)?.atMs,
    told.states.length,
    told.problems.length,
  ].join();
  const known = memory.get(work);
  if (known?.version === version) {
    return known.value as T;
  }
  const value = work(told);
  memory.set(work, { version, value });
  return value;
}
