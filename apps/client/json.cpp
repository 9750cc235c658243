// docs/client.md shows the shape of each command's document, which a test holds against what is written here.
// A string or a record that isn't there is null, a list or the ids that aren't there are []. Members may be
// added, those that are there stay.
#include "json.h"

#include <cstring>
#include <nlohmann/json.hpp>

#include "hex.h"
#include "messages.h"
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

JSON_T person(const TP_TAVISYS_DBDATA_PERSON_INFORMATION_T &info) {
    return {{"code", string(info.code)}, {"name", string(info.name)}};
}

JSON_T posters(const TP_TAVISYS_DBDATA_POSTER_INFORMATION_T &info) {
    return {{"big", string(info.big)}, {"middle", string(info.middle)}, {"small", string(info.small)}};
}

JSON_T whole_video(const TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T &info) {
    return {{"vid", info.vid},
            {"seqno", info.seqno},
            {"name", string(info.name)},
            {"filepath", string(info.filepath)},
            {"mp4", string(info.mp4)}};
}

JSON_T whole_movie(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T &movie) {
    const auto name = [](const TP_TAVISYS_DBDATA_FILTER_INFORMATION_T &value) { return string(value.name); };
    const auto year = [](const TP_TAVISYS_DBDATA_YEAR_INFORMATION_T &value) { return JSON_T(value.year); };
    return {{"mid", movie.mid},
            {"movcode", string(movie.movcode)},
            {"movnamech", string(movie.movnamech)},
            {"movnameen", string(movie.movnameen)},
            {"imdbvalue", string(movie.imdbvalue)},
            {"acronym", string(movie.acronym)},
            {"dimension_list", array(movie.dimension_list, name)},
            {"resolution_list", array(movie.resolution_list, name)},
            {"category_list", array(movie.category_list, name)},
            {"kind_list", array(movie.kind_list, name)},
            {"area_list", array(movie.area_list, name)},
            {"director_list", array(movie.director_list, person)},
            {"actor_list", array(movie.actor_list, person)},
            {"year_list", array(movie.year_list, year)},
            {"puttime", movie.puttime},
            {"pubtime", movie.pubtime},
            {"putintime", movie.putintime},
            {"duration", movie.duration},
            {"posters", object(movie.posters, posters)},
            {"summary", string(movie.summary)},
            {"episodes", movie.episodes},
            {"video_list", array(movie.video_list, whole_video)}};
}

// The counted values of a list: categories or kinds.
template <class NODE>
std::string write_counted_values(const NODE *list) {
    return write({{"list", array(list, [](const auto &value) -> JSON_T {
                       return {{"id", value.id}, {"name", string(value.name)}, {"movies", value.movies}};
                   })}});
}

// A name in a field of fixed size, which need not have a terminator.
template <std::size_t SIZE>
std::string name_in(const INT8_T (&field)[SIZE]) {
    return {field, strnlen(field, SIZE)};
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
    return write_counted_values(list);
}

std::string to_json(const TP_TAVISYS_KIND_INFORMATION_LIST_T *list) {
    return write_counted_values(list);
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

std::string to_json(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *movies) {
    return write({{"list", array(movies, whole_movie)}});
}

std::string to_json(const TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T &request) {
    return write({{"type", static_cast<INT32_T>(request.type)}, {"cid", request.cid}});
}

std::string to_json(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request) {
    return write({{"cid", request.cid},
                  {"tid", request.tid},
                  {"aid", request.aid},
                  {"yid", request.yid},
                  {"did", request.did},
                  {"pagenum", request.pagenum},
                  {"pagesize", request.pagesize},
                  {"orderby", request.orderby}});
}

std::string to_json(const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T &request) {
    return write({{"cid", request.cid}, {"mid", request.mid}});
}

std::string to_json(const TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T &request) {
    return write({{"deviceid", name_in(request.deviceid)},
                  {"hddevname", name_in(request.hddevname)},
                  {"ptdevname", name_in(request.ptdevname)}});
}

std::string to_json(const TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T &request) {
    const auto code = [](const TP_MOVCODE_INFORMATION_T &info) { return string(info.movcode); };
    return write({{"deviceid", string(request.deviceid)},
                  {"hddevname", string(request.hddevname)},
                  {"ptdevname", string(request.ptdevname)},
                  {"list", array(request.list, code)}});
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

std::string nothing_to_json() {
    return write(nullptr);
}

std::string text_to_json(const std::string &text) {
    return write({{"text", text}});
}

std::string reply_to_json(const RAW_REPLY_T &reply, const std::string &decoded) {
    return write({{"type", reply.type},
                  {"result", reply.result},
                  {"length", reply.length},
                  {"body", hex_of(reply.body)},
                  {"decoded", decoded.empty() ? JSON_T(nullptr) : JSON_T::parse(decoded)}});
}

std::vector<FIELD_T> members_of(const std::string &document) {
    const JSON_T members = JSON_T::parse(document);
    std::vector<FIELD_T> fields;
    for (const auto &[name, value] : members.items()) {
        std::string text;
        for (const JSON_T &one : value.is_array() ? value : JSON_T::array({value})) {
            const std::string item = one.is_string() ? one.get<std::string>()
                                     : one.is_null() ? ""
                                                     : one.dump();
            text += (text.empty() ? "" : messages::NAME_SEPARATOR.get()) + item;
        }
        fields.push_back({name, text});
    }
    return fields;
}

} // namespace client
