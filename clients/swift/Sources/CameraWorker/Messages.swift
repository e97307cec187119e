// JSON-RPC 2.0: what is sent, and what comes.

import Foundation

extension Camera {
    /// A request: its name, what it takes and what it is answered with. The catalogue's own are constants; what this client
    /// has no name for is made, such as `Method<MyParameters, MyAnswer>("fly")`.
    public struct Method<Parameters: Encodable & Sendable, Answer: Decodable & Sendable>: Sendable {
        /// As on the wire.
        public let name: String

        /// Any request, by its name.
        public init(_ name: String) {
            self.name = name
        }
    }
}

/// How long an answer may take.
struct TimeOut: Sendable {
    let seconds: Double
    /// Whether the end of the captures and changes before it comes on top.
    let turn: Bool
    /// Seconds that come on top, and how many when they are not given; nil: what the program was started with.
    let parameters: [String: Double?]
}

/// A request that waits for its answer, or for a process that takes it.
struct Call {
    let method: String
    /// With the line feed.
    let message: Data
    /// Nil when nobody waits.
    let continuation: CheckedContinuation<Data, any Error>?
    /// The captures that are cancelled when this one is given up.
    let tag: String?
    /// Seconds that the answer may take once its turn has come.
    let seconds: Double
    /// Whether it is done after the captures and changes before it.
    let hasTurn: Bool
    /// The time by which it must be over, when others take their turn behind it.
    var turnEnds = 0.0
    /// Nil while it has not been sent.
    var timer: Task<Void, Never>?

    var isSent: Bool {
        timer != nil
    }

    init(
        _ request: Request<some Encodable>,
        _ tag: String?,
        patience: Double,
        _ continuation: CheckedContinuation<Data, any Error>?
    ) throws {
        method = request.method
        self.tag = tag
        self.continuation = continuation
        message = try JSONEncoder().encode(request) + [UInt8(ascii: "\n")]
        let timeOut = timeOuts[method] ?? TimeOut(seconds: 0, turn: false, parameters: [:])
        let given = (try? JSONDecoder().decode(Durations.self, from: message).params) ?? [:]
        seconds = timeOut.parameters.reduce(timeOut.seconds) { sum, named in
            sum + (given[named.key]?.seconds ?? named.value ?? patience)
        }
        hasTurn = timeOut.turn
    }
}

struct Request<Parameters: Encodable>: Encodable {
    let jsonrpc = "2.0"
    let id: Int
    let method: String
    let params: Parameters
}

/// Those parameters of a request that are numbers, read back: a request that this client has no types for has them too.
private struct Durations: Decodable {
    struct Value: Decodable {
        let seconds: Double?

        init(from decoder: any Decoder) throws {
            seconds = try? decoder.singleValueContainer().decode(Double.self)
        }
    }

    let params: [String: Value]
}

struct Reply<Answer: Decodable>: Decodable {
    let result: Answer
}

/// What went wrong with a request.
struct Failure: Decodable {
    let code: Int
    let message: String
    let data: Camera.Problem?

    private enum Key: CodingKey {
        case code, message, data
    }

    init(from decoder: any Decoder) throws {
        let members = try decoder.container(keyedBy: Key.self)
        code = try members.decode(Int.self, forKey: .code)
        message = try members.decode(String.self, forKey: .message)
        data = try? members.decode(Camera.Problem.self, forKey: .data)
    }

    var error: any Error {
        if code == -32000, let data {
            return data
        }
        return RequestError(code: code, message: message)
    }
}

/// A message, as far as it is understood without the request that it answers.
enum Message: Decodable {
    case state(Camera.State)
    case picture(Camera.Picture)
    case shot(Camera.Shot)
    case problem(Camera.Problem)
    case line(Camera.Line)
    case answer(id: Int, failure: Failure?)
    /// Of a later version.
    case unknown

    private enum Key: CodingKey {
        case method, params, id, error
    }

    init(from decoder: any Decoder) throws {
        let members = try decoder.container(keyedBy: Key.self)
        func parameters<News: Decodable>() throws -> News {
            try members.decode(News.self, forKey: .params)
        }
        switch try members.decodeIfPresent(String.self, forKey: .method) {
        case "state": self = .state(try parameters())
        case "picture": self = .picture(try parameters())
        case "shot": self = .shot(try parameters())
        case "problem": self = .problem(try parameters())
        case "line": self = .line(try parameters())
        case .some: self = .unknown
        case nil:
            let failure = try members.decodeIfPresent(Failure.self, forKey: .error)
            self = .answer(id: try members.decode(Int.self, forKey: .id), failure: failure)
        }
    }
}

/// Pieces of a pipe, put together to messages.
struct Messages {
    private var begun = Data()

    /// Those that are whole now. The pipe may cut one anywhere, also within a letter.
    mutating func take(_ piece: Data) -> [Data] {
        var lines = piece.split(separator: UInt8(ascii: "\n"), omittingEmptySubsequences: false)
        let rest = lines.removeLast()
        guard !lines.isEmpty else {
            begun.append(rest)
            return []
        }
        lines[0] = begun + lines[0]
        begun = Data(rest)
        return lines
    }
}
