// A whole first host: takes pictures, and prints where their files are or why there are none.
//
//     swift run first-host FOLDER [SHOTS [WORKER]]
//
// The variable CAMERA_WORKER_TETHER names `tether`. Without a worker it has the virtual camera.

import CameraWorker
import Foundation

@main
struct FirstHost {
    static func main() async {
        let given = Array(CommandLine.arguments.dropFirst())
        let source = given.count > 2 ? Camera.Source.worker(given[2]) : .virtual
        let options = Camera.Options(folder: given.first ?? "shots", source: source)
        do {
            try await shoot(options, given.count > 1 ? Int(given[1]) ?? 1 : 1)
        } catch {
            print(error.localizedDescription)
            exit(1)
        }
    }

    private static func shoot(_ options: Camera.Options, _ count: Int) async throws {
        try await withCamera(options) { camera in
            let events = await camera.events()
            Task {
                for await event in events {
                    say(event)
                }
            }
            try await camera.connect()
            for _ in 0..<count {
                let shot = try await camera.capture()
                for picture in shot.pictures {
                    print(picture.path)
                }
            }
        }
    }

    private static func say(_ event: Camera.Event) {
        switch event {
        case .state(let state): print("the camera is", state.state)
        case .problem(let problem): print(problem.text, problem.advice)
        case .shot(let shot): print("shot", shot.shot, "is", shot.status)
        }
        fflush(nil)  // also into a pipe
    }
}
