/**
 * @file lm_error.h
 * The error ring of the matrix kernel. C and C++.
 *
 * Every error of the kernel goes through `LM_error`. The last 100 errors are kept, oldest first.
 */
#ifndef ZAREL_LM_ERROR_H
#define ZAREL_LM_ERROR_H

#include <zarel/export.h>

ZAREL_BEGIN_C

/** What is kept of an error. */
typedef struct LM_ERROR_RECORD {
  int number;         ///< error number, see lm_types.h
  int line;           ///< source line
  char message[255];  ///< text of message 3100 + number, cut to 254 characters; empty if none
  char function[100]; ///< name of the reporting function, cut to 99 characters
  char file[255];     ///< source file, cut to 254 characters
} LM_ERROR_RECORD;

enum { LM_ERROR_RECORDS = 100 /**< how many errors are kept */ };

/**
 * Reports error `number` of `function`: fetches the text of message 3100 + number with `argument`
 * and `text` (a null text counts as empty) from the message database, appends a record to the
 * ring (a full one drops its oldest), hands the record to `Erreur` if the error mode is 1, and
 * sets the global status to -1.
 */
ZAREL_API void LM_error(const char* file, int number, int line, const char* function, int argument,
                        const char* text);

/** Returns how many errors are kept, at most 100. */
ZAREL_API int LM_error_count(void);
/** Returns error `index`, 0 being the oldest kept; null outside the range. The record is valid
 * until the next error. */
ZAREL_API const LM_ERROR_RECORD* LM_error_get(int index);
/** Forgets all errors. */
ZAREL_API void LM_error_clear(void);

/** Sets the error mode and returns the former one: 1 also passes each error to `Erreur`; 0, the
 * start value, does not. */
ZAREL_API int LM_error_mode(int mode);

/** Returns the global status: 0, or -1 once the last kernel function reported an error. */
ZAREL_API int LM_global_status(void);

/** Sets the flag that the memory layer receives with the allocations the kernel makes of its own,
 * and returns the former one; 0 at start. */
ZAREL_API int LM_allocation_flag(int flag);

ZAREL_END_C

#endif
