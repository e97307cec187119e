import Foundation

extension Camera {
    /// Where the pictures come from.
    public enum Source: Sendable {
        /// The program that drives the camera, by its path. A host in production names it.
        case worker(String)
        /// The virtual camera: the worker beside `tether`.
        case virtual
    }

    /// What a camera is opened with.
    ///
    /// ```swift
    /// var options = Camera.Options(folder: "shots", source: .worker(path))
    /// options.fileType = .both
    /// let camera = try await Camera.open(options)
    /// ```
    public struct Options: Sendable {
        /// Where pictures go; its last part is made where it is missing.
        public var folder: String
        /// A worker, or the virtual camera.
        public var source: Source

        /// Where the camera saves; the computer when it is not given.
        public var saveDestination: SaveDestination?
        /// What the camera shoots; what is set on it when it is not given.
        public var fileType: FileType?
        /// How files are named: `{camera}`, or such as `wedding/{date}-{n:4}`.
        public var name: String?
        /// Seconds that a shot's files are waited for, 0.1 to 3600.
        public var patience = 20.0
        /// A file that gets every line to and from the worker, with its time.
        public var record: String?
        /// Keeps paths and names out of the record.
        public var redact = false

        /// The `tether` program; without it the one that the variable `CAMERA_WORKER_TETHER` names, or else the one beside
        /// the host's own program, which is where an application bundle has it.
        public var tether: String?
        /// Variables for `tether` and the worker, beside those of this process.
        public var environment: [String: String] = [:]
        /// Who is speaking, for the record.
        public var client = Client(name: "CameraWorker for Swift", version: "1.0.0")
        /// Seconds beyond a request's time-out after which it fails with ``Camera/ProblemCode/noAnswer``.
        public var grace = 5.0
        /// Seconds before `tether` is started again, after its first end in a row, its second, and so on.
        public var restarts = [0, 0.5, 1, 2, 4, 8]

        /// The rest is set where it is to be different.
        public init(folder: String, source: Source) {
            self.folder = folder
            self.source = source
        }
    }
}

/// What a process is started with. What was configured is in it when it is started again.
struct Launch {
    let program: String
    let environment: [String: String]
    private let fixed: [String]
    private var wishes: Camera.ConfigureParameters

    init(_ options: Camera.Options) {
        let own = ProcessInfo.processInfo.environment
        program = options.tether ?? own["CAMERA_WORKER_TETHER"] ?? Self.besideThisProgram()
        environment = own.merging(options.environment) { _, given in given }
        var fixed = ["serve", "--patience=\(options.patience)"]
        if case .worker(let path) = options.source {
            fixed.append("--worker=\(path)")
        }
        if let record = options.record {
            fixed.append("--record=\(record)")
        }
        if options.redact {
            fixed.append("--redact")
        }
        self.fixed = fixed
        wishes = Camera.ConfigureParameters(
            folder: URL(fileURLWithPath: options.folder).path,
            saveDestination: options.saveDestination,
            fileType: options.fileType,
            name: options.name
        )
    }

    private static func besideThisProgram() -> String {
        (Bundle.main.executableURL?.deletingLastPathComponent().appendingPathComponent("tether").path) ?? "tether"
    }

    var arguments: [String] {
        let named = [
            ("--folder", wishes.folder),
            ("--save-dest", wishes.saveDestination?.rawValue),
            ("--file-type", wishes.fileType?.rawValue),
            ("--name", wishes.name),
        ]
        // With "=", or a value that begins with "-" would be taken for an option.
        return fixed + named.compactMap { option, value in value.map { "\(option)=\($0)" } }
    }

    /// What is asked for later holds for the next process, too.
    mutating func take(_ later: Camera.ConfigureParameters, folder: String?) {
        wishes.folder = folder ?? wishes.folder
        wishes.saveDestination = later.saveDestination ?? wishes.saveDestination
        wishes.fileType = later.fileType ?? wishes.fileType
        wishes.name = later.name ?? wishes.name
    }

    /// Before anything is told.
    var state: Camera.State {
        Camera.State(
            state: .down,
            camera: nil,
            simulated: false,
            folder: wishes.folder ?? "",
            saveDestination: .init(asked: wishes.saveDestination ?? .disk, inForce: nil),
            fileType: .init(asked: wishes.fileType, inForce: nil),
            restarts: 0,
            problems: []
        )
    }
}
