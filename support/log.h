// The library's log lines: zlog's default category, always with the stated file name and the function
// that speaks. The file name is each source's LOG_FILE, whatever its ending on disk is.
#ifndef TAVISYS_SUPPORT_LOG_H
#define TAVISYS_SUPPORT_LOG_H

#include <cstring>
#include <zlog.h>

#define TAVISYS_LOG_AS(function, level, ...)                                                                 \
    dzlog(LOG_FILE, strlen(LOG_FILE), function, strlen(function), __LINE__, level, __VA_ARGS__)
#define TAVISYS_LOG(level, ...) TAVISYS_LOG_AS(__func__, level, __VA_ARGS__)
#define LOG_INFO(...) TAVISYS_LOG(ZLOG_LEVEL_INFO, __VA_ARGS__)
#define LOG_WARN(...) TAVISYS_LOG(ZLOG_LEVEL_WARN, __VA_ARGS__)

#endif
