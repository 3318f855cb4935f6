#pragma once

// Defines ZEMBLAR_ASAN when the build has AddressSanitizer, which includes LeakSanitizer.

#if defined(__SANITIZE_ADDRESS__)
#define ZEMBLAR_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZEMBLAR_ASAN 1
#endif
#endif
