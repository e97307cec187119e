// A photo booth, whole: four pictures into a folder, and every picture that is not there yet goes to the printer.
//
//     node booth.js FOLDER [WORKER]        without a worker: the virtual camera

import { CameraProblem, openCamera } from "camera-worker";

const [folder = "shots", worker] = process.argv.slice(2);

try {
  await using camera = await openCamera({ folder, ...(worker ? { worker } : { virtual: true }) });
  camera.on("state", ({ state }) => console.log(`The camera is ${state}.`));
  camera.on("problem", ({ text, advice }) => console.log(`${text} ${advice}`));
  await camera.connect();

  const printing = (async () => {
    for await (const picture of camera.pictures()) {
      console.log(`Printing ${picture.path}`);
    }
  })();

  for (let shot = 1; shot <= 4; shot += 1) {
    const { status, problems } = await camera.capture({ tag: `pose ${shot}`, signal: AbortSignal.timeout(30_000) });
    console.log(`Pose ${shot}: ${status}`, ...problems.map(({ text }) => text));
  }

  await camera.close();
  await printing;
} catch (error) {
  if (!(error instanceof CameraProblem)) {
    throw error;
  }
  console.error(`${error.text} ${error.advice}`);
  process.exitCode = 1;
}
