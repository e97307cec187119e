// The time line: what happened when, and why there is no picture.

import { useEffect, useRef, useState } from "preact/hooks";
import type { GridMoves } from "../parts/grid";
import { useEvery, useSize } from "../parts/hooks";
import { preciseTime } from "../parts/words";
import type { Store, WireLine } from "../told/store";
import { Chart } from "./chart";
import { firstFrom } from "./happenings";
import type { Scale } from "./lanes";
import { Lines, shownText } from "./lines";
import { ShotsTable } from "./shots_table";

/** Milliseconds that can be seen at once. */
const spans = [500, 1e3, 2e3, 5e3, 10e3, 20e3, 60e3, 300e3, 1800e3, 7200e3];
const firstSpan = 5;
const spanName = (span: number): string =>
  span < 1000
    ? `${span} ms`
    : span < 60e3
      ? `${span / 1e3} s`
      : span < 3600e3
        ? `${span / 60e3} min`
        : `${span / 3600e3} h`;

/** Milliseconds between two drawings while it follows the time. */
const frameTime = matchMedia("(prefers-reduced-motion: reduce)").matches ? 1000 : 200;

export function TimeLine({ store }: { store: Store }) {
  const { told } = store;
  const [zoom, setZoom] = useState(firstSpan);
  /** The middle, when it does not follow the time. */
  const [middle, setMiddle] = useState<number>();
  const [picked, setPicked] = useState<WireLine>();
  const frame = useRef<HTMLDivElement>(null);
  const moves = useRef<GridMoves>(null);
  const { width } = useSize(frame);
  useEvery(middle === undefined && told.reach === "reached" ? frameTime : 0);

  const span = spans[zoom]!;
  const now = store.now();
  const to = middle === undefined ? now + span * 0.04 : middle + span / 2;
  const scale: Scale = { from: to - span, to, now, width, x: (atMs) => ((atMs - (to - span)) / span) * width };

  const move = (byMs: number): void => setMiddle((was) => (was ?? to - span / 2) + byMs);
  const closer = (by: number): void => setZoom((was) => Math.max(0, Math.min(spans.length - 1, was - by)));
  const follow = (): void => {
    setPicked(undefined);
    setMiddle(middle === undefined ? to - span / 2 : undefined);
  };
  const pick = (line: WireLine): void => {
    setPicked(line);
    setMiddle(line.atMs);
  };
  const pickNearest = (atMs: number): void => {
    const behind = firstFrom(told.lines, atMs);
    const [before, after] = [told.lines[behind - 1], told.lines[behind]];
    const nearest = before && (!after || atMs - before.atMs < after.atMs - atMs) ? before : after;
    if (nearest) {
      setPicked(nearest);
      moves.current!.show(String(nearest.number), false);
    }
  };

  // A wheel that turns sideways moves it, as it would any picture that is wider than its frame.
  useEffect(() => {
    const element = frame.current!;
    const turn = (event: WheelEvent): void => {
      const by = event.shiftKey ? event.deltaY : event.deltaX;
      if (by !== 0) {
        event.preventDefault();
        move((by / width) * span);
      }
    };
    element.addEventListener("wheel", turn, { passive: false });
    return () => element.removeEventListener("wheel", turn);
  });

  return (
    <section class="time-line" id="time-line" aria-label="Time line">
      <div class="head">
        <h2>Time line</h2>
        <div class="buttons">
          <button type="button" aria-pressed={middle === undefined} onClick={follow}>
            Follow
          </button>
          <button type="button" onClick={() => move(-span / 2)}>
            Earlier
          </button>
          <button type="button" onClick={() => move(span / 2)}>
            Later
          </button>
          <button type="button" aria-disabled={zoom === 0} onClick={() => closer(1)}>
            Closer
          </button>
          <button type="button" aria-disabled={zoom === spans.length - 1} onClick={() => closer(-1)}>
            Wider
          </button>
        </div>
        <p class="small">Showing {spanName(span)}</p>
      </div>
      <Chart told={told} scale={scale} picked={picked} frame={frame} onPick={pickNearest} onDrag={move} />
      <p class="picked-line">
        {picked && told.zero !== undefined ? (
          <>
            <span class="at">{preciseTime(new Date(told.zero + picked.atMs))}</span> <code>{shownText(picked)}</code>
          </>
        ) : (
          "Click a line, or the drawing, to see what happened then."
        )}
      </p>
      <Lines told={told} picked={picked} moves={moves} onPick={pick} />
      <ShotsTable told={told} />
    </section>
  );
}
