// Waiting that a signal can give up.

/** Resolved after the time, or at once when the signal says so. */
export function pause(milliseconds: number, signal: AbortSignal): Promise<void> {
  return new Promise((resolve) => {
    if (signal.aborted) {
      resolve();
      return;
    }
    const done = (): void => {
      clearTimeout(timer);
      signal.removeEventListener("abort", done);
      resolve();
    };
    const timer = setTimeout(done, milliseconds);
    signal.addEventListener("abort", done);
  });
}

/** The promise, or the signal's reason when that comes first. */
export function unless<T>(signal: AbortSignal | undefined, promise: Promise<T>): Promise<T> {
  if (!signal) {
    return promise;
  }
  return new Promise((resolve, reject) => {
    const giveUp = (): void => reject(signal.reason);
    const stopListening = (): void => signal.removeEventListener("abort", giveUp);
    signal.addEventListener("abort", giveUp);
    if (signal.aborted) {
      giveUp();
    }
    promise.then(resolve, reject).finally(stopListening);
  });
}
