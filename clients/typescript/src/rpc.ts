// JSON-RPC 2.0 over one connection: answers find their requests, and no request waits for ever.

import { timeOuts, type Methods, type Problem } from "./generated.js";
import { CameraProblem, RequestError, ownProblem } from "./problem.js";
import type { Connection, Transport, Wishes } from "./transport.js";

export type Method = keyof Methods;

export interface RpcOptions {
  /** Seconds that a shot's files are waited for when the request does not say. */
  patience: number;
  /** Seconds beyond its time-out after which an answer is given up. Whoever answers has 1 s. */
  grace: number;
}

export interface RpcListener {
  notification(method: string, parameters: unknown): void;
  /** A message of any kind has come, with so many characters. */
  received(length: number): void;
  gap(): void;
  closed(why: Error): void;
}

export interface Rpc {
  request<M extends Method>(method: M, parameters: Methods[M]["parameters"]): Promise<Methods[M]["result"]>;
  close(): Promise<void>;
}

interface Waiting {
  resolve(result: never): void;
  reject(error: Error): void;
  timer: ReturnType<typeof setTimeout> | undefined;
  /** The time by which it must be over, when others take their turn behind it. */
  turnEnds: number;
}

interface Message {
  id?: unknown;
  method?: unknown;
  params?: unknown;
  result?: unknown;
  error?: { code: number; message: string; data?: Problem };
}

function seconds(method: Method, parameters: object, patience: number): number {
  const given = new Map(Object.entries(parameters));
  let sum = timeOuts[method]?.seconds ?? 0;
  for (const [name, otherwise] of Object.entries(timeOuts[method]?.parameters ?? {})) {
    const value: unknown = given.get(name);
    sum += typeof value === "number" ? value : (otherwise ?? patience);
  }
  return sum;
}

export function openRpc(transport: Transport, wishes: Wishes, options: RpcOptions, listener: RpcListener): Rpc {
  const waiting = new Map<number, Waiting>();
  let lastId = 0;
  let closed: Error | undefined;

  const settle = (id: number): Waiting | undefined => {
    const request = waiting.get(id);
    waiting.delete(id);
    clearTimeout(request?.timer);
    return request;
  };

  const take = (text: string): void => {
    listener.received(text.length);
    let message: Message;
    try {
      message = JSON.parse(text);
    } catch {
      return;
    }
    if (typeof message !== "object" || message === null) {
      return;
    }
    if (typeof message.method === "string") {
      listener.notification(message.method, message.params);
      return;
    }
    // An answer that comes after it was given up, or to nobody.
    const request = typeof message.id === "number" ? settle(message.id) : undefined;
    if (message.error) {
      const { code, message: sentence, data } = message.error;
      request?.reject(code === -32000 && data ? new CameraProblem(data) : new RequestError(code, sentence));
    } else {
      request?.resolve(message.result as never);
    }
  };

  const connection: Connection = transport.open(
    {
      message: take,
      gap: () => listener.gap(),
      closed(why) {
        closed = why;
        for (const id of [...waiting.keys()]) {
          settle(id)?.reject(why);
        }
        listener.closed(why);
      },
    },
    wishes,
  );

  return {
    request(method, parameters) {
      if (closed) {
        return Promise.reject(closed);
      }
      const id = ++lastId;
      const { turn = false } = timeOuts[method] ?? {};
      const now = performance.now();
      const turnBegins = turn ? Math.max(now, ...[...waiting.values()].map((request) => request.turnEnds)) : now;
      const mostTaken = turnBegins - now + seconds(method, parameters, options.patience) * 1000;
      return new Promise((resolve, reject) => {
        const giveUp = (): void => {
          settle(id)?.reject(ownProblem("no-answer", `"${method}" was not answered in time.`));
        };
        // Others that share the session have their turns too, and nobody here knows how many there are.
        const timer = turn && !transport.owns ? undefined : setTimeout(giveUp, mostTaken + options.grace * 1000);
        waiting.set(id, { resolve, reject, timer, turnEnds: turn ? now + mostTaken : 0 });
        connection
          .send(JSON.stringify({ jsonrpc: "2.0", id, method, params: parameters }))
          .catch((error: unknown) => settle(id)?.reject(error as Error));
      });
    },
    close: () => connection.close(),
  };
}
