// A process is started, ends, and another takes its place.

import Foundation

/// Seconds. A process that has run for so long starts a new row of ends.
private let longEnough = 60.0
/// Seconds. The longest that `tether serve` takes to end when its input ends (10 s for files, four steps of 5 s), and a
/// little.
private let endingTakes = 35.0
/// Bytes. Of the last words of a process that ended, for the problem that tells of it.
private let keptOfComplaints = 4096

/// Seconds, of a clock that stands still while the machine sleeps.
var now: Double { ProcessInfo.processInfo.systemUptime }

/// Does it in so many seconds, unless the task is cancelled.
func after(_ seconds: Double, _ work: @escaping @Sendable () async -> Void) -> Task<Void, Never> {
    Task.detached {
        // At most so long that it comes to the same: what a host asks for may be more than can be counted.
        let nanoseconds = UInt64(min(max(seconds, 0), 1e9) * 1e9)
        if (try? await Task.sleep(nanoseconds: nanoseconds)) != nil { await work() }
    }
}

extension Camera {
    func start() async throws {
        startedAt = now
        messages = Messages()
        let process: ChildProcess
        do {
            process = try ChildProcess(launch.program, launch.arguments, launch.environment)
        } catch {
            hasEnded(error as? Problem ?? .own(.tetherMissing, "A process cannot be started: \(error)."))
            throw error
        }
        self.process = process
        listen(to: process)
        do {
            let parameters = InitializeParameters(client: options.client, protocols: [1])
            initialized = try await request(.initialize, parameters, cancelling: nil, atOnce: true)
        } catch {
            fail(error) { !$0.isSent }
            await end(process)
            throw error
        }
        guard self.process === process else { throw Problem.own(.tetherGone, "tether has ended.") }
        isReady = true
        // As it was before, if it was. What stands in the way is told.
        if !lineReaders.isEmpty { post(.subscribe, SubscribeParameters(lines: true)) }
        if wantsCamera { post(.connect, ConnectParameters()) }
        calls.keys.sorted().forEach(send)
    }

    private func listen(to process: ChildProcess) {
        let (output, complaints, life) = (process.output, process.complaints, process.life)
        Task.detached { [weak self] in
            async let how = life.end(patience: endingTakes)
            async let lastWords = complaints.last(keptOfComplaints)
            // What it wrote before it ended is read first: a picture may be among it.
            while let piece = await output.next() { await self?.take(piece) }
            await self?.closeInput()
            let last = await lastWords.split(whereSeparator: \.isNewline).last.map { ": \($0)" }
            let why = Problem.own(.tetherGone, "tether ended \(await how)\(last ?? ".")")
            await self?.hasEnded(why)
        }
    }

    private func hasEnded(_ why: Problem) {
        let wasReady = isReady
        (process, isReady) = (nil, false)
        // What is asked while it is down waits for the next process, and fails with it.
        fail(closing == nil ? why : Problem.closed) { $0.isSent || !wasReady }
        whenEnded.forEach { $0.resume() }
        whenEnded = []
        guard initialized != nil else { return }
        var down = state
        (down.state, down.camera, down.saveDestination.inForce, down.fileType.inForce) = (.down, nil, nil, nil)
        if closing == nil || down != state { hear(down) }
        guard closing == nil else { return }
        tell(.problem(why))
        endsInARow = now - startedAt > longEnough ? 1 : endsInARow + 1
        restarting = after(options.restarts.prefix(endsInARow).last ?? 0) { [weak self] in await self?.restart() }
    }

    private func restart() async {
        if closing == nil { try? await start() }  // what stands in the way is told, and it is tried again
    }

    /// The answer to `shutdown`, once all of it is over.
    func shutDown(_ parameters: ShutdownParameters) async throws -> Ended {
        defer { finish() }
        guard let process else {
            restarting?.cancel()
            return Ended(worker: .gone, status: 0)
        }
        let answer: Result<Ended, any Error>
        do {
            answer = .success(try await request(.shutdown, parameters, cancelling: nil, atOnce: isReady))
        } catch is Problem where !isReady {
            answer = .success(Ended(worker: .gone, status: 0))  // it ended meanwhile, or was not started again
        } catch {
            answer = .failure(error)
        }
        await end(process)
        return try answer.get()
    }

    private func end(_ process: ChildProcess) async {
        guard self.process === process else { return }
        closeInput()
        await withCheckedContinuation { whenEnded.append($0) }
    }

    private func closeInput() {
        process?.closeInput()
    }

    /// Nothing comes any more, and nobody is answered.
    func finish() {
        isOver = true
        fail(Problem.closed) { _ in true }
        wakeReaders()
        finishStreams()
    }
}
