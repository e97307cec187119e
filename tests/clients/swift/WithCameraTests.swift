// Every conversation of clients/corpus that needs no stand-in, with `tether serve` and the virtual camera.

import Testing

/// Most of the time is spent waiting, but each has three processes.
private let places = Places(8)

@Suite("The client plays to tether serve")
struct WithCameraTests {
    @Test("every conversation, with a camera", arguments: Conversation.forTether)
    func plays(_ conversation: Conversation) async throws {
        try await places.use {
            try await playToTether(conversation)
        }
    }
}
