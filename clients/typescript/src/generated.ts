// Written by generate.js: change catalogue/openrpc.json.

/**
 * Where the session stands.
 */
export type SessionState =
  "down" | "starting" | "idle" | "opening" | "settling" | "ready" | "lost" | "closing" | "ending";
/**
 * Where the camera saves: to the computer, to its card, or to both.
 */
export type SaveDestination = "disk" | "card" | "both";
/**
 * What went wrong, as a code for programs.
 */
export type ProblemCode =
  | "worker-missing"
  | "worker-not-starting"
  | "worker-gone"
  | "worker-hangs"
  | "worker-floods"
  | "sdk-not-initialised"
  | "camera-not-found"
  | "camera-no-answer"
  | "camera-refused"
  | "camera-lost"
  | "camera-error"
  | "not-connected"
  | "destination-not-taken"
  | "file-type-not-taken"
  | "folder-not-taken"
  | "folder-gone"
  | "folder-not-permitted"
  | "folder-in-use"
  | "card-missing"
  | "no-picture"
  | "half-missing"
  | "picture-damaged"
  | "picture-not-there"
  | "picture-outside"
  | "picture-not-placed"
  | "disk-nearly-full"
  | "busy"
  | "cancelled"
  | "expired";
/**
 * error: what was asked for did not happen. warning: the work goes on, but differently.
 */
export type Severity = "warning" | "error";
/**
 * Counts from 1, never used twice in one folder. null: it belongs to no shot, or nobody can tell to which.
 */
export type ShotNumber = number | null;
/**
 * A file name without its extension, such as {date}-{n:4}. {camera} is the camera's own name for the file, {date} and {time} say when it came, {shot} is the shot's number, and {n} is the folder's own running number; a width such as :4 pads with zeros. A folder in front of the name is created inside the picture folder; .. is refused. Empty means {camera}.
 */
export type NameTemplate = string;
/**
 * The host's own text; empty if it gave none.
 */
export type Tag = string;
/**
 * fired: under way. complete: every expected file is there and whole. incomplete: some are not. none: no file came. refused: the shutter was never fired.
 */
export type ShotStatus = "fired" | "complete" | "incomplete" | "none" | "refused";
/**
 * raw: the sensor's data. developed: a picture that can be shown. other: something nobody asked for, such as a movie.
 */
export type PictureKind = "raw" | "developed" | "other";
/**
 * What the file is.
 */
export type PictureFormat = "jpeg" | "heif" | "arw" | "dng" | "other";
/**
 * A date and time, ISO 8601 in UTC.
 */
export type Moment = string;
/**
 * What the camera can be asked for; both means a RAW and a JPEG of each shot.
 */
export type FileType = "jpeg" | "raw" | "both";
/**
 * What it took to end it: QUIT, the end of its input, SIGTERM or SIGKILL. gone: there was no worker, or it had ended by itself.
 */
export type WorkerEnd = "quit" | "input" | "sigterm" | "sigkill" | "gone";
/**
 * Either > (to the worker) or < (from the worker).
 */
export type Direction = "<" | ">";

/**
 * All that is said on the wire.
 */
export interface Wire {
  methods: Methods;
  notifications: Notifications;
}
/**
 * Each request: what it takes, and what it is answered with.
 */
export interface Methods {
  /**
   * Opens the folder and starts the worker; the camera is not touched yet.
   */
  initialize: {
    parameters: InitializeParameters;
    result: Initialized;
  };
  /**
   * Connects the camera and keeps it connected from now on.
   */
  connect: {
    parameters: ConnectParameters;
    result: State;
  };
  /**
   * Releases the camera and leaves it alone until the next connect.
   */
  disconnect: {
    parameters: DisconnectParameters;
    result: State;
  };
  /**
   * Takes one picture and answers once its files are there, or once it is clear that they will not come.
   */
  capture: {
    parameters: CaptureParameters;
    result: Shot;
  };
  /**
   * Cancels every capture with this tag.
   */
  cancel: {
    parameters: CancelParameters;
    result: Nothing;
  };
  /**
   * Changes where pictures go, how they are named and what the camera shoots.
   */
  configure: {
    parameters: ConfigureParameters;
    result: State;
  };
  /**
   * The current state.
   */
  state: {
    parameters: StateParameters;
    result: State;
  };
  /**
   * The pictures in this folder, oldest first, as its ledger lists them.
   */
  pictures: {
    parameters: PicturesParameters;
    result: Pictures;
  };
  /**
   * Turns the line notification on or off.
   */
  subscribe: {
    parameters: SubscribeParameters;
    result: Nothing;
  };
  /**
   * Sends one line of the scene language to the virtual camera.
   */
  simulate: {
    parameters: SimulateParameters;
    result: SimulatorAnswer;
  };
  /**
   * Releases the camera, ends the worker, and then this program.
   */
  shutdown: {
    parameters: ShutdownParameters;
    result: Ended;
  };
}
/**
 * What initialize takes.
 */
