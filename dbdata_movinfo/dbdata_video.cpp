#include "dbdata_video.h"

#include <cstdio>

#include "dbdata_movinfo/id_counter.h"
#include "support/list.h"
#include "support/owner.h"
#include "support/show.h"
#include "support_memory.h"

using namespace tavisys;

namespace {

using RECORD_T = DBDATA_VIDEO_INFORMATION_T;
using NODE_T = DBDATA_VIDEO_INFORMATION_LIST_T;
using OWNED_RECORD_T = OWNED_T<RECORD_T, delete_dbdata_video_information>;

constinit ID_COUNTER_T s_video_ids;

bool store_strings(RECORD_T &record, const INT8_T *name, const INT8_T *filepath, const INT8_T *mp4) {
    if (!store_copy(record.name, name) || !store_copy(record.filepath, filepath) ||
        !store_copy(record.relative_filepath, filepath))
        return false;
    return mp4 == nullptr || (store_copy(record.mp4, mp4) && store_copy(record.relative_mp4, mp4));
}

} // namespace

DBDATA_VIDEO_INFORMATION_T *create_dbdata_video_information(INT32_T seqno, const INT8_T *name,
                                                            const INT8_T *filepath, const INT8_T *mp4) {
    OWNED_RECORD_T record{allocate<RECORD_T>()};
    if (record == nullptr || !store_strings(*record, name, filepath, mp4))
        return nullptr;
    record->seqno = seqno;
    record->id = s_video_ids.alloc_id([](INT32_T /*base*/, INT32_T /*number*/) {});
    return record.release();
}

void delete_dbdata_video_information(DBDATA_VIDEO_INFORMATION_T **info) {
    if (info == nullptr || *info == nullptr)
        return;
    safe_free((*info)->name);
    safe_free((*info)->filepath);
    safe_free((*info)->mp4);
    safe_free((*info)->relative_mp4);
    safe_free((*info)->relative_filepath);
    safe_free(*info);
    *info = nullptr;
}

DBDATA_VIDEO_INFORMATION_LIST_T *create_dbdata_video_information_list_node(DBDATA_VIDEO_INFORMATION_T *info) {
    return create_node<NODE_T>(info);
}

DBDATA_VIDEO_INFORMATION_LIST_T *create_dbdata_video_information_list_node_ex(INT32_T seqno,
                                                                              const INT8_T *name,
                                                                              const INT8_T *filepath,
                                                                              const INT8_T *mp4) {
    OWNED_RECORD_T record{create_dbdata_video_information(seqno, name, filepath, mp4)};
    if (record == nullptr)
        return nullptr;
    auto *node = create_node<NODE_T>(record.get());
    if (node != nullptr)
        static_cast<void>(record.release());
    return node;
}

RTSTATUS add_node_to_dbdata_video_information_list(DBDATA_VIDEO_INFORMATION_LIST_T **list,
                                                   DBDATA_VIDEO_INFORMATION_LIST_T *node) {
    if (list != nullptr && node != nullptr && (*list == nullptr || node->info != nullptr))
        append_node(list, node);
    return 0;
}

void delete_dbdata_video_information_list_node(DBDATA_VIDEO_INFORMATION_LIST_T **node) {
    if (node == nullptr || *node == nullptr)
        return;
    delete_dbdata_video_information(&(*node)->info);
    safe_free(*node);
    *node = nullptr;
}

void delete_dbdata_video_information_list(DBDATA_VIDEO_INFORMATION_LIST_T **list) {
    delete_nodes(list, delete_dbdata_video_information_list_node);
}

void show_dbdata_video_information(const DBDATA_VIDEO_INFORMATION_T *info) {
    if (info != nullptr)
        printf("视频序号: %d, 视频名称: %s, 视频路径: %s\n", info->seqno, shown(info->name),
               shown(info->filepath));
}

void show_dbdata_video_information_list(const DBDATA_VIDEO_INFORMATION_LIST_T *list) {
    show_each<show_dbdata_video_information>(list);
}
