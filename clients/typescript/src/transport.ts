// How messages get to `tether serve` and back. There are two: a child process, and fetch with server-sent events.

import type { SaveDestination, FileType } from "./generated.js";

/** What a session is started with; only a transport that starts a process has a use for it. */
export interface Wishes {
  folder?: string;
  saveDestination?: SaveDestination;
  fileType?: FileType;
  name?: string;
}

/** What a connection tells. */
export interface Listener {
  /** One message, whole. */
  message(text: string): void;
  /** Messages may have been missed. */
  gap(): void;
  /** Once, when nothing comes any more. */
  closed(why: Error): void;
}

export interface Connection {
  /** Rejected when it is known that the message did not arrive. */
  send(text: string): Promise<void>;
  /** Gives up whatever is still under way. Resolved once listener.closed() has been called. */
  close(): Promise<void>;
}

export interface Transport {
  /**
   * Whether the session is this client's alone: it initializes, shuts down, and begins again when the connection is
   * lost.
   */
  readonly owns: boolean;
  open(listener: Listener, wishes: Wishes): Connection;
}