export interface InitializeParameters {
  /**
   * Who is speaking. It is noted in the record that --record keeps.
   */
  client: Client;
  /**
   * The protocol versions the client speaks; 1 must be among them.
   *
   * @maxItems 64
   */
  protocols?: number[];
}
/**
 * The host.
 */
export interface Client {
  /**
   * The program's name.
   */
  name: string;
  /**
   * The program's version.
   */
  version: string;
}
/**
 * Who is behind the pipe.
 */
export interface Initialized {
  server: Server;
  /**
   * The version spoken from now on.
   */
  protocol: 1;
  worker: Worker;
}
/**
 * The program that answers.
 */
export interface Server {
  /**
   * The program's name.
   */
  name: string;
  /**
   * The program's version.
   */
  version: string;
}
/**
 * The program that drives the camera.
 */
export interface Worker {
  /**
   * The program's absolute path.
   */
  path: string;
  /**
   * What it calls itself, such as START sony-1.0.
   */
  banner: string;
  /**
   * Whether its camera is the virtual one.
   */
  simulated: boolean;
}
/**
 * What connect takes.
 */
export interface ConnectParameters {}
/**
 * Everything a host can see of the session at any time.
 */
export interface State {
  state: SessionState;
  /**
   * Its model name, while a session is up or expected back.
   */
  camera: string | null;
  /**
   * Whether the camera is the virtual one.
   */
  simulated: boolean;
  /**
   * The folder in force.
   */
  folder: string;
  saveDestination: SaveDestinationSetting;
  fileType: FileTypeSetting;
  /**
   * How many workers have replaced one that was lost.
   */
  restarts: number;
  /**
   * The problems that stand now, at most one per code.
   */
  problems: Problem[];
}
/**
 * What was asked for, and what the camera does.
 */
export interface SaveDestinationSetting {
  asked: SaveDestination;
  /**
   * null while no session is up.
   */
  inForce: "disk" | "card" | "both" | null;
}
/**
 * What was asked for, and what the camera does.
 */
export interface FileTypeSetting {
  /**
   * null: the camera keeps its own.
   */
  asked: "jpeg" | "raw" | "both" | null;
  /**
   * null while no session is up; other for what has no name here, such as RAW+HEIF.
   */
  inForce: "jpeg" | "raw" | "both" | "other" | null;
}
/**
 * What went wrong, in words you can show to people.
 */
export interface Problem {
  code: ProblemCode;
  severity: Severity;
  /**
   * What happened.
   */
  text: string;
  /**
   * What to do about it.
   */
  advice: string;
  /**
   * The SDK's own code, if it gave one.
   */
  sdk: string | null;
  shot: ShotNumber;
}
/**
 * What disconnect takes.
 */
export interface DisconnectParameters {}
/**
 * What capture takes.
 */
export interface CaptureParameters {
  /**
   * Seconds to wait for files, counted from the shutter or from the last file. The default is what the program was started with, usually 20 s.
   */
  patience?: number;
  /**
   * Seconds within which the shutter must fire, counted from the shot's turn; after that it is refused.
   */
  expires?: number;
  /**
   * How the files of this shot are named. The default is what is configured.
   */
  name?: NameTemplate;
  /**
   * The host's own text; it comes back in the shot and its pictures.
   */
  tag?: string;
}
/**
 * One capture, from the request to its last file.
 */
export interface Shot {
  /**
   * Counts from 1, never used twice in one folder.
   */
  shot: number;
  tag: Tag;
  status: ShotStatus;
  /**
   * In UTC; null if it was never fired.
   */
  firedAt: string | null;
  /**
   * In the order they came.
   */
  pictures: Picture[];
  /**
   * What went wrong with this shot.
   */
  problems: Problem[];
}
/**
 * One file that the camera sent, in its place in the folder.
 */
