#include "scanner.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <new>
#include <span>
#include <string_view>
#include <system_error>
#include <unordered_set>

#include "devices.h"
#include "event_list.h"
#include "log.h"
#include "metadata_parse.h"
#include "support_memory.h"
#include "system_error_text.h"
#include "tavisystype.h"

namespace server {

namespace {

using CLOCK_T = std::chrono::steady_clock;

constexpr const char *SHORT_OF_MEMORY = "内存不足";
constexpr size_t BATCH = 64; // documents that a parser takes at once
constexpr auto LOOK_EVERY = std::chrono::milliseconds(50);
constexpr auto PUBLISH_EVERY = std::chrono::seconds(1);
constexpr int PUBLISH_SHARE = 20; // of the time, at most a twentieth goes into unfinished snapshots

// Where the movie lies, as the catalogue records it. False when memory is short.
bool set_position(DBDATA_MOVIE_INFORMATION_T *movie, const DOCUMENT_T &document) {
    movie->type = EVENT_HOST_TYPE_LOCALHOST;
    movie->ipaddr = safe_strdup(TAVISYS_LOCAL_SERVER_ADDRESS);
    movie->hddevname = safe_strdup(document.disk().c_str());
    movie->ptdevname = safe_strdup(document.partition().c_str());
    return movie->ipaddr != nullptr && movie->hddevname != nullptr && movie->ptdevname != nullptr;
}

// Owns the parser's record, of which a MOVIE_T keeps a copy.
struct RELEASE_MOVIE_T {
    void operator()(DBDATA_MOVIE_INFORMATION_T *record) const { release_dbdata_movie_information(&record); }
};
using OWNED_MOVIE_T = std::unique_ptr<DBDATA_MOVIE_INFORMATION_T, RELEASE_MOVIE_T>;

} // namespace

// One scan: the documents, what has become of them, and what has been collected so far.
class SCANNER_T::SCAN_T {
public:
    SCAN_T(SCANNER_T *scanner, LIBRARY_T library) : scanner_(scanner), library_(std::move(library)) {
        for (DISK_T &disk : library_.disks)
            for (PARTITION_T &partition : disk.partitions)
                partition_of_.resize(partition_of_.size() + partition.stat.total_movies, &partition);
    }

    void run(bool publish_early) {
        if (is_as_before()) {
            stand_as_before();
            return;
        }
        outcomes_.resize(library_.documents.size());
        const std::vector<std::jthread> parsers = start_parsers(); // joined whatever happens below
        if (parsers.empty())
            parse();
        while (collected_ < library_.documents.size() && !scanner_->stop_) {
            wait_for_outcomes();
            collect();
            scanner_->tell_progress();
            if (publish_early)
                publish_if_due();
        }
    }
    // The movies are needed here no more.
    void publish_all() { publish(std::move(movies_)); }
    // Whether the library is what it was at the last scan.
    bool found_nothing_new() const {
        return known_ == loaded_ && known_ == scanner_->movies_ && library_.disks == scanner_->library_.disks;
    }
    // Leaves to the scanner what the next scan need not parse.
    void hand_over() {
        scanner_->library_ = std::move(library_);
        scanner_->outcomes_ = std::move(outcomes_);
        scanner_->movies_ = loaded_;
    }

private:
    // Whether there are the same documents on the same disks: as in nearly every scan but the first.
    bool is_as_before() const {
        const LIBRARY_T &before = scanner_->library_;
        if (library_.documents.empty() || library_.documents.size() != before.documents.size())
            return false;
        for (size_t i = 0; i < library_.documents.size(); i++)
            if (library_.documents[i].before != i || !has_outcome(library_.documents[i]))
                return false;
        std::vector<DISK_T> disks = before.disks;
        for (DISK_T &disk : disks)
            for (PARTITION_T &partition : disk.partitions)
                partition.stat = {partition.stat.total_movies, 0, 0}; // nothing has been parsed here yet
        return disks == library_.disks;
    }
    // What has been left out has been told by the scan that found it.
    void stand_as_before() {
        library_.disks = scanner_->library_.disks;
        outcomes_ = std::move(scanner_->outcomes_);
        known_ = loaded_ = scanner_->movies_;
        for (const DISK_T &disk : library_.disks)
            for (const PARTITION_T &partition : disk.partitions)
                scanner_->store_->count(partition.stat.parseok_movies, partition.stat.parseerr_movies);
    }
    // Whether the document is the one of the last scan, which knows what has become of it.
    bool has_outcome(const DOCUMENT_T &document) const {
        if (document.before == UNKNOWN || document.seen == SIGNATURE_T{})
            return false;
        const OUTCOME_T &before = scanner_->outcomes_[document.before];
        return before.finished() && before.document == document.seen;
    }

