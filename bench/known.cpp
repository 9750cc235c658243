#include "known.h"

#include <algorithm>

namespace bench {

namespace {

constexpr INT32_T PAGE_SIZE = 1000;

std::vector<INT32_T> ids_of(const BASIC_MOVIE_IDS_T *ids) {
    if (ids == nullptr || ids->ids == nullptr)
        return {};
    return {ids->ids, ids->ids + ids->num};
}

// Whether the second may follow the first in that order.
bool may_follow(const MOVIE_T &first, const MOVIE_T &second, size_t order) {
    if (order == TP_ORDER_BY_NAME)
        return std::tie(first.name, first.code) <= std::tie(second.name, second.code);
    constexpr std::array<size_t, 3> NUMBER_OF_ORDER = {1, 2, 0};
    const size_t number = NUMBER_OF_ORDER[order];
    const INT32_T left = first.numbers[number];
    const INT32_T right = second.numbers[number];
    return left > right || (left == right && first.code <= second.code);
}

} // namespace

bool MOVIE_T::carries(INT32_T type, INT32_T value) const {
    if (type == TP_FILTER_TYPE_YEAR)
        return year() == value;
    constexpr std::array<size_t, 5> PLACE_OF_TYPE = {0, 0, 1, 0, 2};
    const std::vector<INT32_T> &own = ids[PLACE_OF_TYPE[static_cast<size_t>(type)]];
    return std::find(own.begin(), own.end(), value) != own.end();
}

MOVIE_T movie_of(const TP_TAVISYS_BASIC_MOVIE_INFORMATION_T &record) {
    MOVIE_T movie;
    movie.id = record.movid;
    movie.code = text_or_empty(record.movcode);
    movie.name = text_or_empty(record.movname);
    movie.small_poster = text_or_empty(record.nposter);
    movie.poster = text_or_empty(record.bposter);
    movie.acronym = text_or_empty(record.acronym);
    movie.disk_serial = text_or_empty(record.hdsn);
    movie.numbers = {static_cast<INT32_T>(record.score), record.puttime, record.pubtime, record.category_id,
                     record.year_id};
    movie.ids = {ids_of(record.kind_ids), ids_of(record.area_ids), ids_of(record.dimension_ids),
                 ids_of(record.resolution_ids)};
    movie.videos = record.totalvideo;
    movie.duration = record.duration;
    return movie;
}

bool same_movie(const MOVIE_T &left, const MOVIE_T &right) {
    return left.code == right.code && left.name == right.name && left.small_poster == right.small_poster &&
           left.poster == right.poster && left.acronym == right.acronym &&
           left.disk_serial == right.disk_serial && left.numbers == right.numbers && left.ids == right.ids;
}

std::string text_of(const TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list) {
    std::string text;
    for_each_node(list, [&](const auto &node) {
        text += std::to_string(node.info->id) + ' ' + text_or_empty(node.info->name) + ' ' +
                std::to_string(node.info->movies) + '\n';
    });
    return text;
}

std::string text_of(const TP_TAVISYS_FILTER_INFORMATION_LIST_T *list) {
    std::string text;
    for_each_node(list, [&](const auto &node) {
        text += std::to_string(node.info->id) + ' ' + text_or_empty(node.info->name) + '\n';
    });
    return text;
}

std::string text_of(const TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *list) {
    std::string text;
    for_each_node(list, [&](const auto &disk) {
        text += text_or_empty(disk.info->devname) + ' ' + text_or_empty(disk.info->serialno) + '\n';
        for_each_node(disk.list, [&](const auto &partition) {
            text += std::to_string(partition.info->seqno) + ' ' + text_or_empty(partition.info->devname) +
                    ' ' + text_or_empty(partition.info->uuid) + ' ' + text_or_empty(partition.info->mntp) +
                    '\n';
        });
    });
    return text;
}

std::vector<std::string> codes_of(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list) {
    std::vector<std::string> codes;
    for_each_node(list, [&](const auto &node) { codes.push_back(text_or_empty(node.info->movcode)); });
    return codes;
}

std::string KNOWN_T::read() {
    INT8_T id[37] = "";
    STATUS_OUT_T status;
    SYSTEM_OUT_T system;
    if (tavisysapi_get_uuid_infomation(id, sizeof id) != 0 ||
        tavisysapi_get_system_running_status(status.address()) != 20 ||
        tavisysapi_get_system_information(system.address()) != 0)
        return "no uuid, status or numbers";
    uuid = id;
    documents = {status->total_movies, status->parseok_movies, status->parseerr_movies};
    disks = system->hdnum;
    if (system->movnum != status->parseok_movies)
        return "the numbers of movies differ";
    for (const auto step : {&KNOWN_T::read_lists, &KNOWN_T::read_movies, &KNOWN_T::read_partitions})
        if (std::string wrong = (this->*step)(); !wrong.empty())
            return wrong;
    return "";
}

std::string KNOWN_T::read_lists() {
    CATEGORIES_OUT_T list;
    if (tavisysapi_get_category_information_list(list.address()) != 0)
        return "no categories";
    category_list = text_of(list.get());
    categories = {0};
    for_each_node(list.get(), [&](const auto &node) { categories.push_back(node.info->id); });
    for (const INT32_T category : categories)
        for (INT32_T type = TP_FILTER_TYPE_KIND; type <= TP_FILTER_TYPE_DIMENSION; type++) {
            FILTERS_OUT_T values;
            if (tavisysapi_get_movie_filter_information_list(category, type, values.address()) != 0)
                return "no filters";
            filters[{category, type}] = text_of(values.get());
            for_each_node(values.get(), [&](const auto &node) {
                if (text_or_empty(node.info->name) != TAVISYS_NAME_OF_ALL)
                    lists[{category, type, node.info->id}];
            });
        }
    return "";
}

// Each order must be all movies, each once and sorted; whatever pages hold follows from that.
std::string KNOWN_T::read_movies() {
    std::map<INT32_T, size_t> place_of;
    std::array<PLACES_T, ORDERS> sorted;
    for (INT32_T order = 0; order < static_cast<INT32_T>(ORDERS); order++) {
        PLACES_T &places = sorted[static_cast<size_t>(order)];
        for (INT32_T page = 1; places.size() < static_cast<size_t>(documents[1]); page++) {
            PAGE_OUT_T out;
            const PAGE_REQUEST_T request{0, 0, 0, 0, 0, page, PAGE_SIZE, order};
            if (tavisysapi_get_movie_basic_ext_information(&request, out.address()) != 0 ||
                out->list == nullptr)
                return "a page is missing";
            for_each_node(out->list, [&](const auto &node) {
                const auto [found, fresh] = place_of.try_emplace(node.info->movid, movies.size());
                if (fresh)
                    movies.push_back(movie_of(*node.info));
                places.push_back(found->second);
            });
        }
        for (size_t i = 1; i < places.size(); i++)
            if (!may_follow(movies[places[i - 1]], movies[places[i]], static_cast<size_t>(order)))
                return "order " + std::to_string(order) + " is none at " + movies[places[i]].code;
        if (std::set<size_t>(places.begin(), places.end()).size() != movies.size() ||
            places.size() != movies.size())
            return "order " + std::to_string(order) + " misses movies or has some twice";
    }
    for (INT32_T page = 1; static_cast<size_t>(page - 1) * PAGE_SIZE < movies.size(); page++) {
        PAGE_OUT_T out;
        const PAGE_REQUEST_T request{0, 0, 0, 0, 0, page, PAGE_SIZE, TP_ORDER_BY_PUT_TIME};
        if (touchscreen_get_movie_basic_ext_information(&request, out.address()) != 0)
            return "a page of the touch screens is missing";
        for_each_node(out->list, [&](const auto &node) {
            MOVIE_T &movie = movies[place_of[node.info->movid]];
            movie.videos = node.info->totalvideo;
            movie.duration = node.info->duration;
        });
    }
    return file_movies(sorted);
}

std::string KNOWN_T::file_movies(const std::array<PLACES_T, ORDERS> &sorted) {
    for (const INT32_T category : categories)
        lists[{category, 0, 0}];
    for (auto &[key, orders] : lists) {
        const auto [category, type, value] = key;
        keys.push_back(key);
        for (size_t order = 0; order < ORDERS; order++)
            for (const size_t place : sorted[order]) {
                const MOVIE_T &movie = movies[place];
                if ((category == 0 || movie.category() == category) &&
                    (type == 0 || movie.carries(type, value)))
                    orders[order].push_back(place);
            }
    }
    for (const MOVIE_T &movie : movies)
        years.push_back(movie.year());
    for (const MOVIE_T &movie : movies)
        if (!movie.poster.empty())
            posters.insert(movie.poster);
    return "";
}

std::string KNOWN_T::read_partitions() {
    DISKS_OUT_T list;
    if (tavisysapi_get_vod_harddisk_information(TAVISYS_LOCAL_SERVER_ADDRESS, list.address()) <= 0)
        return "no disks";
    disk_list = text_of(list.get());
    for_each_node(list.get(), [&](const auto &disk) {
        for_each_node(disk.list, [&](const auto &partition) {
            partitions.push_back(
                {text_or_empty(disk.info->devname), text_or_empty(partition.info->devname), 0, {}});
        });
    });
    INT32_T sum = 0;
    for (PARTITION_T &partition : partitions) {
        TRANSFER_OUT_T out;
        if (tavisysapi_get_movies_from_server(TAVISYS_LOCAL_SERVER_ADDRESS, partition.disk.c_str(),
                                              partition.name.c_str(), &partition.movies) != 0 ||
            tavisysapi_get_movie_metadata_from_server(TAVISYS_LOCAL_SERVER_ADDRESS, partition.disk.c_str(),
                                                      partition.name.c_str(), out.address()) <= 0)
            return "no movies of a partition";
        partition.codes = codes_of(out.get());
        if (partition.codes.size() != static_cast<size_t>(partition.movies))
            return "the numbers of a partition's movies differ";
        sum += partition.movies;
    }
    return sum == documents[1] ? "" : "the partitions' movies are not all";
}

} // namespace bench
