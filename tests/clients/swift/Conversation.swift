// Plays a conversation of clients/corpus through the client, as a host would: to the stand-in, or to `tether serve` and
// the virtual camera. clients/corpus/README.md says what the steps mean.

import Foundation
import Testing

@testable import CameraWorker
import CameraWorkerVirtual

struct Conversation: Sendable, CustomTestStringConvertible {
    let name: String
    let text: JSON

    var title: String { text["title"]!.string! }
    var steps: [JSON] { text["steps"]!.array! }
    var passesOver: [String] { text["passesOver"]?.array?.map { $0.string! } ?? [] }
    var testDescription: String { "\(name): \(title)" }

    static let folder = "\(Tree.root)/clients/corpus"

    /// What a typed client cannot send is played by those that write bytes.
    static let forStandIn = all.filter { $0.text["wire"]?.bool != true }
    static let forTether = forStandIn.filter { $0.text["standIn"]?.bool != true }

    private static let all: [Conversation] = {
        let files = try! FileManager.default.contentsOfDirectory(atPath: folder).filter { $0.hasSuffix(".json") }
            .sorted()
        return files.map { file in
            let data = try! Data(contentsOf: URL(fileURLWithPath: "\(folder)/\(file)"))
            let text = try! JSONDecoder().decode(JSON.self, from: data)
            return Conversation(name: String(file.dropLast(".json".count)), text: text)
        }
    }()
}

/// Where a conversation is played.
struct Stage: Sendable {
    /// Sets what stands beside the conversation's own options.
    let prepare: @Sendable (inout Camera.Options) -> Void
    /// Whether there is a camera.
    let isReal: Bool
    /// What went wrong on the other side.
    let wrong: @Sendable () -> String?
}

func playToStandIn(_ conversation: Conversation) async throws {
    try await withNewFolder { folder in
        let stage = Stage(
            prepare: { options in
                options.source = .worker("/a/worker")
                options.tether = "\(Tree.root)/tests/clients/stand_in"
                options.environment = [
                    "CONVERSATION": "\(Conversation.folder)/\(conversation.name).json",
                    "CONVERSATION_STATE": folder,
                ]
            },
            isReal: false,
            wrong: { try? String(contentsOfFile: "\(folder)/wrong", encoding: .utf8) }
        )
        try await play(conversation, folder, stage)
    }
}

func playToTether(_ conversation: Conversation) async throws {
    try await withNewFolder { folder in
        let scene = conversation.text["scene"]?.array?.map { $0.string! } ?? quick
        let virtual = try VirtualCamera(scene: scene)
        defer {
            virtual.close()
        }
        let stage = Stage(
            prepare: { options in
                options.tether = Tree.tether
                options.environment = virtual.environment.merging(["TMPDIR": folder]) { $1 }
            },
            isReal: true,
            wrong: { nil }
        )
        try await play(conversation, folder, stage)
    }
}

private func play(_ conversation: Conversation, _ folder: String, _ stage: Stage) async throws {
    let player = Player(conversation, folder, stage)
    do {
        try await player.play()
    } catch {
        await player.leave()
        throw Failed(stage.wrong() ?? "\(error)")
    }
    await player.leave()
    if let wrong = stage.wrong() {
        throw Failed(wrong)
    }
    print("played \(conversation.name) to \(stage.isReal ? "tether serve" : "the stand-in")")
}

extension Camera {
    /// Tasks that are begun here make their requests in the order in which they are begun.
    func begin(_ request: @escaping @Sendable (isolated Camera) async throws -> JSON) -> Task<JSON, any Error> {
        Task { try await request(self) }
    }
}

private let counted = ["picture", "shot", "problem"]

