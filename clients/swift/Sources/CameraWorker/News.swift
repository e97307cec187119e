// What comes by itself, and who hears it.

import Foundation

/// Bytes. A client that leaves 1 MiB unread is not told of pictures until it reads again; all of that is read after the
/// first one was left out. So whoever asks for what is new this often has them all.
private let readBetweenAsking = 256 * 1024

extension Camera {
    func take(_ piece: Data) {
        messages.take(piece).forEach(hear)
        unasked += piece.count
        if unasked > readBetweenAsking {
            unasked = 0
            catchUp()
        }
    }

    private func hear(_ message: Data) {
        // What cannot be understood is of a later version, or no message.
        switch try? decoder.decode(Message.self, from: message) {
        case .state(let state): hear(state)
        case .picture(let picture): take(picture)
        case .shot(let shot): tell(.shot(shot))
        case .problem(let problem): tell(.problem(problem))
        case .line(let line): lineReaders.values.forEach { $0.yield(line) }
        case .answer(let number, let failure): settle(number, failure.map { .failure($0.error) } ?? .success(message))
        case .unknown, nil: break
        }
    }

    func hear(_ state: State) {
        // Before the folder is opened it is shown as it was given.
        if state.state != .starting, state.state != .down, state.folder != folder {
            folder = state.folder
            lastPicture = nil  // the new folder does not know it
        }
        self.state = state
        tell(.state(state))
    }

    func tell(_ event: Event) {
        listeners.values.forEach { $0.yield(event) }
    }

    func forgetListener(_ number: Int) {
        listeners[number] = nil
    }

    func forgetLineReader(_ number: Int) {
        lineReaders[number] = nil
        if lineReaders.isEmpty { post(.subscribe, SubscribeParameters(lines: false)) }
    }

    func finishStreams() {
        listeners.values.forEach { $0.finish() }
        lineReaders.values.forEach { $0.finish() }
        (listeners, lineReaders) = ([:], [:])
    }
}
