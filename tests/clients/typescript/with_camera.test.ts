// Every conversation of clients/corpus that needs no stand-in, with `tether serve` and the virtual camera.

import { describe, it } from "node:test";
import { conversations, playToTether } from "./conversation.js";
import { tether } from "./tree.js";

const all = await conversations();

// Most of the time is spent waiting.
describe("the client plays to tether serve:", { concurrency: 8 }, () => {
  for (const [name, conversation] of all) {
    if (!conversation.wire && !conversation.standIn) {
      it(`${name}: ${conversation.title}`, () => playToTether(tether, conversation));
    }
  }
});
