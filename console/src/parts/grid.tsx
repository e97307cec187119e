// A list in rows and columns that scrolls by itself and may have any number of items: of a long one only what is seen
// is in the document. Tab comes by once, arrows move inside.

import type { ComponentChildren, RefObject } from "preact";
import { useImperativeHandle, useLayoutEffect, useRef, useState } from "preact/hooks";
import { useSeenRows, useSize } from "./hooks";

/** So many items are in the document whole: whoever looks for one there, or counts them, finds them all. */
const mostWhole = 200;

export interface GridMoves {
  /** Scrolls until the item is seen, and makes it the one that the keyboard is at. */
  show(key: string, focus: boolean): void;
}

/** In CSS pixels. */
export interface GridLayout {
  columns: number;
  rowHeight: number;
  gap: number;
}

export function Grid<T>(grid: {
  items: readonly T[];
  keyOf: (item: T) => string;
  /** What a list item is called; without it, what is in it. */
  nameOf?: (item: T) => string;
  label: string;
  describedBy?: string;
  class: string;
  layout: (width: number) => GridLayout;
  scroller: RefObject<HTMLDivElement>;
  moves: RefObject<GridMoves>;
  /** Told how far down it is scrolled, in CSS pixels. */
  onScroll?: (top: number) => void;
  /** What stands in an item; whatever takes the focus has this tabIndex. */
  cell: (item: T, tabIndex: 0 | -1) => ComponentChildren;
  children?: ComponentChildren;
}) {
  const { items, keyOf, scroller } = grid;
  const list = useRef<HTMLUListElement>(null);
  const [active, setActive] = useState<string>();
  const wantsFocus = useRef(false);

  const size = useSize(scroller);
  const { columns, rowHeight, gap } = grid.layout(size.width);
  const cellWidth = (size.width - gap) / columns - gap;
  const rows = Math.ceil(items.length / columns);
  const inView = useSeenRows(scroller, rows, rowHeight, size.height);
  const seen = items.length <= mostWhole ? { first: 0, end: rows } : inView;

  const activeIndex = active === undefined ? -1 : items.findIndex((item) => keyOf(item) === active);
  const first = seen.first * columns;
  const shown = items.slice(first, seen.end * columns).map((item, index) => ({ item, index: first + index }));
  const isShown = activeIndex >= first && activeIndex < first + shown.length;
  // The one that has the focus, or gets it, is there wherever it lies.
  const hasFocus = wantsFocus.current || list.current?.contains(document.activeElement);
  if (!isShown && activeIndex >= 0 && hasFocus) {
    shown.push({ item: items[activeIndex]!, index: activeIndex });
  }
  const tabStop = shown.some(({ index }) => index === activeIndex) ? activeIndex : first;

  // Before the next key: a press of Enter right behind an arrow opens the item that the arrow went to.
  useLayoutEffect(() => {
    if (wantsFocus.current) {
      wantsFocus.current = false;
      list.current?.querySelector<HTMLElement>('[tabindex="0"]')?.focus({ preventScroll: true });
    }
  });

  const show = (index: number, focus: boolean): void => {
    const item = items[Math.max(0, Math.min(index, items.length - 1))];
    const element = scroller.current;
    if (item !== undefined && element) {
      const top = Math.floor(items.indexOf(item) / columns) * rowHeight;
      element.scrollTop = Math.max(Math.min(element.scrollTop, top), top + rowHeight + gap - element.clientHeight);
      wantsFocus.current = focus;
      setActive(keyOf(item));
    }
  };
  useImperativeHandle(grid.moves, () => ({
    show: (key, focus) =>
      show(
        items.findIndex((item) => keyOf(item) === key),
        focus,
      ),
  }));

  const page = columns * Math.max(1, Math.floor(size.height / rowHeight));
  const steps: Record<string, (index: number) => number> = {
    ArrowLeft: (index) => (columns > 1 ? index - 1 : index),
    ArrowRight: (index) => (columns > 1 ? index + 1 : index),
    ArrowUp: (index) => (index < columns ? index : index - columns),
    ArrowDown: (index) => index + columns,
    PageUp: (index) => index - page,
    PageDown: (index) => index + page,
    Home: () => 0,
    End: () => items.length - 1,
  };
  const press = (event: KeyboardEvent): void => {
    const step = steps[event.key];
    if (step && !event.ctrlKey && !event.altKey && !event.metaKey) {
      event.preventDefault();
      show(step(tabStop), true);
    }
  };

  return (
    <div
      class={`scroller ${grid.class}`}
      ref={scroller}
      onScroll={({ currentTarget }) => grid.onScroll?.(currentTarget.scrollTop)}
    >
      <ul
        ref={list}
        // Where a style sheet takes a list's bullets away, VoiceOver takes it for none.
        role="list"
        aria-label={grid.label}
        aria-describedby={grid.describedBy}
        onKeyDown={press}
        onFocusIn={({ target }) => {
          const item = items[Number((target as Element).closest("li")?.getAttribute("aria-posinset")) - 1];
          setActive(item === undefined ? active : keyOf(item));
        }}
        style={{ height: `${rows === 0 ? 0 : rows * rowHeight + gap}px` }}
      >
        {shown.map(({ item, index }) => (
          <li
            key={keyOf(item)}
            aria-label={grid.nameOf?.(item)}
            aria-setsize={items.length}
            aria-posinset={index + 1}
            style={{
              width: `${cellWidth}px`,
              height: `${rowHeight - gap}px`,
              left: `${gap + (index % columns) * (cellWidth + gap)}px`,
              top: `${gap + Math.floor(index / columns) * rowHeight}px`,
            }}
          >
            {grid.cell(item, index === tabStop ? 0 : -1)}
          </li>
        ))}
      </ul>
      {grid.children}
    </div>
  );
}
