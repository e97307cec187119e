// What a host relies on beside the conversations: how a camera is opened and closed, and what happens to processes.

import CameraWorkerVirtual
import Foundation
import Testing

@testable import CameraWorker

/// A camera that is open and ready, and its folder.
private func withReadyCamera(_ use: @escaping @Sendable (Camera, String) async throws -> Void) async throws {
    try await withNewFolder { folder in
        let virtual = try VirtualCamera(scene: quick)
        defer {
            virtual.close()
        }
        var options = virtual.options(folder: folder)
        options.tether = Tree.tether
        let given = options
        try await within {
            try await withCamera(given) { camera in
                try await camera.connect()
                try await use(camera, folder)
            }
        }
    }
}

/// With a program of the tests in the place of `tether`.
private func options(_ program: String) -> Camera.Options {
    var options = Camera.Options(folder: "shots", source: .virtual)
    options.tether = "\(Tree.root)/tests/clients/swift/programs/\(program)"
    return options
}

/// What a host of its own process is started with.
private func environment(of virtual: VirtualCamera) -> [String: String] {
    ProcessInfo.processInfo.environment
        .merging(virtual.environment) { $1 }
        .merging(["CAMERA_WORKER_TETHER": Tree.tether]) { $1 }
}

private func isOver(_ process: pid_t) async throws {
    while isThere(process) {
        try await Task.sleep(nanoseconds: 10_000_000)
    }
}

private func end(of process: Process) async throws -> Int32 {
    let (ends, continuation) = AsyncStream.makeStream(of: Int32.self)
    process.terminationHandler = { continuation.yield($0.terminationStatus) }
    try process.run()
    for await status in ends {
        return status
    }
    throw Failed("nobody says how it ended")
}

private func isShot(_ status: Camera.ShotStatus) -> @Sendable (Camera.Event) -> Bool {
    { event in
        if case .shot(let shot) = event { shot.status == status } else { false }
    }
}

private func isProblem(_ code: Camera.ProblemCode) -> @Sendable (Camera.Event) -> Bool {
    { event in
        if case .problem(let problem) = event { problem.code == code } else { false }
    }
}

private func isState(_ isMeant: @escaping @Sendable (Camera.State) -> Bool) -> @Sendable (Camera.Event) -> Bool {
    { event in
        if case .state(let state) = event { isMeant(state) } else { false }
    }
}

@Suite("Opening and closing")
struct OpeningTests {
    @Test("close() ends tether and its worker in order, says how, and is done once")
    func closing() async throws {
        try await withReadyCamera { camera, _ in
            let tether = await camera.tether
            #expect(try children(of: getpid()).contains(tether))
            let pictures = Task { try await take(camera.pictures()) }
            _ = try await camera.capture()
            async let second = camera.close(patience: 1)
            let first = try await camera.close()
            #expect(first == Camera.Ended(worker: .quit, status: 0))
            let other = try await second
            #expect(other == first)
            #expect(await camera.state.state == .down)
            #expect(try await pictures.value.count == 1)
            #expect(!isThere(tether))
            _ = try await failure(CameraProblem.self) { try await camera.capture() }
            for await _ in await camera.events() {}
            for await _ in await camera.lines() {}
        }
    }

    @Test("a tether that is not there is a problem with an advice")
    func noTether() async throws {
        var options = Camera.Options(folder: "x", source: .virtual)
        options.tether = "/nothing/there"
        let problem = try await failure(CameraProblem.self) { [options] in try await Camera.open(options) }
        #expect(problem.code == .tetherMissing)
        #expect(problem.text.contains("/nothing/there"))
        #expect(!problem.advice.isEmpty)
    }

    @Test("a worker that is not there is a problem, and nothing is left running")
    func noWorker() async throws {
        try await withNewFolder { folder in
            var options = Camera.Options(folder: folder, source: .worker("/nothing/there"))
            options.tether = Tree.tether
            let (events, continuation) = AsyncStream.makeStream(of: Camera.Event.self)
            let problem = try await failure(CameraProblem.self) { [options] in
                try await Camera.open(options, events: continuation)
            }
            #expect(problem.code == .workerMissing)
            // It has ended by now, and what was told before it did not open was heard.
            let heard: [Camera.Event] = await events.reduce(into: []) { $0.append($1) }
            #expect(heard.contains(where: isProblem(.workerMissing)))
        }
    }

