#include "metrics_file.h"

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <new>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "log.h"
#include "system_error_text.h"

namespace server {

namespace {

constexpr auto WRITE_EVERY = std::chrono::seconds(5);
constexpr mode_t MODE = 0644; // whatever the umask: it is made for others to read

// 0 or an errno.
int write_to(int file, const std::string &content) {
    size_t written = 0;
    while (written < content.size()) {
        const ssize_t count = write(file, content.data() + written, content.size() - written);
        if (count < 0 && errno != EINTR)
            return errno;
        written += static_cast<size_t>(std::max<ssize_t>(count, 0));
    }
    return fchmod(file, MODE) < 0 ? errno : 0;
}

} // namespace

int METRICS_FILE_T::replaceable(const std::string &path) {
    struct stat status {};
    if (stat(path.c_str(), &status) < 0 || S_ISREG(status.st_mode))
        return 0;
    return S_ISDIR(status.st_mode) ? EISDIR : EEXIST;
}

METRICS_FILE_T::METRICS_FILE_T(std::string path, std::function<std::string()> text)
    : path_(std::move(path)), scratch_(path_ + ".tmp"), text_(std::move(text)) {}

void METRICS_FILE_T::start() {
    if (path_.empty())
        return;
    try {
        thread_ = std::thread([this] { run(); });
    } catch (const std::system_error &error) {
        SERVER_WARN("无法写指标文件 %s: %s", path_.c_str(), system_error_text(error.code().value()));
    }
}

void METRICS_FILE_T::write_soon() {
    const std::lock_guard lock(mutex_);
    due_ = true;
    wake_.notify_one();
}

void METRICS_FILE_T::stop() {
    {
        const std::lock_guard lock(mutex_);
        stop_ = true;
        wake_.notify_one();
    }
    if (thread_.joinable())
        thread_.join();
}

void METRICS_FILE_T::run() {
    bool last = false;
    while (!last) {
        {
            std::unique_lock lock(mutex_);
            last = stop_;
            due_ = false;
        }
        write();
        std::unique_lock lock(mutex_);
        if (!last)
            wake_.wait_for(lock, WRITE_EVERY, [this] { return due_ || stop_; });
    }
}

void METRICS_FILE_T::write() {
    int error = ENOMEM;
    try {
        error = write_whole(text_());
    } catch (const std::bad_alloc &) { // there may be more the next time
    }
    if (error != 0 && !failed_)
        SERVER_WARN("无法写指标文件 %s: %s", path_.c_str(), system_error_text(error, WANTED_T::WRITE_FILE));
    if (error == 0 && failed_)
        SERVER_NOTICE("指标文件 %s 又可以写入", path_.c_str());
    failed_ = error != 0;
}

// 0 or an errno. What an end of the server has left of the scratch file goes first, so that nobody can have
// put a link in its place.
int METRICS_FILE_T::write_whole(const std::string &content) const {
    if (const int unfit = replaceable(path_); unfit != 0)
        return unfit;
    unlink(scratch_.c_str());
    const int file = open(scratch_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, MODE);
    if (file < 0)
        return errno;
    int error = write_to(file, content);
    if (close(file) < 0 && error == 0)
        error = errno;
    if (error == 0 && rename(scratch_.c_str(), path_.c_str()) < 0)
        error = errno;
    if (error != 0)
        unlink(scratch_.c_str());
    return error;
}

} // namespace server
