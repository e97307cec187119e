// One picture, large: arrows go to its neighbours, zoom shows each pixel of it.

import { useEffect, useLayoutEffect, useRef, useState } from "preact/hooks";
import { bytes, duration, fileName, moment } from "../parts/words";
import { formatName, formatNames, type Item } from "../told/shots";
import type { Told } from "../told/store";
import { cameraModel } from "./camera_model";

const address = (id: string): string => `pictures/${encodeURIComponent(id)}`;

export function LargeView(view: {
  told: Told;
  items: Item[];
  opened: string;
  onMove: (key: string) => void;
  onClose: () => void;
}) {
  const dialog = useRef<HTMLDialogElement>(null);
  const [isZoomed, setZoomed] = useState(false);
  const index = view.items.findIndex(({ key }) => key === view.opened);
  const item = view.items[index];

  useLayoutEffect(() => dialog.current!.showModal(), []);

  // Keys may come faster than drawings.
  const current = useRef(view.opened);
  const move = (by: number): void => {
    const next = view.items[view.items.findIndex(({ key }) => key === current.current) + by];
    if (next) {
      current.current = next.key;
      view.onMove(next.key);
    }
  };
  const press = (event: KeyboardEvent): void => {
    const does: Record<string, () => void> = {
      ArrowLeft: () => move(-1),
      ArrowRight: () => move(1),
      z: () => setZoomed(!isZoomed),
    };
    // Zoomed in, arrows move over the picture.
    const pans = isZoomed && event.key.startsWith("Arrow");
    if (does[event.key] && !pans && !event.ctrlKey && !event.altKey && !event.metaKey) {
      event.preventDefault();
      does[event.key]!();
    }
  };

  // Not at the dialog: what had the focus may have gone with the picture. And before the next key is pressed.
  useLayoutEffect(() => {
    document.addEventListener("keydown", press);
    return () => document.removeEventListener("keydown", press);
  });

  return (
    <dialog ref={dialog} class="large" aria-label="Large view" onClose={view.onClose}>
      {item && (
        <>
          <Stage key={item.key} item={item} isZoomed={isZoomed} onZoom={setZoomed} />
          <div class="bar">
            <button type="button" aria-disabled={index === 0} onClick={() => move(-1)}>
              Newer
            </button>
            <button type="button" aria-disabled={index === view.items.length - 1} onClick={() => move(1)}>
              Older
            </button>
            <button type="button" aria-pressed={isZoomed} aria-keyshortcuts="z" onClick={() => setZoomed(!isZoomed)}>
              Zoom to 100 %
            </button>
            {item.pictures.map((picture) => (
              <a key={picture.id} href={`${address(picture.id)}?download=1`} download>
                Download {formatName(picture)}
              </a>
            ))}
            <button type="button" onClick={() => dialog.current!.close()}>
              Close
            </button>
          </div>
          <Facts key={item.key} item={item} told={view.told} place={`${index + 1} of ${view.items.length}`} />
        </>
      )}
    </dialog>
  );
}

function Stage({ item, isZoomed, onZoom }: { item: Item; isZoomed: boolean; onZoom: (is: boolean) => void }) {
  const stage = useRef<HTMLDivElement>(null);
  const image = useRef<HTMLImageElement>(null);
  // What a browser can show comes first; the preview is small, but of every format.
  const sources = [
    ...item.pictures.filter(({ format }) => format === "jpeg" || format === "heif").map(({ id }) => address(id)),
    ...item.pictures.map(({ id }) => `${address(id)}/preview`),
  ];
  const [source, setSource] = useState(0);
  const [pixels, setPixels] = useState<{ width: number; height: number }>();
  const [middle, setMiddle] = useState({ x: 0.5, y: 0.5 });
  const isPreview = sources[source]?.endsWith("/preview") ?? false;

  // One pixel of the picture on one of the screen.
  const scale = 1 / devicePixelRatio;
  useLayoutEffect(() => {
    if (isZoomed && pixels && stage.current) {
      stage.current.scrollLeft = pixels.width * scale * middle.x - stage.current.clientWidth / 2;
      stage.current.scrollTop = pixels.height * scale * middle.y - stage.current.clientHeight / 2;
      stage.current.focus();
    }
  }, [isZoomed, pixels, middle, scale]);

  const toggle = (event: MouseEvent): void => {
    const { left, top, width, height } = image.current!.getBoundingClientRect();
    setMiddle({ x: (event.clientX - left) / width, y: (event.clientY - top) / height });
    onZoom(!isZoomed);
  };

  if (sources[source] === undefined) {
    return (
      <div class="stage">
        <p>This picture cannot be shown here. The file is there, and can be downloaded.</p>
      </div>
    );
  }
  return (
    <div
      ref={stage}
      class={isZoomed ? "stage zoomed" : "stage"}
      {...(isZoomed && { tabIndex: 0 })}
      role="group"
      aria-label={isZoomed ? "Picture at 100 %, arrows move over it" : "Picture"}
    >
      <img
        key={source}
        ref={image}
        src={sources[source]}
        alt={fileName(item.pictures[0]!.path)}
        style={isZoomed && pixels ? { width: `${pixels.width * scale}px`, height: `${pixels.height * scale}px` } : {}}
        onLoad={({ currentTarget: { naturalWidth: width, naturalHeight: height } }) => setPixels({ width, height })}
        onError={() => setSource(source + 1)}
        onClick={toggle}
      />
      {pixels && (
        <p class="pixels">
          {isPreview ? "Preview, " : ""}
          {pixels.width} × {pixels.height}
        </p>
      )}
    </div>
  );
}

function Facts({ item, told, place }: { item: Item; told: Told; place: string }) {
  const [model, setModel] = useState<string>();
  const file =
    item.pictures.find(({ format }) => format === "jpeg") ?? item.pictures.find(({ kind }) => kind === "raw");
  useEffect(() => {
    const leaving = new AbortController();
    if (file) {
      cameraModel(address(file.id), leaving.signal).then(setModel, () => {});
    }
    return () => leaving.abort();
  }, [file?.id]);
  const problems = item.shot === null ? [] : (told.shots.get(item.shot)?.problems ?? []);
  return (
    <div class="facts">
      <dl>
        <Fact name="Camera" value={model ?? "not said"} />
        <Fact name="Taken" value={moment(new Date(item.pictures[0]!.at))} />
        <Fact
          name="Files"
          value={item.pictures.map(({ path, bytes: size }) => `${fileName(path)} (${bytes(size)})`).join(", ")}
        />
        <Fact
          name="Shutter to file"
          value={
            item.pictures
              .filter(({ afterMs }) => afterMs !== null)
              .map((picture) => `${formatName(picture)} ${duration(picture.afterMs!)}`)
              .join(", ") || "not known"
          }
        />
        <Fact name="Shot" value={item.shot === null ? "none" : String(item.shot)} />
        <Fact name="Format" value={[formatNames(item), ...item.remarks].join(", ")} />
        <Fact name="Place" value={place} />
      </dl>
      {problems.map(({ code, text, advice }) => (
        <p key={code} class="problem">
          {text} {advice}
        </p>
      ))}
    </div>
  );
}

function Fact({ name, value }: { name: string; value: string }) {
  return (
    <div>
      <dt>{name}</dt>
      <dd>{value}</dd>
    </div>
  );
}
