#pragma once

/// Marks what the library's users may link against; everything else stays hidden.
#define TOVI_EXPORT __attribute__((visibility("default")))
