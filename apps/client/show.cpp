#include "show.h"

#include <array>
#include <cstdio>

#include "status.h"
#include "table.h"
#include "text.h"

namespace client {

namespace {

using BASIC_MOVIE_T = TP_TAVISYS_BASIC_MOVIE_INFORMATION_T;
using DISK_NODE_T = TP_TAVISYS_HARDDISK_INFORMATION_LIST_T;
using WHOLE_MOVIE_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T;

// 93 is 9.3; a movie that nobody has rated has 0.
std::string show_score(UINT32_T tenths) {
    return tenths == 0 ? "" : std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

// 19940910 is 1994-09-10; what is no date is shown as the number that it is, 0 as nothing.
std::string show_date(INT32_T number) {
    const int year = number / 10000;
    const int month = number / 100 % 100;
    const int day = number % 100;
    if (number == 0)
        return "";
    if (year < 1 || year > 9999 || month < 1 || month > 12 || day < 1 || day > 31)
        return std::to_string(number);
    std::array<char, sizeof "1994-09-10"> date{};
    snprintf(date.data(), date.size(), "%04d-%02d-%02d", year, month, day);
    return date.data();
}

std::string show_year(INT32_T year) {
    return year == 0 ? "" : std::to_string(year);
}

std::string show_minutes(INT32_T minutes) {
    return minutes == 0 ? "" : fill(messages::MINUTES, {std::to_string(minutes)});
}

void append_name(std::string &names, const std::string &name) {
    names.append(names.empty() ? "" : messages::NAME_SEPARATOR.get()).append(name);
}

// Every movie carries "全部" among its values, which says nothing about it.
std::string show_ids(const BASIC_MOVIE_IDS_T *ids, const ATTRIBUTE_T &attribute, INT32_T cid,
                     NAME_BOOK_T &names) {
    std::string shown;
    for (INT32_T i = 0; ids != nullptr && i < ids->num; i++) {
        const std::string name = names.name_of(attribute, cid, ids->ids[i]);
        if (name != TAVISYS_NAME_OF_ALL)
            append_name(shown, name);
    }
    return shown;
}

constexpr int TITLE_WIDTH = 16; // most Chinese titles are no longer than eight characters

// Where the category stands, in a table over all categories alone.
constexpr std::ptrdiff_t CATEGORY_COLUMN = 2;

TABLE_T movies_table(INT32_T cid, PAGE_FORM_T form) {
    TABLE_T table{{{messages::ID, ALIGN_T::RIGHT},
                   {messages::TITLE, ALIGN_T::LEFT, TITLE_WIDTH},
                   {messages::KIND, ALIGN_T::LEFT, NARROWEST, STYLE_T::MARKS},
                   {messages::AREA, ALIGN_T::LEFT, NARROWEST},
                   {messages::YEAR, ALIGN_T::LEFT, NARROWEST},
                   {messages::DIMENSION, ALIGN_T::LEFT, NARROWEST, STYLE_T::MARKS},
                   {messages::SCORE, ALIGN_T::RIGHT},
                   {messages::PUT_TIME},
                   {messages::PUBLISH_TIME}},
                  {}};
    if (cid == ALL) {
        const COLUMN_T category{messages::CATEGORY, ALIGN_T::LEFT, NARROWEST};
        table.columns.insert(table.columns.begin() + CATEGORY_COLUMN, category);
    }
    if (form == PAGE_FORM_T::TOUCH) {
        table.columns.push_back({messages::VIDEOS, ALIGN_T::RIGHT});
        table.columns.push_back({messages::DURATION, ALIGN_T::RIGHT});
    }
    return table;
}

// An id means the same in every category, so that the lists of the category asked for, or those over all of
// them, serve every movie of the page.
std::vector<std::string> movie_row(const BASIC_MOVIE_T &movie, INT32_T cid, PAGE_FORM_T form,
                                   NAME_BOOK_T &names) {
    std::vector<std::string> row{std::to_string(movie.movid),
                                 text_of(movie.movname),
                                 show_ids(movie.kind_ids, KIND, cid, names),
                                 show_ids(movie.area_ids, AREA, cid, names),
                                 names.name_of(YEAR, cid, movie.year_id),
                                 show_ids(movie.dimension_ids, DIMENSION, cid, names),
                                 show_score(movie.score),
                                 show_date(movie.puttime),
                                 show_date(movie.pubtime)};
    if (cid == ALL)
        row.insert(row.begin() + CATEGORY_COLUMN, names.name_of(CATEGORY, ALL, movie.category_id));
    if (form == PAGE_FORM_T::TOUCH) {
        row.push_back(std::to_string(movie.totalvideo));
        row.push_back(show_minutes(movie.duration));
    }
    return row;
}

// The names of a list's records, one behind the other, but for the one that says nothing.
template <class NODE>
std::string join_names(const NODE *list) {
    std::string names;
    for_each_record(list, [&names](const auto &record) {
        if (const std::string name = text_of(record.name); name != TAVISYS_NAME_OF_ALL)
            append_name(names, name);
    });
    return names;
}

void add_list_field(std::vector<FIELD_T> &fields, const TEXT_T &label,
                    const TP_MOVIE_FILTER_KVP_INFORMATION_T *info) {
    const bool own_label = info != nullptr && info->desc != nullptr;
    fields.push_back({own_label ? info->desc : label.get(), info == nullptr ? "" : join_names(info->list),
                      STYLE_T::MARKS});
}

void add_value_field(std::vector<FIELD_T> &fields, const TEXT_T &label,
                     const TP_MOVIE_SINGLE_KVP_INFORMATION_T *info) {
    const bool own_label = info != nullptr && info->desc != nullptr;
    fields.push_back({own_label ? info->desc : label.get(), info == nullptr ? "" : text_of(info->value)});
}

// The labels are the server's: they differ by category ("主演", "演唱", "主持人").
std::string show_details(const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T &movie, int width) {
    const TP_MOVIE_DIMENSION_INFORMATION_T *dimension = movie.dimension_info;
    std::vector<FIELD_T> fields{
        {messages::TITLE, text_of(movie.name)},
        {messages::YEAR, show_year(movie.year)},
        {messages::DIMENSION, dimension == nullptr ? "" : text_of(dimension->name), STYLE_T::MARKS},
    };
    add_list_field(fields, messages::DIRECTORS, movie.director_info);
    add_list_field(fields, messages::ACTORS, movie.actor_info);
    add_list_field(fields, messages::KIND, movie.kind_info);
    add_value_field(fields, messages::DURATION, movie.duration_info);
    add_value_field(fields, messages::SUMMARY, movie.summary_info);
    fields.push_back({messages::POSTER, text_of(movie.poster)});
    fields.push_back({messages::VIDEOS, std::to_string(movie.videos)});
    return lay_out_fields(fields, width);
}

// Videos by their id, episode, name and the path of their file, which differ in name between the records.
template <class VIDEO>
using VIDEO_ROW_T = std::vector<std::string> (*)(const VIDEO &);

template <class NODE, class VIDEO>
std::string show_videos(const NODE *list, int width, VIDEO_ROW_T<VIDEO> row) {
    TABLE_T table{{{messages::ID, ALIGN_T::RIGHT},
                   {messages::EPISODE, ALIGN_T::RIGHT},
                   {messages::NAME, ALIGN_T::LEFT, NARROWEST},
                   {messages::FILE_PATH, ALIGN_T::LEFT, NARROWEST}},
                  {}};
    for_each_record(list, [&](const VIDEO &video) { table.rows.push_back(row(video)); });
    return table.rows.empty() ? "" : lay_out_table(table, width).insert(0, 1, '\n');
}

std::vector<std::string> video_row(const TP_TAVISYS_VIDEO_INFORMATION_T &video) {
    return {std::to_string(video.id), std::to_string(video.seqno), text_of(video.name), text_of(video.mp4)};
}

std::vector<std::string> whole_video_row(const TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T &video) {
    return {std::to_string(video.vid), std::to_string(video.seqno), text_of(video.name),
            text_of(video.filepath)};
}

// A row for each partition, and one for a disk without any.
void add_disk(TABLE_T &table, const DISK_NODE_T &disk) {
    const std::vector<std::string> own{text_of(disk.info->devname), text_of(disk.info->serialno)};
    const auto add = [&](std::vector<std::string> partition) {
        partition.insert(partition.begin(), own.begin(), own.end());
        table.rows.push_back(std::move(partition));
    };
    if (disk.list == nullptr)
        add({"", "", "", ""});
    for_each_record(disk.list, [&](const TP_TAVISYS_PARTITION_INFORMATION_T &partition) {
        add({std::to_string(partition.seqno), text_of(partition.devname), text_of(partition.uuid),
             text_of(partition.mntp)});
    });
}

std::string join_years(const TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T *list) {
    std::string years;
    for_each_record(list, [&years](const TP_TAVISYS_DBDATA_YEAR_INFORMATION_T &record) {
        if (record.year != 0)
            append_name(years, std::to_string(record.year));
    });
    return years;
}

std::string show_whole_movie(const WHOLE_MOVIE_T &movie, int width) {
    const INT8_T *poster = movie.posters == nullptr ? nullptr : movie.posters->big;
    return lay_out_fields({{messages::ID, std::to_string(movie.mid)},
                           {messages::MOVIE_CODE, text_of(movie.movcode)},
                           {messages::TITLE, text_of(movie.movnamech)},
                           {messages::ENGLISH_TITLE, text_of(movie.movnameen)},
                           {messages::CATEGORY, join_names(movie.category_list)},
                           {messages::KIND, join_names(movie.kind_list), STYLE_T::MARKS},
                           {messages::AREA, join_names(movie.area_list)},
                           {messages::YEAR, join_years(movie.year_list)},
                           {messages::DIMENSION, join_names(movie.dimension_list), STYLE_T::MARKS},
                           {messages::RESOLUTION, join_names(movie.resolution_list)},
                           {messages::SCORE, text_of(movie.imdbvalue)},
                           {messages::PUT_TIME, show_date(movie.puttime)},
                           {messages::PUBLISH_TIME, show_date(movie.pubtime)},
                           {messages::DIRECTORS, join_names(movie.director_list)},
                           {messages::ACTORS, join_names(movie.actor_list)},
                           {messages::DURATION, show_minutes(movie.duration)},
                           {messages::SUMMARY, text_of(movie.summary)},
                           {messages::POSTER, text_of(poster)},
                           {messages::EPISODES, std::to_string(movie.episodes)}},
                          width) +
           show_videos(movie.video_list, width, whole_video_row);
}

template <class NODE>
std::string show_counted_values(const NODE *list, const TEXT_T &label, int width) {
    TABLE_T table{{{messages::ID, ALIGN_T::RIGHT},
                   {label, ALIGN_T::LEFT, NARROWEST},
                   {messages::MOVIES, ALIGN_T::RIGHT}},
                  {}};
    for_each_record(list, [&table](const auto &value) {
        table.rows.push_back({std::to_string(value.id), text_of(value.name), std::to_string(value.movies)});
    });
    return lay_out_table(table, width);
}

} // namespace

std::string show(const TP_TAVISYS_VERSION_INFORMATION_T &info, int width) {
    return lay_out_fields({{messages::SOFTWARE_VERSION, text_of(info.version)},
                           {messages::DEVICE_NAME, text_of(info.name)},
                           {messages::DEVICE_ID, text_of(info.devid)}},
                          width);
}

std::string show(const TP_TAVISYS_SYSTEM_INFORMATION_T &info, int width) {
    return lay_out_fields(
        {{messages::DISKS, std::to_string(info.hdnum)}, {messages::MOVIES, std::to_string(info.movnum)}},
        width);
}

std::string show(const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status, int width) {
    return lay_out_fields({{messages::PHASE, phase_name(phase_of(status))},
                           {messages::FOUND, std::to_string(status.total_movies)},
                           {messages::PARSED, std::to_string(status.parseok_movies)},
                           failures_field(messages::FAILED, status.parseerr_movies),
                           {messages::LEFT, std::to_string(status.left_movies)}},
                          width);
}

std::string show(const TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list, int width) {
    return show_counted_values(list, messages::CATEGORY, width);
}

std::string show(const TP_TAVISYS_KIND_INFORMATION_LIST_T *list, int width) {
    return show_counted_values(list, messages::KIND, width);
}

std::string show(const TP_TAVISYS_FILTER_INFORMATION_LIST_T *list, int width, const TEXT_T &label) {
    TABLE_T table{{{messages::ID, ALIGN_T::RIGHT}, {label, ALIGN_T::LEFT, NARROWEST, STYLE_T::MARKS}}, {}};
    for_each_record(list, [&table](const TP_TAVISYS_FILTER_INFORMATION_T &filter) {
        table.rows.push_back({std::to_string(filter.id), text_of(filter.name)});
    });
    return lay_out_table(table, width);
}

std::string show(const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T &page, int width, PAGE_FORM_T form,
                 INT32_T cid, NAME_BOOK_T &names) {
    TABLE_T table = movies_table(cid, form);
    for_each_record(page.list, [&](const BASIC_MOVIE_T &movie) {
        table.rows.push_back(movie_row(movie, cid, form, names));
    });
    const TP_PAGE_INFORMATION &info = page.pageinfo;
    return (table.rows.empty() ? std::string(messages::EMPTY_PAGE) : lay_out_table(table, width)) +
           fill(messages::PAGE_LINE, {std::to_string(info.pagenum), std::to_string(info.totalpages),
                                      std::to_string(info.totalmovies)});
}

std::string show(const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T &movie, int width) {
    return show_details(movie, width) + show_videos(movie.video_list, width, video_row);
}

std::string show(const TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *disks, int width) {
    TABLE_T table{{{messages::DISK, ALIGN_T::LEFT, NARROWEST},
                   {messages::SERIAL_NUMBER, ALIGN_T::LEFT, NARROWEST},
                   {messages::NUMBER, ALIGN_T::RIGHT},
                   {messages::PARTITION, ALIGN_T::LEFT, NARROWEST},
                   {messages::UUID, ALIGN_T::LEFT, NARROWEST},
                   {messages::MOUNT_POINT, ALIGN_T::LEFT, NARROWEST}},
                  {}};
    for_each_node(disks, [&table](const DISK_NODE_T &disk) { add_disk(table, disk); });
    return table.rows.empty() ? std::string(messages::NO_DISKS) : lay_out_table(table, width);
}

std::string show(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *movies, int width) {
    std::string text;
    for_each_record(movies, [&](const WHOLE_MOVIE_T &movie) {
        text.append(text.empty() ? "" : "\n").append(show_whole_movie(movie, width));
    });
    return text.empty() ? std::string(messages::NO_MOVIES) : text;
}

std::string show_movie_count(INT32_T movies, int width) {
    return lay_out_fields({{messages::MOVIES, std::to_string(movies)}}, width);
}

} // namespace client