private actor Player {
    private let conversation: Conversation
    private let stage: Stage
    private let shots: String
    private var names: Names
    private var camera: Camera?
    private var told: [String: [JSON]] = [:]
    private var readers: [String: [JSON]] = [:]
    private var answers: [String: Task<JSON, any Error>] = [:]
    private var begun: [String: Task<JSON, any Error>] = [:]
    private var reading: [Task<Void, any Error>] = []
    private var readingLines: Task<Void, Never>?
    private var whenChanged: [CheckedContinuation<Void, Never>] = []

    init(_ conversation: Conversation, _ folder: String, _ stage: Stage) {
        self.conversation = conversation
        self.stage = stage
        shots = "\(folder)/shots"
        names = ["folder": .string(shots)]
    }

    func play() async throws {
        try FileManager.default.createDirectory(atPath: shots, withIntermediateDirectories: true)
        for (name, text) in conversation.text["before"]?.object ?? [:] {
            let file = URL(fileURLWithPath: "\(shots)/\(name)")
            try FileManager.default.createDirectory(
                at: file.deletingLastPathComponent(), withIntermediateDirectories: true)
            try Data(text.string!.utf8).write(to: file)
        }
        // The client initializes by itself, and only once.
        let steps = conversation.steps
        let opening = steps.firstIndex { step in
            step["ask"]?.string == "initialize" && (step["fails"]?["code"]?.number ?? -32000) == -32000
        }!
        for (at, step) in steps.enumerated().dropFirst(opening) {
            do {
                try await within { try await self.act(step, opens: at == opening) }
            } catch {
                throw Failed("step \(at + 1), \(step.text.prefix(300)): \(error)")
            }
        }
        try await within { try await self.finish() }
    }

    func leave() async {
        _ = try? await camera?.close()
        readingLines?.cancel()
    }

    private func act(_ step: JSON, opens: Bool) async throws {
        if let method = step["ask"]?.string {
            try await opens ? expect(Task { try await self.open() }, step) : ask(method, step)
        } else if let name = step["answer"]?.string {
            try await expect(answers.removeValue(forKey: name)!, step)
        } else if let name = step["abort"]?.string {
            // One that has been answered is given up in vain.
            begun[name]!.cancel()
        } else if let line = step["camera"]?.string {
            let answer = try await camera!.simulate(line.replacingOccurrences(of: "$folder", with: shots))
            try check(step["says"] ?? .array([.string("ok")]), JSON(answer), "the camera's answer")
        } else if let kind = step["sees"]?.string {
            try await sees(kind, step)
        } else if let after = step["reads"] {
            startReader(step["as"]!.string!, filledIn(after)["after"]?.string)
        } else if let name = step["brings"]?.string {
            try await brings(name, step["with"]!)
        } else if let wanted = step["files"] {
            if stage.isReal {
                try check(wanted, JSON(visible(shots)), "the folder")
            }
        } else if let path = step["make"] {
            try make(filledIn(path).string!, step["text"]?.string)
        } else if step["ends"] != nil {
            try await camera!.close()
        } else if !["asked", "writes", "late", "dies", "started"].contains(where: { step[$0] != nil }) {
            throw Failed("there is no such step")  // the rest is the stand-in's
        }
    }

    private func filledIn(_ value: JSON) -> JSON {
        switch value {
        case .string(let text) where text.hasPrefix("$"):
            let parts = text.dropFirst().split(separator: "/", omittingEmptySubsequences: false).map(String.init)
            return .string(([names[parts[0]]!.string!] + parts.dropFirst()).joined(separator: "/"))
        case .object(let members):
            return .object(members.mapValues(filledIn))
        default:
            return value
        }
    }

    private func check(_ pattern: JSON, _ value: JSON, _ what: String) throws {
        if let wrong = mismatch(pattern, value, &names, what) {
            throw Failed("\(wrong); whole: \(value.text)")
        }
    }

    // MARK: What is asked

    private func open() async throws -> JSON {
        var options = Camera.Options(folder: shots, source: .virtual)
        options.client = .init(name: "corpus", version: "1")
        let given = conversation.text["options"]
        options.saveDestination = given?["saveDestination"]?.string.map(Camera.SaveDestination.init(rawValue:))
        options.fileType = given?["fileType"]?.string.map(Camera.FileType.init(rawValue:))
        options.name = given?["name"]?.string
        options.patience = given?["patience"]?.number ?? options.patience
        let timing = conversation.text["timing"]
        options.grace = timing?["grace"]?.number ?? options.grace
        options.restarts = timing?["restarts"]?.array?.map { $0.number! / 1000 } ?? options.restarts
        stage.prepare(&options)

        let (events, continuation) = AsyncStream.makeStream(of: Camera.Event.self)
        reading.append(
            Task { [weak self] in
                for await event in events {
                    switch event {
                    case .state(let state): await self?.hear("state", try JSON(state))
                    case .shot(let shot): await self?.hear("shot", try JSON(shot))
                    case .problem(let problem): await self?.hear("problem", try JSON(problem))
                    }
                }
            })
        let camera = try await Camera.open(options, events: continuation)
        self.camera = camera
        reading.append(
            Task { [weak self] in
                for try await picture in camera.pictures() {
                    await self?.hear("picture", try JSON(picture))
                }
            })
        return try JSON(await camera.initialized!)
    }

    private func ask(_ method: String, _ step: JSON) async throws {
        let request = try await begin(method, filledIn(step["with"] ?? .object([:])))
        if let name = step["as"]?.string {
            answers[name] = request
            begun[name] = request
        } else {
            try await expect(request, step)
        }
    }

    /// By the client's own operation, where it has one for these parameters.
    private func begin(_ method: String, _ with: JSON) async throws -> Task<JSON, any Error> {
        let camera = camera!
        let isPlain = with.object!.isEmpty
        if method == "connect", isPlain {
            return await camera.begin { try JSON(await $0.connect()) }
        } else if method == "disconnect", isPlain {
            return await camera.begin { try JSON(await $0.disconnect()) }
        } else if method == "capture", let its = with.typed(Camera.CaptureParameters.self) {
            return await camera.begin { camera in
                try JSON(
                    await camera.capture(tag: its.tag, name: its.name, patience: its.patience, expires: its.expires))
            }
        } else if method == "cancel", let its = with.typed(Camera.CancelParameters.self) {
            return await camera.begin { camera in
                try await camera.cancel(tag: its.tag)
                return .object([:])
            }
        } else if method == "configure", let its = with.typed(Camera.ConfigureParameters.self) {
            return await camera.begin { camera in
                try JSON(
                    await camera.configure(
                        folder: its.folder, saveDestination: its.saveDestination, fileType: its.fileType, name: its.name
                    ))
            }
        } else if method == "subscribe", let its = with.typed(Camera.SubscribeParameters.self) {
            await readLines(its.lines)
            return Task { .object([:]) }
        } else if method == "shutdown", let its = with.typed(Camera.ShutdownParameters.self), its.patience ?? 0 >= 0 {
            return await camera.begin { try JSON(await $0.close(patience: its.patience)) }
        }
        return await camera.begin { try await $0.request(Camera.Method<JSON, JSON>(method), with) }
    }

    private func expect(_ request: Task<JSON, any Error>, _ step: JSON) async throws {
        let answer = await withTaskCancellationHandler {
            await request.result
        } onCancel: {
            request.cancel()
        }
        switch (answer, step["fails"]) {
        case (.success(let result), nil):
            try check(step["gives"] ?? .object([:]), result, "the result")
        case (.success(let result), .some):
            throw Failed("it did not fail: \(result.text)")
        case (.failure(let error), let pattern?):
            try check(pattern, shown(error), "the error")
        case (.failure(let error), nil):
            throw error
        }
    }

    private func shown(_ error: any Error) throws -> JSON {
        switch error {
        case let problem as CameraProblem:
            .object(["code": .number(-32000), "problem": try JSON(problem)])
        case let error as RequestError:
            .object(["code": .number(Double(error.code)), "problem": .null])
        case is CancellationError:
            .object(["aborted": .bool(true)])
        default:
            throw error
        }
    }

    private func readLines(_ isWanted: Bool) async {
        readingLines?.cancel()
        await readingLines?.value
        readingLines = nil
        if isWanted {
            let lines = await camera!.lines()
            readingLines = Task { [weak self] in
                for await line in lines {
                    await self?.hear("line", (try? JSON(line)) ?? .null)
                }
            }
        }
        // That a stream has ended is known to the camera a moment later.
        while await camera!.lineReaders.isEmpty == isWanted {
            await Task.yield()
        }
    }

    // MARK: What is told

    private func hear(_ kind: String, _ news: JSON) {
        told[kind, default: []].append(news)
        changed()
    }

    private func changed() {
        whenChanged.forEach { $0.resume() }
        whenChanged = []
    }

    private func nextChange() async throws {
        await withTaskCancellationHandler {
            await withCheckedContinuation { whenChanged.append($0) }
        } onCancel: {
            Task { await self.changed() }
        }
        try Task.checkCancellation()
    }

    private func sees(_ kind: String, _ step: JSON) async throws {
        let pattern = step["with"] ?? .object([:])
        let isCounted = counted.contains(kind) && !conversation.passesOver.contains(kind)
        while true {
            guard let news = told[kind]?.first else {
                try await nextChange()
                continue
            }
            told[kind]!.removeFirst()
            // A state may be passed through quickly or slowly.
            var copy = names
            if isCounted || mismatch(pattern, news, &copy) == nil {
                return try check(pattern, news, kind)
            }
        }
    }

    private func startReader(_ name: String, _ after: String?) {
        readers[name] = []
        let pictures = camera!.pictures(after: after)
        reading.append(
            Task { [weak self] in
                for try await picture in pictures {
                    await self?.bring(name, try JSON(picture))
                }
            })
    }

    private func bring(_ name: String, _ picture: JSON) {
        readers[name]!.append(picture)
        changed()
    }

    private func brings(_ name: String, _ pattern: JSON) async throws {
        while readers[name]!.count < pattern.array!.count {
            try await nextChange()
        }
        let brought = readers[name]!
        readers[name] = []
        try check(pattern, .array(brought), "what it brings")
    }

    // MARK: The rest

    private func make(_ path: String, _ text: String?) throws {
        if let text {
            try Data(text.utf8).write(to: URL(fileURLWithPath: path))
        } else {
            try FileManager.default.createDirectory(atPath: path, withIntermediateDirectories: false)
        }
    }

    private func finish() async throws {
        try await camera?.close()
        for reader in reading {
            try await reader.value
        }
        guard answers.isEmpty else {
            throw Failed("no step has these answers: \(answers.keys.sorted())")
        }
        for (name, pictures) in readers where !pictures.isEmpty {
            throw Failed("no step has these pictures of \(name): \(pictures.map(\.text))")
        }
        for kind in counted where !conversation.passesOver.contains(kind) && !(told[kind] ?? []).isEmpty {
            throw Failed("no step sees these of \(kind): \(told[kind]!.map(\.text))")
        }
    }
}
