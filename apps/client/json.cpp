// docs/client.md shows the shape of each command's document, which a test holds against what is written here.
// A string or a record that isn't there is null, a list or the ids that aren't there are []. Members may be
// added, those that are there stay.
#include "json.h"

#include <nlohmann/json.hpp>

#include "status.h"
#include "text.h"

namespace client {

namespace {

using JSON_T = nlohmann::ordered_json; // members stay in the order of the records

// Control characters that JSON allows in a string, but that would steer a terminal, become escapes. They
// can stand in strings alone, where the escape means the same.
std::string escape_controls(std::string_view document) {
    constexpr const char *DIGITS = "0123456789abcdef";
    std::string result;
    result.reserve(document.size() + 1);
    while (!document.empty()) {
        const CODE_POINT_T c = first_code_point(document);
        if (c.value == '\n' || !is_control(c.value)) {
            result += document.substr(0, c.size);
        } else {
            result += "\\u";
            for (int shift = 12; shift >= 0; shift -= 4)
                result += DIGITS[c.value >> shift & 0xF];
        }
        document.remove_prefix(c.size);
    }
    return result;
}

std::string write(const JSON_T &document) {
    constexpr int INDENT = 2;
    return escape_controls(document.dump(INDENT, ' ', false, JSON_T::error_handler_t::replace)) + "\n";
}

JSON_T string(const INT8_T *value) {
    return value == nullptr ? JSON_T(nullptr) : JSON_T(value);
}

template <class RECORD, class CONVERT>
JSON_T object(const RECORD *record, CONVERT convert) {
    return record == nullptr ? JSON_T(nullptr) : convert(*record);
}

template <class NODE, class CONVERT>
JSON_T array(const NODE *list, CONVERT convert) {
    JSON_T result = JSON_T::array();
    for_each_record(list, [&](const auto &record) { result.push_back(convert(record)); });
    return result;
}

JSON_T ids(const BASIC_MOVIE_IDS_T *record) {
    JSON_T result = JSON_T::array();
    for (INT32_T i = 0; record != nullptr && i < record->num; i++)
        result.push_back(record->ids[i]);
    return result;
}

JSON_T page_info(const TP_PAGE_INFORMATION &info) {
    return {{"pagenum", info.pagenum},
            {"pagesize", info.pagesize},
            {"totalpages", info.totalpages},
            {"totalmovies", info.totalmovies},
            {"replymovies", info.replymovies}};
}

JSON_T basic_movie(const TP_TAVISYS_BASIC_MOVIE_INFORMATION_T &movie) {
    return {{"movid", movie.movid},
            {"movcode", string(movie.movcode)},
            {"movname", string(movie.movname)},
            {"score", movie.score},
            {"puttime", movie.puttime},
            {"pubtime", movie.pubtime},
            {"nposter", string(movie.nposter)},
            {"bposter", string(movie.bposter)},
            {"acronym", string(movie.acronym)},
            {"category_id", movie.category_id},
            {"year_id", movie.year_id},
            {"kind_ids", ids(movie.kind_ids)},
            {"area_ids", ids(movie.area_ids)},
            {"dimension_ids", ids(movie.dimension_ids)},
            {"resolution_ids", ids(movie.resolution_ids)},
            {"hdsn", string(movie.hdsn)},
            {"index", movie.index}};
}

JSON_T touch_movie(const TP_TAVISYS_BASIC_MOVIE_INFORMATION_T &movie) {
    JSON_T result = basic_movie(movie);
    result["totalvideo"] = movie.totalvideo;
    result["duration"] = movie.duration;
    return result;
}

JSON_T dimension(const TP_MOVIE_DIMENSION_INFORMATION_T &info) {
    return {{"id", info.id}, {"name", string(info.name)}};
}

JSON_T labelled_list(const TP_MOVIE_FILTER_KVP_INFORMATION_T &info) {
    const auto name = [](const TP_MOVIE_FILTER_INFORMATION_T &item) { return string(item.name); };
    return {{"desc", string(info.desc)}, {"list", array(info.list, name)}};
}

JSON_T labelled_value(const TP_MOVIE_SINGLE_KVP_INFORMATION_T &info) {
    return {{"desc", string(info.desc)}, {"value", string(info.value)}};
}

JSON_T video(const TP_TAVISYS_VIDEO_INFORMATION_T &info) {
    return {{"id", info.id}, {"seqno", info.seqno}, {"name", string(info.name)}, {"mp4", string(info.mp4)}};
}

JSON_T partition(const TP_TAVISYS_PARTITION_INFORMATION_T &info) {
    return {{"seqno", info.seqno},
            {"devname", string(info.devname)},
            {"uuid", string(info.uuid)},
            {"mntp", string(info.mntp)}};
}

JSON_T disk(const TP_TAVISYS_HARDDISK_INFORMATION_LIST_T &node) {
    return {{"devname", string(node.info->devname)},
            {"serialno", string(node.info->serialno)},
            {"list", array(node.list, partition)}};
}

} // namespace

std::string to_json(const TP_TAVISYS_VERSION_INFORMATION_T &info) {
    return write(
        {{"version", string(info.version)}, {"name", string(info.name)}, {"devid", string(info.devid)}});
}

std::string to_json(const TP_TAVISYS_SYSTEM_INFORMATION_T &info) {
    return write({{"hdnum", info.hdnum}, {"movnum", info.movnum}});
}

std::string to_json(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &info) {
    return write({{"status", phase_of(info)},
                  {"total_movies", info.total_movies},
                  {"parseok_movies", info.parseok_movies},
                  {"parseerr_movies", info.parseerr_movies},
                  {"left_movies", info.left_movies}});
}

std::string to_json(const TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list) {
    return write(
        {{"list", array(list, [](const TP_TAVISYS_CATEGORY_INFORMATION_T &category) -> JSON_T {
              return {{"id", category.id}, {"name", string(category.name)}, {"movies", category.movies}};
          })}});
}

std::string to_json(const TP_TAVISYS_FILTER_INFORMATION_LIST_T *list) {
    return write({{"list", array(list, [](const TP_TAVISYS_FILTER_INFORMATION_T &filter) -> JSON_T {
                       return {{"id", filter.id}, {"name", string(filter.name)}};
                   })}});
}

std::string to_json(const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T &page, PAGE_FORM_T form) {
    const auto movie = form == PAGE_FORM_T::TOUCH ? touch_movie : basic_movie;
    return write({{"pageinfo", page_info(page.pageinfo)}, {"list", array(page.list, movie)}});
}

std::string to_json(const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T &movie) {
    return write({{"name", string(movie.name)},
                  {"year", movie.year},
                  {"dimension_info", object(movie.dimension_info, dimension)},
                  {"poster", string(movie.poster)},
                  {"director_info", object(movie.director_info, labelled_list)},
                  {"actor_info", object(movie.actor_info, labelled_list)},
                  {"kind_info", object(movie.kind_info, labelled_list)},
                  {"duration_info", object(movie.duration_info, labelled_value)},
                  {"summary_info", object(movie.summary_info, labelled_value)},
                  {"videos", movie.videos},
                  {"video_list", array(movie.video_list, video)}});
}

std::string to_json(const TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *disks) {
    JSON_T list = JSON_T::array();
    for_each_node(disks, [&list](const auto &node) { list.push_back(disk(node)); });
    return write({{"list", list}});
}

std::string to_json(const FETCHED_T &fetched) {
    JSON_T skipped = JSON_T::array();
    for (const SKIPPED_MOVIE_T &movie : fetched.skipped)
        skipped.push_back({{"mid", movie.mid},
                           {"movcode", movie.movcode.has_value() ? JSON_T(*movie.movcode) : JSON_T(nullptr)},
                           {"reason", movie.reason}});
    return write({{"folder", fetched.folder},
                  {"movies", fetched.movies},
                  {"written", fetched.written},
                  {"skipped", skipped}});
}

std::string uuid_to_json(const std::string &uuid) {
    return write({{"uuid", uuid}});
}

std::string poster_to_json(const std::string &path) {
    return write({{"poster", path}});
}

std::string player_name_to_json(const std::string &name) {
    return write({{"name", name}});
}

std::string movie_count_to_json(INT32_T movies) {
    return write({{"movies", movies}});
}

} // namespace client
