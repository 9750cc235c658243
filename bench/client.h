// One client that asks questions of every kind at random by way of the agent calls, and compares each reply
// with what the library is known to hold.
#ifndef TAVISYS_BENCH_CLIENT_H
#define TAVISYS_BENCH_CLIENT_H

#include <array>
#include <random>

#include "known.h"
#include "record.h"

namespace bench {

enum QUESTION_E : size_t {
    ASK_UUID,
    ASK_VERSION,
    ASK_STATUS,
    ASK_SYSTEM,
    ASK_CATEGORIES,
    ASK_FILTERS,
    ASK_PAGE,
    ASK_FILTERED_PAGE,
    ASK_TOUCH_PAGE,
    ASK_DETAIL,
    ASK_POSTER,
    ASK_DISKS,
    ASK_MOVIE_COUNT,
    ASK_TRANSFER,
    QUESTIONS
};
extern const std::array<const char *, QUESTIONS> NAME_OF_QUESTION;

struct RECORD_T {
    std::array<TIMES_T, QUESTIONS> times;
    uint64_t walks = 0;       // through all pages of a list
    uint64_t asked_again = 0; // for a movie whose document had been read anew, under its new id
};

class CLIENT_T {
public:
    // `most`: what a call may take.
    CLIENT_T(const KNOWN_T &known, FAILURES_T *failures, CLOCK_T::duration most, unsigned seed)
        : known_(known), failures_(failures), most_(most), random_(seed) {}

    // One question, or all pages of a list.
    void ask_something();
    const RECORD_T &record() const { return record_; }

private:
    template <class CALL>
    RTSTATUS timed(QUESTION_E question, RTSTATUS want, CALL call);
    void check(bool right, QUESTION_E question, const std::string &what);
    size_t below(size_t end) { return std::uniform_int_distribution<size_t>(0, end - 1)(random_); }

    void ask_uuid();
    void ask_version();
    void ask_status();
    void ask_system();
    void ask_categories();
    void ask_filters();
    void ask_page();
    void ask_filtered_page();
    void ask_touch_page();
    void ask_detail();
    void ask_poster();
    void ask_disks();
    void ask_movie_count();
    void ask_transfer();
    void walk();

    PAGE_REQUEST_T some_page(KNOWN_T::LIST_KEY_T key, const PLACES_T **list);
    void check_page(QUESTION_E question, const PAGE_REQUEST_T &request, const PLACES_T &list);
    void check_movies(QUESTION_E question, const PAGE_REQUEST_T &request, const PLACES_T &list,
                      const TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T &page);
    INT32_T id_of(size_t place);
    void check_detail(const MOVIE_T &movie, const TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T &detail);

    const KNOWN_T &known_;
    FAILURES_T *failures_;
    const CLOCK_T::duration most_;
    std::minstd_rand random_;
    RECORD_T record_;
};

} // namespace bench

#endif
