/** @file zlog.h
 *  Stand-in for zlog where it is not installed: the few calls that the library and its programs use,
 *  with zlog's own signatures and level values, so that either may be linked.
 *
 *  Nothing is written before dzlog_init(). From then on each line of level INFO or above goes to
 *  standard error; the environment variable TAVISYS_LOG_LEVEL (DEBUG, INFO, NOTICE, WARN, ERROR, FATAL)
 *  names another threshold. Every function may be called from any thread. A program that defines dzlog()
 *  itself receives the library's lines instead. */
#ifndef TAVISYS_SUPPORT_ZLOG_H
#define TAVISYS_SUPPORT_ZLOG_H

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef enum {
    ZLOG_LEVEL_DEBUG = 20,
    ZLOG_LEVEL_INFO = 40,
    ZLOG_LEVEL_NOTICE = 60,
    ZLOG_LEVEL_WARN = 80,
    ZLOG_LEVEL_ERROR = 100,
    ZLOG_LEVEL_FATAL = 120
} zlog_level;

/** Start logging.
 *  @param config [in] ignored here: zlog's configuration file, may be NULL.
 *  @param cname  [in] ignored here: zlog's category name.
 *  @return 0. */
int dzlog_init(const char *config, const char *cname);

/** Write one line; a line end in the message is not doubled.
 *  @param file, filelen [in] source file name and its length.
 *  @param func, funclen [in] function name and its length.
 *  @param line          [in] line in the source file.
 *  @param level         [in] a zlog_level.
 *  @param format        [in] printf format of the message. */
void dzlog(const char *file, size_t filelen, const char *func, size_t funclen, long line, int level,
           const char *format, ...) __attribute__((format(printf, 7, 8)));

/** Stop logging. */
void zlog_fini(void);

#ifdef __cplusplus
}
#endif

#endif
