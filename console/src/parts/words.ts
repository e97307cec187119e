// Numbers and times as people read them.

const clock = new Intl.DateTimeFormat(undefined, {
  hour: "2-digit",
  minute: "2-digit",
  second: "2-digit",
  hourCycle: "h23",
});
const day = new Intl.DateTimeFormat(undefined, { dateStyle: "medium" });

/** "14:03:22", of this day or another. */
export const timeOfDay = (at: Date): string => clock.format(at);

/** "14:03:22", with the day in front when that is not today. */
export function moment(at: Date, now = new Date()): string {
  return at.toDateString() === now.toDateString() ? timeOfDay(at) : `${day.format(at)}, ${timeOfDay(at)}`;
}

/** "14:03:22.057". */
export const preciseTime = (at: Date): string => `${timeOfDay(at)}.${String(at.getMilliseconds()).padStart(3, "0")}`;

/** "2.96 s", "35 ms". */
export const duration = (milliseconds: number): string =>
  milliseconds < 100 ? `${Math.round(milliseconds)} ms` : `${(milliseconds / 1000).toFixed(2)} s`;

/** "4 s", "3 min", "2 h 5 min". */
export function howLong(milliseconds: number): string {
  const seconds = Math.max(0, Math.floor(milliseconds / 1000));
  const minutes = Math.floor(seconds / 60);
  return minutes === 0
    ? `${seconds} s`
    : minutes < 60
      ? `${minutes} min`
      : `${Math.floor(minutes / 60)} h ${minutes % 60} min`;
}

/** "4.4 MB". */
export function bytes(count: number): string {
  const units = ["bytes", "kB", "MB", "GB", "TB"];
  const power = count < 1000 ? 0 : Math.min(units.length - 1, Math.floor(Math.log10(count) / 3));
  return `${power === 0 ? count : (count / 1000 ** power).toFixed(1)} ${units[power]}`;
}

/** The part of a path behind its last slash. */
export const fileName = (path: string): string => path.slice(path.lastIndexOf("/") + 1);
