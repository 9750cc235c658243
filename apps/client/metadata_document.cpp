#include "metadata_document.h"

#include <libxml/xmlwriter.h>

#include <array>
#include <cstdio>
#include <memory>
#include <new>
#include <string_view>

#include "messages.h"
#include "metadata_parse.h"
#include "server.h"
#include "terminal.h"
#include "text.h"

namespace client {

namespace {

using MOVIE_RECORD_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T;
using FILTER_T = TP_TAVISYS_DBDATA_FILTER_INFORMATION_T;
using FILTER_LIST_T = TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T;
using PERSON_T = TP_TAVISYS_DBDATA_PERSON_INFORMATION_T;
using PERSON_LIST_T = TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T;
using VIDEO_T = TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T;
using LOADED_T = OWNED_T<DBDATA_MOVIE_INFORMATION_T, release_dbdata_movie_information>;

constexpr std::size_t LONGEST_VALUE = 1023;       // bytes that loading keeps of a value
constexpr int LARGEST_DOCUMENT = 4 * 1024 * 1024; // bytes; tavisys-server reads no larger one
constexpr std::string_view ALL = TAVISYS_NAME_OF_ALL;

bool is_xml_character(char32_t value) {
    if (value < 0x20)
        return value == '\t' || value == '\n' || value == '\r';
    return value != 0xFFFE && value != 0xFFFF; // surrogates are no code points of UTF-8
}

// Writes the elements in the order in which they are asked for. Only memory can fail it.
class WRITER_T {
public:
    WRITER_T() : buffer_(xmlBufferCreate()), writer_(xmlNewTextWriterMemory(buffer_.get(), 0)) {
        if (buffer_ == nullptr || writer_ == nullptr)
            throw std::bad_alloc();
        xmlBufferSetAllocationScheme(buffer_.get(), XML_BUFFER_ALLOC_DOUBLEIT);
        check(xmlTextWriterSetIndent(writer_.get(), 1));
        check(xmlTextWriterStartDocument(writer_.get(), nullptr, "UTF-8", nullptr));
    }

    template <class WRITE>
    void element(const char *name, WRITE write) {
        check(xmlTextWriterStartElement(writer_.get(), xml(name)));
        write();
        check(xmlTextWriterEndElement(writer_.get()));
    }
    // Markup and line ends that a reader would normalise are escaped on the way.
    void value(const char *name, const INT8_T *text) {
        check(xmlTextWriterWriteElement(writer_.get(), xml(name), xml(document_value(text).c_str())));
        if (xmlBufferLength(buffer_.get()) >
            LARGEST_DOCUMENT) // before a peer's endless list fills the memory
            throw UNFIT_RECORD_T(messages::RECORD_TOO_LARGE);
    }
    void value(const char *name, INT32_T number) { value(name, std::to_string(number).c_str()); }

    std::string finish() {
        check(xmlTextWriterEndDocument(writer_.get()));
        check(xmlTextWriterFlush(writer_.get()));
        const auto size = static_cast<std::size_t>(xmlBufferLength(buffer_.get()));
        if (size > LARGEST_DOCUMENT)
            throw UNFIT_RECORD_T(messages::RECORD_TOO_LARGE);
        return {reinterpret_cast<const char *>(xmlBufferContent(buffer_.get())), size};
    }

private:
    struct FREE_BUFFER_T {
        void operator()(xmlBuffer *buffer) const { xmlBufferFree(buffer); }
    };
    struct FREE_WRITER_T {
        void operator()(xmlTextWriter *writer) const { xmlFreeTextWriter(writer); }
    };

    static const xmlChar *xml(const char *text) { return reinterpret_cast<const xmlChar *>(text); }
    static void check(int result) {
        if (result < 0)
            throw std::bad_alloc();
    }

