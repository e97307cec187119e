// Every conversation of clients/corpus, with the stand-in for `tether serve`.

import Testing

/// Most of the time is spent waiting, but each has a process.
private let places = Places(8)

@Suite("The client plays to a stand-in")
struct CorpusTests {
    @Test("every conversation, with a stand-in", arguments: Conversation.forStandIn)
    func plays(_ conversation: Conversation) async throws {
        try await places.use {
            try await playToStandIn(conversation)
        }
    }
}

/// So many at once.
actor Places {
    private var free: Int
    private var waiting: [CheckedContinuation<Void, Never>] = []

    init(_ count: Int) {
        free = count
    }

    nonisolated func use(_ work: @Sendable () async throws -> Void) async throws {
        await take()
        do {
            try await work()
        } catch {
            await leave()
            throw error
        }
        await leave()
    }

    private func take() async {
        if free > 0 {
            free -= 1
        } else {
            await withCheckedContinuation { waiting.append($0) }
        }
    }

    private func leave() {
        if waiting.isEmpty {
            free += 1
        } else {
            waiting.removeFirst().resume()
        }
    }
}
