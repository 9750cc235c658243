// tavisys-server: serves a library of movie documents on port 40001.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <malloc.h>
#include <string>
#include <sys/stat.h>
#include <thread>

#include "access.h"
#include "identity.h"
#include "intake.h"
#include "log.h"
#include "replies.h"
#include "scanner.h"
#include "store.h"
#include "tavisys_comm.h"
#include "workers.h"

namespace {

constexpr int EXIT_USAGE = 2;
constexpr unsigned MOST_THREADS = 1024;
constexpr size_t LONGEST_NAME = 255;

unsigned processors() {
    return std::max(1U, std::thread::hardware_concurrency());
}

struct OPTIONS_T {
    std::string library;
    std::string name = "影柜";
    std::string allowed = server::ACCESS_T::DEFAULT;
    unsigned threads = 2 * processors();
    std::string log_level;
};

void declare_options(CLI::App *app, OPTIONS_T *options) {
    app->get_formatter()->label("Usage", "用法");
    app->get_formatter()->label("OPTIONS", "选项");
    app->get_formatter()->label("REQUIRED", "(必需)");
    app->option_defaults()->group("选项");
    app->set_help_flag("-h,--help", "显示本帮助")->group("选项");
    app->set_version_flag("--version", TAVISYS_VERSION, "显示版本号")->group("选项");
    app->add_option("--library", options->library, "影片库目录, 其下为 硬盘/分区/.../metadata.xml")
        ->required()
        ->type_name("目录");
    app->add_option("--name", options->name, "设备名称")
        ->type_name("名称")
        ->capture_default_str()
        ->check([](const std::string &name) {
            return name.empty() || name.size() > LONGEST_NAME ? "应为1到255个字节" : "";
        });
    app->add_option("--threads", options->threads, "应答请求的线程数")
        ->type_name("个数")
        ->capture_default_str()
        ->check(CLI::Range(1U, MOST_THREADS).description(""));
    app->add_option("--allow", options->allowed, "允许哪些地址查询, 其他地址一律拒绝")
        ->type_name("地址/位数,...")
        ->capture_default_str()
        ->check([](const std::string &ranges) {
            const std::string wrong = server::ACCESS_T().read(ranges);
            return wrong.empty() ? "" : wrong + "不是IPv4地址段";
        });
    app->add_option("--log-level", options->log_level, "从哪一级起写日志")
        ->type_name("级别")
        ->check(CLI::IsMember({"DEBUG", "INFO", "NOTICE", "WARN", "ERROR", "FATAL"}, CLI::ignore_case)
                    .description("DEBUG INFO NOTICE WARN ERROR FATAL"));
}

int fail(const std::string &what) {
    fprintf(stderr, "tavisys-server: %s\n", what.c_str());
    return EXIT_FAILURE;
}

// The library's path without links and a slash at its end. Says what is wrong with it when it fails.
bool resolve_library(std::string *library, std::string *wrong) {
    struct stat status {};
    char *resolved = realpath(library->c_str(), nullptr);
    if (resolved == nullptr || stat(resolved, &status) < 0)
        *wrong = "无法打开影片库目录 " + *library + ": " + strerrordesc_np(errno);
    else if (!S_ISDIR(status.st_mode))
        *wrong = "影片库 " + *library + " 不是目录";
    if (resolved != nullptr && wrong->empty())
        *library = resolved;
    free(resolved);
    return wrong->empty();
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
    mallopt(M_ARENA_MAX, static_cast<int>(processors));
}

int serve(const OPTIONS_T &options) {
    const int listener = svr_open_tavisys_msg_channel();
    if (listener < 0)
        return fail("无法监听端口" + std::to_string(TAVISYS_MSG_CHANNEL_PORT) + ": " +
                    strerrordesc_np(errno));

    server::STORE_T store;
    const server::IDENTITY_T identity{TAVISYS_VERSION, options.name, server::machine_uuid()};
    server::answer_from(&store, &identity);
    server::SCANNER_T scanner(options.library, identity.uuid, processors(), &store);
    server::WORKERS_T workers(options.threads, server::handle_request);
    server::ACCESS_T access;
    access.read(options.allowed);
    server::INTAKE_T intake(listener, std::move(access), &workers, [&scanner] { scanner.rescan(); });
    if (!intake.open() || !workers.start())
        return fail(std::string("无法启动: ") + strerrordesc_np(errno));

    SERVER_NOTICE("tavisys-server %s 开始服务: 端口%d, 影片库%s, 线程%u个", TAVISYS_VERSION,
                  TAVISYS_MSG_CHANNEL_PORT, options.library.c_str(), options.threads);
    scanner.start();
    intake.run();
    scanner.stop();
    SERVER_NOTICE("服务结束");
    return EXIT_SUCCESS;
}

int run(int argc, char **argv) {
    CLI::App app("影柜服务器: 读取影片库, 在端口40001上回答查询", "tavisys-server");
    OPTIONS_T options;
    declare_options(&app, &options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success &success) {
        return app.exit(success);
    } catch (const CLI::ParseError &error) {
        fprintf(stderr, "tavisys-server: %s (用 --help 查看用法)\n", error.what());
        return EXIT_USAGE;
    }
    std::string wrong;
    if (!resolve_library(&options.library, &wrong))
        return fail(wrong);
    if (!options.log_level.empty())
        setenv("TAVISYS_LOG_LEVEL", options.log_level.c_str(), 1);
    dzlog_init(nullptr, "tavisys");
    block_signals();
    keep_little_freed_memory(processors());
    const int result = serve(options);
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
