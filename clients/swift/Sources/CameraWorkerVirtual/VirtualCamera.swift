import CameraWorker
import Dispatch
import Foundation

#if canImport(Darwin)
import Darwin
#else
import Glibc
#endif

/// The virtual camera for the tests of a host: what happens to it is said by the test, while the host has it open.
///
/// ```swift
/// let virtual = try VirtualCamera(scene: ["card out"])
/// let camera = try await Camera.open(virtual.options(folder: "shots"))
/// try await virtual.do("card in")
/// ```
///
/// A product of its own, so that no application ships it by accident.
public struct VirtualCamera: Sendable {
    /// A line that the camera did not take, or that nobody listens to.
    public struct Refusal: LocalizedError, Hashable, Sendable {
        /// What is wrong.
        public let message: String

        public var errorDescription: String? {
            message
        }
    }

    /// Variables for the worker of the host under test.
    public let environment: [String: String]
    private let worker: String?
    private let patience: Double
    private let folder: URL

    /// A camera as the lines of the scene say; each worker that is started in its environment has it at its USB.
    ///
    /// - Parameters:
    ///   - scene: Lines of the scene language.
    ///   - worker: A worker with the virtual camera; without it the one beside `tether`.
    ///   - pictures: A folder of your own JPEGs to shoot.
    ///   - patience: Seconds that a worker may take to have its camera listen.
    public init(
        scene: [String] = [],
        worker: String? = nil,
        pictures: String? = nil,
        patience: Double = 10
    ) throws {
        self.worker = worker
        self.patience = patience
        // The path of a socket must be short.
        folder = FileManager.default.temporaryDirectory.appendingPathComponent("virtual-\(UUID().uuidString.prefix(8))")
        let sceneFile = folder.appendingPathComponent("scene")
        try FileManager.default.createDirectory(at: folder, withIntermediateDirectories: false)
        try Data(scene.map { $0 + "\n" }.joined().utf8).write(to: sceneFile)
        var environment = ["CAMERA_SIM_SCENE": sceneFile.path]
        environment["CAMERA_SIM_CONTROL"] = folder.appendingPathComponent("control").path
        environment["CAMERA_SIM_PICTURES"] = pictures
        self.environment = environment
    }

    /// What the host under test opens this camera with.
    public func options(folder: String) -> Camera.Options {
        var options = Camera.Options(folder: folder, source: worker.map { .worker($0) } ?? .virtual)
        options.environment = environment
        return options
    }

    /// Says a line of the scene language, such as `card out`.
    ///
    /// - Throws: A ``Refusal`` when the camera does not take it.
    @discardableResult
    public func `do`(_ line: String) async throws -> [String] {
        var answer = try await ask(line)
        let last = answer.popLast() ?? ""
        guard last == "ok" else {
            throw Refusal(message: last)
        }
        return answer
    }

    /// What the camera thinks, line by line.
    public func state() async throws -> [String] {
        try await self.do("state").map { $0.trimmingCharacters(in: .whitespaces) }
    }

    /// Removes what was made for it. The host's own `close()` comes first.
    public func close() {
        try? FileManager.default.removeItem(at: folder)
    }

    /// While a worker is started, or replaced, nobody listens; that is over soon.
    private func ask(_ line: String) async throws -> [String] {
        let deadline = ProcessInfo.processInfo.systemUptime + patience
        while true {
            do {
                return try await exchange(line)
            } catch let error as POSIXError where error.code == .ENOENT || error.code == .ECONNREFUSED {
                guard ProcessInfo.processInfo.systemUptime < deadline else {
                    throw Refusal(message: "The virtual camera cannot be told \"\(line)\": no worker has it open.")
                }
                try await Task.sleep(nanoseconds: 20_000_000)
            }
        }
    }

    private func exchange(_ line: String) async throws -> [String] {
        let path = folder.appendingPathComponent("control").path
        return try await withCheckedThrowingContinuation { continuation in
            DispatchQueue(label: "virtual-camera").async {
                continuation.resume(with: Result { try answer(line, path) })
            }
        }
    }
}

/// Every line of the answer; the last is "ok" or begins with "error: ". Waits for it.
private func answer(_ line: String, _ path: String) throws -> [String] {
    #if canImport(Darwin)
    let control = socket(AF_UNIX, SOCK_STREAM, 0)
    #else
    let control = socket(AF_UNIX, Int32(SOCK_STREAM.rawValue | SOCK_CLOEXEC.rawValue), 0)
    #endif
    defer { close(control) }
    try reach(path, control)
    // It takes a line whole or is gone, which reading tells; no signal comes of it.
    #if canImport(Darwin)
    var on: Int32 = 1
    setsockopt(control, SOL_SOCKET, SO_NOSIGPIPE, &on, socklen_t(MemoryLayout<Int32>.size))
    let flags: Int32 = 0
    #else
    let flags = Int32(MSG_NOSIGNAL)
    #endif
    var rest = Data("\(line)\n".utf8)
    while !rest.isEmpty {
        let sent = rest.withUnsafeBytes { send(control, $0.baseAddress, $0.count, flags) }
        guard sent > 0 || errno == EINTR else { break }
        rest = rest.dropFirst(max(sent, 0))
    }
    var text = Data()
    var piece = [UInt8](repeating: 0, count: 4096)
    while true {
        let length = read(control, &piece, piece.count)
        guard length > 0 || (length < 0 && errno == EINTR) else {
            throw VirtualCamera.Refusal(message: "The virtual camera went away before it answered \"\(line)\".")
        }
        text.append(contentsOf: piece.prefix(max(length, 0)))
        let lines = String(decoding: text, as: UTF8.self).components(separatedBy: "\n")
        if let last = lines.dropLast().last, lines.last == "", last == "ok" || last.hasPrefix("error: ") {
            return lines.dropLast()
        }
    }
}

private func reach(_ path: String, _ control: Int32) throws {
    var address = sockaddr_un()
    address.sun_family = sa_family_t(AF_UNIX)
    let bytes = Array(path.utf8) + [0]
    guard control >= 0, bytes.count <= MemoryLayout.size(ofValue: address.sun_path) else {
        throw VirtualCamera.Refusal(message: "The virtual camera cannot be reached at \(path).")
    }
    withUnsafeMutableBytes(of: &address.sun_path) { $0.copyBytes(from: bytes) }
    let length = socklen_t(MemoryLayout<sockaddr_un>.size)
    let connected = withUnsafePointer(to: &address) { pointer in
        pointer.withMemoryRebound(to: sockaddr.self, capacity: 1) { connect(control, $0, length) }
    }
    guard connected == 0 else { throw POSIXError(POSIXErrorCode(rawValue: errno) ?? .EIO) }
}
