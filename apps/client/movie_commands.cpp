// The commands that browse: categories, filters, movies, touch, movie, poster.
#include <array>
#include <cstdio>

#include "command.h"
#include "json.h"
#include "messages.h"
#include "names.h"
#include "server.h"
#include "table.h"
#include "text.h"

namespace client {

namespace {

using PAGE_REQUEST_T = TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T;
using BASIC_MOVIE_T = TP_TAVISYS_BASIC_MOVIE_INFORMATION_T;
using DETAIL_MOVIE_T = TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T;

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

// Every movie carries "全部" among its values, which says nothing about it.
std::string show_ids(const BASIC_MOVIE_IDS_T *ids, const ATTRIBUTE_T &attribute, INT32_T cid,
                     NAME_BOOK_T &names) {
    std::string shown;
    for (INT32_T i = 0; ids != nullptr && i < ids->num; i++) {
        const std::string name = names.name_of(attribute, cid, ids->ids[i]);
        if (name != TAVISYS_NAME_OF_ALL)
            shown += (shown.empty() ? "" : messages::NAME_SEPARATOR.get()) + name;
    }
    return shown;
}

PAGE_REQUEST_T page_request(const ARGUMENTS_T &arguments, NAME_BOOK_T &names) {
    PAGE_REQUEST_T request{};
    request.cid = names.find_id(CATEGORY, ALL, arguments.category);
    request.tid = names.find_id(KIND, request.cid, arguments.kind);
    request.aid = names.find_id(AREA, request.cid, arguments.area);
    request.yid = names.find_id(YEAR, request.cid, arguments.year);
    request.did = names.find_id(DIMENSION, request.cid, arguments.dimension);
    request.pagenum = arguments.page;
    request.pagesize = arguments.size;
    request.orderby = order_by(arguments.order);
    return request;
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

std::string run_page(const ARGUMENTS_T &arguments, int width, PAGE_FORM_T form) {
    NAME_BOOK_T names;
    const PAGE_REQUEST_T request = page_request(arguments, names);
    const PAGE_T page = fetch_page(request, form);
    if (arguments.json)
        return to_json(*page, form);
    TABLE_T table = movies_table(request.cid, form);
    for_each_record(page->list, [&](const BASIC_MOVIE_T &movie) {
        table.rows.push_back(movie_row(movie, request.cid, form, names));
    });
    const TP_PAGE_INFORMATION &info = page->pageinfo;
    return (table.rows.empty() ? std::string(messages::EMPTY_PAGE) : lay_out_table(table, width)) +
           fill(messages::PAGE_LINE, {std::to_string(info.pagenum), std::to_string(info.totalpages),
                                      std::to_string(info.totalmovies)});
}

void add_list_field(std::vector<FIELD_T> &fields, const TEXT_T &label,
                    const TP_MOVIE_FILTER_KVP_INFORMATION_T *info) {
    std::string names;
    if (info != nullptr) {
        for_each_record(info->list, [&names](const TP_MOVIE_FILTER_INFORMATION_T &item) {
            names += (names.empty() ? "" : messages::NAME_SEPARATOR.get()) + text_of(item.name);
        });
    }
    const bool own_label = info != nullptr && info->desc != nullptr;
    fields.push_back({own_label ? info->desc : label.get(), names, STYLE_T::MARKS});
}

void add_value_field(std::vector<FIELD_T> &fields, const TEXT_T &label,
                     const TP_MOVIE_SINGLE_KVP_INFORMATION_T *info) {
    const bool own_label = info != nullptr && info->desc != nullptr;
    fields.push_back({own_label ? info->desc : label.get(), info == nullptr ? "" : text_of(info->value)});
}

// The labels are the server's: they differ by category ("主演", "演唱", "主持人").
std::string show_details(const DETAIL_MOVIE_T &movie, int width) {
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

std::string show_videos(const TP_TAVISYS_VIDEO_INFORMATION_LIST_T *list, int width) {
    TABLE_T table{{{messages::ID, ALIGN_T::RIGHT},
                   {messages::EPISODE, ALIGN_T::RIGHT},
                   {messages::NAME, ALIGN_T::LEFT, NARROWEST},
                   {messages::FILE_PATH, ALIGN_T::LEFT, NARROWEST}},
                  {}};
    for_each_record(list, [&table](const TP_TAVISYS_VIDEO_INFORMATION_T &video) {
        table.rows.push_back(
            {std::to_string(video.id), std::to_string(video.seqno), text_of(video.name), text_of(video.mp4)});
    });
    return table.rows.empty() ? "" : lay_out_table(table, width).insert(0, 1, '\n');
}

} // namespace

std::string run_categories(const ARGUMENTS_T &arguments, int width) {
    const CATEGORIES_T list = fetch_categories();
    if (arguments.json)
        return to_json(list.get());
    TABLE_T table{{{messages::ID, ALIGN_T::RIGHT},
                   {messages::CATEGORY, ALIGN_T::LEFT, NARROWEST},
                   {messages::MOVIES, ALIGN_T::RIGHT}},
                  {}};
    for_each_record(list.get(), [&table](const TP_TAVISYS_CATEGORY_INFORMATION_T &category) {
        table.rows.push_back(
            {std::to_string(category.id), text_of(category.name), std::to_string(category.movies)});
    });
    return lay_out_table(table, width);
}

std::string run_filters(const ARGUMENTS_T &arguments, int width) {
    const ATTRIBUTE_T &attribute = filter_attribute(arguments.attribute);
    NAME_BOOK_T names;
    const INT32_T cid = names.find_id(CATEGORY, ALL, arguments.category);
    const FILTERS_T list = fetch_filters(cid, attribute.type);
    if (arguments.json)
        return to_json(list.get());
    TABLE_T table{
        {{messages::ID, ALIGN_T::RIGHT}, {attribute.label, ALIGN_T::LEFT, NARROWEST, STYLE_T::MARKS}}, {}};
    for_each_record(list.get(), [&table](const TP_TAVISYS_FILTER_INFORMATION_T &filter) {
        table.rows.push_back({std::to_string(filter.id), text_of(filter.name)});
    });
    return lay_out_table(table, width);
}

std::string run_movies(const ARGUMENTS_T &arguments, int width) {
    return run_page(arguments, width, PAGE_FORM_T::PLAIN);
}

std::string run_touch(const ARGUMENTS_T &arguments, int width) {
    return run_page(arguments, width, PAGE_FORM_T::TOUCH);
}

std::string run_movie(const ARGUMENTS_T &arguments, int width) {
    NAME_BOOK_T names;
    const INT32_T cid = names.find_id(CATEGORY, ALL, arguments.category);
    const MOVIE_T movie = fetch_movie(cid, arguments.movie);
    if (arguments.json)
        return to_json(*movie);
    return show_details(*movie, width) + show_videos(movie->video_list, width);
}

std::string run_poster(const ARGUMENTS_T &arguments, int /*width*/) {
    const std::string poster = fetch_poster();
    return arguments.json ? poster_to_json(poster) : printable(poster) + "\n";
}

} // namespace client
