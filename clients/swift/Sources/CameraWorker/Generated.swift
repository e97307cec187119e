// All that is said on the wire, and how long each answer may take.
// Written by catalogue/generate: change catalogue/openrpc.json.

extension Camera {
    /// The host.
    public struct Client: Codable, Hashable, Sendable {
        /// The program's name.
        public var name: String
        /// The program's version.
        public var version: String

        /// With these values.
        public init(name: String, version: String) {
            self.name = name
            self.version = version
        }
    }

    /// The program that answers.
    public struct Server: Codable, Hashable, Sendable {
        /// The program's name.
        public var name: String
        /// The program's version.
        public var version: String

        /// With these values.
        public init(name: String, version: String) {
            self.name = name
            self.version = version
        }
    }

    /// The program that drives the camera.
    public struct Worker: Codable, Hashable, Sendable {
        /// The program's absolute path.
        public var path: String
        /// What it calls itself, such as START sony-1.0.
        public var banner: String
        /// Whether its camera is the virtual one.
        public var simulated: Bool

        /// With these values.
        public init(path: String, banner: String, simulated: Bool) {
            self.path = path
            self.banner = banner
            self.simulated = simulated
        }
    }

    /// Who is behind the pipe.
    public struct Initialized: Codable, Hashable, Sendable {
        /// The program that answers.
        public var server: Server
        /// The version spoken from now on.
        public var `protocol`: Int
        /// The program that drives the camera.
        public var worker: Worker

        /// With these values.
        public init(server: Server, `protocol`: Int, worker: Worker) {
            self.server = server
            self.protocol = `protocol`
            self.worker = worker
        }
    }

    /// Where the session stands.
    public struct SessionState: CameraWord {
        /// As on the wire.
        public let rawValue: String

        /// Any word, known or not.
        public init(rawValue: String) {
            self.rawValue = rawValue
        }

        public static let down = SessionState("down")
        public static let starting = SessionState("starting")
        public static let idle = SessionState("idle")
        public static let opening = SessionState("opening")
        public static let settling = SessionState("settling")
        public static let ready = SessionState("ready")
        public static let lost = SessionState("lost")
        public static let closing = SessionState("closing")
        public static let ending = SessionState("ending")
    }

    /// Where the camera saves: to the computer, to its card, or to both.
    public struct SaveDestination: CameraWord {
        /// As on the wire.
        public let rawValue: String

        /// Any word, known or not.
        public init(rawValue: String) {
            self.rawValue = rawValue
        }

        public static let disk = SaveDestination("disk")
        public static let card = SaveDestination("card")
        public static let both = SaveDestination("both")
    }

    /// What the camera can be asked for; both means a RAW and a JPEG of each shot.
    public struct FileType: CameraWord {
        /// As on the wire.
        public let rawValue: String

        /// Any word, known or not.
        public init(rawValue: String) {
            self.rawValue = rawValue
        }

        public static let jpeg = FileType("jpeg")
        public static let raw = FileType("raw")
        public static let both = FileType("both")
    }

    /// What was asked for, and what the camera does.
    public struct SaveDestinationSetting: Codable, Hashable, Sendable {
        /// Where the camera saves: to the computer, to its card, or to both.
        public var asked: SaveDestination
        /// nil while no session is up.
        public var inForce: SaveDestination?

        /// With these values.
        public init(asked: SaveDestination, inForce: SaveDestination?) {
            self.asked = asked
            self.inForce = inForce
        }
    }

    /// What was asked for, and what the camera does.
    public struct FileTypeSetting: Codable, Hashable, Sendable {
        /// nil: the camera keeps its own.
        public var asked: FileType?
        /// nil while no session is up; other for what has no name here, such as RAW+HEIF.
        public var inForce: InForce?

        /// With these values.
        public init(asked: FileType?, inForce: InForce?) {
            self.asked = asked
            self.inForce = inForce
        }

        /// nil while no session is up; other for what has no name here, such as RAW+HEIF.
        public struct InForce: CameraWord {
            /// As on the wire.
            public let rawValue: String

            /// Any word, known or not.
            public init(rawValue: String) {
                self.rawValue = rawValue
            }

