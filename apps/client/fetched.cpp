#include "fetched.h"

#include <unordered_set>

#include "common/progress_bar.h"
#include "messages.h"
#include "metadata_document.h"
#include "server.h"
#include "style.h"
#include "terminal.h"
#include "text.h"

namespace client {

namespace {

using MOVIE_RECORD_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T;

constexpr int LONGEST_SHOWN_CODE = 40; // columns

// Writes one movie after the other and keeps the account.
class WRITING_T {
public:
    WRITING_T(const LIBRARY_FOLDER_T &folder, INT32_T movies) : folder_(folder) {
        account_.folder = folder.path();
        account_.movies = movies;
    }
    ~WRITING_T() { bar_.hide(); } // half of one is of no use to a message that follows
    WRITING_T(const WRITING_T &) = delete;
    WRITING_T &operator=(const WRITING_T &) = delete;

    void take(const MOVIE_RECORD_T &movie) {
        try {
            write(movie);
            account_.written++;
        } catch (const UNFIT_RECORD_T &unfit) {
            skip(movie, unfit.what());
        }
        const auto skipped = static_cast<int>(account_.skipped.size());
        bar_.show({account_.written + skipped, account_.movies, account_.written, skipped});
    }
    FETCHED_T account() { return std::move(account_); }

private:
    // The code of the document, not of the record, is the one that a server will know the movie by.
    void write(const MOVIE_RECORD_T &movie) {
        const std::string document = metadata_document(movie);
        const std::string folder = folder_name(document_value(movie.movcode));
        if (!folders_.insert(folder).second)
            throw UNFIT_RECORD_T(messages::RECORD_REPEATS_CODE);
        folder_.write(folder, document);
    }

    void skip(const MOVIE_RECORD_T &movie, const char *reason) {
        bar_.hide();
        const std::string code = cut_to_width(printable(text_of(movie.movcode)), LONGEST_SHOWN_CODE);
        write_error(paint_error(fill(messages::RECORD_SKIPPED, {code, std::to_string(movie.mid), reason})));
        SKIPPED_MOVIE_T &skipped =
            account_.skipped.emplace_back(SKIPPED_MOVIE_T{movie.mid, std::nullopt, reason});
        if (movie.movcode != nullptr)
            skipped.movcode = movie.movcode;
    }

    const LIBRARY_FOLDER_T &folder_;
    FETCHED_T account_;
    std::unordered_set<std::string> folders_;
    common::PROGRESS_BAR_T bar_{messages::WRITING_DOCUMENTS.get(), common::ELSEWHERE_T::NOTHING,
                                messages::BAR_FAILED.get()};
};

} // namespace

FETCHED_T write_documents(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list,
                          const LIBRARY_FOLDER_T &folder) {
    INT32_T movies = 0;
    for_each_record(list, [&movies](const MOVIE_RECORD_T &) { movies++; });
    const INTERRUPT_GUARD_T interrupts;
    WRITING_T writing{folder, movies};
    for_each_record(list, [&writing](const MOVIE_RECORD_T &movie) {
        INTERRUPT_GUARD_T::wait(0);
        writing.take(movie);
    });
    return writing.account();
}

} // namespace client
