#ifndef WQDATA_EXPORT_H_
#define WQDATA_EXPORT_H_

/// WQDATA_API marks what the shared library exports. Everything else stays hidden inside it.
/// A static build, and whoever links one, defines WQDATA_STATIC; the package files do that.
#if defined(WQDATA_STATIC)
#define WQDATA_API
#elif defined(_WIN32)
#if defined(WQDATA_BUILDING)
#define WQDATA_API __declspec(dllexport)
#else
#define WQDATA_API __declspec(dllimport)
#endif
#else
#define WQDATA_API __attribute__((visibility("default")))
#endif

#endif  // WQDATA_EXPORT_H_