            public static let jpeg = InForce("jpeg")
            public static let raw = InForce("raw")
            public static let both = InForce("both")
            public static let other = InForce("other")
        }
    }

    /// Everything a host can see of the session at any time.
    public struct State: Codable, Hashable, Sendable {
        /// Where the session stands.
        public var state: SessionState
        /// Its model name, while a session is up or expected back.
        public var camera: String?
        /// Whether the camera is the virtual one.
        public var simulated: Bool
        /// The folder in force.
        public var folder: String
        /// What was asked for, and what the camera does.
        public var saveDestination: SaveDestinationSetting
        /// What was asked for, and what the camera does.
        public var fileType: FileTypeSetting
        /// How many workers have replaced one that was lost.
        public var restarts: Int
        /// The problems that stand now, at most one per code.
        public var problems: [Problem]

        /// With these values.
        public init(
            state: SessionState,
            camera: String?,
            simulated: Bool,
            folder: String,
            saveDestination: SaveDestinationSetting,
            fileType: FileTypeSetting,
            restarts: Int,
            problems: [Problem]
        ) {
            self.state = state
            self.camera = camera
            self.simulated = simulated
            self.folder = folder
            self.saveDestination = saveDestination
            self.fileType = fileType
            self.restarts = restarts
            self.problems = problems
        }
    }

    /// raw: the sensor's data. developed: a picture that can be shown. other: something nobody asked for, such as a
    /// movie.
    public struct PictureKind: CameraWord {
        /// As on the wire.
        public let rawValue: String

        /// Any word, known or not.
        public init(rawValue: String) {
            self.rawValue = rawValue
        }

        /// The sensor's data.
        public static let raw = PictureKind("raw")
        /// A picture that can be shown.
        public static let developed = PictureKind("developed")
        /// Something nobody asked for, such as a movie.
        public static let other = PictureKind("other")
    }

    /// What the file is.
    public struct PictureFormat: CameraWord {
        /// As on the wire.
        public let rawValue: String

        /// Any word, known or not.
        public init(rawValue: String) {
            self.rawValue = rawValue
        }

        public static let jpeg = PictureFormat("jpeg")
        public static let heif = PictureFormat("heif")
        public static let arw = PictureFormat("arw")
        public static let dng = PictureFormat("dng")
        public static let other = PictureFormat("other")
    }

    /// One file that the camera sent, in its place in the folder.
    public struct Picture: Codable, Hashable, Sendable {
        /// The same each time this picture is sent.
        public var id: String
        /// Counts from 1, never used twice in one folder. nil: it belongs to no shot, or nobody can tell to which.
        public var shot: Int?
        /// The host's own text; empty if it gave none.
        public var tag: String
        /// The same for both halves of a RAW pair.
        public var pair: String
        /// raw: the sensor's data. developed: a picture that can be shown. other: something nobody asked for, such as a
        /// movie.
        public var kind: PictureKind
        /// What the file is.
        public var format: PictureFormat
        /// The absolute path, in the folder.
        public var path: String
        /// What the camera called the file.
        public var cameraName: String
        /// Its size.
        public var bytes: Int
        /// false: the file may be damaged, and a problem says why.
        public var whole: Bool
        /// A date and time, ISO 8601 in UTC.
        public var at: String
        /// Milliseconds from the shutter command to the worker's report; nil without a shot.
        public var afterMs: Int?
        /// Whether it was found among what an earlier run left, and not reported by the worker.
        public var recovered: Bool

        /// With these values.
        public init(
            id: String,
            shot: Int?,
            tag: String,
            pair: String,
            kind: PictureKind,
            format: PictureFormat,
            path: String,
            cameraName: String,
            bytes: Int,
            whole: Bool,
            at: String,
            afterMs: Int?,
            recovered: Bool
        ) {
            self.id = id
            self.shot = shot
            self.tag = tag
            self.pair = pair
            self.kind = kind
            self.format = format
            self.path = path
            self.cameraName = cameraName
            self.bytes = bytes
            self.whole = whole
            self.at = at
            self.afterMs = afterMs
            self.recovered = recovered
        }
    }

