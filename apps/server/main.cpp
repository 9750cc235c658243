// tavisys-server: serves a library of movie documents on port 40001.
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <malloc.h>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include "access.h"
#include "check.h"
#include "identity.h"
#include "intake.h"
#include "log.h"
#include "metrics.h"
#include "metrics_file.h"
#include "notify.h"
#include "options.h"
#include "replies.h"
#include "scanner.h"
#include "store.h"
#include "system_error_text.h"
#include "tavisys_comm.h"
#include "workers.h"

namespace {

using server::OPTIONS_T;

int fail(const std::string &what) {
    fprintf(stderr, "tavisys-server: %s\n", what.c_str());
    return server::EXIT_FAILED;
}

// The library's path without links. Returns "" or what is wrong with it.
std::string resolve_library(std::string *library) {
    struct stat status {};
    char *resolved = realpath(library->c_str(), nullptr);
    std::string wrong;
    if (resolved == nullptr || stat(resolved, &status) < 0)
        wrong = "无法打开影片库目录 " + *library + ": " +
                server::system_error_text(errno, server::WANTED_T::READ_FOLDER);
    else if (!S_ISDIR(status.st_mode))
        wrong = "影片库 " + *library + " 不是目录";
    else if (access(resolved, R_OK | X_OK) < 0)
        wrong = "无法读取影片库目录 " + *library + ": " +
                server::system_error_text(errno, server::WANTED_T::READ_FOLDER);
    else
        *library = resolved;
    free(resolved);
    return wrong;
}

// Signals are read by the intake; no other thread is to be interrupted by them.
void block_signals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&set, number);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    signal(SIGPIPE, SIG_IGN);
}

// The body of a large reply and the lists of a scan go back to the system as soon as they are freed. Left
// to itself malloc() learns from the first such block to keep the later ones, for each thread apart, and the
// server grows by some megabytes for every thread that has once answered a large request. Smaller bodies stay
// in the arena of their thread: more arenas than processors would only multiply them.
void keep_little_freed_memory(unsigned processors) {
    constexpr int LARGE = 1024 * 1024;
    mallopt(M_MMAP_THRESHOLD, LARGE);
    mallopt(M_TRIM_THRESHOLD, LARGE);
    mallopt(M_ARENA_MAX, static_cast<int>(processors) + 1); // and the scan's
}

std::string why_not_listening(int error) {
    if (error != EADDRINUSE)
        return server::system_error_text(error);
    return "端口已被占用, 多半是另一个tavisys-server在运行(systemctl status tavisys-server), "
           "用 ss -ltnp 'sport = :40001' 可以看到是哪个程序";
}

int serve(const OPTIONS_T &options) {
    const int listener = svr_open_tavisys_msg_channel();
    if (listener < 0)
        return fail("无法监听端口" + std::to_string(TAVISYS_MSG_CHANNEL_PORT) + ": " +
                    why_not_listening(errno));

    server::STORE_T store;
    const server::IDENTITY_T identity{TAVISYS_VERSION, options.name, server::machine_uuid()};
    server::answer_from(&store, &identity);
    server::WORKERS_T workers(options.threads, server::handle_and_count);
    server::METRICS_FILE_T metrics_file(options.metrics, [&] {
        return server::metrics.text(*store.snapshot(),
                                    server::metrics.pending.value() + workers.connections());
    });
    server::NOTIFIER_T notifier;
    server::SCAN_EVENTS_T events;
    events.begun = [&] { notifier.scan_begun(); };
    events.progress = [&](const auto &status) { notifier.scan_progress(status); };
    events.ended = [&](const server::SCAN_END_T &end) {
        const auto status = store.status();
        notifier.scan_ended(status, end.whole);
        server::metrics.count_scan(status, end);
        metrics_file.write_soon();
    };
    server::SCANNER_T scanner(options.library, identity.uuid, server::processors(), &store, events);
    server::ACCESS_T access;
    access.read(options.allowed);
    server::INTAKE_T intake(listener, std::move(access), &workers,
                            {.reload = [&] { scanner.rescan(); },
                             .stopping = server::NOTIFIER_T::stopping,
                             .tick = server::NOTIFIER_T::alive,
                             .tick_period = server::NOTIFIER_T::alive_every()});
    if (!intake.open() || !workers.start())
        return fail(std::string("无法启动: ") + server::system_error_text(errno));

    SERVER_NOTICE("tavisys-server %s 开始服务: 端口%d, 影片库%s, 线程%u个", TAVISYS_VERSION,
                  TAVISYS_MSG_CHANNEL_PORT, options.library.c_str(), options.threads);
    scanner.start();
    metrics_file.start();
    intake.run();
    scanner.stop();
    metrics_file.stop();
    SERVER_NOTICE("服务结束");
    return server::EXIT_SERVED;
}

void start_log(const char *level) {
    if (level != nullptr)
        setenv("TAVISYS_LOG_LEVEL", level, 1);
    dzlog_init(nullptr, "tavisys");
}

int run(int argc, char **argv) {
    OPTIONS_T options;
    if (const auto status = server::read_options(argc, argv, &options); status.has_value())
        return *status;
    const char *level = options.log_level.empty() ? nullptr : options.log_level.c_str();
    if (const std::string wrong = resolve_library(&options.library); !wrong.empty()) {
        fail(wrong);
        return options.check ? server::EXIT_CANNOT_SERVE : server::EXIT_FAILED;
    }
    keep_little_freed_memory(server::processors());
    start_log(options.check && level == nullptr ? "WARN" : level);
    int result = 0;
    if (options.check) {
        result = server::check(options);
    } else {
        block_signals();
        result = serve(options);
    }
    zlog_fini();
    return result;
}

} // namespace

int main(int argc, char **argv) {
    try {
        return run(argc, argv);
    } catch (const std::exception &error) {
        return fail(error.what());
    }
}
