// TESSARN_API marks what the library exports: exported while the library itself is compiled, imported
// by callers of the Windows module, nothing for the static library (define TESSARN_STATIC).
#pragma once

#if defined(TESSARN_STATIC) && defined(_WIN32)
#define TESSARN_API
#elif defined(_WIN32)
#if defined(TESSARN_BUILD)
#define TESSARN_API __declspec(dllexport)
#else
#define TESSARN_API __declspec(dllimport)
#endif
#else
#define TESSARN_API __attribute__((visibility("default")))
#endif
