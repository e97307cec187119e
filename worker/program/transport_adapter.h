#pragma once

// Logs whether the SDK's USB transport adapter lies where the bundle keeps it. Without it the SDK
// sees no camera; the worker starts all the same.
void report_transport_adapter();
