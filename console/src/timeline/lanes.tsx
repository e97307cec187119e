// The lanes of the drawing. Each gets the scale, and draws what lies in it.

import type { ComponentChildren } from "preact";
import { duration } from "../parts/words";
import type { At, Call, Told, WireLine } from "../told/store";
import { firstFrom, isCallback, shotEnd, type ShotBars } from "./happenings";
import { textWidth } from "./text_width";

export interface Scale {
  from: number;
  to: number;
  now: number;
  width: number;
  x(atMs: number): number;
}

/** CSS pixels: of a row, and around a text. */
export const row = 17;
const around = 8;

const fits = (text: string, room: number, weight?: number): boolean => textWidth(text, weight) + around <= room;
const isSeen = (scale: Scale, from: number, to: number): boolean => to >= scale.from && from <= scale.to;

/** A stretch of time with its name, or the longest other words for it that there is room for. */
export function Bar(bar: {
  scale: Scale;
  from: number;
  to: number;
  y: number;
  kind: string;
  name: string;
  words?: string[];
  /** Up to where they may stand behind it. */
  limit?: number;
}) {
  const { scale, y } = bar;
  if (!isSeen(scale, bar.from, bar.to)) {
    return null;
  }
  const left = Math.max(-2, scale.x(bar.from));
  const width = Math.max(2.5, Math.min(scale.width + 2, scale.x(bar.to)) - left);
  const room = Math.max(width, (bar.limit ?? -Infinity) - left);
  const words = bar.words ?? [bar.name];
  const text = words.find((one) => fits(one, width)) ?? words.find((one) => fits(one, room - width));
  const isInside = text !== undefined && fits(text, width);
  return (
    <g class={`bar ${bar.kind}`}>
      <title>{`${bar.name}, ${duration(bar.to - bar.from)}`}</title>
      <rect x={left} y={y} width={width} height={row - 3} rx={2} />
      {text !== undefined && (
        <text
          class={isInside ? "inside" : "outside"}
          x={isInside ? Math.max(left, 0) + 5 : left + width + 4}
          y={y + row - 6.5}
        >
          {text}
        </text>
      )}
    </g>
  );
}

/**
 * Moments, each with its words where there is room up to the next one, or else in front. Those on one spot are counted.
 */
export function Moments<T>(lane: {
  scale: Scale;
  y: number;
  kind: (item: T) => string;
  text: (item: T) => string;
  items: readonly { atMs: number; item: T; lasts?: number }[];
}) {
  const { scale } = lane;
  const spots: { x: number; end: number; items: T[] }[] = [];
  for (const { atMs, item, lasts = 0 } of lane.items) {
    const x = scale.x(atMs);
    const spot = spots.at(-1);
    if (spot && x < spot.end + 2) {
      spot.items.push(item);
      spot.end = Math.max(spot.end, scale.x(atMs + lasts));
    } else {
      spots.push({ x, end: Math.max(x + 2.5, scale.x(atMs + lasts)), items: [item] });
    }
  }
  /** Where the words of the spot before end. */
  let taken = -Infinity;
  return (
    <>
      {spots.map(({ x, end, items }, index) => {
        const room = (spots[index + 1]?.x ?? Infinity) - end;
        const texts = items.map(lane.text);
        const names = [...new Set(texts.map((one) => one.split(/[ |:]/)[0]!))];
        const choices =
          items.length === 1
            ? [texts[0]!, names[0]!]
            : [names.join(", "), `${texts.length} × ${names[0]} …`, `${texts.length}`];
        const behind = choices.find((choice) => fits(choice, room));
        // Farther from the one before than from its own.
        const inFront = behind === undefined ? choices.find((choice) => fits(choice, x - taken - around)) : undefined;
        const text = behind ?? inFront;
        taken = end + (behind === undefined ? 0 : around + textWidth(behind));
        return (
          <g key={index} class={`moment ${lane.kind(items[0]!)}`}>
            <title>{texts.slice(0, 15).join("\n")}</title>
            <rect x={x} y={lane.y} width={end - x} height={row - 3} rx={1} />
            {text !== undefined && (
              <text
                class="outside"
                text-anchor={behind === undefined ? "end" : "start"}
                x={behind === undefined ? x - 3 : end + 3}
                y={lane.y + row - 6.5}
              >
                {text}
              </text>
            )}
          </g>
        );
      })}
    </>
  );
}

/** What is seen of a list that is in order, from a little before the left edge on. */
function seen<T extends { atMs: number }>(list: readonly T[], { from, to }: Scale): T[] {
  const before = (to - from) * 0.05 + 500;
  return list.slice(firstFrom(list, from - before), firstFrom(list, to + 1));
}

