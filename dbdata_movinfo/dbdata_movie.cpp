#include "dbdata_movie.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "dbdata_movinfo/id_counter.h"
#include "support/list.h"
#include "support/log.h"
#include "support/owner.h"
#include "support/show.h"
#include "support_memory.h"

using namespace tavisys;

namespace {

constexpr const INT8_T *LOG_FILE = "dbdata_movinfo/dbdata_movie.c";

using BASIC_T = DBDATA_BASIC_MOVIE_INFORMATION_T;
using POSTER_T = DBDATA_POSTER_INFORMATION_T;
using MOVIE_T = DBDATA_MOVIE_INFORMATION_T;
using NODE_T = DBDATA_MOVIE_INFORMATION_LIST_T;
using OWNED_BASIC_T = OWNED_T<BASIC_T, delete_dbdata_basic_movie_information>;
using OWNED_POSTER_T = OWNED_T<POSTER_T, delete_dbdata_poster_information>;

constinit ID_COUNTER_T s_movie_ids;

const INT8_T *code_of(const NODE_T *node) {
    const bool has_basic = node->info != nullptr && node->info->info != nullptr;
    return has_basic ? node->info->info->movie_code : nullptr;
}

bool lies_on_same_partition(const MOVIE_T *left, const MOVIE_T *right) {
    return safe_strcmp(left->hddevname, right->hddevname) == 0 &&
           safe_strcmp(left->ptdevname, right->ptdevname) == 0;
}

template <class NODE>
NODE *find_id(const NODE *list, INT32_T id) {
    return find_node(list, [id](const NODE *node) { return node->info != nullptr && node->info->id == id; });
}

// Any list will do for the id 0.
template <class NODE>
bool has_wanted_id(const NODE *list, INT32_T id) {
    return id == 0 || find_id(list, id) != nullptr;
}

void drop(INT8_T *&string) {
    safe_free(string);
    string = nullptr;
}

template <class NODE>
void drop(NODE *&list, void (*delete_list)(NODE **)) {
    delete_list(&list);
    list = nullptr;
}

// What the last delete frees. Nothing is left dangling: whoever kept a pointer to the record finds in it
// what is still there.
void drop_deleted_part(MOVIE_T &movie) {
    delete_dbdata_basic_movie_information(&movie.info);
    drop(movie.imdbvalue);
    drop(movie.acronym);
    drop(movie.dimension_list, delete_dbdata_dimension_information_list);
    drop(movie.resolution_list, delete_dbdata_resolution_information_list);
    drop(movie.category_list, delete_dbdata_category_information_list);
    drop(movie.kind_list, delete_dbdata_kind_information_list);
    drop(movie.area_list, delete_dbdata_area_information_list);
    drop(movie.director_list, delete_dbdata_director_information_list);
    drop(movie.actor_list, delete_dbdata_actor_information_list);
    delete_dbdata_poster_information(&movie.posters);
    drop(movie.summary);
    drop(movie.video_list, delete_dbdata_video_information_list);
}

// What the last delete leaves to whoever kept a pointer to the record, who may have come to own these.
void drop_kept_part(MOVIE_T &movie) {
    drop(movie.year_list, delete_dbdata_year_information_list);
    drop(movie.description);
    drop(movie.ipaddr);
    drop(movie.hddevname);
    drop(movie.ptdevname);
}

bool store_copies(const INT8_T *big, const INT8_T *middle, const INT8_T *small, INT8_T *&big_field,
                  INT8_T *&middle_field, INT8_T *&small_field) {
    return store_copy(big_field, big) && store_copy(middle_field, middle) && store_copy(small_field, small);
}

} // namespace

DBDATA_BASIC_MOVIE_INFORMATION_T *create_dbdata_basic_movie_information(const INT8_T *movie_code,
                                                                        const INT8_T *movie_name_ch,
                                                                        const INT8_T *movie_name_en) {
    OWNED_BASIC_T record{allocate<BASIC_T>()};
    if (record == nullptr || !store_copy(record->movie_code, movie_code) ||
        !store_copy(record->movie_name_ch, movie_name_ch))
        return nullptr;
    if (movie_name_en != nullptr && !store_copy(record->movie_name_en, movie_name_en))
        return nullptr;
    return record.release();
}

void delete_dbdata_basic_movie_information(DBDATA_BASIC_MOVIE_INFORMATION_T **info) {
    if (info == nullptr || *info == nullptr)
        return;
    safe_free((*info)->movie_code);
    safe_free((*info)->movie_name_ch);
    safe_free((*info)->movie_name_en);
    safe_free(*info);
    *info = nullptr;
}