    @Test("an option that tether does not take is a problem in tether's own words")
    func wrongOption() async throws {
        try await withNewFolder { folder in
            var options = Camera.Options(folder: folder, source: .virtual)
            options.tether = Tree.tether
            options.patience = 4000
            let problem = try await failure(CameraProblem.self) { [options] in try await Camera.open(options) }
            #expect(problem.code == .tetherGone)
            #expect(problem.text.contains("patience"), "\(problem.text)")
        }
    }

    @Test("a program that ends at once is no signal to the host")
    func endsAtOnce() async throws {
        for _ in 0..<20 {
            let problem = try await failure(CameraProblem.self) { try await Camera.open(options("ends_at_once")) }
            #expect(problem.text == "tether ended with status 7.")
        }
    }

    @Test("tether inherits nothing of what the host has open")
    func inheritsNothing() async throws {
        let leak = open("/dev/null", O_RDONLY)  // without close-on-exec, as many a library opens
        defer {
            close(leak)
        }
        let problem = try await failure(CameraProblem.self) { try await Camera.open(options("shows_descriptors")) }
        #expect(problem.text.hasPrefix("tether ended with status 1: 0 1 2 "))
        #expect(problem.text.split(separator: " ").compactMap { Int($0) }.count <= 4, "\(problem.text)")
    }

    @Test("a host whose standard streams are closed shoots as any other")
    func closedStreams() async throws {
        try await withNewFolder { folder in
            let virtual = try VirtualCamera(scene: quick)
            defer {
                virtual.close()
            }
            let host = Process()
            host.executableURL = URL(fileURLWithPath: "/bin/sh")
            host.arguments = ["-c", "exec \"$0\" \"$1\" 0<&- 1>&- 2>&-", "\(Tree.products)/first-host", folder]
            host.environment = environment(of: virtual)
            let status = try await end(of: host)
            #expect(status == 0)
            #expect(visible(folder) == ["DSC00001.JPG"])
        }
    }

    @Test("a Ctrl-C in the host's terminal is the host's to answer")
    func processGroup() async throws {
        try await withReadyCamera { camera, _ in
            let tether = await camera.tether
            #expect(getpgid(tether) == tether)
            #expect(getpgid(tether) != getpgid(0))
        }
    }

    @Test("a camera that nobody has any more ends tether, and leaves no zombie")
    func forgotten() async throws {
        try await withNewFolder { folder in
            var options = Camera.Options(folder: folder, source: .virtual)
            options.tether = Tree.tether
            let (events, continuation) = AsyncStream.makeStream(of: Camera.Event.self)
            let tether = try await Camera.open(options, events: continuation).tether
            for await _ in events {}  // ends with the camera
            try await within { try await isOver(tether) }
        }
    }

    @Test("a tether that hangs is killed in the end, also when nobody has the camera any more")
    func hangs() async throws {
        try await withNewFolder { folder in
            var options = Camera.Options(folder: "\(folder)/forgotten", source: .virtual)
            options.tether = Tree.tether
            options.grace = -15  // of the 20 s that an ending without patience may take
            let forgotten = try await Camera.open(options).stopped()
            options.folder = "\(folder)/closed"
            let camera = try await Camera.open(options)
            let closed = await camera.stopped()
            try await within(seconds: 120) {
                let problem = try await failure(CameraProblem.self) { try await camera.close(patience: 0) }
                #expect(problem.code == .noAnswer)
                #expect(!isThere(closed))
                #expect(await camera.state.state == .down)
                try await isOver(forgotten)
            }
        }
    }

