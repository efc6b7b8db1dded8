#pragma once

namespace quoll::sandbox {

/// True when this is built with a sanitizer. A sanitizer runs inside the process and needs more of
/// the system than the process itself; such builds are for tests only.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitizerBuild = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
inline constexpr bool kSanitizerBuild = true;
#else
inline constexpr bool kSanitizerBuild = false;
#endif
#else
inline constexpr bool kSanitizerBuild = false;
#endif

}  // namespace quoll::sandbox