export interface Picture {
  /**
   * The same each time this picture is sent.
   */
  id: string;
  shot: ShotNumber;
  tag: Tag;
  /**
   * The same for both halves of a RAW pair.
   */
  pair: string;
  kind: PictureKind;
  format: PictureFormat;
  /**
   * The absolute path, in the folder.
   */
  path: string;
  /**
   * What the camera called the file.
   */
  cameraName: string;
  /**
   * Its size.
   */
  bytes: number;
  /**
   * false: the file may be damaged, and a problem says why.
   */
  whole: boolean;
  at: Moment;
  /**
   * Milliseconds from the shutter command to the worker's report; null without a shot.
   */
  afterMs: number | null;
  /**
   * Whether it was found among what an earlier run left, and not reported by the worker.
   */
  recovered: boolean;
}
/**
 * What cancel takes.
 */
export interface CancelParameters {
  /**
   * The tag given to capture; an empty one means captures without a tag.
   */
  tag: Tag;
}
/**
 * Done.
 */
export interface Nothing {}
/**
 * What configure takes.
 */
export interface ConfigureParameters {
  /**
   * The folder for pictures. If only its last part is missing, that is created; the rest must exist.
   */
  folder?: string;
  /**
   * Where the camera saves.
   */
  saveDestination?: SaveDestination;
  /**
   * What the camera shoots.
   */
  fileType?: FileType;
  /**
   * How files are named from now on.
   */
  name?: NameTemplate;
}
/**
 * What state takes.
 */
export interface StateParameters {}
/**
 * What pictures takes.
 */
export interface PicturesParameters {
  /**
   * The id of the last picture the host knows; the answer begins with the next one. With an id that the folder does not know, the list begins with the oldest.
   */
  after?: string;
  /**
   * The largest number of pictures to return.
   */
  limit?: number;
}
/**
 * Pictures of the folder.
 */
export interface Pictures {
  /**
   * Oldest first.
   */
  pictures: Picture[];
}
/**
 * What subscribe takes.
 */
export interface SubscribeParameters {
  /**
   * Whether to send each line to and from the worker.
   */
  lines: boolean;
}
/**
 * What simulate takes.
 */
export interface SimulateParameters {
  /**
   * A command, without its line break.
   */
  line: string;
}
/**
 * What the virtual camera answered.
 */
export interface SimulatorAnswer {
  /**
   * The last one is ok, or error: and a sentence.
   */
  lines: string[];
}
/**
 * What shutdown takes.
 */
export interface ShutdownParameters {
  /**
   * Seconds to wait for files that are on their way.
   */
  patience?: number;
}
/**
 * How the worker ended.
 */
export interface Ended {
  worker: WorkerEnd;
  /**
   * Its exit status; 128 + n if signal n ended it.
   */
  status: number;
}
/**
 * What comes by itself.
 */
export interface Notifications {
  state: State;
  picture: Picture;
  shot: Shot;
  problem: Problem;
  line: Line;
}
/**
 * One line of the worker's own protocol (docs/protocol.md).
 */
export interface Line {
  direction: Direction;
  /**
   * Without its line break.
   */
  text: string;
  /**
   * Milliseconds since the start.
   */
  atMs: number;
  /**
   * How many lines just before this one were not sent because the client did not read.
   */
  dropped: number;
}

/**
 * In seconds, how long an answer may take: this many and the parameters named, with what they are when they are not given
 * (null: what the program was started with); with `turn` also the end of the captures and changes before it.
 */
export const timeOuts: {
  readonly [method in keyof Methods]: {
    readonly seconds: number;
    readonly turn: boolean;
    readonly parameters: { readonly [name: string]: number | null };
  };
} = {
  initialize: { seconds: 30, turn: false, parameters: {} },
  connect: { seconds: 60, turn: false, parameters: {} },
  disconnect: { seconds: 20, turn: false, parameters: {} },
  capture: { seconds: 15, turn: true, parameters: {"expires":5,"patience":null} },
  cancel: { seconds: 0, turn: false, parameters: {} },
  configure: { seconds: 60, turn: true, parameters: {} },
  state: { seconds: 0, turn: false, parameters: {} },
  pictures: { seconds: 0, turn: false, parameters: {} },
  subscribe: { seconds: 0, turn: false, parameters: {} },
  simulate: { seconds: 0, turn: false, parameters: {} },
  shutdown: { seconds: 20, turn: false, parameters: {"patience":10} },
};