    /// Pictures of the folder.
    public struct Pictures: Codable, Hashable, Sendable {
        /// Oldest first.
        public var pictures: [Picture]

        /// With these values.
        public init(pictures: [Picture]) {
            self.pictures = pictures
        }
    }

    /// fired: under way. complete: every expected file is there and whole. incomplete: some are not. none: no file
    /// came. refused: the shutter was never fired.
    public struct ShotStatus: CameraWord {
        /// As on the wire.
        public let rawValue: String

        /// Any word, known or not.
        public init(rawValue: String) {
            self.rawValue = rawValue
        }

        /// Under way.
        public static let fired = ShotStatus("fired")
        /// Every expected file is there and whole.
        public static let complete = ShotStatus("complete")
        /// Some are not.
        public static let incomplete = ShotStatus("incomplete")
        /// No file came.
        public static let none = ShotStatus("none")
        /// The shutter was never fired.
        public static let refused = ShotStatus("refused")
    }

    /// One capture, from the request to its last file.
    public struct Shot: Codable, Hashable, Sendable {
        /// Counts from 1, never used twice in one folder.
        public var shot: Int
        /// The host's own text; empty if it gave none.
        public var tag: String
        /// fired: under way. complete: every expected file is there and whole. incomplete: some are not. none: no file
        /// came. refused: the shutter was never fired.
        public var status: ShotStatus
        /// In UTC; nil if it was never fired.
        public var firedAt: String?
        /// In the order they came.
        public var pictures: [Picture]
        /// What went wrong with this shot.
        public var problems: [Problem]

        /// With these values.
        public init(
            shot: Int,
            tag: String,
            status: ShotStatus,
            firedAt: String?,
            pictures: [Picture],
            problems: [Problem]
        ) {
            self.shot = shot
            self.tag = tag
            self.status = status
            self.firedAt = firedAt
            self.pictures = pictures
            self.problems = problems
        }
    }

    /// What went wrong, as a code for programs.
    public struct ProblemCode: CameraWord {
        /// As on the wire.
        public let rawValue: String

        /// Any word, known or not.
        public init(rawValue: String) {
            self.rawValue = rawValue
        }

        /// The program that drives the camera is not where it should be, or cannot be run.
        public static let workerMissing = ProblemCode("worker-missing")
        /// The program that drives the camera was started, but did not become ready in time.
        public static let workerNotStarting = ProblemCode("worker-not-starting")
        /// The program that drives the camera ended by itself. It is started again.
        public static let workerGone = ProblemCode("worker-gone")
        /// The program that drives the camera no longer answers. It is ended and started again.
        public static let workerHangs = ProblemCode("worker-hangs")
        /// The program that drives the camera writes far too many lines. It is ended and started again.
        public static let workerFloods = ProblemCode("worker-floods")
        /// The camera maker's software inside the worker could not be started.
        public static let sdkNotInitialised = ProblemCode("sdk-not-initialised")
        /// No camera was found on USB.
        public static let cameraNotFound = ProblemCode("camera-not-found")
        /// A camera was found, but it did not answer when it was opened.
        public static let cameraNoAnswer = ProblemCode("camera-no-answer")
        /// A camera was found, but it could not be opened. Another program may be using it.
        public static let cameraRefused = ProblemCode("camera-refused")
        /// The camera went away while it was connected, or was not there when the shutter was to be fired.
        public static let cameraLost = ProblemCode("camera-lost")
        /// The camera reported an error of its own.
        public static let cameraError = ProblemCode("camera-error")
        /// There is no connected camera, and none is being looked for.
        public static let notConnected = ProblemCode("not-connected")
        /// The camera does not save where it was asked to.
        public static let destinationNotTaken = ProblemCode("destination-not-taken")
        /// The camera does not shoot the file type that it was asked for.
        public static let fileTypeNotTaken = ProblemCode("file-type-not-taken")
        /// The folder cannot be used for pictures: the disk, the worker or the camera's software does not take it.
        public static let folderNotTaken = ProblemCode("folder-not-taken")
        /// The folder for pictures was moved, deleted or ejected, or its disk does not answer.
        public static let folderGone = ProblemCode("folder-gone")
        /// The folder for pictures may not be written to.
        public static let folderNotPermitted = ProblemCode("folder-not-permitted")
        /// Another program saves pictures of a camera into this folder.
        public static let folderInUse = ProblemCode("folder-in-use")
        /// Pictures should go to the memory card, but none is in the camera. They come to the computer only.
        public static let cardMissing = ProblemCode("card-missing")
        /// The shutter was asked for, but no file came in time.
        public static let noPicture = ProblemCode("no-picture")
        /// Only one of a RAW and its developed picture came.
        public static let halfMissing = ProblemCode("half-missing")
        /// A file came, but it is not whole. It was kept all the same.
        public static let pictureDamaged = ProblemCode("picture-damaged")
        /// A file was reported that is not on the disk.
        public static let pictureNotThere = ProblemCode("picture-not-there")
        /// A file was reported that lies outside the folder for pictures. It was left alone.
        public static let pictureOutside = ProblemCode("picture-outside")
        /// A file could not be moved to its place, or is not a picture. It stays where the text says.
        public static let pictureNotPlaced = ProblemCode("picture-not-placed")
        /// The disk of the folder has room for only a few more pictures.
        public static let diskNearlyFull = ProblemCode("disk-nearly-full")
        /// Too many requests are waiting already.
        public static let busy = ProblemCode("busy")
        /// The request was cancelled, or the session was ended.
        public static let cancelled = ProblemCode("cancelled")
        /// The shutter could not be fired soon enough, so it was not fired at all.
        public static let expired = ProblemCode("expired")
    }

