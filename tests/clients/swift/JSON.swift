// Any JSON, for what the steps of a conversation say.

import Foundation

enum JSON: Codable, Sendable {
    case null
    case bool(Bool)
    case number(Double)
    case string(String)
    case array([JSON])
    case object([String: JSON])

    init(from decoder: any Decoder) throws {
        let value = try decoder.singleValueContainer()
        if value.decodeNil() {
            self = .null
        } else if let bool = try? value.decode(Bool.self) {
            self = .bool(bool)
        } else if let number = try? value.decode(Double.self) {
            self = .number(number)
        } else if let string = try? value.decode(String.self) {
            self = .string(string)
        } else if let array = try? value.decode([JSON].self) {
            self = .array(array)
        } else {
            self = .object(try value.decode([String: JSON].self))
        }
    }

    func encode(to encoder: any Encoder) throws {
        var value = encoder.singleValueContainer()
        switch self {
        case .null: try value.encodeNil()
        case .bool(let bool): try value.encode(bool)
        case .number(let number):
            if let integer = Int(exactly: number) {
                try value.encode(integer)
            } else {
                try value.encode(number)
            }
        case .string(let string): try value.encode(string)
        case .array(let array): try value.encode(array)
        case .object(let object): try value.encode(object)
        }
    }

    /// What a value of the client's looks like on the wire; what is nil is left out.
    init(_ value: some Encodable) throws {
        self = try JSONDecoder().decode(JSON.self, from: JSONEncoder().encode(value))
    }

    /// A value of the client's, if it has a place for all of this.
    func typed<Value: Codable>(_ type: Value.Type) -> Value? {
        guard let data = try? JSONEncoder().encode(self),
            let value = try? JSONDecoder().decode(type, from: data),
            let back = try? JSON(value), back.same(as: self)
        else {
            return nil
        }
        return value
    }

    subscript(key: String) -> JSON? {
        object?[key]
    }

    var string: String? {
        if case .string(let string) = self { string } else { nil }
    }

    var number: Double? {
        if case .number(let number) = self { number } else { nil }
    }

    var bool: Bool? {
        if case .bool(let bool) = self { bool } else { nil }
    }

    var array: [JSON]? {
        if case .array(let array) = self { array } else { nil }
    }

    var object: [String: JSON]? {
        if case .object(let object) = self { object } else { nil }
    }

    /// Texts are the same when their code points are: == of String thinks otherwise.
    func same(as other: JSON) -> Bool {
        switch (self, other) {
        case (.null, .null): true
        case (.bool(let one), .bool(let two)): one == two
        case (.number(let one), .number(let two)): one == two
        case (.string(let one), .string(let two)): one.unicodeScalars.elementsEqual(two.unicodeScalars)
        case (.array(let one), .array(let two)): one.elementsEqual(two) { $0.same(as: $1) }
        case (.object(let one), .object(let two)):
            one.count == two.count && one.allSatisfy { key, value in two[key].map(value.same(as:)) ?? false }
        default: false
        }
    }

    var text: String {
        let data = (try? JSONEncoder().encode(self)) ?? Data()
        return String(String(decoding: data, as: UTF8.self).prefix(1500))
    }
}
