// What every message body has in common, over one table of all record families: the bytes on the wire,
// the way back, every cut, every hostile count, every allocation that fails.
#include <algorithm>
#include <climits>
#include <functional>
#include <gtest/gtest.h>

#include "codec_basic_movinfo.h"
#include "codec_category_info.h"
#include "codec_detail_movinfo.h"
#include "codec_filter_info.h"
#include "codec_kind_info.h"
#include "codec_player_status_info.h"
#include "codec_sysinfo.h"
#include "codec_sysrun_status_info.h"
#include "codec_version_info.h"
#include "codec_video_info.h"
#include "harness.h"
#include "support_memory.h"

using namespace harness;
using namespace std::string_literals;

namespace {

// A body's family with the types taken off.
struct FAMILY_T {
    const char *name;
    std::string wire; // one body, written by hand
    RTSTATUS (*encode)(const void *, PVOID *, INT32_T *);
    INT32_T (*decode)(const void *, INT32_T, void **);
    void (*release)(void **);
};

template <auto ENCODE, auto DECODE, auto RELEASE, class RECORD>
FAMILY_T erase(const char *name, const std::string &wire, void (*)(RECORD **)) {
    return {name, wire,
            [](const void *record, PVOID *body, INT32_T *length) {
                return ENCODE(static_cast<const RECORD *>(record), body, length);
            },
            [](const void *body, INT32_T length, void **out) {
                return DECODE(body, length, reinterpret_cast<RECORD **>(out));
            },
            [](void **record) {
                RELEASE(reinterpret_cast<RECORD **>(record));
                *record = nullptr; // a list's delete leaves the pointer
            }};
}
template <auto ENCODE, auto DECODE, auto RELEASE>
FAMILY_T family(const char *name, const std::string &wire) {
    return erase<ENCODE, DECODE, RELEASE>(name, wire, RELEASE);
}

std::string wire_of_videos() {
    return wire(2, 31, 1, nullptr, "/a.mp4", 32, 2, "下", "/b.mp4");
}
std::string wire_of_movies() { // a full one and an empty one
    return wire(2, 1001, "TV-1", "霸王别姬", 93, 20170101, 19930102, "/n", "/b", "BWBJ", 6, 1993, 3, 11, 12) +
           wire(13, 0, 0, 1, -1, "SN", 4) + wire(0, nullptr, nullptr, 0, 0, 0, nullptr, nullptr, nullptr) +
           wire(0, 0, 0, 0, 0, 0, nullptr, 0);
}

const std::vector<FAMILY_T> &families() {
    static const std::vector<FAMILY_T> FAMILIES = {
        family<encode_tavisys_sysrun_status_information_to_message,
               decode_tavisys_sysrun_status_information_from_message,
               delete_tavisys_sysrun_status_information>(
            "status", "\x03\0\0\0\x0a\0\0\0\x07\0\0\0\x01\0\0\0\x02\0\0\0"s),
        family<encode_tavisys_system_information_to_message, decode_tavisys_system_information_from_message,
               delete_tavisys_system_information>("system", "\x02\0\0\0\xa0\x8c\0\0"s),
        family<encode_tavisys_version_information_to_message, decode_tavisys_version_information_from_message,
               delete_tavisys_version_information>("version", "\x03\0\0\0"
                                                              "1.0\xff\xff\xff\xff\0\0\0\0"s),
        family<encode_tavisys_player_status_information_to_message,
               decode_tavisys_player_status_information_from_message,
               delete_tavisys_player_status_information>("player",
                                                         wire(1, "a.ts", "/盘/", -1, 2, 3, 4, 5, 6, 7, 8)),
        family<encode_tavisys_category_information_list_to_message,
               decode_tavisys_category_information_list_from_message,
               delete_tavisys_category_information_list>(
            "categories",
            "\x02\0\0\0\x01\0\0\0\x06\0\0\0电影\x78\0\0\0\x02\0\0\0\x09\0\0\0电视剧\x28\0\0\0"s),
        family<encode_tavisys_kind_information_list_to_message, decode_tavisys_kind_information_from_message,
               delete_tavisys_kind_information_list>("kinds", wire(2, 7, "喜剧", 3, -8, "", 0)),
        family<encode_tavisys_filter_information_list_to_message,
               decode_tavisys_filter_information_list_from_message, delete_tavisys_filter_information_list>(
            "filters", wire(2, 0, "全部", 5, "1993")),
        family<encode_tavisys_video_information_list_to_message,
               decode_tavisys_video_information_list_from_buffer, delete_tavisys_video_information_list>(
            "videos", wire_of_videos()),
        family<encode_tavisys_basic_movie_information_list_to_message,
               decode_tavisys_basic_movie_information_list_from_message,
               delete_tavisys_basic_movie_information_list>("movies", wire_of_movies()),
        family<encode_tavisys_basic_movie_ext_information_to_message,
               decode_tavisys_basic_movie_ext_information_from_message,
               delete_tavisys_basic_movie_ext_information>("page", wire(1, 20, 3, 42, 2, wire_of_movies())),
        family<encode_tavisys_detail_movie_information_to_message,
               decode_tavisys_detail_movie_information_from_message,
               release_tavisys_detail_movie_information>(
            "detail", wire("霸王别姬", 1993, 1, 3, "2D", nullptr, 1, "导演", 1, "陈凯歌", 0, 1, "类型", 1,
                           "剧情", 0, 1, "简介", "戏", 40, wire_of_videos())),
    };
    return FAMILIES;
}

class Record : public LEAK_CHECKED_T, public testing::WithParamInterface<FAMILY_T> {
protected:
    // Decodes from an exact block; a failure has to leave the out-argument alone.
    INT32_T decode(const std::string &bytes, void **out) {
        const BODY_T body(bytes);
        INT8_T mark = 0;
        void *decoded = &mark;
        const INT32_T used = GetParam().decode(body.data(), body.length(), &decoded);
        EXPECT_EQ(used < 0, decoded == &mark);
        *out = decoded == &mark ? nullptr : decoded;
        return used;
    }
};

// A record and its node take at most this much memory for each byte that they had on the wire.
constexpr size_t MEMORY_PER_BYTE = 8;

} // namespace

