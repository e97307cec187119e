// The contact sheet's items: one for each picture that was taken, both halves of a pair together.

import type { Picture } from "camera-worker/page";
import type { Told } from "./store";

export interface Item {
  /** The pair's. */
  key: string;
  /** Developed ones first, then RAW; in each the order in which they came. */
  pictures: Picture[];
  shot: number | null;
  /** What a photographer should know of it: "unasked", "half missing", "damaged", "recovered". */
  remarks: string[];
}

const formats = { jpeg: "JPEG", heif: "HEIF", arw: "RAW", dng: "RAW", other: "other" } as const;

/** How its format is called: "JPEG", "HEIF" or "RAW". */
export const formatName = (picture: Picture): string =>
  picture.kind === "raw" ? "RAW" : (formats[picture.format] ?? "other");

/** "RAW and JPEG" for a pair. */
export const formatNames = (item: Item): string =>
  [...new Set(item.pictures.map(formatName))].sort().reverse().join(" and ");

const ofKind = { developed: 0, raw: 1, other: 2 } as const;

/** Whether the picture lies in the folder; a late one may belong to the folder before. */
const isIn = (folder: string | undefined, picture: Picture): boolean =>
  folder === undefined || picture.path.startsWith(folder.endsWith("/") ? folder : `${folder}/`);

function remarks(pictures: Picture[], told: Told): string[] {
  const shot = pictures[0]!.shot === null ? undefined : told.shots.get(pictures[0]!.shot);
  return [
    ...(pictures.some((picture) => picture.recovered) ? ["recovered"] : []),
    ...(pictures.every((picture) => picture.shot === null) ? ["unasked"] : []),
    ...(shot?.problems.some((problem) => problem.code === "half-missing") && pictures.length < 2
      ? ["half missing"]
      : []),
    ...(pictures.some((picture) => !picture.whole) ? ["damaged"] : []),
  ];
}

let last: { told: Told; version: number; folder: string | undefined; items: Item[] } | undefined;

/** Newest first. The same list until a picture comes. */
export function sheetItems(told: Told): Item[] {
  const folder = told.state?.folder;
  if (last?.told !== told || last.version !== told.picturesVersion || last.folder !== folder) {
    last = { told, version: told.picturesVersion, folder, items: inOrder(told) };
  }
  return last.items;
}

function inOrder(told: Told): Item[] {
  const pairs = new Map<string, Picture[]>();
  for (const picture of told.pictures.values()) {
    if (isIn(told.state?.folder, picture)) {
      const pair = pairs.get(picture.pair);
      if (pair) {
        pair.push(picture);
      } else {
        pairs.set(picture.pair, [picture]);
      }
    }
  }
  const begun = (pictures: Picture[]): string =>
    pictures.reduce((first, { at }) => (at < first ? at : first), pictures[0]!.at);
  return [...pairs]
    .map(([key, pictures]) => ({ key, pictures, begun: begun(pictures) }))
    .sort((one, other) => (one.begun < other.begun ? 1 : one.begun > other.begun ? -1 : 0))
    .map(({ key, pictures }) => ({
      key,
      pictures: pictures.sort((one, other) => ofKind[one.kind] - ofKind[other.kind]),
      shot: pictures.find((picture) => picture.shot !== null)?.shot ?? null,
      remarks: remarks(pictures, told),
    }));
}
