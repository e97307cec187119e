// Requests find their answers, and none waits for ever.

import Foundation

extension Camera {
    /// - Parameters:
    ///   - tag: The captures that are cancelled when this one is given up.
    ///   - atOnce: What the client itself asks while it is opened or closed: whether the process takes it yet.
    func request<Parameters, Answer>(
        _ method: Method<Parameters, Answer>,
        _ parameters: Parameters,
        cancelling tag: String?,
        atOnce: Bool? = nil
    ) async throws -> Answer {
        try Task.checkCancellation()
        guard closing == nil || atOnce != nil else { throw Problem.closed }
        let number = nextNumber()
        let answer = try await withTaskCancellationHandler {
            try await withCheckedThrowingContinuation { continuation in
                let request = Request(id: number, method: method.name, params: parameters)
                do {
                    calls[number] = try Call(request, tag, patience: options.patience, continuation)
                    if atOnce ?? isReady { send(number) }
                } catch {
                    continuation.resume(throwing: error)
                }
            }
        } onCancel: {
            Task { await self.giveUp(number) }
        }
        return try decoder.decode(Reply<Answer>.self, from: answer).result
    }

    /// A request whose answer nobody waits for. While there is no process, whoever starts one sees to it.
    func post<Parameters, Answer>(_ method: Method<Parameters, Answer>, _ parameters: Parameters) {
        let number = nextNumber()
        let request = Request(id: number, method: method.name, params: parameters)
        guard isReady, let call = try? Call(request, nil, patience: options.patience, nil) else { return }
        calls[number] = call
        send(number)
    }

    func send(_ number: Int) {
        guard let process, var call = calls[number], !call.isSent else { return }
        wantsCamera = call.method == "connect" || (wantsCamera && call.method != "disconnect")
        let turnBegins = call.hasTurn ? max(now, calls.values.map(\.turnEnds).max() ?? 0) : now
        let over = turnBegins + call.seconds
        call.turnEnds = call.hasTurn ? over : 0
        call.timer = after(over - now + options.grace) { [weak self] in await self?.timeOut(number) }
        calls[number] = call
        process.send(call.message)
    }

    func settle(_ number: Int, _ result: Result<Data, any Error>) {
        let call = calls.removeValue(forKey: number)
        call?.timer?.cancel()
        call?.continuation?.resume(with: result)
    }

    func fail(_ error: any Error, _ isMeant: (Call) -> Bool) {
        for (number, call) in calls where isMeant(call) { settle(number, .failure(error)) }
    }

    private func timeOut(_ number: Int) {
        guard let method = calls[number]?.method else { return }
        settle(number, .failure(Problem.own(.noAnswer, "\"\(method)\" was not answered in time.")))
    }

    private func giveUp(_ number: Int) {
        guard let call = calls[number] else { return }
        settle(number, .failure(CancellationError()))
        if call.isSent, let tag = call.tag { post(.cancel, CancelParameters(tag: tag)) }
    }

    func nextNumber() -> Int {
        numbers += 1
        return numbers
    }
}
