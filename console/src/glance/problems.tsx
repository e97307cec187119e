// What is wrong now or was wrong with the last shot, with what to do about it; and what went wrong lately.

import type { Problem } from "camera-worker/page";
import { timeOfDay } from "../parts/words";
import type { Store, Told } from "../told/store";

const mostShown = 20;

function OneProblem({ problem, at }: { problem: Problem; at?: string }) {
  return (
    <li class={problem.severity} data-code={problem.code}>
      <p class="text">
        <span class="severity">{problem.severity === "error" ? "Error" : "Warning"}</span> {problem.text}
      </p>
      {problem.advice && <p class="advice">{problem.advice}</p>}
      <p class="small">
        {[at, problem.shot !== null && `shot ${problem.shot}`, problem.code, problem.sdk].filter(Boolean).join(" · ")}
      </p>
    </li>
  );
}

/** Those that stand, and those of the last shot until the next one is fired. */
function current({ state, shots }: Told): Problem[] {
  const standing = state?.problems ?? [];
  const last = shots.get(Math.max(0, ...shots.keys()));
  return [...standing, ...(last?.problems ?? []).filter(({ code }) => !standing.some((one) => one.code === code))];
}

export function Problems({ told, store }: { told: Told; store: Store }) {
  const problems = current(told);
  const time = (atMs: number): string => (told.zero === undefined ? "" : timeOfDay(new Date(told.zero + atMs)));
  const lately = told.problems.slice(-mostShown).reverse();
  return (
    <section class="problems" aria-labelledby="problems">
      <h2 id="problems">Problems</h2>
      {problems.length === 0 && <p class="none">None.</p>}
      <ul role="list" aria-label="Problems" aria-live="polite" aria-relevant="additions text">
        {problems.map((problem) => (
          <OneProblem key={`${problem.code} ${problem.shot} ${problem.text}`} problem={problem} />
        ))}
      </ul>
      {lately.length > 0 && (
        <details>
          <summary>Earlier problems ({told.problems.length})</summary>
          <ul role="list" aria-label="Lately">
            {lately.map(({ atMs, what }, index) => (
              <OneProblem key={told.problems.length - index} problem={what} at={time(atMs)} />
            ))}
          </ul>
        </details>
      )}
      <p class="unseen" aria-live="polite">
        {latest(store, problems)}
      </p>
    </section>
  );
}

/** What is read aloud of a problem that is not in the list, such as a folder that was refused. */
function latest({ told }: Store, listed: Problem[]): string {
  const last = told.problems.at(-1)?.what;
  return last && !listed.some(({ code }) => code === last.code) ? `${last.text} ${last.advice}` : "";
}
