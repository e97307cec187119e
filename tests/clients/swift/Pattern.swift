// What a conversation expects of a value. clients/corpus/README.md has the language.

import Foundation

/// What was bound by "$name".
typealias Names = [String: JSON]

/// Why the value is not what the pattern says, or nil.
func mismatch(_ pattern: JSON, _ value: JSON, _ names: inout Names, _ what: String = "it") -> String? {
    switch pattern {
    case .array(let patterns):
        guard let values = value.array, values.count == patterns.count else {
            return "\(what) is \(value.text), not a list of \(patterns.count)"
        }
        for (at, inside) in patterns.enumerated() {
            if let wrong = mismatch(inside, values[at], &names, "\(what)[\(at)]") {
                return wrong
            }
        }
        return nil
    case .object(let patterns):
        if let (verb, argument) = patterns.first(where: { $0.key.hasPrefix("$") }) {
            let isLike = matches(verb, argument, value, &names)
            return isLike ? nil : "\(what) is \(value.text), not \(verb) \(argument.text)"
        }
        guard let members = value.object else {
            return "\(what) is \(value.text), not an object"
        }
        for (key, inside) in patterns {
            // A member that is nil is left out when a value is encoded.
            if let wrong = mismatch(inside, members[key] ?? .null, &names, "\(what).\(key)") {
                return wrong
            }
        }
        return nil
    default:
        return pattern.same(as: value) ? nil : "\(what) is \(value.text), not \(pattern.text)"
    }
}

private func matches(_ verb: String, _ argument: JSON, _ value: JSON, _ names: inout Names) -> Bool {
    var copy = names
    func isLike(_ pattern: JSON, _ one: JSON) -> Bool {
        mismatch(pattern, one, &copy) == nil
    }
    switch verb {
    case "$is":
        return isA(argument.string!, value)
    case "$matches":
        return value.string?.range(of: argument.string!, options: .regularExpression) != nil
    case "$oneOf":
        return argument.array!.contains { isLike($0, value) }
    case "$has":
        return argument.array!.allSatisfy { pattern in value.array?.contains { isLike(pattern, $0) } ?? false }
    case "$atLeast":
        return value.number.map { $0 >= argument.number! } ?? false
    case "$atMost":
        return value.number.map { $0 <= argument.number! } ?? false
    case "$name":
        let name = argument.string!
        names[name] = names[name] ?? value
        return names[name]!.same(as: value)
    default:
        fatalError("there is no \(verb)")
    }
}

private func isA(_ kind: String, _ value: JSON) -> Bool {
    switch (kind, value) {
    case ("anything", _), ("null", .null), ("boolean", .bool), ("string", .string), ("list", .array),
        ("object", .object),
        ("number", .number):
        true
    case ("integer", .number(let number)):
        number == number.rounded()
    default:
        false
    }
}
