// The drawing's shots, as a table.

import { duration, preciseTime } from "../parts/words";
import type { Told } from "../told/store";
import { remembered, shotBars } from "./happenings";

/** The newest; older ones are in the record. */
const mostShown = 50;

export function ShotsTable({ told }: { told: Told }) {
  const shots = remembered(told, shotBars).slice(-mostShown).reverse();
  const after = (files: { name: string; afterMs: number }[], isRaw: boolean): string =>
    files
      .filter(({ name }) => (name === "RAW") === isRaw)
      .map(({ name, afterMs }) => `${isRaw || name === "JPEG" ? "" : `${name} `}${duration(afterMs)}`)
      .join(", ") || "–";
  return (
    <details class="shots-table">
      <summary>Shots as a table</summary>
      <div class="wide" role="region" aria-label="Table of shots" tabIndex={0}>
        <table>
          <thead>
            <tr>
              {["Shot", "Fired", "Half-press", "Release", "RAW after", "JPEG after", "Result", "Problems"].map(
                (name) => (
                  <th key={name} scope="col">
                    {name}
                  </th>
                ),
              )}
            </tr>
          </thead>
          <tbody>
            {shots.map(({ shot, from, halfPress, release, files, status, problems }) => (
              <tr key={shot}>
                <th scope="row">{shot}</th>
                <td>{preciseTime(new Date(told.zero! + from))}</td>
                <td>{halfPress.to === undefined ? "–" : duration(halfPress.to - halfPress.from)}</td>
                <td>{release ? duration(release.to - release.from) : "–"}</td>
                <td>{after(files, true)}</td>
                <td>{after(files, false)}</td>
                <td>{status === "none" ? "no picture" : status}</td>
                <td>{problems.map(({ code }) => code).join(", ") || "–"}</td>
              </tr>
            ))}
          </tbody>
        </table>
      </div>
    </details>
  );
}
