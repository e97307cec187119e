// How wide a text is in the drawing.

const widths = new Map<string, number>();
/** Log lines differ without end, so not all are kept. */
const mostKept = 5_000;
let pen: CanvasRenderingContext2D | undefined;

/** In CSS pixels, at the size of the drawing's texts (page.css). */
export function textWidth(text: string, weight = 400): number {
  const key = `${weight} ${text}`;
  let width = widths.get(key);
  if (width === undefined) {
    pen ??= document.createElement("canvas").getContext("2d")!;
    pen.font = `${weight} 11px ${getComputedStyle(document.body).fontFamily}`;
    ({ width } = pen.measureText(text));
    if (widths.size >= mostKept) {
      widths.clear();
    }
    widths.set(key, width);
  }
  return width;
}
