#include "codec_dbdata_movinfo.h"

#include "codec/wire.h"
#include "support/show.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

struct FILTER_WIRE {
    using RECORD = TP_TAVISYS_DBDATA_FILTER_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(string(&RECORD::name));
};

struct PERSON_WIRE {
    using RECORD = TP_TAVISYS_DBDATA_PERSON_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(string(&RECORD::code), string(&RECORD::name));
};

struct YEAR_WIRE {
    using RECORD = TP_TAVISYS_DBDATA_YEAR_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(integer(&RECORD::year));
};

struct POSTER_WIRE {
    using RECORD = TP_TAVISYS_DBDATA_POSTER_INFORMATION_T;
    static constexpr auto FIELDS =
        std::make_tuple(string(&RECORD::big), string(&RECORD::middle), string(&RECORD::small));
};

struct TRANSFER_VIDEO_WIRE {
    using RECORD = TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T;
    static constexpr auto FIELDS =
        std::make_tuple(integer(&RECORD::vid), integer(&RECORD::seqno), string(&RECORD::name),
                        string(&RECORD::filepath), string(&RECORD::mp4));
};

// A list that has to be there, even if its nodes have no record; that it isn't is said on standard output.
// Where room can't grow, the failure isn't the list's, and nothing is said.
template <class LIST>
struct REQUIRED_T : LIST {
    const char *step;  // which step of a movie the line says to have failed
    bool says_pointer; // in a line of its own
    int line;
};
template <class LIST>
constexpr REQUIRED_T<LIST> required(LIST list, const char *step, bool says_pointer = false,
                                    int line = __builtin_LINE()) {
    return {list, step, says_pointer, line};
}

template <class RECORD>
constexpr auto values(TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T *RECORD::*member) {
    return list<FILTER_WIRE>(member, EMPTY_NODE_T::SKIPPED, NULL_LIST_T::EMPTY);
}

constexpr const char *PERSONS = "encode_tp_tavisys_dbdata_person_information_list_to_buffer";
constexpr const char *YEARS = "encode_tp_tavisys_dbdata_year_information_list_to_buffer";
constexpr const char *VIDEOS = "encode_int_data_to_buffer"; // the one step that is called by another's name

struct MOVIE_WIRE {
    using RECORD = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T;
    static constexpr auto FIELDS = std::make_tuple(
        integer(&RECORD::mid), string(&RECORD::movcode), string(&RECORD::movnamech),
        string(&RECORD::movnameen), string(&RECORD::imdbvalue), string(&RECORD::acronym),
        values(&RECORD::dimension_list), values(&RECORD::resolution_list), values(&RECORD::category_list),
        values(&RECORD::kind_list), values(&RECORD::area_list),
        required(list<PERSON_WIRE>(&RECORD::director_list), PERSONS),
        required(list<PERSON_WIRE>(&RECORD::actor_list), PERSONS),
        required(list<YEAR_WIRE>(&RECORD::year_list), YEARS), integer(&RECORD::puttime),
        integer(&RECORD::pubtime), integer(&RECORD::putintime), integer(&RECORD::duration),
        optional<POSTER_WIRE>(&RECORD::posters), string(&RECORD::summary), integer(&RECORD::episodes),
        required(list<TRANSFER_VIDEO_WIRE>(&RECORD::video_list), VIDEOS, true));
};

template <class LIST>
bool encode_field(WRITER_T &to, const MOVIE_WIRE::RECORD &from, REQUIRED_T<LIST> field) {
    const LIST &list = field;
    const INT8_T *at = to.at();
    if (encode_field(to, from, list))
        return true;
    if (to.is_stuck())
        return false;
    if (field.says_pointer)
        printf("输入的参数无效 , list=%p,messgae=%p\n", static_cast<const void *>(from.*list.member),
               static_cast<const void *>(at));
    printf("[encode_tp_tavisys_dbdata_movie_information_to_buffer][%d] warning %s!\n", field.line,
           field.step);
    return false;
}

