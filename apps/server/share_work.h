// Work in pieces that several threads do together.
#ifndef TAVISYS_SERVER_SHARE_WORK_H
#define TAVISYS_SERVER_SHARE_WORK_H

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace server {

// Calls work(0) to work(pieces - 1), in any order, in at most so many threads, this one among them; returns
// when they have ended. Where the system has no more threads, fewer do it. What a piece throws ends the work
// early and is thrown here.
template <class WORK>
void share_work(size_t threads, size_t pieces, WORK work) {
    std::atomic<size_t> next = 0;
    std::mutex mutex;
    std::exception_ptr failure;
    const auto take_pieces = [&] {
        try {
            for (size_t piece = next++; piece < pieces; piece = next++)
                work(piece);
        } catch (...) {
            next = pieces;
            const std::lock_guard lock(mutex);
            failure = std::current_exception();
        }
    };
    {
        const size_t wanted = std::min(threads, pieces);
        std::vector<std::jthread> helpers;
        helpers.reserve(wanted);
        try {
            while (helpers.size() + 1 < wanted)
                helpers.emplace_back(take_pieces);
        } catch (const std::system_error &) { // fewer do it as well
        }
        take_pieces();
    }
    if (failure)
        std::rethrow_exception(failure);
}

} // namespace server

#endif
