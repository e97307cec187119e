// Settings: what was asked and what is in force, told apart, and the folder with its room.

import type { ComponentChildren } from "preact";
import { useRef, useState } from "preact/hooks";
import { bytes } from "../parts/words";
import type { Session } from "../told/session";
import { sheetItems } from "../told/shots";
import type { Told } from "../told/store";

/** The words on the wire, and what a photographer calls them. */
const destinations = { disk: "Computer", card: "Memory card", both: "Computer and card" } as const;
const fileTypes = { jpeg: "JPEG", raw: "RAW", both: "RAW and JPEG" } as const;
const inForceTypes = { ...fileTypes, other: "something else, such as RAW and HEIF" } as const;

function Setting(setting: {
  name: string;
  id: string;
  asked: string | null;
  inForce: string | null;
  words: Record<string, string>;
  inForceWords: Record<string, string>;
  disabled: boolean;
  change: (word: string) => Promise<unknown>;
}) {
  const [changing, setChanging] = useState<string>();
  const { asked, inForce } = setting;
  const differs = asked !== null && inForce !== null && asked !== inForce;
  const change = async (word: string): Promise<void> => {
    setChanging(word);
    await setting.change(word);
    setChanging(undefined);
  };
  return (
    <div class="setting">
      <label for={setting.id}>{setting.name}</label>
      <select
        id={setting.id}
        value={changing ?? asked ?? ""}
        disabled={setting.disabled}
        aria-describedby={`${setting.id}-in-force`}
        onChange={(event) => void change(event.currentTarget.value)}
      >
        {asked === null && <option value="">As set on the camera</option>}
        {Object.entries(setting.words).map(([word, text]) => (
          <option key={word} value={word}>
            {text}
          </option>
        ))}
      </select>
      <p id={`${setting.id}-in-force`} class={differs && changing === undefined ? "in-force differs" : "in-force"}>
        {changing !== undefined
          ? "Being changed."
          : inForce === null
            ? "Known once a camera is connected."
            : (differs ? "Asked, but not in force. In force: " : "In force: ") +
              (setting.inForceWords[inForce] ?? inForce)}
      </p>
    </div>
  );
}

/** How many pictures the mean is taken of. */
const recent = 20;

function room(told: Told): ComponentChildren {
  if (!told.space) {
    return "The free space is not known.";
  }
  const sizes = sheetItems(told)
    .slice(0, recent)
    .map(({ pictures }) => pictures.reduce((sum, picture) => sum + picture.bytes, 0));
  const mean = sizes.reduce((sum, size) => sum + size, 0) / sizes.length;
  const free = `${bytes(told.space.freeBytes)} free`;
  return mean > 0
    ? `Room for about ${Math.floor(told.space.freeBytes / mean).toLocaleString()} pictures, ${free}.`
    : `${free}.`;
}

function Folder({ session }: { session: Session }) {
  const folder = useRef<HTMLInputElement>(null);
  const name = useRef<HTMLInputElement>(null);
  const [isChanging, setChanging] = useState(false);
  const change = async (event: Event): Promise<void> => {
    event.preventDefault();
    const wishes = {
      ...(folder.current!.value !== "" && { folder: folder.current!.value }),
      ...(name.current!.value !== "" && { name: name.current!.value }),
    };
    if (Object.keys(wishes).length > 0) {
      setChanging(true);
      if (await session.ask("configure", wishes)) {
        folder.current!.value = "";
      }
      setChanging(false);
    }
  };
  return (
    <details>
      <summary>Change folder or file names</summary>
      <form onSubmit={(event) => void change(event)}>
        <label for="folder">Folder</label>
        <input
          id="folder"
          ref={folder}
          autocomplete="off"
          spellcheck={false}
          placeholder={session.store.told.state?.folder}
        />
        <label for="name">File names</label>
        <input
          id="name"
          ref={name}
          autocomplete="off"
          spellcheck={false}
          placeholder="{camera}"
          aria-describedby="names"
        />
        <p id="names" class="small">
          {"{camera}, {date}, {time}, {shot}, {n} and {n:4}; a folder in front is made."}
        </p>
        <button type="submit" aria-disabled={isChanging}>
          Change
        </button>
      </form>
    </details>
  );
}

export function Settings({ session }: { session: Session }) {
  const { told } = session.store;
  const { state } = told;
  return (
    <section class="settings" aria-labelledby="settings">
      <h2 id="settings">Settings</h2>
      <Setting
        name="Save to"
        id="save-to"
        asked={state?.saveDestination.asked ?? null}
        inForce={state?.saveDestination.inForce ?? null}
        words={destinations}
        inForceWords={destinations}
        disabled={!state}
        change={(word) => session.ask("configure", { saveDestination: word as keyof typeof destinations })}
      />
      <Setting
        name="File type"
        id="file-type"
        asked={state?.fileType.asked ?? null}
        inForce={state?.fileType.inForce ?? null}
        words={fileTypes}
        inForceWords={inForceTypes}
        disabled={!state}
        change={(word) => session.ask("configure", { fileType: word as keyof typeof fileTypes })}
      />
      <p class="folder">
        <span class="label">Folder</span> <span class="path">{state?.folder}</span>
      </p>
      <p class="room">{room(told)}</p>
      <Folder session={session} />
    </section>
  );
}
