// Names for Clang's thread-safety attributes; nothing under other compilers. With -Wthread-safety,
// Clang refuses code of the host's side that touches guarded data without its lock.
#pragma once

#if defined(__clang__)
#define HOST_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define HOST_THREAD_ANNOTATION(x)
#endif

#define HOST_CAPABILITY(name) HOST_THREAD_ANNOTATION(capability(name))
#define HOST_SCOPED_CAPABILITY HOST_THREAD_ANNOTATION(scoped_lockable)
#define HOST_GUARDED_BY(x) HOST_THREAD_ANNOTATION(guarded_by(x))
#define HOST_REQUIRES(...) HOST_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define HOST_EXCLUDES(...) HOST_THREAD_ANNOTATION(locks_excluded(__VA_ARGS__))
#define HOST_ACQUIRE(...) HOST_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define HOST_RELEASE(...) HOST_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