    std::vector<std::jthread> start_parsers() {
        const size_t batches = (library_.documents.size() + BATCH - 1) / BATCH;
        const size_t wanted = std::min<size_t>(scanner_->parsers_, batches);
        std::vector<std::jthread> parsers;
        parsers.reserve(wanted);
        try {
            while (parsers.size() < wanted)
                parsers.emplace_back([this] { parse(); });
        } catch (const std::system_error &error) {
            SERVER_WARN("只能启动%zu个解析线程, 扫描会较慢: %s", parsers.size(),
                        system_error_text(error.code().value()));
        }
        return parsers;
    }

    void parse() {
        DOCUMENT_READER_T reader(scanner_->root_);
        for (;;) {
            const size_t begin = next_.fetch_add(BATCH);
            const size_t end = std::min(begin + BATCH, library_.documents.size());
            std::array<OUTCOME_T, BATCH> outcomes;
            size_t loaded = 0;
            for (size_t i = begin; i < end; i++) {
                if (scanner_->stop_)
                    return;
                OUTCOME_T &outcome = outcomes[i - begin];
                outcome = load(&reader, library_.documents[i]);
                loaded += outcome.movie != nullptr ? 1 : 0;
            }
            if (begin >= end)
                return;
            scanner_->store_->count(loaded, end - begin - loaded);
            finish(begin, std::span(outcomes).first(end - begin));
        }
    }

    void finish(size_t begin, std::span<OUTCOME_T> outcomes) {
        const std::lock_guard lock(mutex_);
        std::move(outcomes.begin(), outcomes.end(), outcomes_.begin() + static_cast<ptrdiff_t>(begin));
        finished_ += outcomes.size();
        if (finished_ == library_.documents.size())
            changed_.notify_one();
    }

    void wait_for_outcomes() {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, LOOK_EVERY, [this] { return finished_ == library_.documents.size(); });
    }

    // Takes over what is finished, in the order of the documents, so that the same library gives the same
    // catalogue whichever parser was faster.
    void collect() {
        for (; collected_ < library_.documents.size(); collected_++) {
            {
                const std::lock_guard lock(mutex_);
                if (!outcomes_[collected_].finished())
                    return;
            }
            keep(outcomes_[collected_], library_.documents[collected_], partition_of_[collected_]);
        }
    }

    void keep(const OUTCOME_T &outcome, const DOCUMENT_T &document, PARTITION_T *partition) {
        if (partition != current_) // a code may come again on another partition
            codes_.clear();
        current_ = partition;
        loaded_ += outcome.movie != nullptr ? 1 : 0;
        const char *reason = outcome.reason;
        if (outcome.movie != nullptr && !codes_.insert(outcome.movie->record->info->movie_code).second) {
            scanner_->store_->recount_as_failed();
            reason = "同一分区上已有相同影片编码的影片";
        }
        if (reason == nullptr) {
            movies_.push_back(outcome.movie);
            partition->stat.parseok_movies++;
            return;
        }
        partition->stat.parseerr_movies++;
        scanner_->leave_out("影片", std::string(document.folder).append("/metadata.xml"), reason);
    }

    // What has become of a document that hasn't changed. A movie that keeps much memory from being given up
    // is moved; what is served shows it in its new place as soon as it shows anything new.
    OUTCOME_T known(const OUTCOME_T &before) {
        if (before.movie == nullptr)
            return before;
        known_++;
        if (!before.movie->lies_among_gaps())
            return before;
        try {
            const std::lock_guard lock(references_mutex);
            return {make_movie(*before.movie->record, before.movie->folder), nullptr, before.document};
        } catch (const std::bad_alloc &) { // it stays where it is
            return before;
        }
    }

    OUTCOME_T load(DOCUMENT_READER_T *reader, const DOCUMENT_T &document) try {
        if (has_outcome(document))
            return known(scanner_->outcomes_[document.before]);
        SIGNATURE_T signature;
        if (const char *reason = reader->open(document, &signature); reason != nullptr)
            return {nullptr, reason, signature};
        if (const char *reason = reader->read(); reason != nullptr)
            return {nullptr, reason, {}};
        scanner_->parsed_++;
        DBDATA_MOVIE_INFORMATION_T *record = nullptr;
        TAVI_METADATA_FAILURE_E failure = TAVI_METADATA_OK;
        if (get_tavi_metadata_information_from_document(reader->data(), reader->length(), &record, &failure) <
            0) {
            const char *reason = get_tavi_metadata_failure_text(failure);
            const bool final = failure != TAVI_METADATA_MEMORY && failure != TAVI_METADATA_NO_CATEGORY;
            return {nullptr, reason, final ? signature : SIGNATURE_T{}};
        }
        const OWNED_MOVIE_T owned(record);
        if (!set_position(record, document))
            return {nullptr, SHORT_OF_MEMORY, {}};
        return {make_movie(*record, document.folder), nullptr, signature};
    } catch (const std::bad_alloc &) {
        return {nullptr, SHORT_OF_MEMORY, {}};
    }

    void publish(std::vector<MOVIE_PTR> movies) {
        scanner_->store_->publish(
            std::make_shared<const CATALOGUE_T>(std::move(movies), library_.disks, scanner_->parsers_));
    }

