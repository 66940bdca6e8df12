#pragma once

/// Whether the program is instrumented, which makes it many times slower and its memory no measure.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool underSanitizer = true;
#else
constexpr bool underSanitizer = false;
#endif
