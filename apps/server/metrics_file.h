// Writes the metrics into a file every few seconds, each time as a whole: readers find the old file or the
// new.
#ifndef TAVISYS_SERVER_METRICS_FILE_H
#define TAVISYS_SERVER_METRICS_FILE_H

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace server {

class METRICS_FILE_T {
public:
    // `text` makes the content, in a thread of this object. Nothing happens without a path.
    METRICS_FILE_T(std::string path, std::function<std::string()> text);
    METRICS_FILE_T(const METRICS_FILE_T &) = delete;
    METRICS_FILE_T &operator=(const METRICS_FILE_T &) = delete;
    ~METRICS_FILE_T() { stop(); }

    // 0, or the errno of what may not give way to a file: a folder or a device.
    static int replaceable(const std::string &path);

    void start();
    void write_soon();
    void stop(); // after a last write

private:
    void run();
    void write();
    int write_whole(const std::string &content) const;

    const std::string path_;
    const std::string scratch_; // becomes the file once it is whole; beside it, and not named like metrics
    const std::function<std::string()> text_;
    bool failed_ = false; // the last time: told once, not each time

    std::mutex mutex_;
    std::condition_variable wake_;
    bool due_ = false;
    bool stop_ = false;
    std::thread thread_;
};

} // namespace server

#endif
