// A session that somebody else holds, over HTTP: `POST /rpc` for requests, `GET /events` for what comes by itself, as
// server-sent events: an event called `missed` says that some are forgotten. For pages; it needs nothing but fetch.

import { ownProblem } from "./problem.js";
import { pause } from "./signals.js";
import type { Connection, Listener, Transport } from "./transport.js";

export interface FetchOptions {
  /** Where `rpc` and `events` lie, such as "http://127.0.0.1:8080/". */
  url: string | URL;
  /** Sent with every request. */
  headers?: Readonly<Record<string, string>>;
  /** Milliseconds between two tries to get the events again. */
  retry?: number;
  /** Where the events lie, such as "events?after=0" for one who wants to be told what has been; "events" without it. */
  events?: string;
  /** Told when events come, and why when none do: after each try, until they come again. */
  reach?: (how: "reached" | Error) => void;
}

export function overFetch(options: FetchOptions): Transport {
  return { owns: false, open: (listener) => open(options, listener) };
}

function open(options: FetchOptions, listener: Listener): Connection {
  const { url, headers = {}, retry = 1000, reach = () => {} } = options;
  const ending = new AbortController();
  const { signal } = ending;
  let lastEvent = "";
  let connected: () => void;
  // Nobody is asked before the events are on their way: an answer could overtake what comes first.
  const ready = new Promise<void>((resolve) => (connected = resolve));

  async function hear(): Promise<void> {
    const response = await fetch(new URL(options.events ?? "events", url), {
      headers: { ...headers, accept: "text/event-stream", ...(lastEvent && { "last-event-id": lastEvent }) },
      credentials: "same-origin",
      signal,
    });
    if (!response.ok || !response.body) {
      throw new Error(`GET events: ${response.status}`);
    }
    connected();
    reach("reached");
    for await (const { id, name, data } of events(response.body)) {
      lastEvent = id ?? lastEvent;
      if (data !== "") {
        listener.message(data);
      }
      if (name === "missed") {
        listener.gap();
      }
    }
    throw new Error("GET events: they have ended");
  }

  async function hearUntilTheEnd(): Promise<void> {
    while (!signal.aborted) {
      await hear().catch((error: unknown) => {
        if (!signal.aborted) {
          reach(error as Error);
        }
      });
      await pause(retry, signal);
      // Whoever sends the events may have forgotten those that were missed.
      listener.gap();
    }
    listener.closed(ownProblem("closed", "The camera was closed."));
  }
  const over = hearUntilTheEnd();

  return {
    async send(text) {
      await Promise.race([ready, over]);
      const response = await fetch(new URL("rpc", url), {
        method: "POST",
        headers: { ...headers, "content-type": "application/json" },
        credentials: "same-origin",
        body: text,
        signal,
      }).catch((error: unknown) => {
        throw ownProblem("tether-gone", `The program that holds the camera cannot be reached: ${error}`);
      });
      const answer = await response.text();
      if (!response.ok) {
        throw ownProblem("tether-gone", `The program that holds the camera answered ${response.status}.`);
      }
      listener.message(answer);
    },
    async close() {
      ending.abort();
      await over;
    },
  };
}

interface Event {
  id: string | undefined;
  name: string;
  data: string;
}

/** The events of a stream, as the standard has them: lines `id:`, `event:` and `data:` up to an empty one. */
async function* events(stream: ReadableStream<Uint8Array>): AsyncGenerator<Event> {
  let id: string | undefined;
  let name = "";
  let data: string[] = [];
  for await (const line of lines(stream)) {
    const [, field, value] = /^([^:]*)(?:: ?)?(.*)$/s.exec(line)!;
    if (line === "") {
      yield { id, name, data: data.join("\n") };
      name = "";
      data = [];
    } else if (field === "data") {
      data.push(value!);
    } else if (field === "event") {
      name = value!;
    } else if (field === "id") {
      id = value;
    }
  }
}

async function* lines(stream: ReadableStream<Uint8Array>): AsyncGenerator<string> {
  const reader = stream.getReader();
  const decoder = new TextDecoder();
  let begun = "";
  for (;;) {
    const { done, value } = await reader.read();
    if (done) {
      return;
    }
    // A line may end with both; the two may come apart.
    const found = (begun + decoder.decode(value, { stream: true })).split(/\r\n|\n|\r(?!$)/);
    begun = found.pop()!;
    yield* found;
  }
}
