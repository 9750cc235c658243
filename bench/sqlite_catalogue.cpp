#include "sqlite_catalogue.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "on_loan.h"

namespace bench {

namespace {

constexpr INT32_T CATEGORY_LIST = 0; // beside the TP_FILTER_TYPE_E, as a type of list
constexpr INT32_T LARGEST_PAGE = 1000;

// What a page shows of a movie, in the order of the wire up to the index, and what it filters by.
constexpr const char *COLUMNS =
    "mid, code, name, score, put, pub, nposter, bposter, acronym, cid, year, ids, "
    "hdsn, kinds, areas, dimensions";

[[noreturn]] void give_up(const std::string &why) {
    fprintf(stderr, "SQLite: %s\n", why.c_str());
    exit(EXIT_FAILURE);
}

void put_integer(std::string *body, INT32_T value) {
    INT8_T bytes[sizeof value];
    encode_int_data_to_buffer(value, bytes, sizeof bytes);
    body->append(bytes, sizeof bytes);
}

void put_text(std::string *body, sqlite3_stmt *row, int column) {
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(row, column));
    const int length = sqlite3_column_bytes(row, column);
    put_integer(body, text == nullptr ? -1 : length);
    if (text != nullptr)
        body->append(text, static_cast<size_t>(length));
}

// One movie of a page from the current row.
void put_movie(std::string *body, sqlite3_stmt *row, INT32_T index) {
    for (int column = 0; column < 13; column++) {
        if (column == 11) // the ids, as they travel
            body->append(static_cast<const char *>(sqlite3_column_blob(row, column)),
                         static_cast<size_t>(sqlite3_column_bytes(row, column)));
        else if (column == 1 || column == 2 || (column >= 6 && column <= 8) || column == 12)
            put_text(body, row, column);
        else
            put_integer(body, sqlite3_column_int(row, column));
    }
    put_integer(body, index);
}

void add_ids(std::string *wire, std::string *text, const BASIC_MOVIE_IDS_T *ids) {
    put_integer(wire, ids == nullptr ? 0 : ids->num);
    text->assign(1, ',');
    for (INT32_T i = 0; ids != nullptr && i < ids->num; i++) {
        put_integer(wire, ids->ids[i]);
        text->append(std::to_string(ids->ids[i])).append(1, ',');
    }
}

std::string commas(INT32_T id) {
    std::string text(1, ',');
    return text.append(std::to_string(id)).append(1, ',');
}

template <class NODE, class VISIT>
void for_each(const NODE *list, VISIT visit) {
    for (const NODE *node = list; node != nullptr; node = server::next_of(node))
        visit(*node->info);
}

std::string taken(PVOID body, INT32_T length) {
    std::string result(static_cast<INT8_T *>(body), static_cast<size_t>(length));
    safe_free(body);
    return result;
}

} // namespace

