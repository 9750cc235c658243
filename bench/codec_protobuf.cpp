// protobuf at its best: one message for all calls, which keeps its memory.
#include "codec_protobuf.h"
#include "codecs.h"

namespace bench {

namespace {

using bench::from_message;
using bench::to_message;

using BASIC_T = TP_TAVISYS_BASIC_MOVIE_INFORMATION_T;
using MOVIE_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T;
using VALUES_T = TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T;
using PERSONS_T = TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T;
using YEARS_T = TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T;
using VIDEOS_T = TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T;

// ---- From records: each calls the setters of one message. A text that is missing isn't set.

#define SET(FIELD, TEXT)                                                                                     \
    if (const INT8_T *text = (TEXT); text != nullptr)                                                        \
    to->set_##FIELD(text)

void set(const BASIC_MOVIE_IDS_T &ids, pb::Ids *to) {
    to->mutable_id()->Add(ids.ids, ids.ids + ids.num);
}
void set(const BASIC_T &movie, pb::BasicMovie *to) {
    to->set_movid(movie.movid);
    SET(movcode, movie.movcode);
    SET(movname, movie.movname);
    to->set_score(movie.score);
    to->set_puttime(movie.puttime);
    to->set_pubtime(movie.pubtime);
    SET(nposter, movie.nposter);
    SET(bposter, movie.bposter);
    SET(acronym, movie.acronym);
    to->set_category_id(movie.category_id);
    to->set_year_id(movie.year_id);
    if (movie.kind_ids != nullptr)
        set(*movie.kind_ids, to->mutable_kind_ids());
    if (movie.area_ids != nullptr)
        set(*movie.area_ids, to->mutable_area_ids());
    if (movie.dimension_ids != nullptr)
        set(*movie.dimension_ids, to->mutable_dimension_ids());
    if (movie.resolution_ids != nullptr)
        set(*movie.resolution_ids, to->mutable_resolution_ids());
    SET(hdsn, movie.hdsn);
    to->set_index(movie.index);
}

template <class NODE, class MESSAGES>
void set_names(const NODE *list, MESSAGES *messages) {
    for (; list != nullptr; list = next_of(list)) {
        auto *to = messages->Add();
        SET(name, list->info->name);
    }
}
void set_persons(const PERSONS_T *list, google::protobuf::RepeatedPtrField<pb::Person> *messages) {
    for (; list != nullptr; list = next_of(list)) {
        auto *to = messages->Add();
        SET(code, list->info->code);
        SET(name, list->info->name);
    }
}
void set(const TP_TAVISYS_DBDATA_POSTER_INFORMATION_T &posters, pb::Posters *to) {
    SET(big, posters.big);
    SET(middle, posters.middle);
    SET(small, posters.small);
}
void set(const TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T &video, pb::TransferVideo *to) {
    to->set_vid(video.vid);
    to->set_seqno(video.seqno);
    SET(name, video.name);
    SET(filepath, video.filepath);
    SET(mp4, video.mp4);
}
void set(const MOVIE_T &movie, pb::Movie *to) {
    to->set_mid(movie.mid);
    SET(movcode, movie.movcode);
    SET(movnamech, movie.movnamech);
    SET(movnameen, movie.movnameen);
    SET(imdbvalue, movie.imdbvalue);
    SET(acronym, movie.acronym);
    set_names(movie.dimension_list, to->mutable_dimension_list());
    set_names(movie.resolution_list, to->mutable_resolution_list());
    set_names(movie.category_list, to->mutable_category_list());
    set_names(movie.kind_list, to->mutable_kind_list());
    set_names(movie.area_list, to->mutable_area_list());
    set_persons(movie.director_list, to->mutable_director_list());
    set_persons(movie.actor_list, to->mutable_actor_list());
    for (const YEARS_T *node = movie.year_list; node != nullptr; node = next_of(node))
        to->add_year_list(node->info->year);
    to->set_puttime(movie.puttime);
    to->set_pubtime(movie.pubtime);
    to->set_putintime(movie.putintime);
    to->set_duration(movie.duration);
    if (movie.posters != nullptr)
        set(*movie.posters, to->mutable_posters());
    SET(summary, movie.summary);
    to->set_episodes(movie.episodes);
    for (const VIDEOS_T *node = movie.video_list; node != nullptr; node = next_of(node))
        set(*node->info, to->add_video_list());
}
void to_message(const MOVIES_T &movies, pb::Movies *to) {
    for (const MOVIES_T *node = &movies; node != nullptr; node = next_of(node))
        set(*node->info, to->add_list());
}

void set(const TP_MOVIE_FILTER_KVP_INFORMATION_T *record, pb::Detail *detail,
         pb::LabelledList *(pb::Detail::*field)()) {
    if (record == nullptr)
        return;
    auto *to = (detail->*field)();
    SET(desc, record->desc);
    set_names(record->list, to->mutable_list());
}
void set(const TP_MOVIE_SINGLE_KVP_INFORMATION_T *record, pb::Detail *detail,
         pb::LabelledValue *(pb::Detail::*field)()) {
    if (record == nullptr)
        return;
    auto *to = (detail->*field)();
    SET(desc, record->desc);
    SET(value, record->value);
}
void set(const TP_MOVIE_DIMENSION_INFORMATION_T &dimension, pb::Dimension *to) {
    to->set_id(dimension.id);
    SET(name, dimension.name);
}
void set(const TP_TAVISYS_VIDEO_INFORMATION_T &video, pb::Video *to) {
    to->set_id(video.id);
    to->set_seqno(video.seqno);
    SET(name, video.name);
    SET(mp4, video.mp4);
}
void to_message(const DETAIL_T &detail, pb::Detail *to) {
    SET(name, detail.name);
    to->set_year(detail.year);
    if (detail.dimension_info != nullptr)
        set(*detail.dimension_info, to->mutable_dimension_info());
    SET(poster, detail.poster);
    set(detail.director_info, to, &pb::Detail::mutable_director_info);
    set(detail.actor_info, to, &pb::Detail::mutable_actor_info);
    set(detail.kind_info, to, &pb::Detail::mutable_kind_info);
    set(detail.duration_info, to, &pb::Detail::mutable_duration_info);
    set(detail.summary_info, to, &pb::Detail::mutable_summary_info);
    to->set_videos(detail.videos);
    for (const auto *node = detail.video_list; node != nullptr; node = next_of(node))
        set(*node->info, to->add_video_list());
}

void set(const TP_TAVISYS_PARTITION_INFORMATION_T &partition, pb::Partition *to) {
    to->set_seqno(partition.seqno);
    SET(devname, partition.devname);
    SET(uuid, partition.uuid);
    SET(mntp, partition.mntp);
}
void set(const DISKS_T &disk, pb::Disk *to) {
    SET(devname, disk.info->devname);
    SET(serialno, disk.info->serialno);
    for (const auto *node = disk.list; node != nullptr; node = next_of(node))
        set(*node->info, to->add_list());
}
void to_message(const DISKS_T &disks, pb::Disks *to) {
    for (const DISKS_T *node = &disks; node != nullptr; node = next_of(node))
        set(*node, to->add_list());
}

#undef SET

// ---- To records

#define TEXT(FIELD) (from.has_##FIELD() ? make_text(from.FIELD().data(), from.FIELD().size()) : nullptr)

BASIC_MOVIE_IDS_T *get(const pb::Ids &from) {
    auto *ids = make_ids(static_cast<size_t>(from.id_size()));
    memcpy(ids->ids, from.id().data(), static_cast<size_t>(ids->num) * sizeof(INT32_T));
    return ids;
}
void get(const pb::BasicMovie &from, BASIC_T &movie) {
    movie.movid = from.movid();
    movie.movcode = TEXT(movcode);
    movie.movname = TEXT(movname);
    movie.score = from.score();
    movie.puttime = from.puttime();
    movie.pubtime = from.pubtime();
    movie.nposter = TEXT(nposter);
    movie.bposter = TEXT(bposter);
    movie.acronym = TEXT(acronym);
    movie.category_id = from.category_id();
    movie.year_id = from.year_id();
    movie.kind_ids = from.has_kind_ids() ? get(from.kind_ids()) : nullptr;
    movie.area_ids = from.has_area_ids() ? get(from.area_ids()) : nullptr;
    movie.dimension_ids = from.has_dimension_ids() ? get(from.dimension_ids()) : nullptr;
    movie.resolution_ids = from.has_resolution_ids() ? get(from.resolution_ids()) : nullptr;
    movie.hdsn = TEXT(hdsn);
    movie.index = from.index();
}

// A list with a record for each of the messages: fill(message, record).
template <class NODE, class MESSAGES, class FILL>
NODE *get_list(const MESSAGES &messages, FILL fill) {
    auto message = messages.begin();
    return make_list<NODE>(static_cast<size_t>(messages.size()),
                           [&](auto &record) { fill(*message++, record); });
}
template <class NODE>
NODE *get_names(const google::protobuf::RepeatedPtrField<pb::Value> &messages) {
    return get_list<NODE>(messages, [](const pb::Value &from, auto &value) { value.name = TEXT(name); });
}
PERSONS_T *get_persons(const google::protobuf::RepeatedPtrField<pb::Person> &messages) {
    return get_list<PERSONS_T>(messages, [](const pb::Person &from, auto &person) {
        person.code = TEXT(code);
        person.name = TEXT(name);
    });
}
TP_TAVISYS_DBDATA_POSTER_INFORMATION_T *get(const pb::Posters &from) {
    auto *posters = make<TP_TAVISYS_DBDATA_POSTER_INFORMATION_T>();
    *posters = {TEXT(big), TEXT(middle), TEXT(small)};
    return posters;
}
void get(const pb::TransferVideo &from, TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T &video) {
    video = {from.vid(), from.seqno(), TEXT(name), TEXT(filepath), TEXT(mp4)};
}
void get(const pb::Movie &from, MOVIE_T &movie) {
    movie.mid = from.mid();
    movie.movcode = TEXT(movcode);
    movie.movnamech = TEXT(movnamech);
    movie.movnameen = TEXT(movnameen);
    movie.imdbvalue = TEXT(imdbvalue);
    movie.acronym = TEXT(acronym);
    movie.dimension_list = get_names<VALUES_T>(from.dimension_list());
    movie.resolution_list = get_names<VALUES_T>(from.resolution_list());
    movie.category_list = get_names<VALUES_T>(from.category_list());
    movie.kind_list = get_names<VALUES_T>(from.kind_list());
    movie.area_list = get_names<VALUES_T>(from.area_list());
    movie.director_list = get_persons(from.director_list());
    movie.actor_list = get_persons(from.actor_list());
    movie.year_list =
        get_list<YEARS_T>(from.year_list(), [](INT32_T value, auto &year) { year.year = value; });
    movie.puttime = from.puttime();
    movie.pubtime = from.pubtime();
    movie.putintime = from.putintime();
    movie.duration = from.duration();
    movie.posters = from.has_posters() ? get(from.posters()) : nullptr;
    movie.summary = TEXT(summary);
    movie.episodes = from.episodes();
    movie.video_list = get_list<VIDEOS_T>(
        from.video_list(), [](const pb::TransferVideo &message, auto &video) { get(message, video); });
}
MOVIES_T *from_message(const pb::Movies &from) {
    return get_list<MOVIES_T>(from.list(),
                              [](const pb::Movie &message, MOVIE_T &movie) { get(message, movie); });
}

TP_MOVIE_FILTER_KVP_INFORMATION_T *get(const pb::LabelledList &from) {
    auto *record = make<TP_MOVIE_FILTER_KVP_INFORMATION_T>();
    *record = {TEXT(desc), get_names<TP_MOVIE_FILTER_INFORMATION_LIST_T>(from.list())};
    return record;
}
TP_MOVIE_SINGLE_KVP_INFORMATION_T *get(const pb::LabelledValue &from) {
    auto *record = make<TP_MOVIE_SINGLE_KVP_INFORMATION_T>();
    *record = {TEXT(desc), TEXT(value)};
    return record;
}
TP_MOVIE_DIMENSION_INFORMATION_T *get(const pb::Dimension &from) {
    auto *record = make<TP_MOVIE_DIMENSION_INFORMATION_T>();
    *record = {from.id(), TEXT(name)};
    return record;
}
void get(const pb::Video &from, TP_TAVISYS_VIDEO_INFORMATION_T &video) {
    video = {from.id(), from.seqno(), TEXT(name), TEXT(mp4)};
}
DETAIL_T *from_message(const pb::Detail &from) {
    auto *detail = make<DETAIL_T>();
    detail->name = TEXT(name);
    detail->year = from.year();
    detail->dimension_info = from.has_dimension_info() ? get(from.dimension_info()) : nullptr;
    detail->poster = TEXT(poster);
    detail->director_info = from.has_director_info() ? get(from.director_info()) : nullptr;
    detail->actor_info = from.has_actor_info() ? get(from.actor_info()) : nullptr;
    detail->kind_info = from.has_kind_info() ? get(from.kind_info()) : nullptr;
    detail->duration_info = from.has_duration_info() ? get(from.duration_info()) : nullptr;
    detail->summary_info = from.has_summary_info() ? get(from.summary_info()) : nullptr;
    detail->videos = from.videos();
    detail->video_list = get_list<TP_TAVISYS_VIDEO_INFORMATION_LIST_T>(
        from.video_list(), [](const pb::Video &message, auto &video) { get(message, video); });
    return detail;
}

void get(const pb::Partition &from, TP_TAVISYS_PARTITION_INFORMATION_T &partition) {
    partition = {from.seqno(), TEXT(devname), TEXT(uuid), TEXT(mntp)};
}
void get(const pb::Disk &from, DISKS_T &disk) {
    disk.info = make<TP_TAVISYS_HARDDISK_INFORMATION_T>();
    *disk.info = {TEXT(devname), TEXT(serialno)};
    disk.list = get_list<TP_TAVISYS_PARTITION_INFORMATION_LIST_T>(
        from.list(), [](const pb::Partition &message, auto &partition) { get(message, partition); });
}
DISKS_T *from_message(const pb::Disks &from) {
    return get_list<DISKS_T>(from.list(), [](const pb::Disk &message, DISKS_T &disk) { get(message, disk); });
}

#undef TEXT

// ----

template <class MESSAGE, class RECORD>
BODY_T encode(const RECORD &record, size_t) {
    static MESSAGE message;
    message.Clear();
    to_message(record, &message);
    BODY_T body(message.ByteSizeLong());
    message.SerializeWithCachedSizesToArray(reinterpret_cast<uint8_t *>(body.data()));
    return body;
}
template <class MESSAGE, class RECORD>
RECORD *decode(const BODY_T &body) {
    static MESSAGE message;
    if (!message.ParseFromArray(body.data(), static_cast<int>(body.length())))
        abort();
    return from_message(message);
}

template <class MESSAGE, class RECORD>
CODEC_T<RECORD> codec() {
    return {"protobuf", encode<MESSAGE, RECORD>, decode<MESSAGE, RECORD>, release};
}

} // namespace

void to_message(const PAGE_T &page, pb::Page *to) {
    to->set_pagenum(page.pageinfo.pagenum);
    to->set_pagesize(page.pageinfo.pagesize);
    to->set_totalpages(page.pageinfo.totalpages);
    to->set_totalmovies(page.pageinfo.totalmovies);
    to->set_replymovies(page.pageinfo.replymovies);
    for (const auto *node = page.list; node != nullptr; node = next_of(node))
        set(*node->info, to->add_list());
}
PAGE_T *from_message(const pb::Page &from) {
    auto *page = make<PAGE_T>();
    page->pageinfo = {from.pagenum(), from.pagesize(), from.totalpages(), from.totalmovies(),
                      from.replymovies()};
    page->list = get_list<TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T>(
        from.list(), [](const pb::BasicMovie &message, BASIC_T &movie) { get(message, movie); });
    return page;
}

template <>
CODEC_T<PAGE_T> protobuf_codec() {
    return codec<pb::Page, PAGE_T>();
}
template <>
CODEC_T<MOVIES_T> protobuf_codec() {
    return codec<pb::Movies, MOVIES_T>();
}
template <>
CODEC_T<DETAIL_T> protobuf_codec() {
    return codec<pb::Detail, DETAIL_T>();
}
template <>
CODEC_T<DISKS_T> protobuf_codec() {
    return codec<pb::Disks, DISKS_T>();
}

} // namespace bench