    /// error: what was asked for did not happen. warning: the work goes on, but differently.
    public struct Severity: CameraWord {
        /// As on the wire.
        public let rawValue: String

        /// Any word, known or not.
        public init(rawValue: String) {
            self.rawValue = rawValue
        }

        /// The work goes on, but differently.
        public static let warning = Severity("warning")
        /// What was asked for did not happen.
        public static let error = Severity("error")
    }

    /// What went wrong, in words you can show to people.
    public struct Problem: Codable, Hashable, Sendable {
        /// What went wrong, as a code for programs.
        public var code: ProblemCode
        /// error: what was asked for did not happen. warning: the work goes on, but differently.
        public var severity: Severity
        /// What happened.
        public var text: String
        /// What to do about it.
        public var advice: String
        /// The SDK's own code, if it gave one.
        public var sdk: String?
        /// Counts from 1, never used twice in one folder. nil: it belongs to no shot, or nobody can tell to which.
        public var shot: Int?

        /// With these values.
        public init(
            code: ProblemCode,
            severity: Severity,
            text: String,
            advice: String,
            sdk: String?,
            shot: Int?
        ) {
            self.code = code
            self.severity = severity
            self.text = text
            self.advice = advice
            self.sdk = sdk
            self.shot = shot
        }
    }

    /// Either > (to the worker) or < (from the worker).
    public struct Direction: CameraWord {
        /// As on the wire.
        public let rawValue: String

        /// Any word, known or not.
        public init(rawValue: String) {
            self.rawValue = rawValue
        }

        public static let fromWorker = Direction("<")
        public static let toWorker = Direction(">")
    }

    /// One line of the worker's own protocol (docs/protocol.md).
    public struct Line: Codable, Hashable, Sendable {
        /// Either > (to the worker) or < (from the worker).
        public var direction: Direction
        /// Without its line break.
        public var text: String
        /// Milliseconds since the start.
        public var atMs: Int
        /// How many lines just before this one were not sent because the client did not read.
        public var dropped: Int

        /// With these values.
        public init(direction: Direction, text: String, atMs: Int, dropped: Int) {
            self.direction = direction
            self.text = text
            self.atMs = atMs
            self.dropped = dropped
        }
    }

    /// What the virtual camera answered.
    public struct SimulatorAnswer: Codable, Hashable, Sendable {
        /// The last one is ok, or error: and a sentence.
        public var lines: [String]

        /// With these values.
        public init(lines: [String]) {
            self.lines = lines
        }
    }

