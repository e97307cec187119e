// `tether serve` as a child process. Spawned by hand: Foundation's Process knows neither process groups nor sockets, and
// a write to a child that has gone would end the host by SIGPIPE.

import Dispatch
import Foundation

#if canImport(Darwin)
import Darwin
#else
import Glibc
#endif

/// An open file or socket. Closed when nobody has it any more.
final class Descriptor: Sendable {
    let number: Int32

    init(_ number: Int32) {
        self.number = number
    }

    deinit {
        close(number)
    }

    /// Two ends of a socket, which no program inherits that is started meanwhile. Sockets, because only they can be
    /// written to without a signal when the other end has gone.
    static func pair() throws -> (ours: Descriptor, theirs: Descriptor) {
        var ends: [Int32] = [-1, -1]
        #if canImport(Darwin)
        let made = socketpair(AF_UNIX, SOCK_STREAM, 0, &ends)
        #else
        let made = socketpair(AF_UNIX, Int32(SOCK_STREAM.rawValue | SOCK_CLOEXEC.rawValue), 0, &ends)
        #endif
        guard made == 0 else { throw POSIXError(POSIXErrorCode(rawValue: errno) ?? .EMFILE) }
        #if canImport(Darwin)
        var on: Int32 = 1
        setsockopt(ends[0], SOL_SOCKET, SO_NOSIGPIPE, &on, socklen_t(MemoryLayout<Int32>.size))
        #endif
        let both = ends.map(Descriptor.init)
        return (try both[0].aboveStandard(), try both[1].aboveStandard())
    }

    /// A host whose standard input is closed gets its number for the next thing that it opens. What is to become a child's
    /// standard input must not stand where another of its three is put.
    private func aboveStandard() throws -> Descriptor {
        let moved = fcntl(number, F_DUPFD_CLOEXEC, 3)
        guard moved >= 0 else { throw POSIXError(POSIXErrorCode(rawValue: errno) ?? .EMFILE) }
        return Descriptor(moved)
    }

    /// All of it, unless the other end goes away.
    func write(_ bytes: Data) {
        #if canImport(Darwin)
        let flags: Int32 = 0
        #else
        let flags = Int32(MSG_NOSIGNAL)
        #endif
        var rest = bytes
        while !rest.isEmpty {
            let written = rest.withUnsafeBytes { send(number, $0.baseAddress, $0.count, flags) }
            if written > 0 {
                rest = rest.dropFirst(written)
            } else if errno != EINTR {
                return
            }
        }
    }
}

/// What a process writes, piece by piece. Whoever does not ask for the next piece lets the process wait.
struct Output: Sendable {
    private let descriptor: Descriptor
    // A thread of its own, since it waits.
    private let queue: DispatchQueue

    init(_ descriptor: Descriptor, _ name: String) {
        self.descriptor = descriptor
        queue = DispatchQueue(label: "camera-worker.\(name)")
    }

    /// Nil when nothing comes any more.
    func next() async -> Data? {
        await withCheckedContinuation { continuation in
            queue.async {
                var piece = Data(count: 65536)
                var length: Int
                repeat {
                    length = piece.withUnsafeMutableBytes { read(descriptor.number, $0.baseAddress, $0.count) }
                } while length < 0 && errno == EINTR
                continuation.resume(returning: length > 0 ? piece.prefix(length) : nil)
            }
        }
    }

    /// The end of all that comes.
    func last(_ kept: Int) async -> String {
        var end = Data()
        while let piece = await next() {
            end = Data((end + piece).suffix(kept))
        }
        return String(decoding: end, as: UTF8.self)
    }
}

/// A process, up to its end.
struct Life: Sendable {
    let id: pid_t
    /// Over once its input has ended.
    private let input: AsyncStream<Never>
    let endInput: AsyncStream<Never>.Continuation

    init(_ id: pid_t) {
        self.id = id
        (input, endInput) = AsyncStream.makeStream(of: Never.self)
    }

