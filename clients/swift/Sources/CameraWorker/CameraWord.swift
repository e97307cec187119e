/// A word on the wire, such as a state or the code of a problem.
///
/// A later version of `tether` has words that this one does not know, so these are structures with constants and no
/// enumerations: compare them, and give a `switch` over them a `default`.
public protocol CameraWord: RawRepresentable, Codable, Hashable, Sendable, ExpressibleByStringLiteral,
    CustomStringConvertible
where RawValue == String {
    /// Any word, known or not.
    init(rawValue: String)
}

extension CameraWord {
    init(_ word: String) {
        self.init(rawValue: word)
    }

    public init(stringLiteral word: String) {
        self.init(rawValue: word)
    }

    public var description: String {
        rawValue
    }
}
