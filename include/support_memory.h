/** @file support_memory.h
 *  Memory and string helpers that take NULL in their stride. */
#ifndef TAVISYS_SUPPORT_MEMORY_H
#define TAVISYS_SUPPORT_MEMORY_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Free what calloc(), malloc() or strdup() gave; NULL is ignored. */
TAVISYS_API void safe_free(PVOID pointer);

/** @return a fresh copy that the caller frees with safe_free(), or NULL: NULL argument, memory short. */
TAVISYS_API INT8_T *safe_strdup(const INT8_T *string);

/** Compare two strings by their bytes. NULL equals NULL and is smaller than any string.
 *  @return 0 when equal, negative when the first is the smaller, positive when it is the greater. */
TAVISYS_API INT32_T safe_strcmp(const INT8_T *left, const INT8_T *right);

/** As safe_strcmp(), with the case of ASCII letters ignored, whatever the locale. */
TAVISYS_API INT32_T safe_strcasecmp(const INT8_T *left, const INT8_T *right);

/** Copy count bytes; a NULL argument or a count below 1 copies nothing. The areas don't overlap. */
TAVISYS_API void safe_memcpy(PVOID destination, const void *source, INT32_T count);

/** Compare two dotted IPv4 addresses by their numeric value. What is no such address is smaller than
 *  every address; two of that sort compare as safe_strcmp() orders them.
 *  @return 0 when equal, 1 when the first is the greater, -1 when it is the smaller. */
TAVISYS_API INT32_T safe_ipcmp(const INT8_T *left, const INT8_T *right);

/** Print the indentation of a nesting level to standard output: four blanks a level, nothing for a
 *  level below 1. */
TAVISYS_API void show_indent(INT32_T level);

#ifdef __cplusplus
}
#endif

#endif
