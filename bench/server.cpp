#include "server.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

namespace bench {

namespace {

constexpr size_t LOG_KEPT = size_t{16} * 1024;
const std::string SCAN_ENDED = "扫描完成";

// In the child, between fork and exec: system calls only.
[[noreturn]] void become_server(char **argv, int log, rlim_t files) {
    if (files > 0) {
        const rlimit limit{files, files};
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    execv(argv[0], argv);
    _exit(127);
}

} // namespace

SERVER_T::SERVER_T(std::vector<std::string> arguments, rlim_t files) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        perror("pipe");
        exit(2);
    }
    arguments.insert(arguments.begin(), TAVISYS_SERVER);
    std::vector<char *> argv;
    for (std::string &word : arguments)
        argv.push_back(word.data());
    argv.push_back(nullptr);
    process_ = fork();
    if (process_ == 0)
        become_server(argv.data(), ends[1], files);
    close(ends[1]);
    reader_ = std::thread([this, file = ends[0]] { read_log(file); });
}

SERVER_T::~SERVER_T() {
    end();
    reader_.join();
}

void SERVER_T::read_log(int file) {
    char buffer[4096];
    ssize_t count = 0;
    size_t looked = 0; // how much of the log's end has been searched
    while ((count = read(file, buffer, sizeof buffer)) > 0) {
        const std::lock_guard lock(mutex_);
        log_.append(buffer, static_cast<size_t>(count));
        for (size_t at = 0; (at = log_.find(SCAN_ENDED, looked)) != std::string::npos; scans_++)
            looked = at + SCAN_ENDED.size();
        if (log_.size() > 2 * LOG_KEPT) {
            const size_t cut = log_.size() - LOG_KEPT;
            log_.erase(0, cut);
            looked -= std::min(looked, cut);
        }
        changed_.notify_all();
    }
    close(file);
    const std::lock_guard lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

bool SERVER_T::wait_for_scans(size_t times) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return scans_ >= times || ended_; });
    return scans_ >= times;
}

size_t SERVER_T::scans() const {
    const std::lock_guard lock(mutex_);
    return scans_;
}

void SERVER_T::signal(int number) const {
    kill(process_, number);
}

void SERVER_T::limit_files(rlim_t files) const {
    rlimit limit{};
    prlimit(process_, RLIMIT_NOFILE, nullptr, &limit);
    limit.rlim_cur = files;
    prlimit(process_, RLIMIT_NOFILE, &limit, nullptr);
}

int SERVER_T::end() {
    if (status_ >= 0)
        return status_;
    signal(SIGCONT);
    signal(SIGTERM);
    int status = 0;
    waitpid(process_, &status, 0);
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return status_;
}

long SERVER_T::resident_kib() const {
    std::ifstream file("/proc/" + std::to_string(process_) + "/statm");
    long pages = 0;
    file >> pages >> pages;
    return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

size_t SERVER_T::open_files() const {
    std::error_code gone;
    const std::filesystem::directory_iterator files("/proc/" + std::to_string(process_) + "/fd", gone);
    return gone ? 0 : static_cast<size_t>(std::distance(files, {}));
}

size_t SERVER_T::settle(size_t files, std::chrono::seconds most) const {
    const auto until = std::chrono::steady_clock::now() + most;
    while (open_files() > files && std::chrono::steady_clock::now() < until)
        poll(nullptr, 0, 10); // nobody tells when a descriptor of another process is closed
    return open_files();
}

std::string SERVER_T::last_words() const {
    const std::lock_guard lock(mutex_);
    return log_;
}

} // namespace bench
