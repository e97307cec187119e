/// Opens a camera for as long as it is used, and closes it whatever happens.
///
/// - Parameters:
///   - options: Which camera, and where its pictures go.
///   - events: Hears what is told before the camera is open, too.
///   - use: What is done with the camera.
/// - Returns: What `use` returns.
public func withCamera<Value: Sendable>(
    _ options: Camera.Options,
    events: AsyncStream<Camera.Event>.Continuation? = nil,
    isolation: isolated (any Actor)? = #isolation,
    _ use: (Camera) async throws -> Value
) async throws -> Value {
    let camera = try await Camera.open(options, events: events)
    let value: Value
    do {
        value = try await use(camera)
    } catch {
        _ = try? await camera.close()
        throw error
    }
    try await camera.close()
    return value
}
