// The request records travel as they lie in memory: their layout is a wire format, pinned here.
#include <cstddef>

#include "tavisystype.h"

static_assert(sizeof(INT8_T) == 1 && sizeof(INT32_T) == 4 && sizeof(UINT32_T) == 4 && sizeof(RTSTATUS) == 4);
static_assert(sizeof(TP_FILTER_TYPE_E) == 4);

using FILTER_T = TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T;
static_assert(sizeof(FILTER_T) == 8 && offsetof(FILTER_T, type) == 0 && offsetof(FILTER_T, cid) == 4);

using PAGE_T = TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T;
static_assert(sizeof(PAGE_T) == 32 && offsetof(PAGE_T, cid) == 0 && offsetof(PAGE_T, tid) == 4 &&
              offsetof(PAGE_T, aid) == 8 && offsetof(PAGE_T, yid) == 12 && offsetof(PAGE_T, did) == 16 &&
              offsetof(PAGE_T, pagenum) == 20 && offsetof(PAGE_T, pagesize) == 24 &&
              offsetof(PAGE_T, orderby) == 28);

using DETAIL_T = TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T;
static_assert(sizeof(DETAIL_T) == 8 && offsetof(DETAIL_T, cid) == 0 && offsetof(DETAIL_T, mid) == 4);

using PARTITION_T = TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T;
static_assert(sizeof(PARTITION_T) == 160 && offsetof(PARTITION_T, deviceid) == 0 &&
              offsetof(PARTITION_T, hddevname) == 128 && offsetof(PARTITION_T, ptdevname) == 144);
