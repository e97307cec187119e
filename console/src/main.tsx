// The page begins here.

import { render } from "preact";
import { Page } from "./page";
import { openSession } from "./told/session";

// The token has done its work: from now on the cookie is enough, and nobody reads it over a shoulder.
history.replaceState(null, "", location.pathname);
render(<Page session={openSession()} />, document.body);