export function TextLane(lane: { scale: Scale; y: number; items: readonly At<string>[]; kind: string }) {
  const items = seen(lane.items, lane.scale).map(({ atMs, what }) => ({ atMs, item: what }));
  return <Moments scale={lane.scale} y={lane.y} items={items} kind={() => lane.kind} text={(text) => text} />;
}

export function WireLane({ scale, y, told }: { scale: Scale; y: number; told: Told }) {
  const lines = seen(told.lines, scale);
  const ways = ([">", "<"] as const).map((way) => lines.filter(({ direction }) => direction === way));
  const shown = (list: WireLine[]) => list.map((item) => ({ atMs: item.atMs, item }));
  const kind = (line: WireLine): string => (line.text.startsWith("ERROR|") ? "wire failed" : "wire");
  return (
    <>
      {ways.map((list, index) => (
        <Moments
          key={index}
          scale={scale}
          y={y + index * row}
          items={shown(list)}
          kind={kind}
          text={({ text }) => text}
        />
      ))}
    </>
  );
}

const failed = /^0x(?!00000000)[0-9A-F]{8}|^false|^hangs/;

export function CallLane({ scale, y, told }: { scale: Scale; y: number; told: Told }) {
  // A call that began long ago may still hang.
  const calls = [
    ...told.calls.slice(0, firstFrom(told.calls, scale.from - 500)).filter(({ result }) => result === "hangs"),
    ...seen(told.calls, scale),
  ];
  const shown = (list: Call[]) =>
    list.map((item) => ({
      atMs: item.atMs,
      item,
      lasts: item.durationMs ?? (item.result === "hangs" ? scale.now - item.atMs : 0),
    }));
  return (
    <>
      <Moments
        scale={scale}
        y={y}
        items={shown(calls.filter((call) => !isCallback(call)))}
        kind={({ result }) => (failed.test(result) ? "call failed" : "call")}
        text={({ call, result }) => (failed.test(result) ? `${call}: ${result}` : call)}
      />
      <Moments
        scale={scale}
        y={y + row}
        items={shown(calls.filter(isCallback))}
        kind={() => "callback"}
        text={({ call }) => call}
      />
    </>
  );
}

export function ShotLane({ scale, y, shots }: { scale: Scale; y: number; shots: readonly ShotBars[] }) {
  const drawn = shots.map((shot, index): ComponentChildren => {
    if (!isSeen(scale, shot.from, shotEnd(shot, scale.now))) {
      return null;
    }
    const name = `Shot ${shot.shot}`;
    const outcome = shot.status === "fired" ? "is under way" : shot.status === "none" ? "no picture" : shot.status;
    const x = Math.max(0, scale.x(shot.from));
    const next = shots[index + 1];
    const limit = next ? scale.x(next.from) : Infinity;
    const title = [`${name}, ${outcome}`, name, `${shot.shot}`].find((text) => fits(text, limit - x, 700));
    const halfPressEnd = shot.halfPress.to ?? scale.now;
    const held = duration(halfPressEnd - shot.halfPress.from);
    return (
      <g key={shot.shot} class={`shot ${shot.status}`} data-shot={shot.shot}>
        {title !== undefined && (
          <text class="title" x={x} y={y + row - 6}>
            {title}
          </text>
        )}
        <Bar
          scale={scale}
          from={shot.halfPress.from}
          to={halfPressEnd}
          y={y + row}
          kind="half-press"
          name="half-press"
          words={[`half-press ${held}`, "half-press", held]}
        />
        {shot.release && (
          <Bar
            scale={scale}
            {...shot.release}
            y={y + row}
            kind="release"
            name="release"
            words={[`release ${duration(shot.release.to - shot.release.from)}`, "release"]}
            limit={limit}
          />
        )}
        {shot.files.map(({ name, from, to, afterMs }, index) => (
          <Bar
            key={name}
            scale={scale}
            from={from}
            to={to}
            y={y + (2 + Math.min(index, 1)) * row}
            kind={name.toLowerCase()}
            name={`${name} ${duration(afterMs)}`}
            limit={limit}
          />
        ))}
        {shot.waits && (
          <Bar
            scale={scale}
            from={shot.waits.from}
            to={shot.waits.to ?? scale.now}
            y={y + (2 + Math.min(shot.files.length, 1)) * row}
            kind={shot.status === "fired" ? "waits" : "in-vain"}
            name={shot.status === "fired" ? "waiting for files" : (shot.problems[0]?.code ?? "no picture")}
            limit={limit}
          />
        )}
      </g>
    );
  });
  return <>{drawn}</>;
}
