// TESSARN_API marks what the library exports: exported while the library itself is compiled, imported
// by callers of the Windows module, nothing for the static library (define TESSARN_STATIC).
//
// Callers of the Windows module define nothing, those of the static library on Windows define
// TESSARN_STATIC (the CMake target tessarn::static does it for them), and elsewhere no program
// defines anything. TESSARN_BUILD is for the build of the library alone.
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

// Who allocates with one run-time of Visual Studio and releases with another destroys a heap. The
// linker tells where objects of the static library and of its callers differ. The module cannot be
// seen by the linker, so callers with the debug run-time must say that they have its Debug build.
#if defined(_MSC_VER)
#if defined(TESSARN_STATIC)
#if defined(_DLL) && defined(_DEBUG)
#pragma detect_mismatch("tessarn: run-time library", "MDd")
#elif defined(_DLL)
#pragma detect_mismatch("tessarn: run-time library", "MD")
#elif defined(_DEBUG)
#pragma detect_mismatch("tessarn: run-time library", "MTd")
#else
#pragma detect_mismatch("tessarn: run-time library", "MT")
#endif
#elif defined(_DEBUG) && !defined(TESSARN_BUILD) && !defined(TESSARN_DEBUG_MODULE)
#error \
    "/MDd with the Release module of Tessarn: compile with /MD, or use the Debug module and define TESSARN_DEBUG_MODULE"
#endif
#endif