TEST_P(Record, DecodesFromItsWireBytesAndEncodesToThem) {
    for (const std::string &unread : {""s, "x"s, "more bytes"s}) {
        void *record = nullptr;
        ASSERT_EQ(static_cast<INT32_T>(GetParam().wire.size()), decode(GetParam().wire + unread, &record));
        PVOID body = nullptr;
        INT32_T length = 0;
        EXPECT_EQ(0, GetParam().encode(record, &body, &length));
        EXPECT_EQ(GetParam().wire, std::string(static_cast<char *>(body), static_cast<size_t>(length)));
        safe_free(body);
        GetParam().release(&record);
    }
}

TEST_P(Record, EveryCutIsRefused) {
    for (size_t cut = 0; cut < GetParam().wire.size(); cut++) {
        void *record = nullptr;
        EXPECT_EQ(-1, decode(GetParam().wire.substr(0, cut), &record)) << cut;
    }
    void *record = nullptr;
    EXPECT_EQ(-1, GetParam().decode("", -1, &record));
    EXPECT_EQ(-1, GetParam().decode("", INT_MIN, &record));
}

TEST_P(Record, NullArgumentsAreRefused) {
    void *sample = nullptr;
    decode(GetParam().wire, &sample);
    INT8_T mark = 0;
    PVOID body = &mark;
    INT32_T length = 77;
    EXPECT_EQ(-1, GetParam().encode(nullptr, &body, &length));
    EXPECT_EQ(-1, GetParam().encode(sample, nullptr, &length));
    EXPECT_EQ(-1, GetParam().encode(sample, &body, nullptr));
    EXPECT_EQ(&mark, body);
    EXPECT_EQ(77, length);
    void *record = &mark;
    EXPECT_EQ(-1, GetParam().decode(nullptr, 100, &record));
    EXPECT_EQ(-1, GetParam().decode(GetParam().wire.data(), 100, nullptr));
    EXPECT_EQ(&mark, record);
    GetParam().release(&sample);
    GetParam().release(&sample); // now NULL: nothing to free
}

