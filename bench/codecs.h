// The codecs under comparison. Each encodes a record into a body of its own and decodes a body into fresh
// records; both are there for PAGE_T, MOVIES_T, DETAIL_T and DISKS_T, with JSON also
// for the version.
#ifndef TAVISYS_BENCH_CODECS_H
#define TAVISYS_BENCH_CODECS_H

#include <vector>

#include "body.h"
#include "records.h"

namespace bench {

template <class RECORD>
struct CODEC_T {
    const char *name;
    // `length` is that of the body to come. No encoder can know it: the floor alone uses it.
    BODY_T (*encode)(const RECORD &record, size_t length);
    RECORD *(*decode)(const BODY_T &body);
    void (*release)(RECORD **record);
};

template <class RECORD>
CODEC_T<RECORD> library_codec();
// Straight-line code for each record, with the same allocations and the same copies, and nothing else: no
// bound is checked, no allocation can fail, and the length of a body is known beforehand.
template <class RECORD>
CODEC_T<RECORD> floor_codec();
template <class RECORD>
CODEC_T<RECORD> protobuf_codec();
template <class RECORD>
CODEC_T<RECORD> msgpack_codec();
template <class RECORD>
CODEC_T<RECORD> flatbuffers_codec();
template <class RECORD>
CODEC_T<RECORD> json_codec();

// The library first, then the floor, then the peers that were installed when this was built.
template <class RECORD>
std::vector<CODEC_T<RECORD>> codecs() {
    return {
        library_codec<RECORD>(),     floor_codec<RECORD>(),
#ifdef BENCH_PROTOBUF
        protobuf_codec<RECORD>(),
#endif
#ifdef BENCH_MSGPACK
        msgpack_codec<RECORD>(),
#endif
#ifdef BENCH_FLATBUFFERS
        flatbuffers_codec<RECORD>(),
#endif
#ifdef BENCH_JSON
        json_codec<RECORD>(),
#endif
    };
}

} // namespace bench

#endif
