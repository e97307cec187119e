// Every conversation of clients/corpus, with the stand-in for `tether serve`.

import { describe, it } from "node:test";
import { conversations, playToStandIn } from "./conversation.js";

const all = await conversations();

// Most of the time is spent waiting.
describe("the client plays to a stand-in:", { concurrency: 8 }, () => {
  for (const [name, conversation] of all) {
    // What a typed client cannot send is played by those that write bytes.
    if (!conversation.wire) {
      it(`${name}: ${conversation.title}`, () => playToStandIn(name, conversation));
    }
  }
});
