// Loads the library: a thread of its own that scans at start and whenever it is asked to, and parses
// with a few helpers.
#ifndef TAVISYS_SERVER_SCANNER_H
#define TAVISYS_SERVER_SCANNER_H

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "documents.h"
#include "progress.h"
#include "scan_events.h"
#include "store.h"

namespace server {

class SCANNER_T {
public:
    // `machine` is the machine's uuid.
    SCANNER_T(std::string root, std::string machine, unsigned parsers, STORE_T *store,
              SCAN_EVENTS_T events = {});
    SCANNER_T(const SCANNER_T &) = delete;
    SCANNER_T &operator=(const SCANNER_T &) = delete;
    ~SCANNER_T() { stop(); }

    void start();
    void rescan(); // one more scan; requests during a scan are answered by one more scan after it
    void stop();

    size_t scans() const { return scans_; }   // finished
    size_t parsed() const { return parsed_; } // documents since the start

private:
    // What one document has become. Filled by one parser, read by the scan's thread.
    struct OUTCOME_T {
        MOVIE_PTR movie;              // NULL when it failed
        const char *reason = nullptr; // why it failed: a static text
        SIGNATURE_T document; // of which this comes as long as it is the same; of none when it may not
        bool finished() const { return movie != nullptr || reason != nullptr; }
    };
    class SCAN_T;

    void run();
    bool wait_for_request();
    void scan();
    void tell_progress();
    void leave_out(const char *what, const std::string &path, const char *reason);

    const std::string root_;
    const std::string machine_;
    const unsigned parsers_;
    STORE_T *store_;
    const SCAN_EVENTS_T events_;
    PROGRESS_T progress_;

    std::mutex mutex_;
    std::condition_variable wake_;
    bool requested_ = true; // the scan at start
    std::atomic<bool> stop_ = false;
    std::thread thread_;
    size_t folders_left_out_ = 0; // by the last scan

    std::atomic<size_t> scans_ = 0;
    std::atomic<size_t> parsed_ = 0;

    // What the last scan found: a document that hasn't changed is not parsed again, and its movie keeps its
    // id. Changed between scans only, so parsers read it without a lock.
    LIBRARY_T library_;
    std::vector<OUTCOME_T> outcomes_; // of its documents
    size_t movies_ = 0;               // among them
};

} // namespace server

#endif