    // A snapshot stays until the next one is made. Two of nearly all movies would take the most memory that
    // loading takes, so what follows the first quarter comes with the whole.
    void publish_if_due() {
        const auto now = CLOCK_T::now();
        const auto pause = std::max<CLOCK_T::duration>(PUBLISH_EVERY, last_cost_ * PUBLISH_SHARE);
        if (now - published_at_ < pause || collected_ > library_.documents.size() / 4)
            return;
        publish(movies_);
        published_at_ = CLOCK_T::now();
        last_cost_ = published_at_ - now;
    }

    SCANNER_T *scanner_;
    LIBRARY_T library_;                       // its statistics grow, the rest stays as it is
    std::vector<PARTITION_T *> partition_of_; // by document
    std::atomic<size_t> next_ = 0;

    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<OUTCOME_T> outcomes_;
    size_t finished_ = 0;
    std::atomic<size_t> known_ = 0; // movies that need not be parsed

    size_t collected_ = 0;
    std::vector<MOVIE_PTR> movies_;
    size_t loaded_ = 0;                          // with the repeats of codes, which are not served
    const PARTITION_T *current_ = nullptr;       // of the last collected document
    std::unordered_set<std::string_view> codes_; // on it
    CLOCK_T::time_point published_at_ = CLOCK_T::now();
    CLOCK_T::duration last_cost_{};
};

SCANNER_T::SCANNER_T(std::string root, std::string machine, unsigned parsers, STORE_T *store,
                     SCAN_EVENTS_T events)
    : root_(std::move(root)), machine_(std::move(machine)), parsers_(parsers), store_(store),
      events_(std::move(events)) {}

void SCANNER_T::start() {
    thread_ = std::thread([this] { run(); });
}

void SCANNER_T::rescan() {
    const std::lock_guard lock(mutex_);
    requested_ = true;
    wake_.notify_one();
}

void SCANNER_T::stop() {
    {
        const std::lock_guard lock(mutex_);
        stop_ = true;
        wake_.notify_one();
    }
    if (thread_.joinable())
        thread_.join();
}

bool SCANNER_T::wait_for_request() {
    std::unique_lock lock(mutex_);
    wake_.wait(lock, [this] { return requested_ || stop_; });
    requested_ = false;
    return !stop_;
}

void SCANNER_T::run() {
    while (wait_for_request()) {
        const auto begun = CLOCK_T::now();
        bool whole = true;
        try {
            if (events_.begun)
                events_.begun();
            scan();
        } catch (const std::bad_alloc &) { // the catalogue that is there goes on being served
            SERVER_WARN("内存不足, 扫描未完成, 仍提供原有影片: 请增加内存或调高上限(systemd为MemoryMax=), "
                        "再用SIGHUP重新扫描");
            store_->enter(SYSRUN_STATUS_RUNNING);
            whole = false;
        }
        const std::chrono::duration<double> took = CLOCK_T::now() - begun;
        if (events_.ended && !stop_)
            events_.ended({whole, took.count(), folders_left_out_});
    }
}

void SCANNER_T::tell_progress() {
    const auto status = store_->status();
    progress_.show(status);
    if (events_.progress)
        events_.progress(status);
}

// `path` is below the library folder.
void SCANNER_T::leave_out(const char *what, const std::string &path, const char *reason) {
    progress_.hide();
    if (events_.left_out)
        events_.left_out(path, reason);
    else
        SERVER_WARN("跳过%s %s/%s: %s", what, root_.c_str(), path.c_str(), reason);
}

// The first scan shows its movies as they come; a later one leaves the whole old catalogue in place until
// the new one is whole.
void SCANNER_T::scan() {
    const auto begun = CLOCK_T::now();
    store_->begin(SYSRUN_STATUS_WAITING, 0);
    LIBRARY_T library = find_documents(root_, parsers_, stop_, library_.documents);
    folders_left_out_ = library.passed_over.size();
    for (const PASSED_OVER_T &folder : library.passed_over)
        leave_out("目录", folder.folder, folder.reason);
    if (library.documents.empty() && !stop_)
        leave_out("目录", "", "其中没有影片文档(硬盘/分区/.../metadata.xml), 请检查路径, 或磁盘是否已挂载");
    identify_devices(root_, machine_, &library.disks);
    store_->begin(SYSRUN_STATUS_PARSING, static_cast<INT32_T>(library.documents.size()));

    SCAN_T scan(this, std::move(library));
    scan.run(movies_ == 0);
    if (stop_)
        return;
    store_->enter(SYSRUN_STATUS_READY);
    if (scans_ == 0 || !scan.found_nothing_new())
        scan.publish_all();
    scan.hand_over();
    store_->enter(SYSRUN_STATUS_RUNNING);
    scans_++;

    const auto status = store_->status();
    const std::chrono::duration<double> took = CLOCK_T::now() - begun;
    SERVER_NOTICE("扫描完成: 影片%d部, 成功%d部, 失败%d部, 用时%.2f秒", status.total_movies,
                  status.parseok_movies, status.parseerr_movies, took.count());
}

} // namespace server