DBDATA_POSTER_INFORMATION_T *create_dbdata_poster_information(const INT8_T *big, const INT8_T *middle,
                                                              const INT8_T *small) {
    OWNED_POSTER_T record{allocate<POSTER_T>()};
    if (record == nullptr)
        return nullptr;
    // The relative path of the small poster is the medium one's: clients show that where they ask for it.
    const bool stored = store_copies(big, middle, small, record->big, record->middle, record->small) &&
                        store_copies(big, middle, middle, record->relative_big_path,
                                     record->relative_middle_path, record->relative_small_path);
    return stored ? record.release() : nullptr;
}

DBDATA_POSTER_INFORMATION_T *create_dbdata_tv_poster_information(const INT8_T *big, const INT8_T *middle,
                                                                 const INT8_T *small) {
    OWNED_POSTER_T record{allocate<POSTER_T>()};
    if (record == nullptr)
        return nullptr;
    const bool stored = store_copies(big, middle, small, record->tv_big, record->tv_middle, record->tv_small);
    return stored ? record.release() : nullptr;
}

void delete_dbdata_poster_information(DBDATA_POSTER_INFORMATION_T **info) {
    if (info == nullptr || *info == nullptr)
        return;
    for (INT8_T *path : {(*info)->big, (*info)->middle, (*info)->small, (*info)->relative_big_path,
                         (*info)->relative_middle_path, (*info)->relative_small_path, (*info)->tv_big,
                         (*info)->tv_middle, (*info)->tv_small})
        safe_free(path);
    safe_free(*info);
    *info = nullptr;
}

DBDATA_MOVIE_INFORMATION_T *create_dbdata_movie_information(void) {
    auto *movie = allocate<MOVIE_T>();
    if (movie == nullptr)
        return nullptr;
    movie->count = 1;
    movie->id = s_movie_ids.alloc_id(
        [](INT32_T base, INT32_T number) { printf("s_id_base :%d .. basicdata:%d \n", base, number); });
    return movie;
}

DBDATA_MOVIE_INFORMATION_T *duplicate_dbdata_movie_information(DBDATA_MOVIE_INFORMATION_T *info) {
    if (info != nullptr)
        info->count++;
    return info;
}

void delete_dbdata_movie_information(DBDATA_MOVIE_INFORMATION_T **info) {
    if (info == nullptr || *info == nullptr || --(*info)->count > 0)
        return;
    drop_deleted_part(**info);
    *info = nullptr;
}

void release_dbdata_movie_information(DBDATA_MOVIE_INFORMATION_T **info) {
    if (info == nullptr || *info == nullptr)
        return;
    MOVIE_T *movie = *info;
    *info = nullptr;
    if (--movie->count > 0)
        return;
    drop_deleted_part(*movie);
    drop_kept_part(*movie);
    safe_free(movie);
}

DBDATA_MOVIE_INFORMATION_LIST_T *create_dbdata_movie_information_list_node(DBDATA_MOVIE_INFORMATION_T *info) {
    auto *node = allocate<NODE_T>();
    if (node == nullptr) {
        // Unlike the other families' line, with a blank and without a line end.
        printf("分配%zu 字节的内存出错,错误原因: %s", sizeof(NODE_T), strerror(errno));
        return nullptr;
    }
    node->info = info;
    return node;
}

RTSTATUS add_node_to_dbdata_movie_information_list(DBDATA_MOVIE_INFORMATION_LIST_T **list,
                                                   DBDATA_MOVIE_INFORMATION_LIST_T *node) {
    if (list == nullptr || node == nullptr)
        return 0;
    const bool has_basic = node->info != nullptr && node->info->info != nullptr;
    if (*list != nullptr && !has_basic)
        return 0;
    if (found_node_from_dbdata_movie_information_list_by_movie_code(*list, node) != nullptr)
        return 1;
    append_node(list, node);
    return 0;
}

RTSTATUS add_single_node_to_dbdata_movie_information_list(DBDATA_MOVIE_INFORMATION_LIST_T **list,
                                                          DBDATA_MOVIE_INFORMATION_LIST_T *node) {
    const RTSTATUS result = add_node_to_dbdata_movie_information_list(list, node);
    if (result != 0)
        LOG_INFO("找到相同影片");
    return result;
}

