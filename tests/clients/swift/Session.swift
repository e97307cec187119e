// What several tests do with `tether serve` and the virtual camera.

import Foundation

@testable import CameraWorker

let quick = ["timing instant", "picture 600x400"]

extension Camera {
    /// The next event that is wanted. It is listened for from now on.
    func next(_ isWanted: @escaping @Sendable (Event) -> Bool) -> Task<Event, any Error> {
        let events = events()
        return Task {
            for await event in events where isWanted(event) {
                return event
            }
            throw Failed("the camera was closed")
        }
    }

    /// The state may be so already.
    func until(_ wanted: SessionState) async throws {
        let next = next { event in
            if case .state(let state) = event { state.state == wanted } else { false }
        }
        if state.state == wanted {
            next.cancel()
        } else {
            _ = try await next.value
        }
    }

    /// `tether`, by its number.
    var tether: pid_t {
        process!.life.id
    }

    /// `tether`, which does nothing any more.
    func stopped() -> pid_t {
        kill(tether, SIGSTOP)
        return tether
    }

    /// As soon as it is started again, before it takes requests.
    func closeWhileItStarts() async throws -> Ended {
        while process == nil || isReady {
            await Task.yield()
        }
        return try await close()
    }

    /// Its worker, by its number.
    func worker() throws -> pid_t {
        guard let worker = try children(of: tether).first else {
            throw Failed("no worker runs")
        }
        return worker
    }
}

/// So many of them, or all up to the end.
func take(_ pictures: Camera.PictureSequence, _ count: Int = .max) async throws -> [Camera.Picture] {
    var taken: [Camera.Picture] = []
    for try await picture in pictures {
        taken.append(picture)
        if taken.count == count {
            break
        }
    }
    return taken
}

/// The children of a process that have not ended, by their numbers.
func children(of parent: pid_t) throws -> [pid_t] {
    let ps = Process()
    let output = Pipe()
    ps.executableURL = URL(fileURLWithPath: "/bin/ps")
    ps.arguments = ["-A", "-o", "pid=,ppid=,stat="]
    ps.standardOutput = output
    try ps.run()
    let text = String(decoding: output.fileHandleForReading.readDataToEndOfFile(), as: UTF8.self)
    ps.waitUntilExit()
    return text.split(separator: "\n").compactMap { line in
        let columns = line.split(separator: " ")
        return pid_t(columns[1]) == parent && !columns[2].hasPrefix("Z") ? pid_t(columns[0]) : nil
    }
}

/// Also one that has ended and waits to be reaped.
func isThere(_ process: pid_t) -> Bool {
    kill(process, 0) == 0 || errno != ESRCH
}

/// The files that a camera has handed over whole, by the names that it gave them.
func delivered(_ journal: String) throws -> [String] {
    try String(contentsOfFile: journal, encoding: .utf8).split(separator: "\n").compactMap { line in
        let quoted = line.components(separatedBy: "\"")
        let isWhole =
            quoted.count == 3 && quoted[0].hasSuffix("OnCompleteDownload ") && quoted[2].hasPrefix(" 0xFFFFFFFF")
        return isWhole ? quoted[1] : nil
    }
}
