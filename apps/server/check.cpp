#include "check.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <future>
#include <map>
#include <unistd.h>
#include <vector>

#include "identity.h"
#include "metrics_file.h"
#include "on_loan.h"
#include "scanner.h"
#include "store.h"
#include "system_error_text.h"

namespace server {

namespace {

struct LEFT_OUT_T {
    std::string path; // below the library folder
    std::string reason;
};

struct RESULT_T {
    std::vector<LEFT_OUT_T> left_out;
    SCAN_END_T end{};
};

// While there is one, standard output leads nowhere: it is for the report, not for what the library prints.
class SILENCE_T {
public:
    SILENCE_T() : output_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1)) {
        const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
        dup2(nowhere, STDOUT_FILENO);
        close(nowhere);
    }
    SILENCE_T(const SILENCE_T &) = delete;
    SILENCE_T &operator=(const SILENCE_T &) = delete;
    ~SILENCE_T() {
        fflush(stdout);
        dup2(output_, STDOUT_FILENO);
        close(output_);
    }

private:
    int output_;
};

RESULT_T scan_once(const OPTIONS_T &options, STORE_T *store) {
    const SILENCE_T silence;
    RESULT_T result;
    std::promise<void> ended;
    SCAN_EVENTS_T events;
    events.left_out = [&](const std::string &path, const char *reason) {
        result.left_out.push_back({path, reason});
    };
    events.ended = [&](const SCAN_END_T &end) {
        result.end = end;
        ended.set_value();
    };
    SCANNER_T scanner(options.library, machine_uuid(), processors(), store, events);
    scanner.start();
    ended.get_future().wait();
    scanner.stop();
    return result;
}

void print_configuration(const OPTIONS_T &options) {
    printf("配置文件: %s\n", options.config.empty() ? "无" : options.config.c_str());
    printf("影片库: %s\n", options.library.c_str());
    printf("设备名称: %s\n", options.name.c_str());
    printf("允许查询: %s\n", options.allowed.c_str());
    printf("线程: %u个\n", options.threads);
    printf("指标文件: %s\n", options.metrics.empty() ? "无" : options.metrics.c_str());
}

const char *text_or_none(const INT8_T *text) {
    return text == nullptr ? "无" : text;
}

void print_disks(const CATALOGUE_T &catalogue) {
    for (const auto *disk = catalogue.storage().disks(); disk != nullptr; disk = next_of(disk)) {
        printf("硬盘 %s: 序列号%s, 影片%u部\n", disk->info->devname, text_or_none(disk->info->serialno),
               disk->movstat.parseok_movies);
        for (const auto *partition = disk->list; partition != nullptr; partition = next_of(partition))
            printf("  分区 %s: UUID %s, 挂载点%s, 文档%u个, 影片%u部, 未收入%u个\n", partition->info->devname,
                   text_or_none(partition->info->uuid), text_or_none(partition->info->mntp),
                   partition->movstat.total_movies, partition->movstat.parseok_movies,
                   partition->movstat.parseerr_movies);
    }
}

void print_categories(const CATALOGUE_T &catalogue) {
    std::map<INT32_T, std::pair<std::string, size_t>> categories;
    for (const MOVIE_PTR &movie : catalogue.movies()) {
        auto &[name, movies] = categories[category_id_of(*movie->record)];
        name = movie->record->category_list->info->name;
        movies++;
    }
    for (const auto &[id, category] : categories)
        printf("分类 %s: 影片%zu部\n", category.first.c_str(), category.second);
}

// What keeps the metrics from being written, as far as that can be told without writing; NULL for nothing.
const char *trouble_with_metrics(const std::string &file) {
    if (file.empty())
        return nullptr;
    if (const int error = METRICS_FILE_T::replaceable(file); error != 0)
        return system_error_text(error);
    const std::string folder = std::filesystem::path(file).parent_path();
    return access(folder.empty() ? "." : folder.c_str(), W_OK | X_OK) == 0
               ? nullptr
               : system_error_text(errno, WANTED_T::WRITE_FILE);
}

} // namespace

int check(const OPTIONS_T &options) try {
    STORE_T store;
    const RESULT_T result = scan_once(options, &store);
    const SNAPSHOT_PTR catalogue = store.snapshot();
    const char *trouble = trouble_with_metrics(options.metrics);
    print_configuration(options);
    print_disks(*catalogue);
    print_categories(*catalogue);
    for (const LEFT_OUT_T &what : result.left_out)
        printf("未收入 %s/%s: %s\n", options.library.c_str(), what.path.c_str(), what.reason.c_str());
    const auto status = store.status();
    if (trouble != nullptr)
        printf("指标文件将无法写入: %s\n", trouble);
    printf("文档%d个: 可提供影片%d部, 未收入%d个; 有问题的目录%zu个\n", status.total_movies,
           status.parseok_movies, status.parseerr_movies, result.end.folders_left_out);
    if (!result.end.whole)
        fprintf(stderr, "tavisys-server: 扫描未完成: %s\n", system_error_text(ENOMEM));
    if (fflush(stdout) != 0)
        fprintf(stderr, "tavisys-server: 检查结果无法写出: %s\n", system_error_text(errno));
    if (!result.end.whole || ferror(stdout) != 0)
        return EXIT_CANNOT_SERVE;
    return result.left_out.empty() && trouble == nullptr ? EXIT_SERVED : EXIT_SHORTCOMINGS;
} catch (const std::exception &error) {
    fprintf(stderr, "tavisys-server: 检查未完成: %s\n", error.what());
    return EXIT_CANNOT_SERVE;
}

} // namespace server