    /// What it took to end it: QUIT, the end of its input, SIGTERM or SIGKILL. gone: there was no worker, or it had
    /// ended by itself.
    public struct WorkerEnd: CameraWord {
        /// As on the wire.
        public let rawValue: String

        /// Any word, known or not.
        public init(rawValue: String) {
            self.rawValue = rawValue
        }

        public static let quit = WorkerEnd("quit")
        public static let input = WorkerEnd("input")
        public static let sigterm = WorkerEnd("sigterm")
        public static let sigkill = WorkerEnd("sigkill")
        /// There was no worker, or it had ended by itself.
        public static let gone = WorkerEnd("gone")
    }

    /// How the worker ended.
    public struct Ended: Codable, Hashable, Sendable {
        /// What it took to end it: QUIT, the end of its input, SIGTERM or SIGKILL. gone: there was no worker, or it had
        /// ended by itself.
        public var worker: WorkerEnd
        /// Its exit status; 128 + n if signal n ended it.
        public var status: Int

        /// With these values.
        public init(worker: WorkerEnd, status: Int) {
            self.worker = worker
            self.status = status
        }
    }

    /// Done.
    public struct Nothing: Codable, Hashable, Sendable {
        /// It has no members.
        public init() {}
    }

    /// What initialize takes.
    public struct InitializeParameters: Codable, Hashable, Sendable {
        /// Who is speaking. It is noted in the record that --record keeps.
        public var client: Client
        /// The protocol versions the client speaks; 1 must be among them.
        public var protocols: [Int]?

        /// With these values.
        public init(client: Client, protocols: [Int]? = nil) {
            self.client = client
            self.protocols = protocols
        }
    }

    /// What connect takes.
    public struct ConnectParameters: Codable, Hashable, Sendable {
        /// It has no members.
        public init() {}
    }

    /// What disconnect takes.
    public struct DisconnectParameters: Codable, Hashable, Sendable {
        /// It has no members.
        public init() {}
    }

    /// What capture takes.
    public struct CaptureParameters: Codable, Hashable, Sendable {
        /// Seconds to wait for files, counted from the shutter or from the last file. The default is what the program
        /// was started with, usually 20 s.
        public var patience: Double?
        /// Seconds within which the shutter must fire, counted from the shot's turn; after that it is refused.
        public var expires: Double?
        /// How the files of this shot are named. The default is what is configured.
        public var name: String?
        /// The host's own text; it comes back in the shot and its pictures.
        public var tag: String?

        /// With these values.
        public init(patience: Double? = nil, expires: Double? = nil, name: String? = nil, tag: String? = nil) {
            self.patience = patience
            self.expires = expires
            self.name = name
            self.tag = tag
        }
    }

    /// What cancel takes.
    public struct CancelParameters: Codable, Hashable, Sendable {
        /// The tag given to capture; an empty one means captures without a tag.
        public var tag: String

        /// With these values.
        public init(tag: String) {
            self.tag = tag
        }
    }

    /// What configure takes.
    public struct ConfigureParameters: Codable, Hashable, Sendable {
        /// The folder for pictures. If only its last part is missing, that is created; the rest must exist.
        public var folder: String?
        /// Where the camera saves.
        public var saveDestination: SaveDestination?
        /// What the camera shoots.
        public var fileType: FileType?
        /// How files are named from now on.
        public var name: String?

        /// With these values.
        public init(
            folder: String? = nil,
            saveDestination: SaveDestination? = nil,
            fileType: FileType? = nil,
            name: String? = nil
        ) {
            self.folder = folder
            self.saveDestination = saveDestination
            self.fileType = fileType
            self.name = name
        }
    }

    /// What state takes.
    public struct StateParameters: Codable, Hashable, Sendable {
        /// It has no members.
        public init() {}
    }

    /// What pictures takes.
    public struct PicturesParameters: Codable, Hashable, Sendable {
        /// The id of the last picture the host knows; the answer begins with the next one. With an id that the folder
        /// does not know, the list begins with the oldest.
        public var after: String?
        /// The largest number of pictures to return.
        public var limit: Int?

        /// With these values.
        public init(after: String? = nil, limit: Int? = nil) {
            self.after = after
            self.limit = limit
        }
    }

