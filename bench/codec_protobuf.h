// Between records and protobuf's messages, for codec and exchange alike.
#ifndef TAVISYS_BENCH_CODEC_PROTOBUF_H
#define TAVISYS_BENCH_CODEC_PROTOBUF_H

#include "records.h"
#include "records.pb.h"

namespace bench {

void to_message(const PAGE_T &page, pb::Page *message);
PAGE_T *from_message(const pb::Page &message);

} // namespace bench

#endif
