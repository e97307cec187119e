// The virtual camera's panel: what can happen to a camera, and the line that makes it happen.

import { useEffect, useRef, useState } from "preact/hooks";
import type { Session } from "../told/session";

const buttons = [
  ["Pull cable", "unplug"],
  ["Plug cable", "plug"],
  ["Card out", "card out"],
  ["Card in", "card in"],
  ["Press shutter", "shutter"],
] as const;

const dials = [
  ["jpeg", "JPEG"],
  ["raw", "RAW"],
  ["both", "RAW and JPEG"],
  ["heif", "RAW and HEIF"],
] as const;

interface Sent {
  number: number;
  line: string;
  answer: string[] | undefined;
}

const mostShown = 8;

/** As a shell takes it. */
export const command = (line: string): string =>
  `camera-sim ${/^[\w ./:-]*$/.test(line) ? line : `'${line.replaceAll("'", String.raw`'\''`)}'`}`;

export function VirtualCamera({ session }: { session: Session }) {
  const [sent, setSent] = useState<Sent[]>([]);
  const [copied, setCopied] = useState<number>();
  const number = useRef(0);
  // The dial stands where the camera says; until it says so, where it was turned to.
  const { inForce = null } = session.store.told.state?.fileType ?? {};
  const [turned, setTurned] = useState<string>();
  useEffect(() => setTurned(undefined), [inForce]);
  const dial = turned ?? (inForce === "other" ? "heif" : inForce) ?? "";
  const scene = useRef<HTMLInputElement>(null);

  const send = async (line: string): Promise<void> => {
    const one: Sent = { number: ++number.current, line, answer: undefined };
    setSent((list) => [one, ...list].slice(0, mostShown));
    const answer = (await session.ask("simulate", { line }))?.lines ?? ["It was not sent."];
    setSent((list) => list.map((other) => (other.number === one.number ? { ...other, answer } : other)));
  };
  const copy = async ({ number, line }: Sent): Promise<void> => {
    await navigator.clipboard.writeText(command(line));
    setCopied(number);
  };
  const sendScene = (event: Event): void => {
    event.preventDefault();
    const line = scene.current!.value.trim();
    if (line !== "") {
      scene.current!.value = "";
      void send(line);
    }
  };

  return (
    <section class="virtual" aria-label="Virtual camera">
      <h2>Virtual camera</h2>
      <div class="buttons">
        {buttons.map(([name, line]) => (
          <button key={line} type="button" title={command(line)} onClick={() => void send(line)}>
            {name}
          </button>
        ))}
      </div>
      <div class="setting">
        <label for="dial">Dial</label>
        <select
          id="dial"
          value={dial}
          onChange={({ currentTarget: { value } }) => {
            setTurned(value);
            void send(`dial ${value}`);
          }}
        >
          <option value="" disabled hidden>
            Turn it to
          </option>
          {dials.map(([word, text]) => (
            <option key={word} value={word}>
              {text}
            </option>
          ))}
        </select>
      </div>
      <form onSubmit={sendScene}>
        <label for="scene">Scene line</label>
        <div class="line">
          <input
            id="scene"
            ref={scene}
            autocomplete="off"
            spellcheck={false}
            placeholder="next file late 10s truncated"
          />
          <button type="submit">Send</button>
        </div>
      </form>
      <h3>Sent</h3>
      <ol class="sent" role="list" aria-label="Sent to the virtual camera" aria-live="polite">
        {sent.map((one) => (
          <li key={one.number}>
            <code id={`sent-${one.number}`}>{command(one.line)}</code>
            <button type="button" aria-describedby={`sent-${one.number}`} onClick={() => void copy(one)}>
              {copied === one.number ? "Copied" : "Copy"}
            </button>
            <span class="answer" data-ok={one.answer?.at(-1) === "ok"}>
              {one.answer ? one.answer.join("\n") : "…"}
            </span>
          </li>
        ))}
      </ol>
      {sent.length === 0 && (
        <p class="none">What the buttons send is shown here, to be copied into a scene or a test.</p>
      )}
    </section>
  );
}