    @Test("close() while it cannot be started again says that there was none")
    func closedWhileItCannotStart() async throws {
        try await withNewFolder { folder in
            let worker = "\(folder)/worker"
            try FileManager.default.createSymbolicLink(atPath: worker, withDestinationPath: Tree.worker)
            var options = Camera.Options(folder: "\(folder)/shots", source: .worker(worker))
            options.tether = Tree.tether
            let camera = try await Camera.open(options)
            try FileManager.default.removeItem(atPath: worker)
            kill(await camera.tether, SIGKILL)
            try await within {
                let ended = try await camera.closeWhileItStarts()
                #expect(ended == Camera.Ended(worker: .gone, status: 0))
            }
        }
    }

    @Test("an opening whose task is cancelled leaves nothing running")
    func cancelled() async throws {
        try await withNewFolder { folder in
            var options = options("answers_nothing")
            options.environment["STARTED"] = "\(folder)/started"
            let opening = Task { [options] in try await Camera.open(options) }
            try await within {
                while !FileManager.default.fileExists(atPath: "\(folder)/started") {
                    try await Task.sleep(nanoseconds: 10_000_000)
                }
                opening.cancel()
                _ = try await failure(CancellationError.self) { try await opening.value }
            }
            let process = try #require(pid_t(String(contentsOfFile: "\(folder)/started", encoding: .utf8)))
            #expect(!isThere(process))
        }
    }

    @Test("of two cameras at once each has its own shots, and its own end")
    func two() async throws {
        try await withReadyCamera { first, folder in
            try await withReadyCamera { second, other in
                async let one = first.capture(tag: "one")
                async let two = second.capture(tag: "two")
                let (shot, its) = try await (one, two)
                #expect(shot.tag == "one" && shot.pictures.allSatisfy { $0.path.hasPrefix(folder) }, "\(shot)")
                #expect(its.tag == "two" && its.pictures.allSatisfy { $0.path.hasPrefix(other) }, "\(its)")
                #expect([shot.status, its.status] == [.complete, .complete])
                // The second program has nothing of the first one's open, or this would not end.
                let ended = try await first.close()
                #expect(ended.worker == .quit)
                let after = try await second.capture()
                #expect(after.status == .complete)
            }
        }
    }
}

@Suite("Giving up")
struct GivingUpTests {
    @Test("a task that was cancelled before asks for nothing")
    func cancelledBefore() async throws {
        try await withReadyCamera { camera, _ in
            let fired = await camera.next(isShot(.fired))
            let task = Task {
                while !Task.isCancelled {
                    await Task.yield()
                }
                _ = try await camera.capture()
            }
            task.cancel()
            _ = try await failure(CancellationError.self) { try await task.value }
            _ = try await camera.request(.state, .init())
            try await camera.close()
            _ = try await failure(Failed.self) { try await fired.value }
        }
    }

    @Test("a capture whose task is cancelled is cancelled at the camera, and others are not")
    func capture() async throws {
        try await withReadyCamera { camera, _ in
            try await camera.simulate("next file late 600s")
            let fired = await camera.next(isShot(.fired))
            let over = await camera.next(isShot(.none))
            let capture = Task { try await camera.capture() }
            _ = try await fired.value
            async let other = camera.capture(patience: 2)
            capture.cancel()
            _ = try await failure(CancellationError.self) { try await capture.value }
            guard case .shot(let shot) = try await over.value else {
                throw Failed("no shot")
            }
            #expect(shot.problems.map(\.code) == [.cancelled])
            let next = try await other
            #expect(next.firedAt != nil && !next.problems.map(\.code).contains(.cancelled), "\(next)")
        }
    }

    @Test("a task that is cancelled ends pictures() while it waits")
    func pictures() async throws {
        try await withReadyCamera { camera, _ in
            let waiting = Task { try await take(camera.pictures()) }
            _ = try await camera.capture()
            waiting.cancel()
            #expect(try await waiting.value.count <= 1)
        }
    }
}

@Suite("Processes that die")
struct DyingTests {
    @Test("a worker that is killed is replaced, and the session is ready again")
    func worker() async throws {
        try await withReadyCamera { camera, _ in
            let lost = await camera.next(isState { $0.state != .ready })
            kill(try await camera.worker(), SIGKILL)
            _ = try await lost.value
            try await camera.until(.ready)
            #expect(try await camera.capture().status == .complete)
        }
    }

