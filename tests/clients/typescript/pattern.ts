// What a conversation expects of a value. clients/corpus/README.md has the language.

const kinds: Record<string, (value: unknown) => boolean> = {
  string: (value) => typeof value === "string",
  number: (value) => typeof value === "number",
  integer: (value) => Number.isInteger(value),
  boolean: (value) => typeof value === "boolean",
  list: (value) => Array.isArray(value),
  object: (value) => typeof value === "object" && value !== null && !Array.isArray(value),
  null: (value) => value === null,
  anything: () => true,
};

/** Why the value is not what the pattern says, or undefined. `names` keeps what was bound by "$name". */
export function mismatch(pattern: any, value: any, names: Map<string, unknown>, where = "it"): string | undefined {
  const is = `${where} is ${JSON.stringify(value)?.slice(0, 1000)}`;
  if (Array.isArray(pattern)) {
    if (!Array.isArray(value) || value.length !== pattern.length) {
      return `${is}, not a list of ${pattern.length}`;
    }
    return first(pattern.map((inside, at) => () => mismatch(inside, value[at], names, `${where}[${at}]`)));
  }
  if (typeof pattern !== "object" || pattern === null) {
    return Object.is(pattern, value) ? undefined : `${is}, not ${JSON.stringify(pattern)}`;
  }
  const [verb] = Object.keys(pattern).filter((key) => key.startsWith("$"));
  if (verb) {
    return verbMismatch(verb, pattern[verb], value, names, is);
  }
  if (!kinds["object"]!(value)) {
    return `${is}, not an object`;
  }
  return first(
    Object.entries(pattern).map(([key, inside]) => () => {
      return key in value ? mismatch(inside, value[key], names, `${where}.${key}`) : `${where} has no ${key}`;
    }),
  );
}

function first(looks: (() => string | undefined)[]): string | undefined {
  for (const look of looks) {
    const wrong = look();
    if (wrong !== undefined) {
      return wrong;
    }
  }
  return undefined;
}

function verbMismatch(
  verb: string,
  argument: any,
  value: any,
  names: Map<string, unknown>,
  is: string,
): string | undefined {
  const wrong = `${is}, not ${verb} ${JSON.stringify(argument)}`;
  const unless = (good: boolean): string | undefined => (good ? undefined : wrong);
  const copy = (): Map<string, unknown> => new Map(names);
  switch (verb) {
    case "$is":
      return unless(kinds[argument]!(value));
    case "$matches":
      return unless(typeof value === "string" && new RegExp(argument, "u").test(value));
    case "$oneOf":
      return unless(argument.some((inside: unknown) => mismatch(inside, value, copy()) === undefined));
    case "$has":
      return unless(
        Array.isArray(value) &&
          argument.every((inside: unknown) => value.some((one) => mismatch(inside, one, copy()) === undefined)),
      );
    case "$atLeast":
      return unless(typeof value === "number" && value >= argument);
    case "$atMost":
      return unless(typeof value === "number" && value <= argument);
    case "$name":
      if (!names.has(argument)) {
        names.set(argument, value);
      }
      return unless(names.get(argument) === value);
    default:
      throw new Error(`there is no ${verb}`);
  }
}
