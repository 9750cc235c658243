// The movies of one category in an SQLite database in memory: what the queries are measured against.
//
// It is given its best. Every list that a page can be taken from (the category, each kind, area, year and
// dimension) is kept whole and in order, with the rank of each movie as the key and all that a page shows
// of it in the row, so that a page is one range of one covering index at any depth. Totals stand in a table.
// A page with several filters walks the shortest of their lists. All statements are prepared.
#ifndef TAVISYS_BENCH_SQLITE_CATALOGUE_H
#define TAVISYS_BENCH_SQLITE_CATALOGUE_H

#include <functional>
#include <map>
#include <memory>
#include <sqlite3.h>
#include <string>

#include "tavisys.h"

namespace bench {

using PAGE_REQUEST_T = TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T;
// Asks the server; each reply is one body.
using ASK_T = std::function<std::string(INT32_T type, const void *request, INT32_T length)>;

class STATEMENT_T {
public:
    STATEMENT_T() = default;
    STATEMENT_T(sqlite3 *database, const std::string &sql);
    void bind(int at, int64_t value);
    void bind(int at, const INT8_T *text);
    void bind(int at, const std::string &text);
    bool step();
    void reset();
    INT32_T integer(int column) const;
    const INT8_T *text(int column) const; // until the next step
    std::string bytes(int column) const;
    sqlite3_stmt *get() const { return statement_.get(); }

private:
    struct FINALIZE_T {
        void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
    };
    std::unique_ptr<sqlite3_stmt, FINALIZE_T> statement_;
};

class SQLITE_CATALOGUE_T {
public:
    // Fills the database with what the server says of the category, in the given order.
    SQLITE_CATALOGUE_T(const ASK_T &ask, INT32_T cid, INT32_T orderby);

    // The bodies that the server sends for the same requests.
    std::string page(const PAGE_REQUEST_T &request);
    std::string detail(INT32_T mid);
    std::string filter_list(INT32_T type);
    std::string category_list();
    std::string poster(int64_t number); // the movie of that number, from 1
    int64_t posters() const { return posters_; }

private:
    struct CLOSE_T {
        void operator()(sqlite3 *database) const { sqlite3_close(database); }
    };
    struct LIST_T {
        INT32_T number;
        INT32_T total;
    };

    void run(const std::string &sql);
    void fill_movies(const ASK_T &ask, INT32_T cid, INT32_T orderby);
    void fill_details(const ASK_T &ask, INT32_T cid);
    void fill_lists();
    void fill_menus(const ASK_T &ask, INT32_T cid);
    void prepare();
    LIST_T list_of(INT32_T type, INT32_T value);
    INT32_T count(STATEMENT_T *statement, const PAGE_REQUEST_T &request, INT32_T list);

    std::unique_ptr<sqlite3, CLOSE_T> database_;
    INT32_T cid_;
    int64_t posters_ = 0;
    STATEMENT_T list_, page_, filtered_, filtered_total_, detail_, values_, videos_, menu_, categories_,
        poster_;
};

} // namespace bench

#endif
