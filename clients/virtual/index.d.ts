/** The worker that drives the virtual camera: a program for a host to start, in a bundle of its own. */
export const worker: string;
/** The program that tells a running virtual camera what happens to it. */
export const cameraSim: string;