// Each movie begins behind the start of the one before at the distance that the latter's video list is long.
// Peers rely on it for one movie, where it makes no difference.
bool encode_overlapping(WRITER_T &to, const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list) {
    bool is_whole = to.integer(count_records<MOVIE_WIRE>(list));
    for (const auto *node = list; node != nullptr && is_whole; node = next_of(node)) {
        if (node->info == nullptr)
            continue;
        WRITER_T movie = to;
        is_whole = encode<MOVIE_WIRE>(movie, *node->info) &&
                   to.skip(static_cast<INT32_T>(list_length<TRANSFER_VIDEO_WIRE>(node->info->video_list)));
        if (!is_whole)
            printf("[encode_tp_tavisys_dbdata_movie_information_list_to_buffer][%d] warning "
                   "encode_tp_tavisys_dbdata_movie_information_to_buffer!\n",
                   __LINE__);
    }
    return is_whole;
}

// Says on standard output why there is no body.
void say(FAULT_T fault, int64_t length) {
    if (fault == FAULT_T::LENGTH)
        puts("计算编码影片元数据传输信息长度出错");
    else if (fault == FAULT_T::MEMORY)
        printf("分配%d字节内存空间出错.错误原因: %s\n", static_cast<INT32_T>(length), strerror(errno));
    else
        printf("编码影片元数据传输信息出错(%d)\n", -1);
}

template <auto SHOW, class NODE>
void show_line(const INT8_T *title, const NODE *list) {
    printf("%s: ", shown(title));
    show_each<SHOW>(list);
    putchar('\n');
}

} // namespace

TP_TAVISYS_DBDATA_FILTER_INFORMATION_T *create_tp_tavisys_dbdata_filter_information(void) {
    return allocate<TP_TAVISYS_DBDATA_FILTER_INFORMATION_T>();
}

void delete_tp_tavisys_dbdata_filter_information(TP_TAVISYS_DBDATA_FILTER_INFORMATION_T **info) {
    delete_record<FILTER_WIRE>(info);
}

TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T *
create_tp_tavisys_dbdata_filter_information_list_node(TP_TAVISYS_DBDATA_FILTER_INFORMATION_T *info) {
    return create_node<TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T>(info);
}

void delete_tp_tavisys_dbdata_filter_information_list_node(
    TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T **node) {
    delete_list_node<FILTER_WIRE>(node);
}

void delete_tp_tavisys_dbdata_filter_information_list(TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T **list) {
    delete_list<FILTER_WIRE>(list);
}

void add_node_to_tp_tavisys_dbdata_filter_information_list(
    TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T **list, TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T *node) {
    append_node(list, node);
}

TP_TAVISYS_DBDATA_PERSON_INFORMATION_T *create_tp_tavisys_dbdata_person_information(void) {
    return allocate<TP_TAVISYS_DBDATA_PERSON_INFORMATION_T>();
}

void delete_tp_tavisys_dbdata_person_information(TP_TAVISYS_DBDATA_PERSON_INFORMATION_T **info) {
    delete_record<PERSON_WIRE>(info);
}

TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T *
create_tp_tavisys_dbdata_person_information_list_node(TP_TAVISYS_DBDATA_PERSON_INFORMATION_T *info) {
    return create_node<TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T>(info);
}

void delete_tp_tavisys_dbdata_person_information_list_node(
    TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T **node) {
    delete_list_node<PERSON_WIRE>(node);
}

void delete_tp_tavisys_dbdata_person_information_list(TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T **list) {
    delete_list<PERSON_WIRE>(list);
}

void add_node_to_tp_tavisys_dbdata_person_information_list(
    TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T **list, TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T *node) {
    append_node(list, node);
}

TP_TAVISYS_DBDATA_YEAR_INFORMATION_T *create_tp_tavisys_dbdata_year_information(void) {
    return allocate<TP_TAVISYS_DBDATA_YEAR_INFORMATION_T>();
}

void delete_tp_tavisys_dbdata_year_information(TP_TAVISYS_DBDATA_YEAR_INFORMATION_T **info) {
    delete_record<YEAR_WIRE>(info);
}

TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T *
create_tp_tavisys_dbdata_year_information_list_node(TP_TAVISYS_DBDATA_YEAR_INFORMATION_T *info) {
    return create_node<TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T>(info);
}

void delete_tp_tavisys_dbdata_year_information_list_node(TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T **node) {
    delete_list_node<YEAR_WIRE>(node);
}

void delete_tp_tavisys_dbdata_year_information_list(TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T **list) {
    delete_list<YEAR_WIRE>(list);
}

void add_node_to_tp_tavisys_dbdata_year_information_list(TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T **list,
                                                         TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T *node) {
    append_node(list, node);
}

TP_TAVISYS_DBDATA_POSTER_INFORMATION_T *create_tp_tavisys_dbdata_poster_information(void) {
    return allocate<TP_TAVISYS_DBDATA_POSTER_INFORMATION_T>();
}

void delete_tp_tavisys_dbdata_poster_information(TP_TAVISYS_DBDATA_POSTER_INFORMATION_T **info) {
    delete_record<POSTER_WIRE>(info);
}

TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T *create_tp_tavisys_dbdata_video_information(void) {
    return allocate<TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T>();
}

void delete_tp_tavisys_dbdata_video_information(TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T **info) {
    delete_record<TRANSFER_VIDEO_WIRE>(info);
}

TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T *
create_tp_tavisys_dbdata_video_information_list_node(TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T *info) {
    return create_node<TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T>(info);
}

void delete_tp_tavisys_dbdata_video_information_list_node(TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T **node) {
    delete_list_node<TRANSFER_VIDEO_WIRE>(node);
}

void delete_tp_tavisys_dbdata_video_information_list(TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T **list) {
    delete_list<TRANSFER_VIDEO_WIRE>(list);
}

void add_node_to_tp_tavisys_dbdata_video_information_list(TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T **list,
                                                          TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T *node) {
    append_node(list, node);
}

TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T *create_tp_tavisys_dbdata_movie_information(void) {
    return allocate<TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T>();
}

void delete_tp_tavisys_dbdata_movie_information(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T **info) {
    delete_record<MOVIE_WIRE>(info);
}

TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *
create_tp_tavisys_dbdata_movie_information_list_node(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T *info) {
    return create_node<TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T>(info);
}

void delete_tp_tavisys_dbdata_movie_information_list_node(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T **node) {
    delete_list_node<MOVIE_WIRE>(node);
}

void delete_tp_tavisys_dbdata_movie_information_list(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T **list) {
    delete_list<MOVIE_WIRE>(list);
}

void add_node_to_tp_tavisys_dbdata_movie_information_list(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T **list,
                                                          TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *node) {
    append_node(list, node);
}

RTSTATUS encode_tp_tavisys_dbdata_movie_information_list_to_message(
    const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list, PVOID *msgdata, INT32_T *msglen) {
    if (msgdata == nullptr || msglen == nullptr)
        return -1;
    const int64_t length = list_length<MOVIE_WIRE>(list);
    if (length > 0 && length <= LONGEST_BODY)
        printf("编码后信息长度为%d\n", static_cast<INT32_T>(length));
    return encode_to_message(
        length, msgdata, msglen, [&](WRITER_T &to) { return encode_overlapping(to, list); }, say);
}

RTSTATUS encode_tp_tavisys_dbdata_movie_information_list_to_message_packed(
    const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list, PVOID *msgdata, INT32_T *msglen) {
    return encode_list_to_message<MOVIE_WIRE>(list, EMPTY_NODE_T::SKIPPED, msgdata, msglen);
}

INT32_T decode_tp_tavisys_dbdata_movie_information_list_from_message(
    const void *msgdata, INT32_T msglen, TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T **list) {
    return decode_list_from_message<MOVIE_WIRE>(msgdata, msglen, list);
}

void show_tp_tavisys_dbdata_filter_information(const TP_TAVISYS_DBDATA_FILTER_INFORMATION_T *info) {
    if (info != nullptr)
        printf("%s ", shown(info->name));
}

