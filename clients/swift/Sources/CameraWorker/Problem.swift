// What can go wrong, as errors.

import Foundation

/// Something went wrong with the camera, the worker or a disk: in words that can be shown to a photographer.
public typealias CameraProblem = Camera.Problem

extension Camera.Problem: LocalizedError {
    public var errorDescription: String? {
        text
    }

    public var recoverySuggestion: String? {
        advice
    }
}

/// What this client itself has to tell, beside the codes of the catalogue.
extension Camera.ProblemCode {
    /// The program `tether` cannot be started.
    public static let tetherMissing = Self("tether-missing")
    /// `tether` ended while something waited for it. It is started again.
    public static let tetherGone = Self("tether-gone")
    /// A request was not answered in time.
    public static let noAnswer = Self("no-answer")
    /// The camera was closed.
    public static let closed = Self("closed")

    fileprivate static let advices: [Self: String] = [
        .tetherMissing: "Install the application again.",
        .tetherGone: "Wait a moment. The camera is connected again by itself.",
        .noAnswer: "Try again. If it stays like this, start the application again.",
        .closed: "Open the camera again.",
    ]
}

extension Camera.Problem {
    /// A problem that this client has found.
    static func own(_ code: Camera.ProblemCode, _ text: String) -> Self {
        Self(code: code, severity: .error, text: text, advice: Camera.ProblemCode.advices[code]!, sdk: nil, shot: nil)
    }

    static let closed = own(.closed, "The camera was closed.")

    var isOwn: Bool {
        Camera.ProblemCode.advices[code] != nil
    }
}

/// A request that is wrong in itself, such as one with a parameter out of its range: a mistake of the host's program.
public struct RequestError: LocalizedError, Hashable, Sendable {
    /// JSON-RPC's own: -32602 for a bad parameter, -32601 for a method that is not there.
    public let code: Int
    /// What is wrong with it.
    public let message: String

    public var errorDescription: String? {
        message
    }
}
