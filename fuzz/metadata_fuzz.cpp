// The metadata parser on any document.
//
// Held for each: the silent and the printing call agree, a refusal names its reason and leaves the
// out-argument alone, and a movie that comes out keeps the rules of the catalogue.
#include <initializer_list>
#include <set>

#include "fuzz.h"
#include "metadata_parse.h"
#include "support_netif.h"

using namespace fuzz;

namespace {

using MOVIE_T = DBDATA_MOVIE_INFORMATION_T;

constexpr size_t LONGEST_VALUE = 1023;
constexpr size_t LONGEST_DESCRIPTION = 20479;

// Length of the UTF-8 character at the beginning of the text; 0 when there is none.
size_t character_length(std::string_view text) {
    const auto lead = static_cast<unsigned char>(text[0]);
    const size_t length = lead < 0x80 ? 1 : lead < 0xC2 ? 0 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    if (length == 0 || length > text.size() || lead > 0xF4)
        return 0;
    for (size_t i = 1; i < length; i++)
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80)
            return 0;
    return length;
}

void require_text(const INT8_T *text, size_t longest = LONGEST_VALUE) {
    require(text != nullptr, "a text is missing");
    std::string_view rest(text);
    require(rest.size() <= longest, "a text is longer than its room");
    while (!rest.empty()) {
        const size_t length = character_length(rest);
        require(length > 0, "half a character");
        rest.remove_prefix(length);
    }
}

template <class NODE, class LOOK>
size_t each(const NODE *list, LOOK look) {
    size_t count = 0;
    for (const NODE *node = list; node != nullptr; node = static_cast<const NODE *>(node->next), count++)
        look(*node->info);
    return count;
}

// The attributes and persons of a movie: each key once, "all" at the head of those that have it.
template <class NODE, class KEY>
size_t require_keys(const NODE *list, bool with_all, KEY key) {
    std::set<std::string_view> keys;
    const size_t count = each(list, [&](const auto &info) {
        require_text(key(info));
        require(keys.insert(key(info)).second, "a key stands twice");
    });
    require(!with_all || (list != nullptr && key(*list->info) == std::string_view(TAVISYS_NAME_OF_ALL)),
            "all does not head the list");
    return count;
}

void require_posters(const MOVIE_T &movie) {
    const DBDATA_POSTER_INFORMATION_T *posters = movie.posters;
    require(posters != nullptr, "no posters");
    for (const INT8_T *path : {posters->big, posters->middle, posters->small, posters->relative_big_path,
                               posters->relative_middle_path, posters->relative_small_path})
        require_text(path);
    for (const INT8_T *path : {posters->tv_big, posters->tv_middle, posters->tv_small})
        if (path != nullptr)
            require_text(path);
}

void require_movie(const MOVIE_T &movie) {
    require(movie.count == 1 && movie.info != nullptr, "no fresh movie");
    for (const INT8_T *text : {movie.info->movie_code, movie.info->movie_name_ch, movie.info->movie_name_en,
                               movie.imdbvalue, movie.summary})
        require_text(text);
    if (movie.description != nullptr)
        require_text(movie.description, LONGEST_DESCRIPTION);
    const auto by_name = [](const auto &info) { return info.name; };
    const auto by_code = [](const auto &info) {
        require_text(info.name);
        return info.code;
    };
    require_keys(movie.dimension_list, true, [](const auto &info) { return info.dimension; });
    require_keys(movie.resolution_list, true, [](const auto &info) { return info.resolution; });
    require(require_keys(movie.category_list, false, by_name) == 1, "not one category");
    require_keys(movie.kind_list, true, by_name);
    require_keys(movie.area_list, true, by_name);
    require_keys(movie.director_list, false, by_code);
    require_keys(movie.actor_list, false, by_code);
    require(movie.year_list != nullptr && movie.year_list->info->year == 0,
            "the year 0 does not head the list");
    require_posters(movie);
    const size_t videos = each(movie.video_list, [](const auto &video) {
        require_text(video.name);
        require_text(video.filepath);
    });
    require(videos > 0, "no videos");
}

// Whether a document surely declares an entity. It can't stand in the text of one, as a '<' can't; what may
// hold anything, or may be no ASCII, is left out.
bool declares_entity(std::string_view document) {
    if (document.find("<!ENTITY ") == std::string_view::npos)
        return false;
    for (const std::string_view doubt : {"<!--", "<?", "<![CDATA[", "SYSTEM", "PUBLIC", "encoding"})
        if (document.find(doubt) != std::string_view::npos)
            return false;
    return document.starts_with('<') && document.find('\0') == std::string_view::npos;
}

void require_agreement(const MOVIE_T *silent, const MOVIE_T *aloud) {
    require((silent == nullptr) == (aloud == nullptr), "the silent and the printing call differ");
    if (silent == nullptr)
        return;
    require(strcmp(silent->info->movie_code, aloud->info->movie_code) == 0 &&
                strcmp(silent->summary, aloud->summary) == 0 && silent->publish_time == aloud->publish_time &&
                silent->episodes == aloud->episodes,
            "the silent and the printing call made different movies");
}

} // namespace

// The address of a network interface is nothing that a document decides: without one, ids count from 1.
RTSTATUS get_netif_address(const INT8_T *, INT8_T *, INT32_T) {
    return -1;
}

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    start();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    INT8_T mark = 0;
    auto *const untouched = reinterpret_cast<MOVIE_T *>(&mark);
    MOVIE_T *movie = untouched;
    TAVI_METADATA_FAILURE_E failure = TAVI_METADATA_MEMORY;
    const RTSTATUS result =
        get_tavi_metadata_information_from_document(data, static_cast<INT32_T>(size), &movie, &failure);
    require((result == 0) == (failure == TAVI_METADATA_OK) && (result == 0) == (movie != untouched),
            "result, reason and movie differ");
    const std::string_view document(reinterpret_cast<const char *>(data), size);
    require(failure == TAVI_METADATA_NOT_WELL_FORMED || !declares_entity(document), "an entity is declared");
    require(failure != TAVI_METADATA_MEMORY && failure != TAVI_METADATA_PUT_TIME, "a reason that can't be");
    if (result == 0)
        require_movie(*movie);
    else
        movie = nullptr;

    // The printing call takes a text that ends at its NUL. Three of four inputs go without it: it costs as
    // much again, and its parsing is the same.
    if (size % 4 == 0 && document.find('\0') == std::string_view::npos) {
        MOVIE_T *again = nullptr;
        const std::string text(document);
        get_tavi_metadata_information_from_string(text.c_str(), &again);
        require_agreement(movie, again);
        release_dbdata_movie_information(&again);
    }
    release_dbdata_movie_information(&movie);
    return 0;
}
