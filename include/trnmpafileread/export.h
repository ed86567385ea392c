/// Marks what the module exports.
#pragma once

#if defined(_WIN32)
#if defined(TRN_BUILDS_MODULE)
#define TRN_EXPORT __declspec(dllexport)
#else
#define TRN_EXPORT __declspec(dllimport)
#endif
#else
#define TRN_EXPORT __attribute__((visibility("default")))
#endif
