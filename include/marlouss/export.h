#ifndef MARLOUSS_EXPORT_H
#define MARLOUSS_EXPORT_H

/* Marks the symbols that host libraries may call; everything else is hidden. */
#if defined(_WIN32)
#if defined(MARLOUSS_BUILDING)
#define MARLOUSS_API __declspec(dllexport)
#else
#define MARLOUSS_API __declspec(dllimport)
#endif
#else
#define MARLOUSS_API __attribute__((visibility("default")))
#endif

#endif