    /// What subscribe takes.
    public struct SubscribeParameters: Codable, Hashable, Sendable {
        /// Whether to send each line to and from the worker.
        public var lines: Bool

        /// With these values.
        public init(lines: Bool) {
            self.lines = lines
        }
    }

    /// What simulate takes.
    public struct SimulateParameters: Codable, Hashable, Sendable {
        /// A command, without its line break.
        public var line: String

        /// With these values.
        public init(line: String) {
            self.line = line
        }
    }

    /// What shutdown takes.
    public struct ShutdownParameters: Codable, Hashable, Sendable {
        /// Seconds to wait for files that are on their way.
        public var patience: Double?

        /// With these values.
        public init(patience: Double? = nil) {
            self.patience = patience
        }
    }
}

extension Camera.Method where Parameters == Camera.InitializeParameters, Answer == Camera.Initialized {
    /// Opens the folder and starts the worker; the camera is not touched yet.
    public static var initialize: Self { Self("initialize") }
}

extension Camera.Method where Parameters == Camera.ConnectParameters, Answer == Camera.State {
    /// Connects the camera and keeps it connected from now on.
    public static var connect: Self { Self("connect") }
}

extension Camera.Method where Parameters == Camera.DisconnectParameters, Answer == Camera.State {
    /// Releases the camera and leaves it alone until the next connect.
    public static var disconnect: Self { Self("disconnect") }
}

extension Camera.Method where Parameters == Camera.CaptureParameters, Answer == Camera.Shot {
    /// Takes one picture and answers once its files are there, or once it is clear that they will not come.
    public static var capture: Self { Self("capture") }
}

extension Camera.Method where Parameters == Camera.CancelParameters, Answer == Camera.Nothing {
    /// Cancels every capture with this tag.
    public static var cancel: Self { Self("cancel") }
}

extension Camera.Method where Parameters == Camera.ConfigureParameters, Answer == Camera.State {
    /// Changes where pictures go, how they are named and what the camera shoots.
    public static var configure: Self { Self("configure") }
}

extension Camera.Method where Parameters == Camera.StateParameters, Answer == Camera.State {
    /// The current state.
    public static var state: Self { Self("state") }
}

extension Camera.Method where Parameters == Camera.PicturesParameters, Answer == Camera.Pictures {
    /// The pictures in this folder, oldest first, as its ledger lists them.
    public static var pictures: Self { Self("pictures") }
}

extension Camera.Method where Parameters == Camera.SubscribeParameters, Answer == Camera.Nothing {
    /// Turns the line notification on or off.
    public static var subscribe: Self { Self("subscribe") }
}

extension Camera.Method where Parameters == Camera.SimulateParameters, Answer == Camera.SimulatorAnswer {
    /// Sends one line of the scene language to the virtual camera.
    public static var simulate: Self { Self("simulate") }
}

extension Camera.Method where Parameters == Camera.ShutdownParameters, Answer == Camera.Ended {
    /// Releases the camera, ends the worker, and then this program.
    public static var shutdown: Self { Self("shutdown") }
}

/// By the method's name.
let timeOuts: [String: TimeOut] = [
    "initialize": TimeOut(seconds: 30, turn: false, parameters: [:]),
    "connect": TimeOut(seconds: 60, turn: false, parameters: [:]),
    "disconnect": TimeOut(seconds: 20, turn: false, parameters: [:]),
    "capture": TimeOut(seconds: 15, turn: true, parameters: ["expires": 5, "patience": nil]),
    "cancel": TimeOut(seconds: 0, turn: false, parameters: [:]),
    "configure": TimeOut(seconds: 60, turn: true, parameters: [:]),
    "state": TimeOut(seconds: 0, turn: false, parameters: [:]),
    "pictures": TimeOut(seconds: 0, turn: false, parameters: [:]),
    "subscribe": TimeOut(seconds: 0, turn: false, parameters: [:]),
    "simulate": TimeOut(seconds: 0, turn: false, parameters: [:]),
    "shutdown": TimeOut(seconds: 20, turn: false, parameters: ["patience": 10]),
]