DBDATA_MOVIE_INFORMATION_LIST_T *
found_node_from_dbdata_movie_information_list_by_movie_code(const DBDATA_MOVIE_INFORMATION_LIST_T *slist,
                                                            const DBDATA_MOVIE_INFORMATION_LIST_T *tlist) {
    const INT8_T *code = tlist != nullptr ? code_of(tlist) : nullptr;
    if (code == nullptr)
        return nullptr;
    NODE_T *found = find_node(slist, [code, tlist](const NODE_T *node) {
        return safe_strcmp(code_of(node), code) == 0 && lies_on_same_partition(node->info, tlist->info);
    });
    if (found != nullptr) {
        LOG_INFO("查找重复影片:硬盘(%s)分区(%s)影片编码(%s)", shown(found->info->hddevname),
                 shown(found->info->ptdevname), code);
    }
    return found;
}

DBDATA_MOVIE_INFORMATION_LIST_T *
found_node_from_dbdata_movie_information_list_by_mid(const DBDATA_MOVIE_INFORMATION_LIST_T *list,
                                                     INT32_T mid) {
    return find_id(list, mid);
}

void delete_node_from_dbdata_movie_information_list_by_movie_code(DBDATA_MOVIE_INFORMATION_LIST_T **list,
                                                                  const INT8_T *movie_code) {
    if (movie_code == nullptr)
        return;
    delete_first_node(
        list, [movie_code](const NODE_T *node) { return safe_strcmp(code_of(node), movie_code) == 0; },
        delete_dbdata_movie_information_list_node);
}

void delete_node_from_dbdata_movie_information_list_by_harddisk_devname(
    DBDATA_MOVIE_INFORMATION_LIST_T **list, const INT8_T *devname) {
    if (devname == nullptr)
        return;
    const auto lies_there = [devname](const NODE_T *node) {
        return node->info != nullptr && safe_strcmp(node->info->hddevname, devname) == 0;
    };
    delete_first_node(list, lies_there, delete_dbdata_movie_information_list_node);
}

void delete_dbdata_movie_information_list_node(DBDATA_MOVIE_INFORMATION_LIST_T **node) {
    if (node == nullptr || *node == nullptr)
        return;
    delete_dbdata_movie_information(&(*node)->info);
    safe_free(*node);
    *node = nullptr;
}

void delete_dbdata_movie_information_list(DBDATA_MOVIE_INFORMATION_LIST_T **list) {
    delete_nodes(list, delete_dbdata_movie_information_list_node);
}

void release_dbdata_movie_information_list(DBDATA_MOVIE_INFORMATION_LIST_T **list) {
    if (list == nullptr)
        return;
    for (NODE_T *node : nodes_of(*list)) {
        release_dbdata_movie_information(&node->info);
        safe_free(node);
    }
    *list = nullptr;
}

INT32_T
dbdata_get_number_from_dbdata_movie_information_list(const DBDATA_MOVIE_INFORMATION_LIST_T *list) {
    INT32_T count = 0;
    for (const NODE_T *node : nodes_of(list)) {
        if (code_of(node) != nullptr)
            count++;
    }
    return count;
}

RTSTATUS filter_movie_by_condition(const DBDATA_MOVIE_INFORMATION_T *movinfo, INT32_T aid, INT32_T yid,
                                   INT32_T did) {
    if (movinfo == nullptr) {
        LOG_WARN("movinfo is nul!");
        return -1;
    }
    const bool passes = has_wanted_id(movinfo->area_list, aid) && has_wanted_id(movinfo->year_list, yid) &&
                        has_wanted_id(movinfo->dimension_list, did);
    return passes ? 0 : -1;
}

void show_tavinfo_basic_movie_information(const DBDATA_BASIC_MOVIE_INFORMATION_T *info) {
    if (info != nullptr) {
        printf("影片编码: %s, 影片名称: %s(%s).\n", shown(info->movie_code), shown(info->movie_name_ch),
               shown(info->movie_name_en));
    }
}

void show_tavinfo_movie_posters_information(const DBDATA_POSTER_INFORMATION_T *info) {
    if (info == nullptr)
        return;
    printf("大型海报文件路径: %s\n", shown(info->big));
    printf("中型海报文件路径: %s\n", shown(info->middle));
    printf("小型海报文件路径: %s\n", shown(info->small));
}

void show_dbdata_movie_information(const DBDATA_MOVIE_INFORMATION_T * /*info*/) {}

void show_dbdata_movie_information_list(const DBDATA_MOVIE_INFORMATION_LIST_T *list, INT32_T /*indent*/) {
    show_each<show_dbdata_movie_information>(list);
}
