// The transports under comparison. A transport is a server that runs in this process, with SERVERS threads,
// and the clients that connect to it.
#ifndef TAVISYS_BENCH_TRANSPORTS_H
#define TAVISYS_BENCH_TRANSPORTS_H

#include <memory>
#include <vector>

#include "body.h"
#include "records.h"

namespace bench {

constexpr int SERVERS = 8;

enum class QUESTION_T { VERSION, PAGE };

class CLIENT_T {
public:
    virtual ~CLIENT_T() = default;
    // Asks, and decodes the reply into records of its own, which it frees; floor and channel leave the bytes
    // as they are. False when that fails.
    virtual bool exchange(QUESTION_T question) = 0;
};

class TRANSPORT_T {
public:
    virtual ~TRANSPORT_T() = default;
    virtual const char *name() const = 0;
    virtual std::unique_ptr<CLIENT_T> connect() = 0;
};

// The records that every server answers from.
struct ANSWERS_T {
    TP_TAVISYS_VERSION_INFORMATION_T version;
    const PAGE_T *page;
    BODY_T version_body; // as the library encodes them, for the floor
    BODY_T page_body;
};
const ANSWERS_T &answers();
bool prepare(const PAGE_T *page);

using START_T = std::unique_ptr<TRANSPORT_T> (*)();
std::unique_ptr<TRANSPORT_T> start_floor();
std::unique_ptr<TRANSPORT_T> start_channel();
std::unique_ptr<TRANSPORT_T> start_agent(); // needs the channel
std::unique_ptr<TRANSPORT_T> start_grpc();
std::unique_ptr<TRANSPORT_T> start_http();
std::unique_ptr<TRANSPORT_T> start_http_kept();

// The floor, the channel alone and with records, and the peers that were installed when this was built.
inline std::vector<START_T> starters() {
    return {
        start_floor, start_channel,   start_agent,
#ifdef BENCH_GRPC
        start_grpc,
#endif
#ifdef BENCH_HTTP
        start_http,  start_http_kept,
#endif
    };
}

} // namespace bench

#endif
