// Which camera took a picture: the model that a JPEG says in its EXIF data, and a RAW, which is a TIFF, in its own.

/** The part of a JPEG that EXIF data lies in: a segment has 64 KiB at most and is one of the first. */
const firstPart = 128 * 1024;
/**
 * TIFF lets a directory stand behind the pixels, so a RAW is read to its end where that is so; this is more than any
 * has.
 */
const whole = 512 * 1024 * 1024;
const modelTag = 0x0110;
const asciiType = 2;

/** Reads as much of the file as it takes; undefined when it says nothing or cannot be had. */
export async function cameraModel(url: string, signal: AbortSignal): Promise<string | undefined> {
  const response = await fetch(url, { credentials: "same-origin", signal });
  const reader = response.ok ? response.body?.getReader() : undefined;
  const parts: Uint8Array<ArrayBuffer>[] = [];
  let length = 0;
  let needed: number | undefined;
  while (reader && length < (needed ?? firstPart)) {
    const { done, value } = await reader.read();
    if (done) {
      break;
    }
    parts.push(value);
    length += value.length;
    if (needed === undefined && length >= 8) {
      needed = isDirectoryNear(new DataView(await new Blob(parts).arrayBuffer())) ? firstPart : whole;
    }
  }
  await reader?.cancel();
  return modelIn(new DataView(await new Blob(parts).arrayBuffer()));
}

const isTiff = (file: DataView): boolean => file.getUint16(0) === 0x4949 || file.getUint16(0) === 0x4d4d;

/** Of a file's first 8 bytes. What the directory refers to stands beside it. */
function isDirectoryNear(file: DataView): boolean {
  return !isTiff(file) || file.getUint32(4, file.getUint16(0) === 0x4949) < firstPart / 2;
}

/** The model in a file's beginning. Whatever is damaged has none. */
export function modelIn(file: DataView): string | undefined {
  try {
    if (isTiff(file)) {
      return modelInDirectory(file);
    }
    let at = 2;
    while (file.getUint16(at) >= 0xff00 && file.getUint16(at) !== 0xffda) {
      const isExif = file.getUint16(at) === 0xffe1 && file.getUint32(at + 4) === 0x45786966;
      if (isExif) {
        return modelInDirectory(new DataView(file.buffer, file.byteOffset + at + 10));
      }
      at += 2 + file.getUint16(at + 2);
    }
  } catch (error) {
    if (!(error instanceof RangeError)) {
      throw error;
    }
  }
  return undefined;
}

function modelInDirectory(tiff: DataView): string | undefined {
  const little = tiff.getUint16(0) === 0x4949;
  const directory = tiff.getUint32(4, little);
  const entries = tiff.getUint16(directory, little);
  for (let entry = directory + 2; entry < directory + 2 + entries * 12; entry += 12) {
    if (tiff.getUint16(entry, little) === modelTag && tiff.getUint16(entry + 2, little) === asciiType) {
      const length = tiff.getUint32(entry + 4, little);
      const text = length <= 4 ? entry + 8 : tiff.getUint32(entry + 8, little);
      const bytes = new Uint8Array(tiff.buffer, tiff.byteOffset + text, length);
      return new TextDecoder().decode(bytes).replace(/\0.*$/s, "").trim() || undefined;
    }
  }
  return undefined;
}
