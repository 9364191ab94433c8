/**
 * @file export.h
 * Marks of what the library exports. C and C++.
 */
#ifndef ZAREL_EXPORT_H
#define ZAREL_EXPORT_H

/** Put before every function, class or variable that a host may use. All else is hidden. */
#if defined(__GNUC__)
#define ZAREL_API __attribute__((visibility("default")))
#else
#define ZAREL_API
#endif

/** Bracket the declarations of a family of C functions. */
#ifdef __cplusplus
#define ZAREL_BEGIN_C extern "C" {
#define ZAREL_END_C }
#else
#define ZAREL_BEGIN_C
#define ZAREL_END_C
#endif

/** The 64-bit integer of all interfaces; also usable as `unsigned __int64`. */
#ifndef __int64
#define __int64 long long
#endif

#endif
