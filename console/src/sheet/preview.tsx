// A picture's small image; where the first file has none, the other half's.

import { useState } from "preact/hooks";
import type { Item } from "../told/shots";

export function Preview({ item, alt }: { item: Item; alt: string }) {
  const [failed, setFailed] = useState<readonly string[]>([]);
  const shown = item.pictures.find(({ id }) => !failed.includes(id));
  return shown ? (
    // The one image goes on showing the first half until the second one's preview is there.
    <img
      src={`pictures/${encodeURIComponent(shown.id)}/preview`}
      alt={alt}
      decoding="async"
      draggable={false}
      onError={() => setFailed((ids) => [...ids, shown.id])}
    />
  ) : (
    <span class="no-preview">No preview</span>
  );
}
