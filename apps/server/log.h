// The server's log lines, in zlog's default category beside the library's.
#ifndef TAVISYS_SERVER_LOG_H
#define TAVISYS_SERVER_LOG_H

#include <cstring>
#include <zlog.h>

#define SERVER_LOG(level, ...)                                                                               \
    dzlog("apps/server", strlen("apps/server"), __func__, strlen(__func__), __LINE__, level, __VA_ARGS__)
#define SERVER_INFO(...) SERVER_LOG(ZLOG_LEVEL_INFO, __VA_ARGS__)
#define SERVER_NOTICE(...) SERVER_LOG(ZLOG_LEVEL_NOTICE, __VA_ARGS__)
#define SERVER_WARN(...) SERVER_LOG(ZLOG_LEVEL_WARN, __VA_ARGS__)

#endif
