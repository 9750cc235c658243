#include "metrics.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <map>

#include "replies.h"

namespace server {

namespace {

using CLOCK_T = std::chrono::steady_clock;

struct LIMIT_T {
    int64_t nanoseconds;
    const char *label; // the same in seconds
};
constexpr LIMIT_T LIMITS[] = {
    {10'000, "0.00001"},  {25'000, "0.000025"}, {50'000, "0.00005"},  {100'000, "0.0001"},
    {250'000, "0.00025"}, {500'000, "0.0005"},  {1'000'000, "0.001"}, {2'500'000, "0.0025"},
    {5'000'000, "0.005"}, {10'000'000, "0.01"}, {50'000'000, "0.05"}, {100'000'000, "0.1"},
    {500'000'000, "0.5"}, {1'000'000'000, "1"}, {INT64_MAX, "+Inf"},
};

struct RESULT_T {
    RTSTATUS result;
    const char *label;
};
constexpr RESULT_T RESULTS_OF_REQUESTS[] = {
    {0, "ok"},
    {TAVISYS_RESULT_UNKNOWN_TYPE, "unknown_type"},
    {TAVISYS_RESULT_BAD_REQUEST, "bad_request"},
    {TAVISYS_RESULT_NO_SUCH_MOVIE, "no_such_movie"},
    {TAVISYS_RESULT_NO_SUCH_POSITION, "no_such_position"},
    {TAVISYS_RESULT_SERVER_ERROR, "server_error"}, // and whatever else there may be
};

constexpr double MICROSECONDS = 1e6; // in a second

std::string seconds_of(uint64_t microseconds) {
    char text[32];
    snprintf(text, sizeof text, "%.6f", static_cast<double>(microseconds) / MICROSECONDS);
    return text;
}

std::string head_of(const char *name, const char *type, const char *help) {
    return std::string("# HELP ")
        .append(name)
        .append(" ")
        .append(help)
        .append("\n# TYPE ")
        .append(name)
        .append(" ")
        .append(type)
        .append("\n");
}

std::string sample(const char *name, const std::string &labels, const std::string &value) {
    return std::string(name).append(labels).append(" ").append(value).append("\n");
}

std::string single(const char *name, const char *type, const char *help, const std::string &value) {
    return head_of(name, type, help) + sample(name, "", value);
}

std::string single(const char *name, const char *type, const char *help, uint64_t value) {
    return single(name, type, help, std::to_string(value));
}

std::string escaped(const std::string &text) {
    std::string result;
    for (const char c : text)
        if (c == '\n')
            result += "\\n";
        else
            result.append(c == '"' || c == '\\' ? "\\" : "").append(1, c);
    return result;
}

std::string movies_of(const CATALOGUE_T &catalogue) {
    std::map<std::string, uint64_t> movies;
    for (const MOVIE_PTR &movie : catalogue.movies())
        movies[movie->record->category_list->info->name]++;
    std::string text = head_of("tavisys_movies", "gauge", "Movies that are served, by category.");
    for (const auto &[category, number] : movies)
        text += sample("tavisys_movies", "{category=\"" + escaped(category) + "\"}", std::to_string(number));
    return text;
}

} // namespace

METRICS_T::METRICS_T() : types_(answered_types()), by_type_(types_.size() + 1) {
    static_assert(std::size(LIMITS) == BUCKETS && std::size(RESULTS_OF_REQUESTS) == RESULTS);
}

void METRICS_T::count_request(INT32_T type, RTSTATUS result, std::chrono::nanoseconds took) {
    TYPE_T &counts =
        by_type_[static_cast<size_t>(std::find(types_.begin(), types_.end(), type) - types_.begin())];
    size_t which = 0;
    while (which + 1 < RESULTS && RESULTS_OF_REQUESTS[which].result != result)
        which++;
    size_t bucket = 0;
    while (LIMITS[bucket].nanoseconds < took.count())
        bucket++;
    counts.results[which].add();
    counts.buckets[bucket].add();
    counts.nanoseconds.add(static_cast<uint64_t>(took.count()));
}

void METRICS_T::count_scan(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status, const SCAN_END_T &end) {
    const auto took = static_cast<uint64_t>(end.seconds * MICROSECONDS);
    scans_.add();
    broken_scans_.add(end.whole ? 0 : 1);
    scan_microseconds_.add(took);
    last_scan_microseconds_.set(took);
    documents_left_out_.set(static_cast<uint64_t>(status.parseerr_movies));
    folders_left_out_.set(end.folders_left_out);
}

std::string METRICS_T::label_of(size_t type) const {
    return "type=\"" + (type < types_.size() ? std::to_string(types_[type]) : "other") + '"';
}

std::string METRICS_T::requests() const {
    constexpr const char *NAME = "tavisys_requests_total";
    std::string text = head_of(NAME, "counter", "Requests by message type and result.");
    for (size_t type = 0; type < by_type_.size(); type++)
        for (size_t i = 0; i < RESULTS; i++)
            text += sample(NAME, '{' + label_of(type) + ",result=\"" + RESULTS_OF_REQUESTS[i].label + "\"}",
                           std::to_string(by_type_[type].results[i].value()));
    return text;
}

std::string METRICS_T::durations() const {
    std::string text = head_of("tavisys_request_duration_seconds", "histogram",
                               "Time to make a reply, without receiving the request and sending the reply.");
    for (size_t type = 0; type < by_type_.size(); type++) {
        uint64_t count = 0;
        for (size_t i = 0; i < BUCKETS; i++) {
            count += by_type_[type].buckets[i].value();
            text += sample("tavisys_request_duration_seconds_bucket",
                           '{' + label_of(type) + ",le=\"" + LIMITS[i].label + "\"}", std::to_string(count));
        }
        const std::string labels = '{' + label_of(type) + '}';
        text += sample("tavisys_request_duration_seconds_sum", labels,
                       seconds_of(by_type_[type].nanoseconds.value() / 1000));
        text += sample("tavisys_request_duration_seconds_count", labels, std::to_string(count));
    }
    return text;
}

std::string METRICS_T::text(const CATALOGUE_T &catalogue, size_t held) const {
    const auto started =
        std::chrono::duration_cast<std::chrono::seconds>(started_.time_since_epoch()).count();
    std::string text = head_of("tavisys_build_info", "gauge", "The server's version.");
    text += sample("tavisys_build_info", "{version=\"" TAVISYS_VERSION "\"}", "1");
    text += single("tavisys_start_time_seconds", "gauge", "When the server was started, since 1970.",
                   static_cast<uint64_t>(started));
    text += movies_of(catalogue);
    text += single("tavisys_documents_left_out", "gauge", "Documents that the last scan left out.",
                   documents_left_out_.value());
    text += single("tavisys_folders_left_out", "gauge", "Folders that the last scan could not take in whole.",
                   folders_left_out_.value());
    text += single("tavisys_incomplete_scans_total", "counter", "Scans that ran out of memory.",
                   broken_scans_.value());
    text += single("tavisys_last_scan_duration_seconds", "gauge", "Time that the last scan took.",
                   seconds_of(last_scan_microseconds_.value()));
    text += head_of("tavisys_scan_duration_seconds", "summary", "Scans and the time that they took.");
    text += sample("tavisys_scan_duration_seconds_sum", "", seconds_of(scan_microseconds_.value()));
    text += sample("tavisys_scan_duration_seconds_count", "", std::to_string(scans_.value()));
    text += single("tavisys_connections_total", "counter", "Connections accepted, the refused ones included.",
                   accepted.value());
    text += single("tavisys_refused_peers_total", "counter", "Connections refused for their address.",
                   refused.value());
    text += single("tavisys_dropped_connections_total", "counter",
                   "Connections closed because no whole, valid request came in time.", dropped.value());
    text += single("tavisys_broken_exchanges_total", "counter",
                   "Exchanges that ended before the reply was sent whole.", broken.value());
    text += single("tavisys_connections_held", "gauge", "Connections that are open now.", held);
    text += single("tavisys_sent_bytes_total", "counter", "Bytes of replies sent, heads included.",
                   sent_bytes.value());
    return text + requests() + durations();
}

RTSTATUS handle_and_count(INT32_T type, PVOID body, INT32_T length, PVOID *reply, INT32_T *replylen) {
    const auto begun = CLOCK_T::now();
    const RTSTATUS result = handle_request(type, body, length, reply, replylen);
    metrics.count_request(type, result, CLOCK_T::now() - begun);
    return result;
}

} // namespace server
