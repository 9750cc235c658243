// The work whose instructions scripts/bench.sh --check counts, on fixed records of the sample library.
//
//     instructions WORK
//
// WORK: encode, decode, parse or page. To be run under valgrind --tool=callgrind --collect-atstart=no
// --toggle-collect=measured_work: what runs before and after that function isn't counted.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <string>

#include "corpus.h"
#include "metadata_parse.h"

namespace {

using namespace bench;

constexpr int TIMES = 100;

struct WORK_T {
    const char *name;
    std::function<void()> once;
};

} // namespace

// Known to callgrind by its name, so it is neither mangled nor inlined.
extern "C" [[gnu::noinline]] void measured_work(const std::function<void()> &once) {
    for (int i = 0; i < TIMES; i++)
        once();
}

int main(int argc, char **argv) {
    server::STORE_T loaded;
    load(SAMPLE_LIBRARY, &loaded, 1); // one thread: the same order, the same ids, every time
    server::STORE_T store;            // on a made-up disk: each machine's own has another serial number
    publish_partition(loaded, loaded.snapshot()->movies().size(), &store);
    const CORPUS_T corpus = make_corpus(store, 1);
    const BODY_T body = ask(store, TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, &FIRST_PAGE, sizeof FIRST_PAGE);

    const std::function<void()> encode = [&] {
        PVOID encoded = nullptr;
        INT32_T length = 0;
        encode_tavisys_basic_movie_ext_information_to_message(corpus.page, &encoded, &length);
        safe_free(encoded);
    };
    const std::function<void()> decode = [&] {
        PAGE_T *page = nullptr;
        decode_tavisys_basic_movie_ext_information_from_message(body.data(),
                                                                static_cast<INT32_T>(body.length()), &page);
        release(&page);
    };
    std::string document;
    std::getline(std::ifstream(SAMPLE_LIBRARY "/sda/sda1/TV1993-0015/metadata.xml"), document, '\0');
    const std::function<void()> parse = [&] {
        DBDATA_MOVIE_INFORMATION_T *movie = nullptr;
        TAVI_METADATA_FAILURE_E failure{};
        get_tavi_metadata_information_from_document(document.data(), static_cast<INT32_T>(document.size()),
                                                    &movie, &failure);
        if (movie == nullptr)
            exit(EXIT_FAILURE);
        release_dbdata_movie_information(&movie);
    };
    const std::function<void()> page = [&] {
        ask(store, TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO, &FIRST_PAGE, sizeof FIRST_PAGE);
    };
    for (const WORK_T &work :
         {WORK_T{"encode", encode}, WORK_T{"decode", decode}, WORK_T{"parse", parse}, WORK_T{"page", page}}) {
        if (argc != 2 || strcmp(argv[1], work.name) != 0)
            continue;
        work.once(); // what happens only the first time isn't counted
        measured_work(work.once);
        return EXIT_SUCCESS;
    }
    fprintf(stderr, "usage: %s encode|decode|parse|page\n", argv[0]);
    return EXIT_FAILURE;
}
