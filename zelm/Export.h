#pragma once

/// Marks what the shared library offers to its users; everything else stays inside it.
#define ZELM_EXPORT __attribute__((visibility("default")))
