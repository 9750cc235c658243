#include "families.h"

#include <cstdlib>
#include <cstring>

#include "fuzz.h"
#include "tavisys.h"

namespace fuzz {
namespace {

using BASIC_LIST_T = TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T;
using PAGE_T = TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T;
using DETAIL_T = TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T;
using DISKS_T = TP_TAVISYS_HARDDISK_INFORMATION_LIST_T;
using MOVIES_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T;
using HDVIDEOS_T = TP_HARD_DISK_VIDEO_INFORMATION_T;

constexpr INT32_T PAGE_NUMBERS_LENGTH = 20;

template <auto DECODE, auto ENCODE, auto RELEASE, class RECORD>
constexpr FAMILY_T erase(const char *name, void (*)(RECORD **)) {
    return {name,
            [](const void *body, INT32_T length, void **out) {
                return DECODE(body, length, reinterpret_cast<RECORD **>(out));
            },
            [](const void *record, PVOID *body, INT32_T *length) {
                return ENCODE(static_cast<const RECORD *>(record), body, length);
            },
            [](void **record) {
                RELEASE(reinterpret_cast<RECORD **>(record));
                *record = nullptr; // a list's delete leaves the pointer
            }};
}
template <auto DECODE, auto ENCODE, auto RELEASE>
constexpr FAMILY_T family(const char *name) {
    return erase<DECODE, ENCODE, RELEASE>(name, RELEASE);
}
constexpr FAMILY_T with(FAMILY_T family, bool (*can_be_sent)(const void *)) {
    family.can_be_sent = can_be_sent;
    return family;
}

template <auto SHOW, class RECORD>
constexpr FAMILY_T with_listing(FAMILY_T family, void (*)(const RECORD *)) {
    family.show = [](const void *record) { SHOW(static_cast<const RECORD *>(record)); };
    return family;
}
template <auto SHOW>
constexpr FAMILY_T shown(FAMILY_T family) {
    return with_listing<SHOW>(family, SHOW);
}

template <class NODE, class HOLDS>
bool all_of(const NODE *list, HOLDS holds) {
    for (const NODE *node = list; node != nullptr; node = static_cast<const NODE *>(node->next))
        if (!holds(*node))
            return false;
    return list != nullptr;
}

bool page_can_be_sent(const void *record) {
    return static_cast<const PAGE_T *>(record)->list != nullptr;
}

bool detail_can_be_sent(const void *record) {
    const auto &info = *static_cast<const DETAIL_T *>(record);
    for (const auto *values : {info.director_info, info.actor_info, info.kind_info})
        if (values != nullptr && values->list == nullptr)
            return false;
    return info.video_list != nullptr;
}

bool disks_can_be_sent(const void *record) {
    return all_of(static_cast<const DISKS_T *>(record),
                  [](const DISKS_T &disk) { return disk.info != nullptr && disk.list != nullptr; });
}

bool movies_can_be_sent(const void *record) {
    return all_of(static_cast<const MOVIES_T *>(record), [](const MOVIES_T &node) {
        return node.info == nullptr ||
               (node.info->director_list != nullptr && node.info->actor_list != nullptr &&
                node.info->year_list != nullptr && node.info->video_list != nullptr);
    });
}

bool hdvideos_can_be_sent(const void *record) {
    return all_of(static_cast<const HDVIDEOS_T *>(record),
                  [](const HDVIDEOS_T &movie) { return movie.list != nullptr; });
}

bool anything_can_be_sent(const void *) {
    return true;
}

// A touch screen's list travels inside its page alone.
RTSTATUS encode_touch_list(const BASIC_LIST_T *list, PVOID *body, INT32_T *length) {
    const PAGE_T page{{}, const_cast<BASIC_LIST_T *>(list)};
    PVOID whole = nullptr;
    INT32_T size = 0;
    const RTSTATUS result = encode_touchscreen_basic_movie_ext_information_to_message(&page, &whole, &size);
    if (result != 0)
        return result;
    *length = size - PAGE_NUMBERS_LENGTH;
    *body = malloc(static_cast<size_t>(*length));
    memcpy(*body, static_cast<const INT8_T *>(whole) + PAGE_NUMBERS_LENGTH, static_cast<size_t>(*length));
    safe_free(whole);
    return 0;
}

// ---- Bodies of single items

struct IDS_BEHIND_UUID_T {
    INT8_T *uuid;
    INT32_T rid;
    TP_TAVISYS_MOVIE_ID_INFORMATION_T *list;
};

void release_ids(IDS_BEHIND_UUID_T **info) {
    if (*info == nullptr)
        return;
    safe_free((*info)->uuid);
    delete_tavisys_movie_id_information(&(*info)->list);
    free(*info);
}

INT32_T decode_ids(const void *body, INT32_T length, IDS_BEHIND_UUID_T **out) {
    auto *info = static_cast<IDS_BEHIND_UUID_T *>(calloc(1, sizeof(IDS_BEHIND_UUID_T)));
    TP_TAVISYS_MOVIE_ID_INFORMATION_T mark{};
    info->list = &mark;
    const INT32_T used = decode_movid_info_to_buffer(body, length, &info->uuid, &info->rid, &info->list);
    require((used < 0) == (info->list == &mark), "a list of a failure, or none of a success");
    if (used >= 0) {
        *out = info;
    } else {
        info->list = nullptr;
        release_ids(&info); // the uuid is the caller's even then
    }
    return used;
}

RTSTATUS encode_ids(const IDS_BEHIND_UUID_T *info, PVOID *body, INT32_T *length) {
    return encode_movid_info_to_buffer(info->uuid, info->rid, info->list, body, length);
}

bool ids_can_be_sent(const void *record) {
    const auto &info = *static_cast<const IDS_BEHIND_UUID_T *>(record);
    return info.uuid != nullptr && info.list != nullptr;
}

void release_items(ITEMS_T **items) {
    if (*items == nullptr)
        return;
    for (INT8_T *text : (*items)->texts)
        safe_free(text);
    free(*items);
}

template <class DECODE>
INT32_T decode_items(ITEMS_T **out, DECODE decode) {
    auto *items = static_cast<ITEMS_T *>(calloc(1, sizeof(ITEMS_T)));
    const INT32_T used = decode(items->numbers, items->texts);
    if (used >= 0)
        *out = items;
    else
        release_items(&items); // what was decoded before the failure is the caller's
    return used;
}

// The integer in front, the length of the rest, is written by whoever sends such a body.
template <class WRITE>
RTSTATUS encode_sized(PVOID *body, INT32_T *length, INT32_T rest, WRITE write) {
    const INT32_T number_length = calc_codec_int_data_length();
    auto *start = static_cast<INT8_T *>(malloc(static_cast<size_t>(number_length + rest)));
    encode_int_data_to_buffer(rest, start, number_length);
    require(write(start + number_length, rest) == rest, "items don't take the room that they should");
    *body = start;
    *length = number_length + rest;
    return 0;
}

INT32_T texts_length(const ITEMS_T &items, size_t count) {
    INT32_T length = 0;
    for (size_t i = 0; i < count; i++)
        length += calc_codec_ptr_data_length(items.texts[i]);
    return length;
}

INT32_T decode_mid_vid(const void *body, INT32_T length, ITEMS_T **out) {
    return decode_items(out, [&](INT32_T *, INT8_T **texts) {
        return decode_mid_vid_to_buffer(body, length, &texts[0], &texts[1]);
    });
}

RTSTATUS encode_mid_vid(const ITEMS_T *items, PVOID *body, INT32_T *length) {
    return encode_sized(body, length, texts_length(*items, 2), [&](INT8_T *to, INT32_T room) {
        return encode_mid_vid_argument_to_buffer(items->texts[0], items->texts[1], to, room);
    });
}

INT32_T decode_answer(const void *body, INT32_T length, ITEMS_T **out) {
    return decode_items(out, [&](INT32_T *numbers, INT8_T **texts) {
        return decode_basic_movie_to_buffer(body, &length, &numbers[0], &numbers[1], &texts[0], &texts[1],
                                            &texts[2], &texts[3]);
    });
}

RTSTATUS encode_answer(const ITEMS_T *items, PVOID *body, INT32_T *length) {
    const INT32_T rest = 2 * calc_codec_int_data_length() + texts_length(*items, 4);
    return encode_sized(body, length, rest, [&](INT8_T *to, INT32_T room) {
        const auto &[numbers, texts] = *items;
        return encode_basic_movie_argument_to_buffer(numbers[0], numbers[1], texts[0], texts[1], texts[2],
                                                     texts[3], to, room);
    });
}

INT32_T decode_path(const void *body, INT32_T length, ITEMS_T **out) {
    return decode_items(out, [&](INT32_T *, INT8_T **texts) {
        return decode_ffmpegc_movie_path_from_buffer(body, length, &texts[0], &texts[1]);
    });
}

RTSTATUS encode_path(const ITEMS_T *items, PVOID *body, INT32_T *length) {
    return encode_ffmpegc_movie_path_to_buffer(items->texts[0], items->texts[1], body, length);
}

INT32_T decode_text(const void *body, INT32_T length, ITEMS_T **out) {
    return decode_items(out, [&](INT32_T *, INT8_T **texts) {
        return decode_ptr_data_from_buffer(body, length, &texts[0], 0);
    });
}

RTSTATUS encode_text(const ITEMS_T *items, PVOID *body, INT32_T *length) {
    const INT32_T size = calc_codec_ptr_data_length(items->texts[0]);
    PVOID text = malloc(static_cast<size_t>(size));
    require(encode_ptr_data_to_buffer(items->texts[0], text, size) == size, "a string takes another room");
    *body = text;
    *length = size;
    return 0;
}

const FAMILY_T FAMILIES[] = {
    with(family<decode_tavisys_basic_movie_ext_information_from_message,
                encode_tavisys_basic_movie_ext_information_to_message,
                delete_tavisys_basic_movie_ext_information>("page"),
         page_can_be_sent),
    family<decode_tavisys_basic_movie_information_list_from_message,
           encode_tavisys_basic_movie_information_list_to_message,
           delete_tavisys_basic_movie_information_list>("basic_movies"),
    with(family<decode_touchscreen_basic_movie_ext_information_from_message,
                encode_touchscreen_basic_movie_ext_information_to_message,
                delete_tavisys_basic_movie_ext_information>("touch_page"),
         page_can_be_sent),
    family<decode_touchscreen_basic_movie_information_list_from_message, encode_touch_list,
           delete_tavisys_basic_movie_information_list>("touch_movies"),
    [] {
        FAMILY_T ids =
            family<decode_tavisys_movie_id_information_to_message,
                   encode_tavisys_movie_id_information_to_message, delete_tavisys_movie_id_information>(
                "movie_ids");
        ids.unread = 4;
        return ids;
    }(),
    with(family<decode_ids, encode_ids, release_ids>("uuid_and_ids"), ids_can_be_sent),
    [] {
        FAMILY_T videos = with(family<decode_hdvideo_list_information_from_message,
                                      encode_hdvideo_list_to_message, delete_hard_disk_videolist>("hdvideos"),
                               hdvideos_can_be_sent);
        videos.tells_bytes = false;
        return videos;
    }(),
    shown<show_tavisys_category_information_list>(
        family<decode_tavisys_category_information_list_from_message,
               encode_tavisys_category_information_list_to_message, delete_tavisys_category_information_list>(
            "categories")),
    family<decode_tavisys_kind_information_from_message, encode_tavisys_kind_information_list_to_message,
           delete_tavisys_kind_information_list>("kinds"),
    family<decode_tavisys_filter_information_list_from_message,
           encode_tavisys_filter_information_list_to_message, delete_tavisys_filter_information_list>(
        "filters"),
    shown<show_tp_tavisys_harddisk_information_list>(
        with(family<decode_tavisys_harddisk_information_list_from_message,
                    encode_tavisys_harddisk_information_list_to_message,
                    release_tavisys_harddisk_information_list>("disks"),
             disks_can_be_sent)),
    with(family<decode_tavisys_detail_movie_information_from_message,
                encode_tavisys_detail_movie_information_to_message, release_tavisys_detail_movie_information>(
             "detail"),
         detail_can_be_sent),
    shown<show_tp_tavisys_dbdata_movie_information_list>(
        with(family<decode_tp_tavisys_dbdata_movie_information_list_from_message,
                    encode_tp_tavisys_dbdata_movie_information_list_to_message_packed,
                    delete_tp_tavisys_dbdata_movie_information_list>("movies"),
             movies_can_be_sent)),
    with(family<decode_movinfo_request_information_from_buffer, encode_movinfo_request_information_to_message,
                delete_tp_tavisys_movieinfo_request_information>("movcodes"),
         anything_can_be_sent),
    family<decode_mid_vid, encode_mid_vid, release_items>("mid_vid"),
    family<decode_answer, encode_answer, release_items>("answer"),
    family<decode_path, encode_path, release_items>("path"),
    family<decode_tavisys_player_status_information_from_message,
           encode_tavisys_player_status_information_to_message, delete_tavisys_player_status_information>(
        "player"),
    shown<show_tavisys_system_information>(
        family<decode_tavisys_system_information_from_message, encode_tavisys_system_information_to_message,
               delete_tavisys_system_information>("system")),
    family<decode_tavisys_sysrun_status_information_from_message,
           encode_tavisys_sysrun_status_information_to_message, delete_tavisys_sysrun_status_information>(
        "status"),
    shown<show_tavisys_version_information>(
        family<decode_tavisys_version_information_from_message, encode_tavisys_version_information_to_message,
               delete_tavisys_version_information>("version")),
    family<decode_tavisys_video_information_list_from_buffer,
           encode_tavisys_video_information_list_to_message, delete_tavisys_video_information_list>("videos"),
    family<decode_text, encode_text, release_items>("text"),
};

} // namespace

std::span<const FAMILY_T> families() {
    return FAMILIES;
}

const FAMILY_T &family_of(const char *name) {
    for (const FAMILY_T &family : FAMILIES)
        if (strcmp(family.name, name) == 0)
            return family;
    require(false, "no such family", name);
    abort();
}

} // namespace fuzz