// Every integer of the body in turn, be it a value, a length, a flag or a count, becomes a hostile one.
TEST_P(Record, HostileNumbersNeverCostMoreMemoryThanTheBodyHasBytes) {
    const std::string &good = GetParam().wire;
    for (INT32_T hostile : {INT_MAX, INT_MAX - 3, INT_MIN, -1, -2, 0, 1, 2, 3, 0x10000, 0x40000000}) {
        for (size_t at = 0; at + 4 <= good.size(); at++) {
            SCOPED_TRACE(std::to_string(hostile) + " at " + std::to_string(at));
            void *record = nullptr;
            forget_allocations();
            const INT32_T used = decode(std::string(good).replace(at, 4, wire(hostile)), &record);
            EXPECT_LE(bytes_allocated(), MEMORY_PER_BYTE * good.size());
            EXPECT_LE(used, static_cast<INT32_T>(good.size()));
            if (used >= 0)
                GetParam().release(&record);
        }
    }
}

TEST_P(Record, EveryAllocationThatFailsIsACleanFailure) {
    testing::internal::CaptureStdout(); // node creators say what failed; looked at elsewhere
    const auto fail_each = [](const char *what, const std::function<bool()> &succeeds) {
        for (int nth = 1;; nth++) {
            SCOPED_TRACE(std::string(what) + ", allocation " + std::to_string(nth));
            const long live = live_allocations();
            fail_nth_allocation(nth);
            const bool succeeded = succeeds();
            const bool failed = an_allocation_failed();
            EXPECT_NE(failed, succeeded);
            EXPECT_EQ(live, live_allocations());
            if (!failed)
                return nth - 1;
        }
    };
    void *sample = nullptr;
    decode(GetParam().wire, &sample);
    EXPECT_EQ(1, fail_each("encode", [sample] {
                  INT8_T mark = 0;
                  PVOID body = &mark;
                  INT32_T length = 77;
                  const RTSTATUS result = GetParam().encode(sample, &body, &length);
                  EXPECT_EQ(result == 0, body != &mark);
                  EXPECT_EQ(result == 0, length != 77);
                  if (result == 0)
                      safe_free(body);
                  return result == 0;
              }));
    GetParam().release(&sample);
    EXPECT_LT(0, fail_each("decode", [this] {
                  void *record = nullptr;
                  const INT32_T used = decode(GetParam().wire, &record);
                  EXPECT_TRUE(used == -1 || used == static_cast<INT32_T>(GetParam().wire.size()));
                  GetParam().release(&record);
                  return used > 0;
              }));
    testing::internal::GetCapturedStdout();
}

INSTANTIATE_TEST_SUITE_P(Codec, Record, testing::ValuesIn(families()),
                         [](const auto &family) { return std::string(family.param.name); });

namespace {

using Fields = LEAK_CHECKED_T;

template <class RECORD, class DECODE>
RECORD *decoded(const FAMILY_T &family, DECODE decode) {
    RECORD *record = nullptr;
    decode(family.wire.data(), static_cast<INT32_T>(family.wire.size()), &record);
    return record;
}
const FAMILY_T &family_of(const std::string &name) {
    return *std::find_if(families().begin(), families().end(),
                         [&](const FAMILY_T &f) { return f.name == name; });
}

} // namespace

