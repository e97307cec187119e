// The contact sheet: newest first, one item for both halves of a pair. Only what is seen is in the document.

import { useLayoutEffect, useRef, useState } from "preact/hooks";
import { Grid, type GridLayout, type GridMoves } from "../parts/grid";
import { duration, fileName, moment } from "../parts/words";
import { formatNames, sheetItems, type Item } from "../told/shots";
import type { Store } from "../told/store";
import { LargeView } from "./large_view";
import { Preview } from "./preview";

/** CSS pixels: the narrowest cell, what stands below its picture, and the gap between two. */
const narrowest = 140;
const below = 64;
const gap = 12;

/** A file's name without its ending, which both halves of a pair share. */
const stem = (path: string): string => fileName(path).replace(/\.\w+$/, "");

/** "Shot 12, DSC00012, RAW and JPEG, 14:03:22, damaged". */
function itemName(item: Item): string {
  const first = item.pictures[0]!;
  return [
    item.shot === null ? "No shot number" : `Shot ${item.shot}`,
    stem(first.path),
    formatNames(item),
    moment(new Date(first.at)),
    ...item.remarks,
  ].join(", ");
}

function layout(width: number): GridLayout {
  const columns = Math.max(1, Math.floor((width - gap) / (narrowest + gap)));
  const cell = (width - gap) / columns - gap;
  return { columns, rowHeight: Math.round((cell * 2) / 3) + below + gap, gap };
}

/** Who looks at older pictures is not pushed along by new ones: those wait until the top is seen again. */
function useHeldBack(all: Item[], isAtTop: boolean): Item[] {
  const known = useRef(new Set<string>());
  const firstKnown = all.findIndex(({ key }) => known.current.has(key));
  const items = isAtTop || firstKnown < 0 ? all : all.slice(firstKnown);
  useLayoutEffect(() => {
    if (items === all) {
      known.current = new Set(all.map(({ key }) => key));
    }
  });
  return items;
}

export function Sheet({ store }: { store: Store }) {
  const all = sheetItems(store.told);
  const scroller = useRef<HTMLDivElement>(null);
  const moves = useRef<GridMoves>(null);
  const [opened, setOpened] = useState<string>();
  const [isAtTop, setAtTop] = useState(true);
  const items = useHeldBack(all, isAtTop);
  const waiting = all.length - items.length;

  return (
    <section class="sheet" aria-labelledby="pictures">
      <div class="head">
        <h2 id="pictures">Pictures</h2>
        <p class="small" id="how-many">
          {all.length === 0 ? "None yet." : `${all.length.toLocaleString()} in this folder, newest first`}
        </p>
        {waiting > 0 && (
          <button type="button" class="newer" onClick={() => scroller.current!.scrollTo({ top: 0 })}>
            {waiting} new, show {waiting === 1 ? "it" : "them"}
          </button>
        )}
      </div>
      <Grid
        class="pictures"
        label="Pictures"
        describedBy="how-many"
        items={items}
        keyOf={({ key }) => key}
        nameOf={itemName}
        layout={layout}
        scroller={scroller}
        moves={moves}
        onScroll={(top) => setAtTop(top < narrowest / 2)}
        cell={(item, tabIndex) => <Cell item={item} tabIndex={tabIndex} onOpen={() => setOpened(item.key)} />}
      >
        {all.length === 0 && (
          <p class="empty">Pictures appear here as they arrive: press Capture, or the camera's own button.</p>
        )}
      </Grid>
      {opened !== undefined && (
        <LargeView
          told={store.told}
          items={all}
          opened={opened}
          onMove={setOpened}
          onClose={() => {
            setOpened(undefined);
            moves.current!.show(opened, true);
          }}
        />
      )}
    </section>
  );
}

function Cell({ item, tabIndex, onOpen }: { item: Item; tabIndex: 0 | -1; onOpen: () => void }) {
  const first = item.pictures[0]!;
  const after = Math.max(...item.pictures.map(({ afterMs }) => afterMs ?? 0));
  return (
    // A link, for the space bar presses buttons, and should shoot here.
    <a
      href={`pictures/${encodeURIComponent(first.id)}`}
      tabIndex={tabIndex}
      aria-label={`Open ${itemName(item)}`}
      draggable={false}
      onClick={(event) => {
        if (!event.ctrlKey && !event.metaKey && !event.shiftKey) {
          event.preventDefault();
          onOpen();
        }
      }}
    >
      <span class="frame">
        <Preview item={item} alt="" />
        {item.remarks.length > 0 && (
          <span class="remarks">
            {item.remarks.map((remark) => (
              <span key={remark} class={`remark ${remark.replace(" ", "-")}`}>
                {remark}
              </span>
            ))}
          </span>
        )}
      </span>
      <span class="name">
        <span>{stem(first.path)}</span>
        {item.shot !== null && <span class="number">#{item.shot}</span>}
      </span>
      <span class="facts">
        {formatNames(item).replace(" and ", "+")}
        {after > 0 && ` · ${duration(after)}`}
      </span>
      <span class="facts">{moment(new Date(first.at))}</span>
    </a>
  );
}
