// Symbol export macros for the two shared libraries: qvgui (the graphics
// support library) and qvhost (the reference host runtime it calls into).
#pragma once

#if defined(_WIN32)
#if defined(QVGUI_BUILDING)
#define QVGUI_API __declspec(dllexport)
#else
#define QVGUI_API __declspec(dllimport)
#endif
#if defined(QVHOST_BUILDING)
#define QVHOST_API __declspec(dllexport)
#else
#define QVHOST_API __declspec(dllimport)
#endif
#else
// Both libraries build with hidden visibility; only marked names are exported.
// Exception classes must carry the mark too, or their type information would
// differ between the library and its callers and catch clauses would miss.
#define QVGUI_API __attribute__((visibility("default")))
#define QVHOST_API __attribute__((visibility("default")))
#endif

// Lets the compiler check printf-style arguments against a literal format:
// QV_PRINTF_FORMAT(position of the format, position of the first argument).
#if defined(__GNUC__) || defined(__clang__)
#define QV_PRINTF_FORMAT(fmt, first) __attribute__((__format__(__printf__, fmt, first)))
#else
#define QV_PRINTF_FORMAT(fmt, first)
#endif
