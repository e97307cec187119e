// `tether serve` as a child process.

import { spawn } from "node:child_process";
import { ownProblem } from "./problem.js";
import type { Connection, Listener, Transport, Wishes } from "./transport.js";

export interface ChildProcessOptions {
  /** The `tether` program. */
  tether: string;
  /** What stands behind `tether serve`; the wishes are added. */
  arguments?: readonly string[];
  /** Variables beside those of this process. */
  environment?: Readonly<Record<string, string>>;
}

/** The last words of a process that ended, for the problem that tells of it. */
const keptOfComplaints = 4096;
/**
 * The longest that `tether serve` takes to end when its input ends (10 s for files, four steps of 5 s), and a little.
 */
const endingTakes = 35_000;

export function childProcess(options: ChildProcessOptions): Transport {
  return { owns: true, open: (listener, wishes) => start(options, listener, wishes) };
}

function serveArguments(options: ChildProcessOptions, wishes: Wishes): string[] {
  const named: [string, string | undefined][] = [
    ["--folder", wishes.folder],
    ["--save-dest", wishes.saveDestination],
    ["--file-type", wishes.fileType],
    ["--name", wishes.name],
  ];
  // With "=", or a value that begins with "-" would be taken for an option.
  const given = named.filter(([, value]) => value !== undefined).map(([name, value]) => `${name}=${value}`);
  return ["serve", ...(options.arguments ?? []), ...given];
}

function start(options: ChildProcessOptions, listener: Listener, wishes: Wishes): Connection {
  // A process group of its own: Ctrl-C in a terminal is for the host, which then ends this as it likes.
  const child = spawn(options.tether, serveArguments(options, wishes), {
    stdio: ["pipe", "pipe", "pipe"],
    env: { ...process.env, ...options.environment },
    detached: true,
  });

  let complaints = "";
  child.stderr.setEncoding("utf8").on("data", (text: string) => {
    complaints = (complaints + text).slice(-keptOfComplaints);
  });

  // The decoder keeps the half of a letter until the other half comes.
  let begun = "";
  child.stdout.setEncoding("utf8").on("data", (text: string) => {
    const lines = (begun + text).split("\n");
    begun = lines.pop()!;
    for (const line of lines) {
      listener.message(line);
    }
  });

  // A process that has ended takes nothing more; its end is told below.
  child.stdin.on("error", () => {});

  const over = new Promise<void>((resolve) => {
    const end = (error: Error): void => {
      listener.closed(error);
      resolve();
    };
    child.on("error", (error) => {
      if (child.pid === undefined) {
        end(ownProblem("tether-missing", `"${options.tether}" cannot be started: ${error.message}.`));
      }
    });
    // What it wrote before it ended is read first: a picture may be among it.
    child.on("close", (status, signal) => {
      if (child.pid !== undefined) {
        const last = complaints.trim().split("\n").at(-1);
        const how = signal ? `by ${signal}` : `with status ${status}`;
        end(ownProblem("tether-gone", `tether ended ${how}${last ? `: ${last}` : "."}`));
      }
    });
  });

  return {
    send(text) {
      child.stdin.write(`${text}\n`);
      return Promise.resolve();
    },
    async close() {
      child.stdin.end();
      const killing = setTimeout(() => child.kill("SIGKILL"), endingTakes);
      await over;
      clearTimeout(killing);
    },
  };
}
