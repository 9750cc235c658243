// What the sources behind codec_basic_movinfo.h share: pages, movie ids and videos say on the log what
// keeps a body from being encoded.
#ifndef TAVISYS_CODEC_LOGGED_BODY_H
#define TAVISYS_CODEC_LOGGED_BODY_H

#include "codec/wire.h"
#include "support/log.h"

namespace tavisys {

constexpr const char *LOG_FILE = "codec/codec_basic_movinfo.c";

// False, with a line in the name of the function, when an argument of an encoder is NULL. `rest` says
// whether those are there that the line doesn't show.
inline bool are_given(const char *function, const void *info, PVOID *msgdata, INT32_T *msglen,
                      bool rest = true) {
    if (info != nullptr && msgdata != nullptr && msglen != nullptr && rest)
        return true;
    TAVISYS_LOG_AS(function, ZLOG_LEVEL_WARN, "参数获取出错! info(%p) msgdata(%p) msglen(%p)", info,
                   static_cast<void *>(msgdata), static_cast<void *>(msglen));
    return false;
}

// Logs, for encode_to_message(), why there is no body.
struct LOGGED_T {
    const char *function;
    const char *bad_content; // the line for content that can't be encoded
    void operator()(wire::FAULT_T fault, int64_t length) const {
        if (fault == wire::FAULT_T::LENGTH)
            TAVISYS_LOG_AS(function, ZLOG_LEVEL_WARN, "出错,获取的长度(%d)小于0",
                           static_cast<INT32_T>(length));
        else
            TAVISYS_LOG_AS(function, ZLOG_LEVEL_WARN, "%s",
                           fault == wire::FAULT_T::MEMORY ? "创建内存失败.." : bad_content);
    }
};

// A list whose decoder logs how many records the body announces.
template <class WIRE, class NODE>
bool decode_announced_list(wire::READER_T &from, NODE **list, const char *function, const char *what) {
    INT32_T count = 0;
    if (!from.integer(&count))
        return false;
    TAVISYS_LOG_AS(function, ZLOG_LEVEL_INFO, "%s:%d", what, count);
    return wire::decode_records<WIRE>(from, count, list);
}

} // namespace tavisys

#endif
