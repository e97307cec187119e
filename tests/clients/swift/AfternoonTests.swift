// A long afternoon with the virtual camera: 50 shots, while everything goes wrong that can.

import CameraWorkerVirtual
import Foundation
import Testing

@testable import CameraWorker

@Suite("An afternoon")
struct AfternoonTests {
    static let shots = 50
    /// What is done while these are under way; one that nothing is done to must be complete.
    static let disturbed: Set<Int> = [5, 14, 20, 27, 33, 40, 43, 46]

    @Test("50 pairs, pulled cables, cards, killed processes and new folders: nothing is lost, nothing comes twice")
    func loseNothing() async throws {
        try await withNewFolder { top in
            let folders = ["morning", "noon", "evening"].map { "\(top)/\($0)" }
            for folder in folders {
                try FileManager.default.createDirectory(atPath: folder, withIntermediateDirectories: false)
            }
            let virtual = try VirtualCamera(scene: quick, patience: 60)
            defer {
                virtual.close()
            }
            try await within(seconds: 600) {
                try await afternoon(virtual, folders, journal: "\(top)/journal")
            }
        }
    }

    private func afternoon(_ virtual: VirtualCamera, _ folders: [String], journal: String) async throws {
        var options = virtual.options(folder: folders[0])
        options.tether = Tree.tether
        options.fileType = .both
        options.environment["CAMERA_SIM_JOURNAL"] = journal
        let camera = try await Camera.open(options)
        let pictures = Task { try await take(camera.pictures()) }
        let sameAgain = Task { try await take(camera.pictures(after: "")) }
        try await camera.connect()

        var complete: [Camera.Shot] = []
        var interrupted = 0
        for number in 1...Self.shots {
            try await prepare(number, camera, virtual, folders)
            try await camera.until(.ready)
            let fired = await camera.next { event in
                if case .shot(let shot) = event { shot.status == .fired } else { false }
            }
            // The files of a shot that something is done to may never come.
            let patience = Self.disturbed.contains(number) ? 2.0 : 120
            async let shot = camera.capture(tag: "shot \(number)", patience: patience, expires: 60)
            _ = try await fired.value
            try await disturb(number, camera, virtual)
            do {
                let result = try await shot
                if result.status == .complete {
                    complete.append(result)
                }
                #expect(Self.disturbed.contains(number) || result.status == .complete, "\(result)")
            } catch let problem as CameraProblem where problem.code == .tetherGone {
                interrupted += 1
            }
        }
        try await camera.until(.ready)
        #expect(try await camera.close().worker == .quit)

        let all = try await pictures.value
        let again = try await sameAgain.value
        #expect(again.map(\.id).sorted() == all.map(\.id).sorted())
        try compare(all, folders, journal)
        #expect(complete.count >= Self.shots - Self.disturbed.count)
        #expect(interrupted <= 2)
        for shot in complete {
            let halves = all.filter { $0.tag == shot.tag }
            #expect(halves.map(\.kind.rawValue).sorted() == ["developed", "raw"], "\(shot.tag)")
            #expect(Set(halves.map(\.pair)).count == 1)
        }
        options.folder = folders[2]
        options.environment["CAMERA_SIM_JOURNAL"] = nil
        try await comeBack(options, all.filter { $0.path.hasPrefix(folders[2]) })
    }

    /// What is done before a shot.
    private func prepare(_ shot: Int, _ camera: Camera, _ virtual: VirtualCamera, _ folders: [String]) async throws {
        switch shot {
        case 8: try await virtual.do("card out")
        case 32:
            // Until the destination has changed, a shot may be sent to the card that is out.
            let changed = await camera.next { event in
                if case .state(let state) = event { state.saveDestination.inForce == .disk } else { false }
            }
            try await virtual.do("card out")
            _ = try await changed.value
        case 11, 34: try await virtual.do("card in")
        case 18: try await camera.configure(folder: folders[1])
        case 23: try await pull("unplug", camera, virtual)
        case 30: try await camera.configure(saveDestination: .both)
        case 37: try await camera.configure(folder: folders[2], saveDestination: .disk)
        default: break
        }
    }

    /// What is done while a shot is under way.
    private func disturb(_ shot: Int, _ camera: Camera, _ virtual: VirtualCamera) async throws {
        switch shot {
        case 5: try await pull("unplug", camera, virtual)
        case 14, 33:
            let worker = try await camera.worker()
            try await losing(camera) { kill(worker, SIGKILL) }
        case 20, 40:
            let gone = await camera.next { event in
                if case .problem(let problem) = event { problem.code == .tetherGone } else { false }
            }
            kill(await camera.tether, SIGKILL)
            _ = try await gone.value
        case 27: try await pull("unplug reconnecting", camera, virtual)
        case 43: try await losing(camera) { try await virtual.do("flap 3") }
        case 46:
            try await virtual.do("card out")
            try await virtual.do("card in")
        default: break
        }
    }

    /// Done, and seen to be done: the next shot must not meet it.
    private func losing<Value>(_ camera: Camera, _ act: () async throws -> Value) async throws {
        let lost = await camera.next { event in
            if case .state(let state) = event { state.state != .ready } else { false }
        }
        _ = try await act()
        _ = try await lost.value
    }

    private func pull(_ line: String, _ camera: Camera, _ virtual: VirtualCamera) async throws {
        try await losing(camera) { try await virtual.do(line) }
        try await virtual.do("plug")
    }

    private func compare(_ all: [Camera.Picture], _ folders: [String], _ journal: String) throws {
        // Each picture came once, and lies where it says.
        let paths = all.map(\.path)
        #expect(Set(all.map(\.id)).count == all.count)
        #expect(Set(paths).count == all.count)
        for picture in all {
            #expect(picture.whole, "\(picture)")
            #expect(FileManager.default.contents(atPath: picture.path)?.count == picture.bytes, "\(picture)")
        }
        // All that lies there came, all that the camera handed over lies there, and nothing is left on its way.
        #expect(folders.flatMap { folder in visible(folder).map { "\(folder)/\($0)" } }.sorted() == paths.sorted())
        let handedOver = try delivered(journal)
        #expect(all.map(\.cameraName).sorted() == handedOver.sorted())
        for folder in folders {
            #expect(paths.contains { $0.hasPrefix(folder) })
            for run in try FileManager.default.contentsOfDirectory(atPath: "\(folder)/.incoming") {
                #expect(visible("\(folder)/.incoming/\(run)").isEmpty)
            }
        }
    }

    /// A host that starts again has what it missed, and no more.
    private func comeBack(_ options: Camera.Options, _ evening: [Camera.Picture]) async throws {
        let half = evening.count / 2
        let again = try await Camera.open(options)
        let missed = try await take(again.pictures(after: evening[half].id), evening.count - half - 1)
        #expect(missed == Array(evening[(half + 1)...]))
        try await again.connect()
        async let later = take(again.pictures(after: evening.last!.id), 1)
        _ = try await again.capture()
        let new = try await later
        #expect(new.count == 1 && !evening.contains { $0.id == new[0].id })
        try await again.close()
    }
}
