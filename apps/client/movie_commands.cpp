// The commands that browse: categories, filters, movies, touch, movie, poster.
#include "command.h"
#include "json.h"
#include "names.h"
#include "server.h"
#include "show.h"
#include "text.h"

namespace client {

namespace {

using PAGE_REQUEST_T = TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T;

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

std::string run_page(const ARGUMENTS_T &arguments, int width, PAGE_FORM_T form) {
    NAME_BOOK_T names;
    const PAGE_REQUEST_T request = page_request(arguments, names);
    const PAGE_T page = fetch_page(request, form);
    if (arguments.json)
        return to_json(*page, form);
    return show(*page, width, form, request.cid, names);
}

} // namespace

std::string run_categories(const ARGUMENTS_T &arguments, int width) {
    const CATEGORIES_T list = fetch_categories();
    if (arguments.json)
        return to_json(list.get());
    return show(list.get(), width);
}

std::string run_filters(const ARGUMENTS_T &arguments, int width) {
    const ATTRIBUTE_T &attribute = filter_attribute(arguments.attribute);
    NAME_BOOK_T names;
    const INT32_T cid = names.find_id(CATEGORY, ALL, arguments.category);
    const FILTERS_T list = fetch_filters(cid, attribute.type);
    if (arguments.json)
        return to_json(list.get());
    return show(list.get(), width, attribute.label);
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
    return show(*movie, width);
}

std::string run_poster(const ARGUMENTS_T &arguments, int /*width*/) {
    const std::string poster = fetch_poster();
    return arguments.json ? poster_to_json(poster) : printable(poster) + "\n";
}

} // namespace client
