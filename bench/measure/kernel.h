#pragma once

#include <optional>
#include <sys/types.h>

// What the kernel knows of a process that is being measured. Nothing where there is no /proc.

// Pages in memory now, counted page by page; bytes.
std::optional<double> resident_bytes(pid_t process);

// The same with each shared page divided by the number of its users.
std::optional<double> proportional_bytes(pid_t process);

// The most that was ever resident.
std::optional<double> peak_bytes(pid_t process);

// How often its threads went to sleep of their own accord, all together.
std::optional<double> sleeps(pid_t process);

// Processor time of its threads, in seconds.
std::optional<double> processor_seconds(pid_t process);
