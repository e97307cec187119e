// A picture of one colour with a grid of lines, as PNG: what the stand-in sends for any picture.

import { deflateSync } from "node:zlib";

const table = Int32Array.from({ length: 256 }, (_, byte) => {
  let rest = byte;
  for (let bit = 0; bit < 8; ++bit) {
    rest = rest & 1 ? (rest >>> 1) ^ 0xedb88320 : rest >>> 1;
  }
  return rest;
});

function checksum(bytes: Buffer): number {
  let sum = -1;
  for (const byte of bytes) {
    sum = (sum >>> 8) ^ table[(sum ^ byte) & 0xff]!;
  }
  return (sum ^ -1) >>> 0;
}

function chunk(name: string, data: Buffer): Buffer {
  const body = Buffer.concat([Buffer.from(name, "latin1"), data]);
  const ends = Buffer.alloc(8);
  ends.writeUInt32BE(data.length, 0);
  ends.writeUInt32BE(checksum(body), 4);
  return Buffer.concat([ends.subarray(0, 4), body, ends.subarray(4)]);
}

export function image(width: number, height: number, shade: number): Buffer {
  const rows = Buffer.alloc((1 + width * 3) * height);
  for (let y = 0; y < height; ++y) {
    for (let x = 0; x < width; ++x) {
      const at = y * (1 + width * 3) + 1 + x * 3;
      const isLine = x % 40 === 0 || y % 40 === 0;
      rows[at] = isLine ? 255 : (shade * 47) % 200;
      rows[at + 1] = isLine ? 255 : (shade * 91) % 200;
      rows[at + 2] = isLine ? 255 : 90;
    }
  }
  const head = Buffer.alloc(13);
  head.writeUInt32BE(width, 0);
  head.writeUInt32BE(height, 4);
  head.set([8, 2, 0, 0, 0], 8);
  return Buffer.concat([
    Buffer.from("89504e470d0a1a0a", "hex"),
    chunk("IHDR", head),
    chunk("IDAT", deflateSync(rows)),
    chunk("IEND", Buffer.alloc(0)),
  ]);
}