void show_tp_tavisys_dbdata_filter_information_list(const INT8_T *title,
                                                    const TP_TAVISYS_DBDATA_FILTER_INFORMATION_LIST_T *list) {
    show_line<show_tp_tavisys_dbdata_filter_information>(title, list);
}

void show_tp_tavisys_dbdata_person_information(const TP_TAVISYS_DBDATA_PERSON_INFORMATION_T *info) {
    if (info != nullptr)
        printf("(%s %s)", shown(info->code), shown(info->name));
}

void show_tp_tavisys_dbdata_person_information_list(const INT8_T *title,
                                                    const TP_TAVISYS_DBDATA_PERSON_INFORMATION_LIST_T *list) {
    show_line<show_tp_tavisys_dbdata_person_information>(title, list);
}

void show_tp_tavisys_dbdata_year_information(const TP_TAVISYS_DBDATA_YEAR_INFORMATION_T *info) {
    if (info != nullptr)
        printf("%d ", info->year);
}

void show_tp_tavisys_dbdata_year_information_list(const INT8_T *title,
                                                  const TP_TAVISYS_DBDATA_YEAR_INFORMATION_LIST_T *list) {
    show_line<show_tp_tavisys_dbdata_year_information>(title, list);
}

void show_tp_tavisys_dbdata_poster_information(const TP_TAVISYS_DBDATA_POSTER_INFORMATION_T *info) {
    if (info == nullptr)
        return;
    puts("影片海报信息:");
    if (info->big != nullptr)
        printf("\t大型海报地址: %s\n", info->big);
    if (info->middle != nullptr)
        printf("\t中型海报地址: %s\n", info->middle);
    if (info->small != nullptr)
        printf("\t小型海报地址: %s\n", info->small);
}

void show_tp_tavisys_dbdata_video_information(const TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T *info) {
    if (info != nullptr)
        printf("第%d集: 视频名称(%s), 视频路径(%s), MP4视频路径(%s)\n", info->seqno, shown(info->name),
               shown(info->filepath), shown(info->mp4));
}

void show_tp_tavisys_dbdata_video_information_list(const INT8_T *title,
                                                   const TP_TAVISYS_DBDATA_VIDEO_INFORMATION_LIST_T *list) {
    printf("%s: \n", shown(title));
    show_each<show_tp_tavisys_dbdata_video_information>(list);
}

void show_tp_tavisys_dbdata_movie_information(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T *info) {
    if (info == nullptr)
        return;
    puts("===========================影片元数据传输信息====================================");
    printf("影片编码: %s, 影片中文名: %s, 影片英文名: %s\n", shown(info->movcode), shown(info->movnamech),
           shown(info->movnameen));
    printf("影片评分: %s. 影片首字母缩写: %s\n", shown(info->imdbvalue), shown(info->acronym));
    show_tp_tavisys_dbdata_filter_information_list("影片维度信息", info->dimension_list);
    show_tp_tavisys_dbdata_filter_information_list("影片分辨率信息", info->resolution_list);
    show_tp_tavisys_dbdata_filter_information_list("影片分类信息", info->category_list);
    show_tp_tavisys_dbdata_filter_information_list("影片类型信息", info->kind_list);
    show_tp_tavisys_dbdata_filter_information_list("影片地区信息", info->area_list);
    show_tp_tavisys_dbdata_person_information_list("影片导演信息", info->director_list);
    show_tp_tavisys_dbdata_person_information_list("影片主演信息", info->actor_list);
    show_tp_tavisys_dbdata_year_information_list("影片年份信息", info->year_list);
    printf("影片发布时间: %d, 影片入库时间: %d, 影片上架时间: %d, 影片时长: %d\n", info->pubtime,
           info->puttime, info->putintime, info->duration);
    show_tp_tavisys_dbdata_poster_information(info->posters);
    printf("影片简介: %s\n", shown(info->summary));
    printf("影片总集数: %d\n", info->episodes);
    show_tp_tavisys_dbdata_video_information_list("影片视频信息", info->video_list);
    puts("===========================================================================");
}

void show_tp_tavisys_dbdata_movie_information_list(const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list) {
    show_each<show_tp_tavisys_dbdata_movie_information>(list);
}