    std::unique_ptr<xmlBuffer, FREE_BUFFER_T> buffer_;
    std::unique_ptr<xmlTextWriter, FREE_WRITER_T> writer_;
};

// Loading reads year-month-day as three integers of either sign, and adds them up again. So every number is
// written as the three that give it back, whether or not there is such a day.
void write_date(WRITER_T &to, const char *name, INT32_T date) {
    std::array<char, sizeof "-214748--36--48"> text{};
    snprintf(text.data(), text.size(), "%d-%02d-%02d", date / 10000, date / 100 % 100, date % 100);
    to.value(name, text.data());
}

// A document has one dimension and one resolution, to which loading adds "全部", unless it is that itself;
// where it has none, loading takes the usual one.
void write_single(WRITER_T &to, const char *element, const char *name, const FILTER_LIST_T *list) {
    const INT8_T *own = nullptr;
    for_each_record(list, [&own](const FILTER_T &filter) {
        if (filter.name != nullptr && (own == nullptr || own == ALL))
            own = filter.name;
    });
    if (own != nullptr)
        to.element(element, [&] { to.value(name, own); });
}

void write_category(WRITER_T &to, const FILTER_LIST_T *list) {
    const INT8_T *first = nullptr;
    for_each_record(list,
                    [&first](const FILTER_T &filter) { first = first == nullptr ? filter.name : first; });
    to.value("category", first); // none is filed where an unknown one is
}

// Loading puts "全部" in front. The kind that it adds for a 3D movie is written like the others, so that it
// keeps its place among them.
void write_names(WRITER_T &to, const char *all, const char *each, const char *name,
                 const FILTER_LIST_T *list) {
    to.element(all, [&] {
        for_each_record(list, [&](const FILTER_T &filter) {
            if (filter.name != nullptr && filter.name != ALL)
                to.element(each, [&] { to.value(name, filter.name); });
        });
    });
}

struct PERSON_TAGS_T {
    const char *all;
    const char *each;
    const char *code;
    const char *name;
};

void write_persons(WRITER_T &to, const PERSON_TAGS_T &tags, const PERSON_LIST_T *list) {
    to.element(tags.all, [&] {
        for_each_record(list, [&](const PERSON_T &person) {
            to.element(tags.each, [&] {
                to.value(tags.code, person.code);
                to.value(tags.name, person.name);
            });
        });
    });
}

void write_posters(WRITER_T &to, const TP_TAVISYS_DBDATA_POSTER_INFORMATION_T *posters) {
    to.element("poster", [&] {
        to.value("poster_b", posters == nullptr ? nullptr : posters->big);
        to.value("poster_m", posters == nullptr ? nullptr : posters->middle);
        to.value("poster_s", posters == nullptr ? nullptr : posters->small);
    });
}

void write_videos(WRITER_T &to, const TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T *list) {
    to.element("videos", [&] {
        for_each_record(list, [&](const VIDEO_T &video) {
            to.element("video", [&] {
                to.value("video_seqno", video.seqno);
                to.value("video_name", video.name);
                to.value("video_filepath", video.filepath);
            });
        });
    });
}

// The long text and the posters for televisions aren't handed on, and may be missing. The years follow from
// the day of publishing.
void write_movie(WRITER_T &to, const MOVIE_RECORD_T &movie) {
    to.element("movie", [&] {
        to.value("movie_code", movie.movcode);
        to.value("movie_name_ch", movie.movnamech);
        to.value("movie_name_en", movie.movnameen);
    });
    to.value("imdb_value", movie.imdbvalue);
    to.value("index", movie.acronym);
    write_single(to, "dimension_info", "dimension_name", movie.dimension_list);
    write_single(to, "resolution_info", "resolution_name", movie.resolution_list);
    write_category(to, movie.category_list);
    write_names(to, "kinds", "kind", "kind_name", movie.kind_list);
    write_names(to, "areas", "area", "area_name", movie.area_list);
    write_persons(to, {"directors", "director", "director_code", "director_name"}, movie.director_list);
    write_persons(to, {"actors", "actor", "actor_code", "actor_name"}, movie.actor_list);
    write_date(to, "put_time", movie.puttime);
    write_date(to, "publish_time", movie.pubtime);
    to.value("duration", movie.duration);
    write_posters(to, movie.posters);
    to.value("description", movie.summary);
    to.value("episodes", movie.episodes);
    write_videos(to, movie.video_list);
}

// What makes a document loadable is known to who loads it, such as the kinds that aren't allowed.
void check_loadable(const std::string &document) {
    const LIBRARY_SILENCE_T silence;
    DBDATA_MOVIE_INFORMATION_T *movie = nullptr;
    TAVI_METADATA_FAILURE_E failure = TAVI_METADATA_OK;
    const RTSTATUS result = get_tavi_metadata_information_from_document(
        document.data(), static_cast<INT32_T>(document.size()), &movie, &failure);
    const LOADED_T loaded{movie};
    if (result != 0)
        throw UNFIT_RECORD_T(fill(messages::RECORD_NOT_LOADABLE, {get_tavi_metadata_failure_text(failure)}));
}

} // namespace

std::string document_value(const INT8_T *value) {
    std::string result;
    for (std::string_view rest = value == nullptr ? "" : value; !rest.empty();) {
        const CODE_POINT_T c = first_code_point(rest);
        const std::size_t size = result.size();
        append_code_point(result, is_xml_character(c.value) ? c.value : REPLACEMENT);
        if (result.size() > LONGEST_VALUE) {
            result.resize(size);
            break;
        }
        rest.remove_prefix(c.size);
    }
    return result;
}

std::string metadata_document(const MOVIE_RECORD_T &movie) {
    if (movie.movcode == nullptr)
        throw UNFIT_RECORD_T(messages::RECORD_WITHOUT_CODE);
    if (movie.movnamech == nullptr)
        throw UNFIT_RECORD_T(messages::RECORD_WITHOUT_TITLE);
    if (movie.video_list == nullptr)
        throw UNFIT_RECORD_T(messages::RECORD_WITHOUT_VIDEO);
    WRITER_T to;
    to.element("metadata", [&] { write_movie(to, movie); });
    std::string document = to.finish();
    check_loadable(document);
    return document;
}

} // namespace client
