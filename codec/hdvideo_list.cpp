// Videos by movie code: which disks hold them.
#include "codec_basic_movinfo.h"

#include "codec/logged_body.h"

using namespace tavisys;
using namespace tavisys::wire;

namespace {

struct VIDEO_NODE_WIRE {
    using RECORD = TP_VIDEO_LIST;
    static constexpr auto FIELDS =
        std::make_tuple(integer(&RECORD::index), string(&RECORD::hdsn), string(&RECORD::movname));
    static RECORD *create() { return create_video_node(nullptr, 0, nullptr); }
};

// The videos of a movie: a list that logs how it goes, in the names of the functions for it alone.
using VIDEOS_BASE_T = LIST_T<VIDEO_NODE_WIRE, TP_HARD_DISK_VIDEO_INFORMATION_T, TP_VIDEO_LIST>;
struct VIDEOS_T : VIDEOS_BASE_T {};

struct HDVIDEO_WIRE {
    using RECORD = TP_HARD_DISK_VIDEO_INFORMATION_T;
    static constexpr auto FIELDS =
        std::make_tuple(string(&RECORD::movcode), VIDEOS_T{list<VIDEO_NODE_WIRE>(&RECORD::list)});
    static RECORD *create() { return allocate_node<RECORD>(); }
};

bool encode_videos(WRITER_T &to, const TP_VIDEO_LIST *list) {
    constexpr const char *FUNCTION = "encode_video_list_to_message";
    if (list == nullptr || to.at() == nullptr || to.left() == 0) {
        TAVISYS_LOG_AS(FUNCTION, ZLOG_LEVEL_WARN, "参数获取出错! info(%p) message(%p) length(%d)",
                       static_cast<const void *>(list), static_cast<const void *>(to.at()), to.left());
        return false;
    }
    TAVISYS_LOG_AS(FUNCTION, ZLOG_LEVEL_INFO, "传入的length:%d", to.left());
    TAVISYS_LOG_AS(FUNCTION, ZLOG_LEVEL_INFO, "-- 解出来视频信息:%d", count_records<VIDEO_NODE_WIRE>(list));
    const bool is_whole = encode_list<VIDEO_NODE_WIRE>(to, list, EMPTY_NODE_T::SKIPPED);
    if (!is_whole)
        TAVISYS_LOG_AS(FUNCTION, ZLOG_LEVEL_WARN, "error ..");
    return is_whole;
}

bool encode_field(WRITER_T &to, const HDVIDEO_WIRE::RECORD &from, VIDEOS_T field) {
    return encode_videos(to, from.*field.member);
}

bool decode_field(READER_T &from, HDVIDEO_WIRE::RECORD &to, VIDEOS_T field) {
    return decode_announced_list<VIDEO_NODE_WIRE>(from, &(to.*field.member),
                                                  "decode_tavisys_videolist_information_from_buffer",
                                                  "解析的 video list 个数");
}

} // namespace

TP_VIDEO_LIST *create_video_node(const INT8_T *hdsn, INT32_T index, const INT8_T *movname) {
    auto *node = allocate<TP_VIDEO_LIST>();
    if (node != nullptr && store_copy_or_null(node->hdsn, hdsn) &&
        store_copy_or_null(node->movname, movname)) {
        node->index = index;
        return node;
    }
    LOG_WARN("分配%zu字节的内存出错,错误原因: %s\n", sizeof(TP_VIDEO_LIST), strerror(errno));
    delete_list_node<VIDEO_NODE_WIRE>(&node);
    return nullptr;
}

void add_node_to_video_list(TP_VIDEO_LIST **list, TP_VIDEO_LIST *node) {
    append_node(list, node);
}

void delete_video_list(TP_VIDEO_LIST **list) {
    delete_list<VIDEO_NODE_WIRE>(list);
}

TP_HARD_DISK_VIDEO_INFORMATION_T *create_hard_disk_videonode(const INT8_T *movcode,
                                                             TP_VIDEO_LIST *video_list) {
    auto *node = allocate_node<TP_HARD_DISK_VIDEO_INFORMATION_T>();
    if (node == nullptr)
        return nullptr;
    if (!store_copy_or_null(node->movcode, movcode)) {
        print_allocation_failure(sizeof *node);
        delete_list_node<HDVIDEO_WIRE>(&node);
        return nullptr;
    }
    node->list = video_list;
    return node;
}

void add_node_to_mhard_disk_videolist(TP_HARD_DISK_VIDEO_INFORMATION_T **list,
                                      TP_HARD_DISK_VIDEO_INFORMATION_T *node) {
    append_node(list, node);
}

void delete_hard_disk_videolist(TP_HARD_DISK_VIDEO_INFORMATION_T **list) {
    delete_list<HDVIDEO_WIRE>(list);
}

INT32_T encode_video_list_to_message(const TP_VIDEO_LIST *list, PVOID message, INT32_T length) {
    WRITER_T to(message, length);
    return encode_videos(to, list) ? to.passed() : -1;
}

RTSTATUS encode_hdvideo_list_to_message(const TP_HARD_DISK_VIDEO_INFORMATION_T *list, PVOID *msgdata,
                                        INT32_T *msglen) {
    if (!are_given(__func__, list, msgdata, msglen))
        return -1;
    const int64_t length = list_length<HDVIDEO_WIRE>(list);
    if (length <= LONGEST_BODY)
        LOG_INFO("-- 影片编码个数:%d 总大小为:%d", count_records<HDVIDEO_WIRE>(list),
                 static_cast<INT32_T>(length));
    return encode_to_message(
        length, msgdata, msglen,
        [&](WRITER_T &to) { return encode_list<HDVIDEO_WIRE>(to, list, EMPTY_NODE_T::SKIPPED); },
        LOGGED_T{__func__, "error .."});
}

// The only decoder that doesn't say how much it read: its callers ask for a negative result alone.
RTSTATUS decode_hdvideo_list_information_from_message(const void *msgdata, INT32_T msglen,
                                                      TP_HARD_DISK_VIDEO_INFORMATION_T **info) {
    return decode_list_from_message<HDVIDEO_WIRE>(msgdata, msglen, info) < 0 ? -1 : 0;
}
