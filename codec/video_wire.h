// The wire order of a video, which stands alone and inside a detail record.
#ifndef TAVISYS_CODEC_VIDEO_WIRE_H
#define TAVISYS_CODEC_VIDEO_WIRE_H

#include "codec/wire.h"
#include "codec_video_info.h"

namespace tavisys {

struct VIDEO_WIRE {
    using RECORD = TP_TAVISYS_VIDEO_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(wire::integer(&RECORD::id), wire::integer(&RECORD::seqno),
                                                   wire::string(&RECORD::name), wire::string(&RECORD::mp4));
};

} // namespace tavisys

#endif