STATEMENT_T::STATEMENT_T(sqlite3 *database, const std::string &sql) {
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v3(database, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) !=
        SQLITE_OK)
        give_up(sql + ": " + sqlite3_errmsg(database));
    statement_.reset(statement);
}
void STATEMENT_T::bind(int at, int64_t value) {
    sqlite3_bind_int64(get(), at, value);
}
void STATEMENT_T::bind(int at, const INT8_T *text) {
    sqlite3_bind_text(get(), at, text, -1, SQLITE_TRANSIENT);
}
void STATEMENT_T::bind(int at, const std::string &text) {
    sqlite3_bind_text(get(), at, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}
bool STATEMENT_T::step() {
    const int result = sqlite3_step(get());
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        give_up(sqlite3_errmsg(sqlite3_db_handle(get())));
    if (result == SQLITE_DONE)
        reset();
    return result == SQLITE_ROW;
}
void STATEMENT_T::reset() {
    sqlite3_reset(get());
}
INT32_T STATEMENT_T::integer(int column) const {
    return sqlite3_column_int(get(), column);
}
const INT8_T *STATEMENT_T::text(int column) const {
    return reinterpret_cast<const INT8_T *>(sqlite3_column_text(get(), column));
}
std::string STATEMENT_T::bytes(int column) const {
    const auto *bytes = static_cast<const char *>(sqlite3_column_blob(get(), column));
    return bytes == nullptr ? ""
                            : std::string(bytes, static_cast<size_t>(sqlite3_column_bytes(get(), column)));
}

SQLITE_CATALOGUE_T::SQLITE_CATALOGUE_T(const ASK_T &ask, INT32_T cid, INT32_T orderby) : cid_(cid) {
    sqlite3 *database = nullptr;
    if (sqlite3_open_v2(":memory:", &database,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_MEMORY | SQLITE_OPEN_NOMUTEX,
                        nullptr) != SQLITE_OK)
        give_up("no database");
    database_.reset(database);
    run("PRAGMA temp_store=MEMORY; PRAGMA journal_mode=OFF; BEGIN");
    run("CREATE TABLE movie (mid INTEGER PRIMARY KEY, code, name, score, put, pub, nposter, bposter, "
        "acronym, "
        "cid, year, ids, hdsn, kinds, areas, dimensions, rank);"
        "CREATE TABLE member (type, value, rank, mid);" // of which the lists are made
        "CREATE TABLE list (type, value, number, total, PRIMARY KEY (type, value)) WITHOUT ROWID;"
        "CREATE TABLE page (list, rank, mid, code, name, score, put, pub, nposter, bposter, acronym, cid, "
        "year, "
        "ids, hdsn, kinds, areas, dimensions, PRIMARY KEY (list, rank)) WITHOUT ROWID;"
        "CREATE TABLE detail (mid INTEGER PRIMARY KEY, name, year, did, dimension, poster, duration, "
        "summary);"
        "CREATE TABLE value (mid, role, place, name, PRIMARY KEY (mid, role, place)) WITHOUT ROWID;"
        "CREATE TABLE video (mid, place, id, seqno, name, mp4, PRIMARY KEY (mid, place)) WITHOUT ROWID;"
        "CREATE TABLE menu (type, place, id, name, PRIMARY KEY (type, place)) WITHOUT ROWID;"
        "CREATE TABLE category (id INTEGER PRIMARY KEY, name, total);"
        "CREATE TABLE poster (number INTEGER PRIMARY KEY, path)");
    fill_movies(ask, cid, orderby);
    fill_details(ask, cid);
    fill_lists();
    fill_menus(ask, cid);
    run("COMMIT; DROP TABLE member; ANALYZE");
    prepare();
}

void SQLITE_CATALOGUE_T::run(const std::string &sql) {
    char *error = nullptr;
    if (sqlite3_exec(database_.get(), sql.c_str(), nullptr, nullptr, &error) != SQLITE_OK)
        give_up(sql + ": " + error);
}

void SQLITE_CATALOGUE_T::fill_movies(const ASK_T &ask, INT32_T cid, INT32_T orderby) {
    STATEMENT_T movie(database_.get(), "INSERT INTO movie VALUES (?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)");
    STATEMENT_T member(database_.get(), "INSERT INTO member VALUES (?,?,?,?)");
    INT32_T pages = 1;
    for (INT32_T pagenum = 1; pagenum <= pages; pagenum++) {
        const PAGE_REQUEST_T request{cid, 0, 0, 0, 0, pagenum, LARGEST_PAGE, orderby};
        const std::string body = ask(TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, &request, sizeof request);
        TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *page = nullptr;
        decode_tavisys_basic_movie_ext_information_from_message(body.data(),
                                                                static_cast<INT32_T>(body.size()), &page);
        pages = page->pageinfo.totalpages;
        for_each(page->list, [&](const TP_TAVISYS_BASIC_MOVIE_INFORMATION_T &info) {
            const auto join = [&](INT32_T type, INT32_T value) {
                const INT32_T row[] = {type, value, info.index, info.movid};
                for (int i = 0; i < 4; i++)
                    member.bind(i + 1, int64_t{row[i]});
                member.step();
            };
            std::string wire, kinds, areas, dimensions, resolutions;
            add_ids(&wire, &kinds, info.kind_ids);
            add_ids(&wire, &areas, info.area_ids);
            add_ids(&wire, &dimensions, info.dimension_ids);
            add_ids(&wire, &resolutions, info.resolution_ids);
            const std::pair<int, int64_t> integers[] = {
                {1, info.movid},        {4, info.score},    {5, info.puttime}, {6, info.pubtime},
                {10, info.category_id}, {11, info.year_id}, {17, info.index}};
            for (const auto &[at, value] : integers)
                movie.bind(at, value);
            const std::pair<int, const INT8_T *> texts[] = {
                {2, info.movcode},   {3, info.movname},   {7, info.nposter},
                {8, info.bposter},   {9, info.acronym},   {13, info.hdsn},
                {14, kinds.c_str()}, {15, areas.c_str()}, {16, dimensions.c_str()}};
            for (const auto &[at, value] : texts)
                movie.bind(at, value);
            sqlite3_bind_blob(movie.get(), 12, wire.data(), static_cast<int>(wire.size()), SQLITE_TRANSIENT);
            movie.step();
            join(CATEGORY_LIST, cid);
            join(TP_FILTER_TYPE_YEAR, info.year_id);
            const std::pair<INT32_T, const BASIC_MOVIE_IDS_T *> ids[] = {
                {TP_FILTER_TYPE_KIND, info.kind_ids},
                {TP_FILTER_TYPE_AREA, info.area_ids},
                {TP_FILTER_TYPE_DIMENSION, info.dimension_ids}};
            for (const auto &[type, values] : ids)
                for (INT32_T i = 0; values != nullptr && i < values->num; i++)
                    join(type, values->ids[i]);
        });
        delete_tavisys_basic_movie_ext_information(&page);
    }
}

// A list is in the order of the movies' ranks in the category, numbered anew.
void SQLITE_CATALOGUE_T::fill_lists() {
    run("INSERT INTO list SELECT type, value, row_number() OVER (ORDER BY type, value), count(*) FROM member "
        "GROUP BY type, value");
    run(std::string("INSERT INTO page SELECT number, place, ") + COLUMNS +
        " FROM (SELECT number, row_number() OVER (PARTITION BY number ORDER BY rank) AS place, mid AS which "
        "FROM member JOIN list USING (type, value) ORDER BY number, place) CROSS JOIN movie ON movie.mid = "
        "which");
    run("INSERT INTO poster SELECT row_number() OVER (ORDER BY mid), bposter FROM movie WHERE bposter IS NOT "
        "NULL");
}

void SQLITE_CATALOGUE_T::fill_details(const ASK_T &ask, INT32_T cid) {
    STATEMENT_T movies(database_.get(), "SELECT mid FROM movie ORDER BY mid");
    STATEMENT_T detail(database_.get(), "INSERT INTO detail VALUES (?,?,?,?,?,?,?,?)");
    STATEMENT_T value(database_.get(), "INSERT INTO value VALUES (?,?,?,?)");
    STATEMENT_T video(database_.get(), "INSERT INTO video VALUES (?,?,?,?,?,?)");
    while (movies.step()) {
        const INT32_T mid = movies.integer(0);
        const TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T request{cid, mid};
        const std::string body = ask(TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, &request, sizeof request);
        TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T *info = nullptr;
        decode_tavisys_detail_movie_information_from_message(body.data(), static_cast<INT32_T>(body.size()),
                                                             &info);
        const auto *dimension = info->dimension_info;
        detail.bind(1, int64_t{mid});
        detail.bind(2, info->name);
        detail.bind(3, int64_t{info->year});
        detail.bind(4, int64_t{dimension == nullptr ? 0 : dimension->id});
        detail.bind(5, dimension == nullptr ? nullptr : dimension->name);
        detail.bind(6, info->poster);
        detail.bind(7, info->duration_info->value);
        detail.bind(8, info->summary_info->value);
        detail.step();
        const TP_MOVIE_FILTER_KVP_INFORMATION_T *roles[] = {info->director_info, info->actor_info,
                                                            info->kind_info};
        for (int64_t role = 0, place = 0; role < 3; role++)
            for_each(roles[role] == nullptr ? nullptr : roles[role]->list, [&](const auto &entry) {
                value.bind(1, int64_t{mid});
                value.bind(2, role);
                value.bind(3, place++);
                value.bind(4, entry.name);
                value.step();
            });
        int64_t place = 0;
        for_each(info->video_list, [&](const TP_TAVISYS_VIDEO_INFORMATION_T &entry) {
            const int64_t integers[] = {mid, place++, entry.id, entry.seqno};
            for (int i = 0; i < 4; i++)
                video.bind(i + 1, integers[i]);
            video.bind(5, entry.name);
            video.bind(6, entry.mp4);
            video.step();
        });
        release_tavisys_detail_movie_information(&info);
    }
}

void SQLITE_CATALOGUE_T::fill_menus(const ASK_T &ask, INT32_T cid) {
    STATEMENT_T menu(database_.get(), "INSERT INTO menu VALUES (?,?,?,?)");
    for (const auto type :
         {TP_FILTER_TYPE_KIND, TP_FILTER_TYPE_AREA, TP_FILTER_TYPE_YEAR, TP_FILTER_TYPE_DIMENSION}) {
        const TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T request{type, cid};
        const std::string body = ask(TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST, &request, sizeof request);
        TP_TAVISYS_FILTER_INFORMATION_LIST_T *list = nullptr;
        decode_tavisys_filter_information_list_from_message(body.data(), static_cast<INT32_T>(body.size()),
                                                            &list);
        int64_t place = 0;
        for_each(list, [&](const auto &entry) {
            menu.bind(1, int64_t{type});
            menu.bind(2, place++);
            menu.bind(3, int64_t{entry.id});
            menu.bind(4, entry.name);
            menu.step();
        });
        delete_tavisys_filter_information_list(&list);
    }
    STATEMENT_T category(database_.get(), "INSERT INTO category VALUES (?,?,?)");
    const std::string body = ask(TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST, nullptr, 0);
    TP_TAVISYS_CATEGORY_INFORMATION_LIST_T *list = nullptr;
    decode_tavisys_category_information_list_from_message(body.data(), static_cast<INT32_T>(body.size()),
                                                          &list);
    for_each(list, [&](const auto &entry) {
        category.bind(1, int64_t{entry.id});
        category.bind(2, entry.name);
        category.bind(3, int64_t{entry.movies});
        category.step();
    });
    delete_tavisys_category_information_list(&list);
}

void SQLITE_CATALOGUE_T::prepare() {
    sqlite3 *database = database_.get();
    // ?1: the list; -1 for an id that is no filter.
    const std::string filters =
        " FROM page WHERE list = ?1 AND (?2 < 0 OR year = ?2) AND instr(kinds, ?3) AND "
        "instr(areas, ?4) AND instr(dimensions, ?5)";
    list_ = {database, "SELECT number, total FROM list WHERE type = ? AND value = ?"};
    page_ = {database, std::string("SELECT ") + COLUMNS + " FROM page WHERE list = ? AND rank > ? LIMIT ?"};
    filtered_ = {database, std::string("SELECT ") + COLUMNS + filters + " ORDER BY rank LIMIT ?6 OFFSET ?7"};
    filtered_total_ = {database, "SELECT count(*)" + filters};
    detail_ = {database,
               "SELECT name, year, did, dimension, poster, duration, summary FROM detail WHERE mid = ?"};
    values_ = {database, "SELECT role, name FROM value WHERE mid = ?"};
    videos_ = {database, "SELECT id, seqno, name, mp4 FROM video WHERE mid = ?"};
    menu_ = {database, "SELECT id, name FROM menu WHERE type = ?"};
    categories_ = {database, "SELECT id, name, total FROM category"};
    poster_ = {database, "SELECT path FROM poster WHERE number = ?"};
    STATEMENT_T posters(database, "SELECT count(*) FROM poster");
    posters.step();
    posters_ = posters.integer(0);
}

SQLITE_CATALOGUE_T::LIST_T SQLITE_CATALOGUE_T::list_of(INT32_T type, INT32_T value) {
    list_.bind(1, int64_t{type});
    list_.bind(2, int64_t{value});
    LIST_T list{-1, 0};
    if (list_.step())
        list = {list_.integer(0), list_.integer(1)};
    list_.reset();
    return list;
}

std::string SQLITE_CATALOGUE_T::page(const PAGE_REQUEST_T &request) {
    const std::pair<INT32_T, INT32_T> filters[] = {{TP_FILTER_TYPE_KIND, request.tid},
                                                   {TP_FILTER_TYPE_AREA, request.aid},
                                                   {TP_FILTER_TYPE_YEAR, request.yid},
                                                   {TP_FILTER_TYPE_DIMENSION, request.did}};
    LIST_T list{-1, 0};
    int filtered = 0;
    for (const auto &[type, value] : filters) {
        if (value == 0)
            continue;
        const LIST_T selected = list_of(type, value);
        if (filtered++ == 0 || selected.total < list.total)
            list = selected;
    }
    if (filtered == 0)
        list = list_of(CATEGORY_LIST, cid_);
    const INT32_T before = (request.pagenum - 1) * request.pagesize;
    STATEMENT_T *rows = filtered > 1 ? &filtered_ : &page_;
    rows->bind(1, int64_t{list.number});
    if (filtered > 1) {
        for (STATEMENT_T *statement : {&filtered_, &filtered_total_}) {
            statement->bind(1, int64_t{list.number});
            statement->bind(2, int64_t{request.yid == 0 ? -1 : request.yid});
            statement->bind(3, request.tid == 0 ? "," : commas(request.tid));
            statement->bind(4, request.aid == 0 ? "," : commas(request.aid));
            statement->bind(5, request.did == 0 ? "," : commas(request.did));
        }
        filtered_.bind(6, int64_t{request.pagesize});
        filtered_.bind(7, int64_t{before});
        filtered_total_.step();
        list.total = filtered_total_.integer(0);
        filtered_total_.reset();
    } else {
        page_.bind(2, int64_t{before});
        page_.bind(3, int64_t{request.pagesize});
    }
    std::string body;
    body.reserve(size_t{8} * 1024);
    const INT32_T pages = (list.total + request.pagesize - 1) / request.pagesize;
    const INT32_T count = std::clamp(list.total - before, 0, request.pagesize);
    for (const INT32_T number : {request.pagenum, request.pagesize, pages, list.total, count, count})
        put_integer(&body, number);
    for (INT32_T index = before + 1; rows->step(); index++)
        put_movie(&body, rows->get(), index);
    return body;
}

std::string SQLITE_CATALOGUE_T::detail(INT32_T mid) {
    using server::on_loan;
    server::ARENA_T arena;
    TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T info{};
    const auto text_of = [&](const STATEMENT_T &row, int column) {
        const INT8_T *text = row.text(column);
        return text == nullptr ? nullptr : arena.text({text});
    };
    for (STATEMENT_T *statement : {&detail_, &values_, &videos_})
        statement->bind(1, int64_t{mid});
    detail_.step();
    info.name = text_of(detail_, 0);
    info.year = detail_.integer(1);
    if (INT8_T *dimension = text_of(detail_, 3); dimension != nullptr)
        info.dimension_info = arena.keep(TP_MOVIE_DIMENSION_INFORMATION_T{detail_.integer(2), dimension});
    info.poster = text_of(detail_, 4);
    info.duration_info = arena.keep(
        TP_MOVIE_SINGLE_KVP_INFORMATION_T{on_loan(get_duration_desc_by_cid(cid_)), text_of(detail_, 5)});
    info.summary_info = arena.keep(
        TP_MOVIE_SINGLE_KVP_INFORMATION_T{on_loan(get_descript_desc_by_cid(cid_)), text_of(detail_, 6)});
    detail_.reset();
    TP_MOVIE_FILTER_KVP_INFORMATION_T *roles[3] = {};
    TP_MOVIE_FILTER_INFORMATION_LIST_T *last = nullptr;
    const INT8_T *labels[] = {get_director_desc_by_cid(cid_), get_actor_desc_by_cid(cid_),
                              get_kind_desc_by_cid(cid_)};
    while (values_.step()) {
        auto *&role = roles[values_.integer(0)];
        auto *node = arena.keep(TP_MOVIE_FILTER_INFORMATION_LIST_T{
            nullptr, arena.keep(TP_MOVIE_FILTER_INFORMATION_T{text_of(values_, 1)})});
        if (role == nullptr)
            role = arena.keep(TP_MOVIE_FILTER_KVP_INFORMATION_T{on_loan(labels[values_.integer(0)]), node});
        else
            last->next = node;
        last = node;
    }
    info.director_info = roles[0];
    info.actor_info = roles[1];
    info.kind_info = roles[2];
    TP_TAVISYS_VIDEO_INFORMATION_LIST_T *tail = nullptr;
    for (; videos_.step(); info.videos++) {
        auto *node = arena.keep(TP_TAVISYS_VIDEO_INFORMATION_LIST_T{
            nullptr, arena.keep(TP_TAVISYS_VIDEO_INFORMATION_T{videos_.integer(0), videos_.integer(1),
                                                               text_of(videos_, 2), text_of(videos_, 3)})});
        if (tail == nullptr)
            info.video_list = node;
        else
            tail->next = node;
        tail = node;
    }
    PVOID body = nullptr;
    INT32_T length = 0;
    encode_tavisys_detail_movie_information_to_message(&info, &body, &length);
    return taken(body, length);
}

std::string SQLITE_CATALOGUE_T::filter_list(INT32_T type) {
    std::string body(sizeof(INT32_T), '\0');
    INT32_T count = 0;
    menu_.bind(1, int64_t{type});
    for (; menu_.step(); count++) {
        put_integer(&body, menu_.integer(0));
        put_text(&body, menu_.get(), 1);
    }
    encode_int_data_to_buffer(count, body.data(), sizeof count);
    return body;
}

std::string SQLITE_CATALOGUE_T::category_list() {
    std::string body(sizeof(INT32_T), '\0');
    INT32_T count = 0;
    for (; categories_.step(); count++) {
        put_integer(&body, categories_.integer(0));
        put_text(&body, categories_.get(), 1);
        put_integer(&body, categories_.integer(2));
    }
    encode_int_data_to_buffer(count, body.data(), sizeof count);
    return body;
}

std::string SQLITE_CATALOGUE_T::poster(int64_t number) {
    poster_.bind(1, number);
    poster_.step();
    std::string path = poster_.text(0);
    poster_.reset();
    return path;
}

} // namespace bench
