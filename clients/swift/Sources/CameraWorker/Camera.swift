import Foundation

/// One USB camera for a host application: take a picture, have its files, or be told why not.
///
/// ```swift
/// let camera = try await Camera.open(.init(folder: "shots", source: .worker(path)))
/// Task {
///     for await event in await camera.events() { show(event) }
/// }
/// try await camera.connect()
///
/// let shot = try await camera.capture()
/// for picture in shot.pictures { print(picture.path, picture.whole) }
///
/// for try await picture in camera.pictures(after: lastOneThatIHave) { importFile(picture.path) }
///
/// try await camera.close()
/// ```
///
/// Every request throws a ``CameraProblem`` (code, text, advice) when camera, worker or disk stand in its way. Cancelling
/// its task gives it up: it throws a `CancellationError` at once.
///
/// The work is done by `tether serve`, a child process. When that ends, what waits fails at once, and it is started again
/// with its settings and its camera.
public actor Camera {
    /// What is told by ``events()``.
    public enum Event: Hashable, Sendable {
        /// The state has changed.
        case state(State)
        /// Something went wrong. Told once, when it happens; what goes on stands in the state.
        case problem(Problem)
        /// A shot was fired, or is over.
        case shot(Shot)
    }

    /// The state as it was told last.
    public internal(set) var state: State
    /// Who is behind the pipe; nil until the camera is open.
    public internal(set) var initialized: Initialized?

    let options: Options
    var launch: Launch

    // Lifetime.swift. The process, and whether it takes requests; until it does, they wait.
    var process: ChildProcess?
    var isReady = false
    var startedAt = 0.0
    var endsInARow = 0
    var restarting: Task<Void, Never>?
    var closing: Task<Ended, any Error>?
    var whenEnded: [CheckedContinuation<Void, Never>] = []
    var isOver = false

    // Requests.swift
    var calls: [Int: Call] = [:]
    var numbers = 0
    var wantsCamera = false

    // News.swift
    var messages = Messages()
    let decoder = JSONDecoder()
    var listeners: [Int: AsyncStream<Event>.Continuation] = [:]
    var lineReaders: [Int: AsyncStream<Line>.Continuation] = [:]

    // Pictures.swift
    var log = PictureLog()
    var whenTold: [CheckedContinuation<Void, Never>] = []
    /// Where pictures go now, once it is known.
    var folder: String?
    /// The last one told of this folder.
    var lastPicture: String?
    /// Bytes read since pictures were asked for.
    var unasked = 0
    var catchingUp: Task<Void, Never>?

    private init(_ options: Options, _ events: AsyncStream<Event>.Continuation?) {
        self.options = options
        launch = Launch(options)
        state = launch.state
        listeners[0] = events
    }

    deinit {
        listeners.values.forEach { $0.finish() }
        lineReaders.values.forEach { $0.finish() }
    }

    // MARK: Opening and closing

    /// Starts `tether serve`.
    ///
    /// - Parameters:
    ///   - options: Which camera, and where its pictures go.
    ///   - events: Hears what is told before the camera is open, too. A folder that another program uses takes 20 s.
    /// - Throws: A ``CameraProblem`` when the program, its worker or the folder does not do.
    public static func open(
        _ options: Options,
        events: AsyncStream<Event>.Continuation? = nil
    ) async throws -> Camera {
        let camera = Camera(options, events)
        do {
            try await camera.start()
        } catch {
            await camera.finish()
            throw error
        }
        return camera
    }

    /// Waits for files on their way, gives the camera back and ends its processes.
    ///
    /// - Parameter patience: Seconds to wait for files; 10 when it is not given.
    /// - Returns: How the worker ended.
    @discardableResult
    public func close(patience: Double? = nil) async throws -> Ended {
        let task = closing ?? Task { try await shutDown(ShutdownParameters(patience: patience)) }
        closing = task
        return try await task.value
    }

    // MARK: The camera

    /// Connects the camera and keeps it connected from now on.
    ///
    /// - Throws: The ``CameraProblem`` that stands in the way when it is not ready within 60 s. It goes on trying all the
    ///   same, also when the task is cancelled.
    @discardableResult
    public func connect() async throws -> State {
        try await request(.connect, ConnectParameters())
    }

    /// Gives the camera back and leaves it alone until the next ``connect()``.
    @discardableResult
    public func disconnect() async throws -> State {
        try await request(.disconnect, DisconnectParameters())
    }

    /// Takes one picture. Answered when its files are there, or when it is clear that they are not: `status` and
    /// `problems` of the shot say why.
    ///
    /// Cancelling the task cancels every capture with this one's tag. What comes of the shot is told by ``events()``, and
    /// its files by ``pictures(after:)``.
    ///
    /// - Parameters:
    ///   - tag: Words of the host's own; they come back in the shot and its pictures. A capture without them gets a tag
    ///     that no other has, so that it can be given up alone.
    ///   - name: How the files of this shot are named, when not as configured.
    ///   - patience: Seconds to wait for files, when not as in the options.
    ///   - expires: Seconds in which the shutter must have been fired, from the shot's turn on; 5 when it is not given.
    public func capture(
        tag: String? = nil,
        name: String? = nil,
        patience: Double? = nil,
        expires: Double? = nil
    ) async throws -> Shot {
        let tag = tag ?? "capture-\(UUID().uuidString)"
        let parameters = CaptureParameters(patience: patience, expires: expires, name: name, tag: tag)
        return try await request(.capture, parameters, cancelling: tag)
    }

    /// Gives up every capture with this tag: one that waits is refused, one that was fired is over with what it has.
    public func cancel(tag: String) async throws {
        _ = try await request(.cancel, CancelParameters(tag: tag))
    }

    /// Changes the folder, the destination, the file type or how files are named, between two shots.
    @discardableResult
    public func configure(
        folder: String? = nil,
        saveDestination: SaveDestination? = nil,
        fileType: FileType? = nil,
        name: String? = nil
    ) async throws -> State {
        let wishes = ConfigureParameters(
            folder: folder, saveDestination: saveDestination, fileType: fileType, name: name)
        do {
            let state = try await request(.configure, wishes)
            launch.take(wishes, folder: state.folder)
            return state
        } catch let problem as Problem where !problem.isOwn {
            // Wishes stand, also when they are not in force; only the folder stays as it was.
            launch.take(wishes, folder: nil)
            throw problem
        }
    }

    /// Says one line of the scene language to the virtual camera.
    ///
    /// - Returns: Its answer. The last line is `ok`, or begins with `error:`.
    @discardableResult
    public func simulate(_ line: String) async throws -> [String] {
        try await request(.simulate, SimulateParameters(line: line)).lines
    }

    /// Any request as it stands in the catalogue. What this client has no name for goes this way, too.
    public func request<Parameters, Answer>(
        _ method: Method<Parameters, Answer>,
        _ parameters: Parameters
    ) async throws -> Answer {
        try await request(method, parameters, cancelling: nil)
    }

    // MARK: What comes by itself

    /// Each event from now on, until the camera is closed. Read it, or do not ask for it: events wait for their reader.
    public func events() -> AsyncStream<Event> {
        let (stream, continuation) = AsyncStream.makeStream(of: Event.self)
        let number = nextNumber()
        continuation.onTermination = { [weak self] _ in
            Task { [weak self] in await self?.forgetListener(number) }
        }
        listeners[number] = continuation
        if isOver { finishStreams() }
        return stream
    }

    /// Each line to or from the worker from now on, for diagnosis. Of more than 100,000 that wait for their reader the
    /// oldest are left out.
    public func lines() -> AsyncStream<Line> {
        let (stream, continuation) = AsyncStream.makeStream(of: Line.self, bufferingPolicy: .bufferingNewest(100_000))
        let number = nextNumber()
        continuation.onTermination = { [weak self] _ in
            Task { [weak self] in await self?.forgetLineReader(number) }
        }
        lineReaders[number] = continuation
        if lineReaders.count == 1 { post(.subscribe, SubscribeParameters(lines: true)) }
        if isOver { finishStreams() }
        return stream
    }

    /// Every picture, once, in the order in which they were told. Misses none, also when the process or this program was
    /// started again. Ends when the camera is closed, or the task cancelled.
    ///
    /// - Parameter id: The last picture that is known: all of the folder behind it are wanted, and those to come. "" stands
    ///   before the first. Without it: those since the camera was opened, and those to come.
    public nonisolated func pictures(after id: String? = nil) -> PictureSequence {
        PictureSequence(camera: self, after: id)
    }
}
