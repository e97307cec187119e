// Writes src/generated.ts from the catalogue: the types of all that is said on the wire, and each request's time-out.
//
//     node generate.js            writes it
//     node generate.js --check    status 1 when it is not what would be written

import { readFile, writeFile } from "node:fs/promises";
import { compile } from "json-schema-to-typescript";

const source = new URL("../../catalogue/openrpc.json", import.meta.url);
const target = new URL("src/generated.ts", import.meta.url);

const catalogue = JSON.parse(await readFile(source, "utf8"), (key, value) =>
  key === "$ref" ? value.replace("#/components/schemas/", "#/definitions/") : value,
);

const capital = (word) => word[0].toUpperCase() + word.slice(1);

/** An object with exactly these members, as a schema. */
function object(title, description, members, required = Object.keys(members)) {
  return { title, description, type: "object", additionalProperties: false, required, properties: members };
}

const named = {};
for (const method of catalogue.methods) {
  const title = `${capital(method.name)}Parameters`;
  const members = method.params.map(({ name, summary, schema }) => {
    // A reference may have no neighbours.
    const type = schema.$ref ? { allOf: [schema] } : schema;
    return [name, { ...type, description: summary, title: undefined }];
  });
  const required = method.params.filter((parameter) => parameter.required).map((parameter) => parameter.name);
  named[title] = object(title, `What ${method.name} takes.`, Object.fromEntries(members), required);
}

const methods = catalogue.methods.map((method) => [
  method.name,
  object(undefined, method.summary, {
    parameters: { $ref: `#/definitions/${capital(method.name)}Parameters` },
    result: method.result.schema,
  }),
]);
const notifications = catalogue["x-notifications"].map(({ name, params }) => [name, params]);

const root = object("Wire", "All that is said on the wire.", {
  methods: object("Methods", "Each request: what it takes, and what it is answered with.", Object.fromEntries(methods)),
  notifications: object("Notifications", "What comes by itself.", Object.fromEntries(notifications)),
});

const types = await compile({ ...root, definitions: { ...catalogue.components.schemas, ...named } }, "Wire", {
  additionalProperties: false,
  bannerComment: "// Written by generate.js: change catalogue/openrpc.json.",
  style: { printWidth: 120 },
  unreachableDefinitions: true,
});

const timeOuts = catalogue.methods.map((method) => {
  const { seconds, turn = false, parameters = [] } = method["x-time-out"];
  const defaults = parameters.map((name) => {
    const { schema } = method.params.find((parameter) => parameter.name === name);
    return [name, schema.default ?? null];
  });
  return `  ${method.name}: { seconds: ${seconds}, turn: ${turn}, parameters: ${JSON.stringify(Object.fromEntries(defaults))} },`;
});

// Where a type is used shows any editor.
const plain = types.replaceAll(/ \*\n \* This interface was referenced by `Wire`'s JSON-Schema\n \* via the `definition` "\w+"\.\n/g, "");

const text = `${plain}
/**
 * In seconds, how long an answer may take: this many and the parameters named, with what they are when they are not given
 * (null: what the program was started with); with \`turn\` also the end of the captures and changes before it.
 */
export const timeOuts: {
  readonly [method in keyof Methods]: {
    readonly seconds: number;
    readonly turn: boolean;
    readonly parameters: { readonly [name: string]: number | null };
  };
} = {
${timeOuts.join("\n")}
};
`;

if (process.argv[2] !== "--check") {
  await writeFile(target, text);
} else if ((await readFile(target, "utf8").catch(() => "")) !== text) {
  console.error("src/generated.ts is not what the catalogue gives: npm run generate");
  process.exit(1);
}
