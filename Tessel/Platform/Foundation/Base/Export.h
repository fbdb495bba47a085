#pragma once

/// Marks what the library exports; everything else has hidden visibility.
#if defined(__GNUC__)
#define TESSEL_EXPORT __attribute__((visibility("default")))
#else
#define TESSEL_EXPORT
#endif
