// The pictures that were told, for any number of readers, each at its own pace.

import type { Picture } from "./generated.js";

export class PictureLog {
  readonly #told: Picture[] = [];
  readonly #known = new Set<string>();
  readonly #readers = new Set<() => void>();
  #over = false;

  /** Tells each reader, once: what is known already is left out. */
  add(picture: Picture): void {
    if (this.#known.has(picture.id)) {
      return;
    }
    this.#known.add(picture.id);
    this.#told.push(picture);
    this.#wake();
  }

  /** No more come: readers end when they have read what there is. */
  end(): void {
    this.#over = true;
    this.#wake();
  }

  /** Everything told behind `after`, by itself or in `older`, and then what comes. Without `after`: everything told. */
  async *read(
    after: string | undefined,
    older: (after: string) => AsyncIterable<Picture>,
    signal: AbortSignal | undefined,
  ): AsyncGenerator<Picture, void, undefined> {
    let wake = (): void => {};
    const reader = (): void => wake();
    this.#readers.add(reader);
    signal?.addEventListener("abort", reader);
    try {
      let next = 1 + this.#told.findIndex((picture) => picture.id === after);
      const given = new Set<string>();
      if (after !== undefined && next === 0) {
        for await (const picture of older(after)) {
          signal?.throwIfAborted();
          given.add(picture.id);
          yield picture;
        }
      }
      for (;;) {
        signal?.throwIfAborted();
        const picture = this.#told[next];
        if (picture && !given.has(picture.id)) {
          yield picture;
        }
        if (picture) {
          next += 1;
        } else if (this.#over) {
          return;
        } else {
          await new Promise<void>((resolve) => (wake = resolve));
        }
      }
    } finally {
      this.#readers.delete(reader);
      signal?.removeEventListener("abort", reader);
    }
  }

  #wake(): void {
    for (const reader of this.#readers) {
      reader();
    }
  }
}
