// A host that a test kills: takes a picture, says its id, and has a second one under way when it says "fired".

import { openCamera } from "camera-worker";

const [tether, folder] = process.argv.slice(2) as [string, string];
const camera = await openCamera({ folder, virtual: true, tether });
await camera.connect();
const shot = await camera.capture();
console.log(shot.pictures[0]!.id);
camera.on("shot", ({ status }) => status === "fired" && console.log("fired"));
await camera.capture();
