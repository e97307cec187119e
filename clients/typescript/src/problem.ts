// What can go wrong, as errors.

import type { Problem, ProblemCode, Severity } from "./generated.js";

/**
 * What this client itself has to tell, beside the codes of the catalogue. tether-missing: the program cannot be
 * started. tether-gone: it ended while something waited for it, and is started again. no-answer: it did not answer in
 * time. closed: close() was called.
 */
export type ClientCode = "tether-missing" | "tether-gone" | "no-answer" | "closed";

/** Something went wrong with the camera, the worker or a disk: in words that can be shown to a photographer. */
export class CameraProblem extends Error {
  readonly code: ProblemCode | ClientCode;
  readonly severity: Severity;
  /** What happened; the same as `message`. */
  readonly text: string;
  /** What to do about it. */
  readonly advice: string;
  /** The SDK's own code, such as "0x00008402", where it gave one. */
  readonly sdk: string | null;
  /** The shot that it is about. */
  readonly shot: number | null;

  constructor(problem: Omit<Problem, "code"> & { code: ProblemCode | ClientCode }) {
    super(problem.text);
    this.name = "CameraProblem";
    this.code = problem.code;
    this.severity = problem.severity;
    this.text = problem.text;
    this.advice = problem.advice;
    this.sdk = problem.sdk;
    this.shot = problem.shot;
  }
}

/**
 * A request that is wrong in itself, such as one with a parameter out of its range: a mistake of the host's program.
 */
export class RequestError extends Error {
  /** JSON-RPC's own: -32602 for a bad parameter, -32601 for a method that is not there. */
  readonly code: number;

  constructor(code: number, message: string) {
    super(message);
    this.name = "RequestError";
    this.code = code;
  }
}

const advices: Record<ClientCode, string> = {
  "tether-missing": "Install the application again.",
  "tether-gone": "Wait a moment. The camera is connected again by itself.",
  "no-answer": "Try again. If it stays like this, start the application again.",
  closed: "Open the camera again.",
};

/** A problem that this client has found. */
export function ownProblem(code: ClientCode, text: string, advice = advices[code]): CameraProblem {
  return new CameraProblem({ code, severity: "error", text, advice, sdk: null, shot: null });
}

export function isOwn(problem: CameraProblem): boolean {
  return problem.code in advices;
}