    /// How it ended; it has been reaped then. Killed when it goes on for so many seconds after its input has ended.
    func end(patience: Double) async -> String {
        await withTaskGroup(of: Void.self) { group in
            group.addTask {
                for await _ in input {}
                if (try? await Task.sleep(nanoseconds: UInt64(patience * 1e9))) != nil { kill(id, SIGKILL) }
            }
            await untilItCanBeReaped()
            group.cancelAll()
        }
        var status: Int32 = 0
        guard waitpid(id, &status, WNOHANG) == id else {
            return "for an unknown reason"  // a host that ignores SIGCHLD is not told
        }
        let signal = status & 0x7f
        return signal == 0 ? "with status \((status >> 8) & 0xff)" : "by signal \(signal)"
    }

    private func untilItCanBeReaped() async {
        await withCheckedContinuation { continuation in
            DispatchQueue(label: "camera-worker.end").async {
                var how = siginfo_t()
                while waitid(P_PID, id_t(id), &how, WEXITED | WNOWAIT) != 0 && errno == EINTR {}
                continuation.resume()
            }
        }
    }
}

/// Belongs to the camera that has started it, and is used in its isolation only. When nobody has it any more, its input
/// ends.
final class ChildProcess {
    let output: Output
    let complaints: Output
    let life: Life
    private var input: Descriptor?
    private let writing = DispatchQueue(label: "camera-worker.input")

    init(_ program: String, _ arguments: [String], _ environment: [String: String]) throws {
        let input = try Descriptor.pair()
        let output = try Descriptor.pair()
        let complaints = try Descriptor.pair()
        life = Life(try Self.spawn(program, arguments, environment, [input.theirs, output.theirs, complaints.theirs]))
        self.input = input.ours
        self.output = Output(output.ours, "output")
        self.complaints = Output(complaints.ours, "complaints")
    }

    deinit {
        life.endInput.finish()
    }

    private static func spawn(
        _ program: String,
        _ arguments: [String],
        _ environment: [String: String],
        _ standard: [Descriptor]
    ) throws -> pid_t {
        #if canImport(Darwin)
        var actions: posix_spawn_file_actions_t?
        var attributes: posix_spawnattr_t?
        #else
        var actions = posix_spawn_file_actions_t()
        var attributes = posix_spawnattr_t()
        #endif
        posix_spawn_file_actions_init(&actions)
        posix_spawnattr_init(&attributes)
        defer {
            posix_spawn_file_actions_destroy(&actions)
            posix_spawnattr_destroy(&attributes)
        }
        // Of all that the host has open the child gets these three.
        for (number, descriptor) in standard.enumerated() {
            posix_spawn_file_actions_adddup2(&actions, descriptor.number, Int32(number))
        }
        var flags = POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK
        #if canImport(Darwin)
        flags |= POSIX_SPAWN_CLOEXEC_DEFAULT
        #else
        posix_spawn_file_actions_addclosefrom_np(&actions, Int32(standard.count))
        #endif
        posix_spawnattr_setflags(&attributes, Int16(flags))
        // A process group of its own: Ctrl-C in a terminal is for the host, which then ends this as it likes.
        posix_spawnattr_setpgroup(&attributes, 0)
        // What the host does with signals is its own matter.
        var signals = sigset_t()
        sigemptyset(&signals)
        posix_spawnattr_setsigmask(&attributes, &signals)
        sigfillset(&signals)
        posix_spawnattr_setsigdefault(&attributes, &signals)

        var words = ([program] + arguments).map { strdup($0) } + [nil]
        var variables = environment.map { strdup("\($0)=\($1)") } + [nil]
        defer {
            (words + variables).forEach { free($0) }
        }
        var id = pid_t()
        let error = posix_spawnp(&id, program, &actions, &attributes, &words, &variables)
        guard error == 0 else {
            let why = String(cString: strerror(error))
            throw Camera.Problem.own(.tetherMissing, "\"\(program)\" cannot be started: \(why).")
        }
        return id
    }

    /// In its turn, while others go on.
    func send(_ line: Data) {
        if let input {
            writing.async { input.write(line) }
        }
    }

    /// What was sent is written first. Its program ends then, or is ended.
    func closeInput() {
        input = nil
        life.endInput.finish()
    }
}
