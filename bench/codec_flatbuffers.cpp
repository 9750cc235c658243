// FlatBuffers: one builder for all calls, which keeps its memory. Decoding verifies the body first, as
// bodies from a network have to be.
#include "codecs.h"
#include "records_generated.h"

namespace bench {

namespace {

using BUILDER_T = flatbuffers::FlatBufferBuilder;
using TEXT_T = flatbuffers::Offset<flatbuffers::String>;
template <class TABLE>
using TABLES_T = flatbuffers::Offset<flatbuffers::Vector<flatbuffers::Offset<TABLE>>>;
using INTEGERS_T = flatbuffers::Offset<flatbuffers::Vector<int32_t>>;

using BASIC_T = TP_TAVISYS_BASIC_MOVIE_INFORMATION_T;
using MOVIE_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T;
using VALUES_T = TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T;
using PERSONS_T = TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T;
using YEARS_T = TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T;
using VIDEOS_T = TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T;

// ---- From records

TEXT_T put(BUILDER_T &to, const INT8_T *text) {
    return text == nullptr ? TEXT_T() : to.CreateString(text);
}
INTEGERS_T put(BUILDER_T &to, const BASIC_MOVIE_IDS_T *ids) {
    return ids == nullptr ? INTEGERS_T() : to.CreateVector(ids->ids, static_cast<size_t>(ids->num));
}
template <class TABLE, class NODE, class PUT>
TABLES_T<TABLE> put_list(BUILDER_T &to, const NODE *list, PUT put_entry) {
    std::vector<flatbuffers::Offset<TABLE>> entries;
    entries.reserve(length_of(list));
    for (; list != nullptr; list = next_of(list))
        entries.push_back(put_entry(content_of(*list)));
    return to.CreateVector(entries);
}
template <class NODE>
TABLES_T<fb::Value> put_names(BUILDER_T &to, const NODE *list) {
    return put_list<fb::Value>(to, list,
                               [&](const auto &value) { return fb::CreateValue(to, put(to, value.name)); });
}
TABLES_T<fb::Person> put_persons(BUILDER_T &to, const PERSONS_T *list) {
    return put_list<fb::Person>(to, list, [&](const auto &person) {
        const TEXT_T code = put(to, person.code);
        return fb::CreatePerson(to, code, put(to, person.name));
    });
}

flatbuffers::Offset<fb::BasicMovie> put(BUILDER_T &to, const BASIC_T &movie) {
    const TEXT_T movcode = put(to, movie.movcode);
    const TEXT_T movname = put(to, movie.movname);
    const TEXT_T nposter = put(to, movie.nposter);
    const TEXT_T bposter = put(to, movie.bposter);
    const TEXT_T acronym = put(to, movie.acronym);
    const TEXT_T hdsn = put(to, movie.hdsn);
    const INTEGERS_T kinds = put(to, movie.kind_ids);
    const INTEGERS_T areas = put(to, movie.area_ids);
    const INTEGERS_T dimensions = put(to, movie.dimension_ids);
    const INTEGERS_T resolutions = put(to, movie.resolution_ids);
    return fb::CreateBasicMovie(to, movie.movid, movcode, movname, movie.score, movie.puttime, movie.pubtime,
                                nposter, bposter, acronym, movie.category_id, movie.year_id, kinds, areas,
                                dimensions, resolutions, hdsn, movie.index);
}
flatbuffers::Offset<fb::Page> put_root(BUILDER_T &to, const PAGE_T &page) {
    const auto list =
        put_list<fb::BasicMovie>(to, page.list, [&](const BASIC_T &movie) { return put(to, movie); });
    const TP_PAGE_INFORMATION &numbers = page.pageinfo;
    return fb::CreatePage(to, numbers.pagenum, numbers.pagesize, numbers.totalpages, numbers.totalmovies,
                          numbers.replymovies, list);
}

INTEGERS_T put_years(BUILDER_T &to, const YEARS_T *list) {
    std::vector<int32_t> years;
    for (; list != nullptr; list = next_of(list))
        years.push_back(list->info->year);
    return to.CreateVector(years);
}
flatbuffers::Offset<fb::Posters> put(BUILDER_T &to, const TP_TAVISYS_DBDATA_POSTER_INFORMATION_T *posters) {
    if (posters == nullptr)
        return {};
    const TEXT_T big = put(to, posters->big);
    const TEXT_T middle = put(to, posters->middle);
    return fb::CreatePosters(to, big, middle, put(to, posters->small));
}
flatbuffers::Offset<fb::TransferVideo> put(BUILDER_T &to,
                                           const TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T &video) {
    const TEXT_T name = put(to, video.name);
    const TEXT_T filepath = put(to, video.filepath);
    return fb::CreateTransferVideo(to, video.vid, video.seqno, name, filepath, put(to, video.mp4));
}
flatbuffers::Offset<fb::Movie> put(BUILDER_T &to, const MOVIE_T &movie) {
    const TEXT_T movcode = put(to, movie.movcode);
    const TEXT_T movnamech = put(to, movie.movnamech);
    const TEXT_T movnameen = put(to, movie.movnameen);
    const TEXT_T imdbvalue = put(to, movie.imdbvalue);
    const TEXT_T acronym = put(to, movie.acronym);
    const auto dimensions = put_names(to, movie.dimension_list);
    const auto resolutions = put_names(to, movie.resolution_list);
    const auto categories = put_names(to, movie.category_list);
    const auto kinds = put_names(to, movie.kind_list);
    const auto areas = put_names(to, movie.area_list);
    const auto directors = put_persons(to, movie.director_list);
    const auto actors = put_persons(to, movie.actor_list);
    const INTEGERS_T years = put_years(to, movie.year_list);
    const auto posters = put(to, movie.posters);
    const TEXT_T summary = put(to, movie.summary);
    const auto videos =
        put_list<fb::TransferVideo>(to, movie.video_list, [&](const auto &video) { return put(to, video); });
    return fb::CreateMovie(to, movie.mid, movcode, movnamech, movnameen, imdbvalue, acronym, dimensions,
                           resolutions, categories, kinds, areas, directors, actors, years, movie.puttime,
                           movie.pubtime, movie.putintime, movie.duration, posters, summary, movie.episodes,
                           videos);
}
flatbuffers::Offset<fb::Movies> put_root(BUILDER_T &to, const MOVIES_T &movies) {
    return fb::CreateMovies(
        to, put_list<fb::Movie>(to, &movies, [&](const MOVIE_T &movie) { return put(to, movie); }));
}

flatbuffers::Offset<fb::LabelledList> put(BUILDER_T &to, const TP_MOVIE_FILTER_KVP_INFORMATION_T *record) {
    if (record == nullptr)
        return {};
    const TEXT_T desc = put(to, record->desc);
    return fb::CreateLabelledList(to, desc, put_names(to, record->list));
}
flatbuffers::Offset<fb::LabelledValue> put(BUILDER_T &to, const TP_MOVIE_SINGLE_KVP_INFORMATION_T *record) {
    if (record == nullptr)
        return {};
    const TEXT_T desc = put(to, record->desc);
    return fb::CreateLabelledValue(to, desc, put(to, record->value));
}
flatbuffers::Offset<fb::Detail> put_root(BUILDER_T &to, const DETAIL_T &detail) {
    const TEXT_T name = put(to, detail.name);
    flatbuffers::Offset<fb::Dimension> dimension;
    if (detail.dimension_info != nullptr)
        dimension = fb::CreateDimension(to, detail.dimension_info->id, put(to, detail.dimension_info->name));
    const TEXT_T poster = put(to, detail.poster);
    const auto directors = put(to, detail.director_info);
    const auto actors = put(to, detail.actor_info);
    const auto kinds = put(to, detail.kind_info);
    const auto duration = put(to, detail.duration_info);
    const auto summary = put(to, detail.summary_info);
    const auto videos = put_list<fb::Video>(to, detail.video_list, [&](const auto &video) {
        const TEXT_T video_name = put(to, video.name);
        return fb::CreateVideo(to, video.id, video.seqno, video_name, put(to, video.mp4));
    });
    return fb::CreateDetail(to, name, detail.year, dimension, poster, directors, actors, kinds, duration,
                            summary, detail.videos, videos);
}

flatbuffers::Offset<fb::Partition> put(BUILDER_T &to, const TP_TAVISYS_PARTITION_INFORMATION_T &partition) {
    const TEXT_T devname = put(to, partition.devname);
    const TEXT_T uuid = put(to, partition.uuid);
    return fb::CreatePartition(to, partition.seqno, devname, uuid, put(to, partition.mntp));
}
flatbuffers::Offset<fb::Disks> put_root(BUILDER_T &to, const DISKS_T &disks) {
    return fb::CreateDisks(to, put_list<fb::Disk>(to, &disks, [&](const DISKS_T &disk) {
                               const TEXT_T devname = put(to, disk.info->devname);
                               const TEXT_T serialno = put(to, disk.info->serialno);
                               const auto partitions = put_list<fb::Partition>(
                                   to, disk.list, [&](const auto &partition) { return put(to, partition); });
                               return fb::CreateDisk(to, devname, serialno, partitions);
                           }));
}

// ---- To records

INT8_T *get(const flatbuffers::String *from) {
    return from == nullptr ? nullptr : make_text(from->c_str(), from->size());
}
BASIC_MOVIE_IDS_T *get(const flatbuffers::Vector<int32_t> *from) {
    if (from == nullptr)
        return nullptr;
    auto *ids = make_ids(from->size());
    memcpy(ids->ids, from->data(), from->size() * sizeof(INT32_T));
    return ids;
}
template <class NODE, class ENTRIES, class GET>
NODE *get_list(const ENTRIES *entries, GET get_entry) {
    if (entries == nullptr)
        return nullptr;
    flatbuffers::uoffset_t i = 0;
    return make_list<NODE>(entries->size(), [&](auto &record) { get_entry(entries->Get(i++), record); });
}
template <class NODE, class ENTRIES>
NODE *get_names(const ENTRIES *entries) {
    return get_list<NODE>(entries, [](const auto *from, auto &value) { value.name = get(from->name()); });
}
template <class ENTRIES>
PERSONS_T *get_persons(const ENTRIES *entries) {
    return get_list<PERSONS_T>(entries, [](const auto *from, auto &person) {
        person = {get(from->code()), get(from->name())};
    });
}

void get(const fb::BasicMovie *from, BASIC_T &movie) {
    movie = {from->movid(),
             get(from->movcode()),
             get(from->movname()),
             from->score(),
             from->puttime(),
             from->pubtime(),
             get(from->nposter()),
             get(from->bposter()),
             get(from->acronym()),
             from->category_id(),
             from->year_id(),
             get(from->kind_ids()),
             get(from->area_ids()),
             get(from->dimension_ids()),
             get(from->resolution_ids()),
             get(from->hdsn()),
             from->index(),
             0,
             0};
}
PAGE_T *get_root(const fb::Page *from) {
    auto *page = make<PAGE_T>();
    page->pageinfo = {from->pagenum(), from->pagesize(), from->totalpages(), from->totalmovies(),
                      from->replymovies()};
    page->list = get_list<TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T>(
        from->list(), [](const auto *entry, BASIC_T &movie) { get(entry, movie); });
    return page;
}

void get(const fb::Movie *from, MOVIE_T &movie) {
    movie.mid = from->mid();
    movie.movcode = get(from->movcode());
    movie.movnamech = get(from->movnamech());
    movie.movnameen = get(from->movnameen());
    movie.imdbvalue = get(from->imdbvalue());
    movie.acronym = get(from->acronym());
    movie.dimension_list = get_names<VALUES_T>(from->dimension_list());
    movie.resolution_list = get_names<VALUES_T>(from->resolution_list());
    movie.category_list = get_names<VALUES_T>(from->category_list());
    movie.kind_list = get_names<VALUES_T>(from->kind_list());
    movie.area_list = get_names<VALUES_T>(from->area_list());
    movie.director_list = get_persons(from->director_list());
    movie.actor_list = get_persons(from->actor_list());
    movie.year_list =
        get_list<YEARS_T>(from->year_list(), [](int32_t value, auto &year) { year.year = value; });
    movie.puttime = from->puttime();
    movie.pubtime = from->pubtime();
    movie.putintime = from->putintime();
    movie.duration = from->duration();
    if (const fb::Posters *posters = from->posters(); posters != nullptr) {
        movie.posters = make<TP_TAVISYS_DBDATA_POSTER_INFORMATION_T>();
        *movie.posters = {get(posters->big()), get(posters->middle()), get(posters->small())};
    }
    movie.summary = get(from->summary());
    movie.episodes = from->episodes();
    movie.video_list = get_list<VIDEOS_T>(from->video_list(), [](const auto *video, auto &to) {
        to = {video->vid(), video->seqno(), get(video->name()), get(video->filepath()), get(video->mp4())};
    });
}
MOVIES_T *get_root(const fb::Movies *from) {
    return get_list<MOVIES_T>(from->list(), [](const auto *entry, MOVIE_T &movie) { get(entry, movie); });
}

TP_MOVIE_FILTER_KVP_INFORMATION_T *get(const fb::LabelledList *from) {
    if (from == nullptr)
        return nullptr;
    auto *record = make<TP_MOVIE_FILTER_KVP_INFORMATION_T>();
    *record = {get(from->desc()), get_names<TP_MOVIE_FILTER_INFORMATION_LIST_T>(from->list())};
    return record;
}
TP_MOVIE_SINGLE_KVP_INFORMATION_T *get(const fb::LabelledValue *from) {
    if (from == nullptr)
        return nullptr;
    auto *record = make<TP_MOVIE_SINGLE_KVP_INFORMATION_T>();
    *record = {get(from->desc()), get(from->value())};
    return record;
}
TP_MOVIE_DIMENSION_INFORMATION_T *get(const fb::Dimension *from) {
    if (from == nullptr)
        return nullptr;
    auto *record = make<TP_MOVIE_DIMENSION_INFORMATION_T>();
    *record = {from->id(), get(from->name())};
    return record;
}
DETAIL_T *get_root(const fb::Detail *from) {
    auto *detail = make<DETAIL_T>();
    *detail = {get(from->name()),
               from->year(),
               get(from->dimension_info()),
               get(from->poster()),
               get(from->director_info()),
               get(from->actor_info()),
               get(from->kind_info()),
               get(from->duration_info()),
               get(from->summary_info()),
               from->videos(),
               nullptr};
    detail->video_list = get_list<TP_TAVISYS_VIDEO_INFORMATION_LIST_T>(
        from->video_list(), [](const fb::Video *video, auto &to) {
            to = {video->id(), video->seqno(), get(video->name()), get(video->mp4())};
        });
    return detail;
}

DISKS_T *get_root(const fb::Disks *from) {
    return get_list<DISKS_T>(from->list(), [](const fb::Disk *entry, DISKS_T &disk) {
        disk.info = make<TP_TAVISYS_HARDDISK_INFORMATION_T>();
        *disk.info = {get(entry->devname()), get(entry->serialno())};
        disk.list = get_list<TP_TAVISYS_PARTITION_INFORMATION_LIST_T>(
            entry->list(), [](const fb::Partition *partition, auto &to) {
                to = {partition->seqno(), get(partition->devname()), get(partition->uuid()),
                      get(partition->mntp())};
            });
    });
}

// ----

template <class ROOT, class RECORD>
BODY_T encode(const RECORD &record, size_t) {
    static BUILDER_T builder(1024 * 1024);
    builder.Clear();
    builder.Finish(put_root(builder, record));
    BODY_T body(builder.GetSize());
    memcpy(body.data(), builder.GetBufferPointer(), builder.GetSize());
    return body;
}
template <class ROOT, class RECORD>
RECORD *decode(const BODY_T &body) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(body.data());
    flatbuffers::Verifier verifier(bytes, body.length(), 64, 100 * 1000 * 1000);
    if (!verifier.VerifyBuffer<ROOT>())
        abort();
    return get_root(flatbuffers::GetRoot<ROOT>(bytes));
}

template <class ROOT, class RECORD>
CODEC_T<RECORD> codec() {
    return {"flatbuffers", encode<ROOT, RECORD>, decode<ROOT, RECORD>, release};
}

} // namespace

template <>
CODEC_T<PAGE_T> flatbuffers_codec() {
    return codec<fb::Page, PAGE_T>();
}
template <>
CODEC_T<MOVIES_T> flatbuffers_codec() {
    return codec<fb::Movies, MOVIES_T>();
}
template <>
CODEC_T<DETAIL_T> flatbuffers_codec() {
    return codec<fb::Detail, DETAIL_T>();
}
template <>
CODEC_T<DISKS_T> flatbuffers_codec() {
    return codec<fb::Disks, DISKS_T>();
}

} // namespace bench
