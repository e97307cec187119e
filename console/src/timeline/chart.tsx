// The drawing: one clock from left to right, a lane for each kind of thing.

import { useRef } from "preact/hooks";
import type { RefObject } from "preact";
import { preciseTime, timeOfDay } from "../parts/words";
import type { Told, WireLine } from "../told/store";
import { remembered, settingChanges, shotBars, shotEnd, stateStretches, unasked } from "./happenings";
import { Bar, CallLane, ShotLane, TextLane, WireLane, row, type Scale } from "./lanes";

/** CSS pixels: of the axis above, and of a lane's title. */
const axis = 24;
const title = 15;
const between = 7;

const steps = [
  1, 2, 5, 10, 20, 50, 100, 200, 500, 1e3, 2e3, 5e3, 10e3, 30e3, 60e3, 300e3, 600e3, 1800e3, 3600e3, 7200e3,
];

function marks({ from, to, width }: Scale, zero: number): { atMs: number; text: string }[] {
  const step = steps.find((one) => (one / (to - from)) * width > 84) ?? steps.at(-1)!;
  const write = step < 1000 ? preciseTime : timeOfDay;
  const first = Math.ceil((from + zero) / step) * step - zero;
  return Array.from({ length: Math.max(0, Math.floor((to - first) / step) + 1) }, (_, index) => {
    const atMs = first + index * step;
    return { atMs, text: write(new Date(zero + atMs)) };
  });
}

export function Chart(chart: {
  told: Told;
  scale: Scale;
  picked: WireLine | undefined;
  frame: RefObject<HTMLDivElement>;
  onPick: (atMs: number) => void;
  onDrag: (byMs: number) => void;
}) {
  const { told, scale } = chart;
  const zero = told.zero ?? 0;
  const shots = remembered(told, shotBars);
  const dragged = useRef<{ x: number; moved: boolean }>();

  const lanes = [
    {
      name: "Session",
      rows: 1,
      draw: (y: number) =>
        remembered(told, stateStretches).map(({ from, to, state }) => (
          <Bar key={from} scale={scale} from={from} to={to ?? scale.now} y={y} kind={`state ${state}`} name={state} />
        )),
    },
    {
      name: "Shots",
      rows: 4,
      draw: (y: number) => <ShotLane scale={scale} y={y} shots={shots} />,
    },
    {
      name: "Settings in force, unasked pictures",
      rows: 1,
      draw: (y: number) => (
        <TextLane
          scale={scale}
          y={y}
          kind="setting"
          items={[...remembered(told, settingChanges), ...remembered(told, unasked)].sort(
            (one, other) => one.atMs - other.atMs,
          )}
        />
      ),
    },
    {
      name: "Problems",
      rows: 1,
      draw: (y: number) => (
        <TextLane
          scale={scale}
          y={y}
          kind="problem"
          items={told.problems.map(({ atMs, what }) => ({ atMs, what: what.code }))}
        />
      ),
    },
    {
      name: "Wire: host above, worker below",
      rows: 2,
      draw: (y: number) => <WireLane scale={scale} y={y} told={told} />,
    },
    ...(told.calls.length > 0
      ? [
          {
            name: "SDK: calls above, callbacks below",
            rows: 2,
            draw: (y: number) => <CallLane scale={scale} y={y} told={told} />,
          },
        ]
      : []),
  ];
  let height = axis;
  const placed = lanes.map((lane) => {
    const y = height + title;
    height = y + lane.rows * row + between;
    return { ...lane, y };
  });

  const drag = (event: PointerEvent): void => {
    const begun = dragged.current;
    if (begun && (begun.moved || Math.abs(event.clientX - begun.x) > 4)) {
      chart.onDrag(((begun.x - event.clientX) / scale.width) * (scale.to - scale.from));
      dragged.current = { x: event.clientX, moved: true };
    }
  };
  const letGo = (event: PointerEvent): void => {
    if (dragged.current && !dragged.current.moved) {
      const left = chart.frame.current!.getBoundingClientRect().left;
      chart.onPick(scale.from + ((event.clientX - left) / scale.width) * (scale.to - scale.from));
    }
    dragged.current = undefined;
  };

  return (
    <div
      class="chart"
      ref={chart.frame}
      onPointerDown={(event) => (dragged.current = { x: event.clientX, moved: false })}
      onPointerMove={drag}
      onPointerUp={letGo}
      onPointerLeave={() => (dragged.current = undefined)}
    >
      <svg width={scale.width} height={height} role="img" aria-label={described(shots.length, told)}>
        {shots
          .filter((shot) => shot.from <= scale.to && shotEnd(shot, scale.now) >= scale.from)
          .map((shot) => (
            // What happened during a shot stands on its ground, in each lane.
            <rect
              key={shot.shot}
              class={`shade ${shot.status}`}
              x={scale.x(shot.from)}
              width={scale.x(shotEnd(shot, scale.now)) - scale.x(shot.from)}
              y={axis}
              height={height - axis}
            />
          ))}
        {marks(scale, zero).map(({ atMs, text }) => (
          <g key={atMs} class="mark">
            <line x1={scale.x(atMs)} x2={scale.x(atMs)} y1={axis - 6} y2={height} />
            <text x={scale.x(atMs) + 3} y={axis - 9}>
              {text}
            </text>
          </g>
        ))}
        {placed.map(({ name, y, draw }) => (
          <g key={name} class="lane">
            <text class="lane-name" x={2} y={y - 5}>
              {name}
            </text>
            {draw(y)}
          </g>
        ))}
        {scale.now <= scale.to && (
          <line class="now" x1={scale.x(scale.now)} x2={scale.x(scale.now)} y1={axis - 6} y2={height} />
        )}
        {chart.picked && (
          <line class="picked" x1={scale.x(chart.picked.atMs)} x2={scale.x(chart.picked.atMs)} y1={0} y2={height} />
        )}
      </svg>
    </div>
  );
}

const described = (shots: number, told: Told): string =>
  `Drawing of ${shots} shots, ${told.problems.length} problems and ${told.lines.length} lines of the wire over time; ` +
  "the tables below say the same";
