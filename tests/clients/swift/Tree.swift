// Where the tests find what they are about.

import Foundation

enum Tree {
    /// The top of the tree.
    static let root = URL(fileURLWithPath: #filePath).appendingPathComponent("../../../..").standardized.path
    /// The build whose programs are used.
    static let build = ProcessInfo.processInfo.environment["CAMERA_WORKER_BUILD"] ?? "\(root)/build/dev"
    /// What `swift build` has made of this package.
    static let products =
        ProcessInfo.processInfo.environment["CAMERA_WORKER_PRODUCTS"]
        ?? URL(fileURLWithPath: CommandLine.arguments[0]).deletingLastPathComponent().path
    static let tether = "\(build)/bin/tether"
    static let worker = "\(build)/Contents/MacOS/sony-worker"
}

/// A folder that is there for as long as it is used.
func withNewFolder<Result>(_ use: (String) async throws -> Result) async throws -> Result {
    let folder = FileManager.default.temporaryDirectory.appendingPathComponent("camera-worker-\(UUID())").path
    try FileManager.default.createDirectory(atPath: folder, withIntermediateDirectories: true)
    defer {
        try? FileManager.default.removeItem(atPath: folder)
    }
    return try await use(folder)
}

/// Every file in the folder and below it, hidden ones left out, as paths from there.
func visible(_ folder: String) -> [String] {
    let all = FileManager.default.enumerator(atPath: folder)?.compactMap { $0 as? String } ?? []
    return all.filter { path in
        var isFolder: ObjCBool = false
        let isThere = FileManager.default.fileExists(atPath: "\(folder)/\(path)", isDirectory: &isFolder)
        return isThere && !isFolder.boolValue && !path.split(separator: "/").contains { $0.hasPrefix(".") }
    }.sorted()
}

struct Failed: Error, CustomStringConvertible {
    let description: String

    init(_ description: String) {
        self.description = description
    }
}

/// What comes in time. Nothing waits so long that goes well: a busy machine takes minutes over a flood of 100,000 lines.
func within<Value: Sendable>(
    seconds: UInt64 = 300,
    _ work: @escaping @Sendable () async throws -> Value
) async throws -> Value {
    try await withThrowingTaskGroup(of: Value.self) { group in
        defer {
            group.cancelAll()
        }
        group.addTask(operation: work)
        group.addTask {
            try await Task.sleep(nanoseconds: seconds * 1_000_000_000)
            throw Failed("nothing came")
        }
        return try await group.next()!
    }
}

/// The error that it must end with.
func failure<Wanted: Error, Value>(_ type: Wanted.Type, _ work: () async throws -> Value) async throws -> Wanted {
    let result: Value
    do {
        result = try await work()
    } catch let error as Wanted {
        return error
    }
    throw Failed("it did not fail: \(result)")
}
