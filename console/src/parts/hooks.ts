// What several components look at: the store, the time, a scroller, their size.

import type { RefObject } from "preact";
import { useEffect, useLayoutEffect, useState } from "preact/hooks";
import type { Store } from "../told/store";

/** Draws the component again whenever something was told. */
export function useStore(store: Store): void {
  const [, draw] = useState(0);
  useEffect(() => store.subscribe(() => draw((count) => count + 1)), [store]);
}

/** Draws the component again every so many milliseconds, while it is to be; 0: never. */
export function useEvery(milliseconds: number): void {
  const [, draw] = useState(0);
  useEffect(() => {
    if (milliseconds > 0) {
      const timer = setInterval(() => draw((count) => count + 1), milliseconds);
      return () => clearInterval(timer);
    }
    return undefined;
  }, [milliseconds]);
}

/** The element's inner size, in CSS pixels. */
export function useSize(element: RefObject<HTMLElement>): { width: number; height: number } {
  const [size, setSize] = useState({ width: 0, height: 0 });
  useLayoutEffect(() => {
    const measure = (): void => {
      const { clientWidth: width, clientHeight: height } = element.current!;
      setSize((was) => (was.width === width && was.height === height ? was : { width, height }));
    };
    measure();
    const observer = new ResizeObserver(measure);
    observer.observe(element.current!);
    return () => observer.disconnect();
  }, [element]);
  return size;
}

/** Which rows of a scroller are seen, and a few around them: [first, behind the last]. */
export function useSeenRows(
  element: RefObject<HTMLElement>,
  rows: number,
  rowHeight: number,
  height: number,
): { first: number; end: number; top: number } {
  const [top, setTop] = useState(0);
  useEffect(() => {
    const scroller = element.current!;
    const read = (): void => setTop(scroller.scrollTop);
    scroller.addEventListener("scroll", read, { passive: true });
    return () => scroller.removeEventListener("scroll", read);
  }, [element]);
  const around = 2;
  const first = Math.max(0, Math.min(Math.floor(top / rowHeight), rows - 1) - around);
  return { first, end: Math.min(rows, Math.ceil((top + height) / rowHeight) + around), top };
}
