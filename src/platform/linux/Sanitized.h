#pragma once

// Defined in a build whose sanitizer takes the process's signals and threads into its own hands.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || __has_feature(memory_sanitizer)
#define MORVANE_SANITIZED
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define MORVANE_SANITIZED
#endif