    @Test("a tether that is killed fails what waits at once, and is started again with the camera connected")
    func tether() async throws {
        try await withReadyCamera { camera, _ in
            try await camera.simulate("next file late 600s")
            let fired = await camera.next(isShot(.fired))
            let shot = Task { try await camera.capture(patience: 3600) }
            _ = try await fired.value
            kill(await camera.tether, SIGKILL)
            let problem = try await failure(CameraProblem.self) { try await shot.value }
            #expect(problem.code == .tetherGone)
            #expect(problem.text.hasPrefix("tether ended by signal 9"))
            try await camera.until(.ready)
            #expect(try await camera.capture().status == .complete)
        }
    }

    @Test("settings outlive a tether that is killed")
    func settings() async throws {
        try await withReadyCamera { camera, folder in
            let second = "\(folder)/second"
            try await camera.configure(folder: second, saveDestination: .both, fileType: .raw, name: "-{n:3}")
            let gone = await camera.next(isProblem(.tetherGone))
            kill(await camera.tether, SIGKILL)
            _ = try await gone.value
            try await camera.until(.ready)
            #expect(await camera.state.fileType.inForce == .raw)
            #expect(await camera.state.saveDestination.inForce == .both)
            let paths = try await camera.capture().pictures.map(\.path)
            #expect(paths.count == 1 && paths[0].hasSuffix("/second/-001.ARW"), "\(paths)")
        }
    }

    @Test("a host that is killed leaves nothing running, and the next one has every picture")
    func host() async throws {
        try await withNewFolder { folder in
            let virtual = try VirtualCamera(scene: quick)
            defer {
                virtual.close()
            }
            let host = Process()
            let output = Pipe()
            host.executableURL = URL(fileURLWithPath: "\(Tree.products)/first-host")
            host.arguments = [folder, "1000"]
            host.environment = environment(of: virtual)
            host.standardOutput = output
            try host.run()
            let reader = Output(Descriptor(dup(output.fileHandleForReading.fileDescriptor)), "host")
            var said = Data()
            while !String(decoding: said, as: UTF8.self).contains("shot 2 is fired") {
                said += try #require(await reader.next())
            }
            kill(host.processIdentifier, SIGKILL)
            // Waits for the folder's lock, which the killed host's tether holds until it has ended.
            var options = virtual.options(folder: folder)
            options.tether = Tree.tether
            try await withCamera(options) { camera in
                let pictures = try await take(camera.pictures(after: ""), 2)
                #expect(pictures.prefix(2).map(\.cameraName) == ["DSC00001.JPG", "DSC00002.JPG"])
            }
        }
    }
}

@Suite("The virtual camera")
struct VirtualCameraTests {
    @Test("what the test says happens to the host's camera, and state() tells of it")
    func happens() async throws {
        try await withNewFolder { folder in
            let virtual = try VirtualCamera(scene: quick)
            var options = virtual.options(folder: folder)
            options.tether = Tree.tether
            options.saveDestination = .both
            try await withCamera(options) { camera in
                try await camera.connect()
                #expect(try await virtual.state().contains("session open"))
                let missing = await camera.next(isProblem(.cardMissing))
                #expect(try await virtual.do("card out").isEmpty)
                _ = try await missing.value
                #expect(try await virtual.state().contains { $0.contains("card out") })
                let refusal = try await failure(VirtualCamera.Refusal.self) { try await virtual.do("fly") }
                #expect(refusal.message.contains("\"fly\""))
            }
            let scene = try #require(virtual.environment["CAMERA_SIM_SCENE"])
            #expect(FileManager.default.fileExists(atPath: scene))
            virtual.close()
            #expect(!FileManager.default.fileExists(atPath: scene))
        }
    }

    @Test("without a host that has it open, a line fails after its patience")
    func nobody() async throws {
        let virtual = try VirtualCamera(scene: quick, patience: 0.2)
        let refusal = try await failure(VirtualCamera.Refusal.self) { try await virtual.do("card out") }
        #expect(refusal.message.contains("no worker has it open"))
        virtual.close()
    }
}
