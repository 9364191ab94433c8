/**
 * @file erreur.h
 * Procedural reporting. C and C++.
 *
 * The plain functions of the library report through this small layer, which ends in the message
 * tool "DefaultMessageTool". Unless told otherwise the functions return 0, or -1 on failure,
 * want of memory among them: none of these functions throws for that.
 * Formats are those of `printf`.
 *
 * Threads: texts are composed in one static buffer of 16384 bytes (longer ones are cut); two
 * threads that report at once may mix their texts.
 */
#ifndef ZAREL_ERREUR_H
#define ZAREL_ERREUR_H

#include <zarel/export.h>

#if defined(__GNUC__)
#define ZAREL_PRINTF(at, first) __attribute__((format(printf, at, first)))
#else
#define ZAREL_PRINTF(at, first)
#endif

ZAREL_BEGIN_C

/** Reports an error (type 2, level 0) of `function` at a source location. */
ZAREL_API int Erreur(const char* function, int line, const char* file, const char* format, ...)
    ZAREL_PRINTF(4, 5);
/** Reports a warning (type 4, level 0) of `function` at a source location. */
ZAREL_API int Warning(const char* function, int line, const char* file, const char* format, ...)
    ZAREL_PRINTF(4, 5);
/** Says something to the user (type 1, level 0). */
ZAREL_API int Msg_public(const char* format, ...) ZAREL_PRINTF(1, 2);
/** Says something to those who listen at level 3 (type 1). */
ZAREL_API int Msg_interne(const char* format, ...) ZAREL_PRINTF(1, 2);
/** Says something to those who listen at level 3 to the debug scope `scope` (type 1). */
ZAREL_API int Msg_verbeux(int scope, const char* format, ...) ZAREL_PRINTF(2, 3);

/**
 * Marks one failing return: sends "fct_Trace: %s(), %s line %d" (type 8) to the default tool if it
 * is initialized, else to the tool that was used last. Where neither is usable the text goes to
 * the error box (`zarel_setErrorBox`) and the result is -1. `label` is "aff_lieu" by convention.
 */
ZAREL_API int fct_Trace(const char* label, int line, const char* file);

/** @name Queries
 * All on the screen stream of the default tool; 0 if there is none. @{ */
ZAREL_API int is_externe_on(void);          ///< whether level 0 is active
ZAREL_API int is_interne_on(void);          ///< whether level 3 is active
ZAREL_API int is_trace_on(void);            ///< whether type 8 passes
ZAREL_API int is_warning_on(void);          ///< whether type 4 passes
ZAREL_API int is_debug_scope_on(int scope); ///< whether a debug scope is active
ZAREL_API int is_verbeux_on(int scope);     ///< the same
/** @} */

/** Switches a debug scope of the screen stream on if `state` is 1, else off. */
ZAREL_API int switch_debug_scope(int scope, int state);
/** The same. */
ZAREL_API int switch_verbeux(int scope, int state);

/** Composes the text of a message number as a new block, which the caller releases with
 * `zarelmem_free`; null when there is no usable tool, no such text, no memory or the number is
 * negative. */
ZAREL_API char* MSG_get(int id, ...);
/** The same. */
ZAREL_API char* MSG_get_default(int id, ...);

/** @name Kept for callers of an older design
 * These do nothing. All that return a number return 0, but `Msg_fopen`, which returns -1. @{ */
ZAREL_API int MSG_load(const char* name);
ZAREL_API int MSG_load_default(const char* name);
ZAREL_API int MSG_get_last_id(void);
ZAREL_API void MSG_free(void);
ZAREL_API int Msg_fopen(const char* name);
ZAREL_API int Msg_fget(void);
ZAREL_API void Msg_fclose(void);
ZAREL_API void Msg_fset(int state);
ZAREL_API void setErrAff(int state);
ZAREL_API void setMsgAff(int state);
ZAREL_API void setWarnAff(int state);
/** @} */

/** The texts of the procedural layer's error numbers, 0 to 48, in French. */
enum { ZAREL_ERROR_TEXTS = 49 };
ZAREL_API extern const char* const zarel_errorTexts[ZAREL_ERROR_TEXTS];

/** What shows a text of last resort, when no message tool is usable. */
typedef void (*zarel_ErrorBox)(const char* title, const char* text);

/**
 * Replaces the error box and returns the former one. The library's own box, which null brings
 * back, writes "title: text" and a line feed to standard error. A program that wants silence sets
 * `zarel_silentErrorBox`. Threads: set it before parallel work starts.
 */
ZAREL_API zarel_ErrorBox zarel_setErrorBox(zarel_ErrorBox box);
/** An error box that shows nothing. */
ZAREL_API void zarel_silentErrorBox(const char* title, const char* text);

ZAREL_END_C

#endif