// The round trip tells the order on the wire; that each item belongs to the field of its name is seen here.
TEST_F(Fields, OfStatusRecordsHoldWhatTravelled) {
    const FAMILY_T &statuses = family_of("status");
    auto *status = decoded<TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T>(
        statuses, decode_tavisys_sysrun_status_information_from_message);
    EXPECT_EQ(statuses.wire, wire(status->status, status->total_movies, status->parseok_movies,
                                  status->parseerr_movies, status->left_movies));
    delete_tavisys_sysrun_status_information(&status);
    EXPECT_EQ(nullptr, status);

    const FAMILY_T &players = family_of("player");
    auto *player = decoded<TP_TAVISYS_PLAYER_STATUS_INFORMATION_T>(
        players, decode_tavisys_player_status_information_from_message);
    EXPECT_EQ(players.wire,
              wire(player->status, player->filename, player->filepath, static_cast<INT32_T>(player->playtime),
                   player->duration, player->mute, player->volume, player->movid, player->videoid,
                   player->seqno, player->category_id));
    EXPECT_EQ(0xFFFFFFFFU, player->playtime); // unsigned fields pass through
    delete_tavisys_player_status_information(&player);
    EXPECT_EQ(nullptr, player);
}

TEST_F(Fields, OfAMovieHoldWhatTravelled) {
    const FAMILY_T &movies = family_of("movies");
    auto *list = decoded<TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T>(
        movies, decode_tavisys_basic_movie_information_list_from_message);
    const auto *m = list->info;
    const std::string first =
        wire(2, m->movid, m->movcode, m->movname, static_cast<INT32_T>(m->score), m->puttime, m->pubtime,
             m->nposter, m->bposter, m->acronym, m->category_id, m->year_id, m->kind_ids->num,
             m->kind_ids->ids[0], m->kind_ids->ids[1], m->kind_ids->ids[2], 0, 0, m->resolution_ids->num,
             m->resolution_ids->ids[0], m->hdsn, m->index);
    EXPECT_EQ(movies.wire.substr(0, first.size()), first);
    EXPECT_EQ(nullptr, m->area_ids);
    EXPECT_EQ(nullptr, m->dimension_ids);

    list->info->totalvideo = list->info->duration = 99; // these two don't travel in this form
    PVOID body = nullptr;
    INT32_T length = 0;
    EXPECT_EQ(0, movies.encode(list, &body, &length));
    EXPECT_EQ(movies.wire, std::string(static_cast<char *>(body), static_cast<size_t>(length)));
    safe_free(body);
    delete_tavisys_basic_movie_information_list(&list);
}

TEST_F(Fields, OfADetailRecordHoldWhatTravelled) {
    const FAMILY_T &details = family_of("detail");
    auto *info = decoded<TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T>(
        details, decode_tavisys_detail_movie_information_from_message);
    const auto people = [](const TP_MOVIE_FILTER_KVP_INFORMATION_T *list) {
        return wire(1, list->desc, 1, list->list->info->name);
    };
    const auto video = [](const void *node) {
        const auto *of = static_cast<const TP_TAVISYS_VIDEO_INFORMATION_LIST_T *>(node)->info;
        return wire(of->id, of->seqno, of->name, of->mp4);
    };
    EXPECT_EQ(details.wire,
              wire(info->name, info->year, 1, info->dimension_info->id, info->dimension_info->name,
                   info->poster, people(info->director_info), 0, people(info->kind_info), 0, 1,
                   info->summary_info->desc, info->summary_info->value, info->videos, 2,
                   video(info->video_list), video(info->video_list->next)));
    EXPECT_EQ(nullptr, info->actor_info);
    EXPECT_EQ(nullptr, info->duration_info);
    release_tavisys_detail_movie_information(&info);
    EXPECT_EQ(nullptr, info);
}

TEST_F(Fields, ArePrintedByTheListings) {
    auto *system = create_tavisys_system_information(2, 36000);
    auto *version = decoded<TP_TAVISYS_VERSION_INFORMATION_T>(
        family_of("version"), decode_tavisys_version_information_from_message);
    testing::internal::CaptureStdout();
    show_tavisys_system_information(nullptr);
    show_tavisys_version_information(nullptr);
    show_tavisys_system_information(system);
    show_tavisys_version_information(version);
    EXPECT_EQ("系统共有2个硬盘,36000部影片\n"
              "影柜系统版本号: 1.0\n影柜设备名称: (null)\n影柜设备编码: \n",
              testing::internal::GetCapturedStdout());
    delete_tavisys_system_information(&system);
    delete_tavisys_version_information(&version);
}
