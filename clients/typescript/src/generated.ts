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
 * What went wrong, for programs.
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
 * error: what was asked for did not come. warning: it goes on, differently.
 */
export type Severity = "warning" | "error";
/**
 * From 1 on, never used twice in one folder. null: of no shot, or in doubt.
 */
export type ShotNumber = number | null;
/**
 * A file name without its ending, such as {date}-{n:4}: {camera} is the camera's own name for the file, {date} and {time} when it came, {shot} the shot's number, {n} a number of the folder's own; a width fills with zeros. A folder in front is made below the folder, .. is refused. Empty means {camera}.
 */
export type NameTemplate = string;
/**
 * Words of the host's own, empty when it gave none.
 */
export type Tag = string;
/**
 * fired: under way. complete: every file that is due is there and whole. incomplete: some are. none: no file came. refused: the shutter was never fired.
 */
export type ShotStatus = "fired" | "complete" | "incomplete" | "none" | "refused";
/**
 * raw: the sensor's data. developed: what can be shown. other: what nobody asked for, such as a movie.
 */
export type PictureKind = "raw" | "developed" | "other";
/**
 * What the file is.
 */
export type PictureFormat = "jpeg" | "heif" | "arw" | "dng" | "other";
/**
 * A time of day, ISO 8601 in UTC.
 */
export type Moment = string;
/**
 * What can be asked of the camera; both is a RAW and a JPEG of each shot.
 */
export type FileType = "jpeg" | "raw" | "both";
/**
 * What it took: QUIT, the end of its input, SIGTERM, SIGKILL; gone: there was none, or it had ended by itself.
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
   * Gives the camera back and leaves it alone until the next connect.
   */
  disconnect: {
    parameters: DisconnectParameters;
    result: State;
  };
  /**
   * Takes one picture and answers when its files are there, or when it is clear that they are not.
   */
  capture: {
    parameters: CaptureParameters;
    result: Shot;
  };
  /**
   * Gives up every capture with this tag.
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
   * The state as it is now.
   */
  state: {
    parameters: StateParameters;
    result: State;
  };
  /**
   * Pictures of this folder, oldest first, from its ledger.
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
   * Says one line of the scene language to the virtual camera.
   */
  simulate: {
    parameters: SimulateParameters;
    result: SimulatorAnswer;
  };
  /**
   * Gives the camera back, ends the worker, and then this program.
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
   * Who is speaking. It stands in the record that --record keeps.
   */
  client: Client;
  /**
   * The protocols that the client speaks; 1 must be among them.
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
   * Of the program.
   */
  name: string;
  /**
   * Of the program.
   */
  version: string;
}
/**
 * Who is behind the pipe.
 */
export interface Initialized {
  server: Server;
  /**
   * The one that is spoken from now on.
   */
  protocol: 1;
  worker: Worker;
}
/**
 * The program that answers.
 */
export interface Server {
  /**
   * Of the program.
   */
  name: string;
  /**
   * Of the program.
   */
  version: string;
}
/**
 * The program that drives the camera.
 */
export interface Worker {
  /**
   * Of the program, absolute.
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
 * All that a host can see of the session at any time.
 */
export interface State {
  state: SessionState;
  /**
   * Its model name, while a session is up or being waited for.
   */
  camera: string | null;
  /**
   * Whether the camera is the virtual one.
   */
  simulated: boolean;
  /**
   * The one in force.
   */
  folder: string;
  saveDestination: SaveDestinationSetting;
  fileType: FileTypeSetting;
  /**
   * Workers that took the place of one that was lost.
   */
  restarts: number;
  /**
   * Those that stand, at most one of a code.
   */
  problems: Problem[];
}
/**
 * What was asked, and what the camera does.
 */
export interface SaveDestinationSetting {
  asked: SaveDestination;
  /**
   * null while no session is up.
   */
  inForce: "disk" | "card" | "both" | null;
}
/**
 * What was asked, and what the camera does.
 */
export interface FileTypeSetting {
  /**
   * null: the camera's own.
   */
  asked: "jpeg" | "raw" | "both" | null;
  /**
   * null while no session is up; other for what has no word, such as RAW+HEIF.
   */
  inForce: "jpeg" | "raw" | "both" | "other" | null;
}
/**
 * What went wrong, in words that can be shown.
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
   * The SDK's own code, where it gave one.
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
   * Seconds to wait for files, from the shutter or from the last file; without it what the program was started with, 20 s.
   */
  patience?: number;
  /**
   * Seconds in which the shutter must have been fired, from the shot's turn on; later it is refused.
   */
  expires?: number;
  /**
   * How the files of this shot are named; without it what is configured.
   */
  name?: NameTemplate;
  /**
   * Words of the host's own; come back in the shot and its pictures.
   */
  tag?: string;
}
/**
 * One capture, from the request to its last file.
 */
export interface Shot {
  /**
   * From 1 on, never used twice in one folder.
   */
  shot: number;
  tag: Tag;
  status: ShotStatus;
  /**
   * In UTC; null when it was never fired.
   */
  firedAt: string | null;
  /**
   * In the order in which they came.
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
   * The same whenever this picture is told.
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
   * Absolute, in the folder.
   */
  path: string;
  /**
   * As the camera called the file.
   */
  cameraName: string;
  /**
   * Its size.
   */
  bytes: number;
  /**
   * false: the file is doubtful, and a problem says why.
   */
  whole: boolean;
  at: Moment;
  /**
   * Milliseconds from the shutter's command to the worker's report; null without a shot.
   */
  afterMs: number | null;
  /**
   * Found in what an earlier run left, not by a report.
   */
  recovered: boolean;
}
/**
 * What cancel takes.
 */
export interface CancelParameters {
  /**
   * The tag given to capture; an empty one stands for captures without a tag.
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
   * The folder for pictures. It must exist; its last part is made where it is missing.
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
   * The id of the last picture that is known; those behind it are wanted. One that the folder does not know counts as none.
   */
  after?: string;
  /**
   * The most pictures to answer with.
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
   * Whether each line to and from the worker is to be told.
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
   * Its exit status; a signal n counts as 128 + n.
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
   * How many lines before this one were not told, because the client did not read.
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
