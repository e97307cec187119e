// Every line of the wire, to be searched; a click shows it in the drawing.

import type { RefObject } from "preact";
import { useLayoutEffect, useRef, useState } from "preact/hooks";
import { Grid, type GridMoves } from "../parts/grid";
import { preciseTime } from "../parts/words";
import type { Told, WireLine } from "../told/store";

const layout = () => ({ columns: 1, rowHeight: 26, gap: 1 });

export function Lines(list: {
  told: Told;
  picked: WireLine | undefined;
  moves: RefObject<GridMoves>;
  onPick: (line: WireLine) => void;
}) {
  const { told, picked } = list;
  const [filter, setFilter] = useState("");
  const scroller = useRef<HTMLDivElement>(null);
  const words = filter.toLowerCase().split(" ").filter(Boolean);
  const lines =
    words.length === 0
      ? told.lines
      : told.lines.filter((line) => words.every((word) => shownText(line).toLowerCase().includes(word)));

  // Whoever reads the end goes on reading the end, until they scroll up.
  const end = useRef({ isSeen: true, top: 0 });
  const scrolled = (top: number): void => {
    const { scrollHeight, clientHeight } = scroller.current!;
    const isSeen = scrollHeight - top - clientHeight < 30 || (end.current.isSeen && top >= end.current.top);
    end.current = { isSeen, top };
  };
  useLayoutEffect(() => {
    if (end.current.isSeen && picked === undefined) {
      scroller.current!.scrollTop = scroller.current!.scrollHeight;
    }
  }, [lines.length, lines.at(-1)?.number]);
  // What was picked among a few is seen among all.
  useLayoutEffect(() => {
    if (picked) {
      list.moves.current!.show(String(picked.number), false);
    }
  }, [filter]);

  return (
    <div class="lines">
      <div class="head">
        <label for="filter">Filter lines</label>
        <input
          id="filter"
          type="search"
          value={filter}
          autocomplete="off"
          spellcheck={false}
          placeholder="> CAPTURE"
          onInput={({ currentTarget }) => setFilter(currentTarget.value)}
        />
        <p class="small" id="lines-count">
          {words.length === 0 ? "" : `${lines.length.toLocaleString()} of `}
          {told.lines.length.toLocaleString()} lines
        </p>
        <p class="records small">
          Download the record{" "}
          <a href="record" download>
            with names
          </a>{" "}
          <a href="record?redacted=1" download>
            without names
          </a>
        </p>
      </div>
      <Grid
        class="wire-lines"
        label="Lines of the wire"
        describedBy="lines-count"
        items={lines}
        keyOf={({ number }) => String(number)}
        layout={layout}
        scroller={scroller}
        moves={list.moves}
        onScroll={scrolled}
        cell={(line, tabIndex) => (
          // A link, as pictures are: the space bar goes on shooting.
          <a
            href="#time-line"
            tabIndex={tabIndex}
            aria-current={line === picked}
            draggable={false}
            onClick={(event) => {
              event.preventDefault();
              list.onPick(line);
            }}
          >
            <span class="at">{told.zero === undefined ? "" : preciseTime(new Date(told.zero + line.atMs))}</span>{" "}
            {shownText(line)}
            {line.dropped > 0 && <span class="dropped"> ({line.dropped} lines before it were dropped)</span>}
          </a>
        )}
      />
    </div>
  );
}

export const shownText = ({ direction, text }: WireLine): string => `${direction} ${text}`;
