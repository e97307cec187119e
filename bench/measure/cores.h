#pragma once

// Keeps this process, and those that it starts from now on, to so many processor cores. False where
// the system cannot do that or has not so many.
bool keep_to_cores(int count);

// How many cores this process may use when it is not kept to fewer.
int cores();
