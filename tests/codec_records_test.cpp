// The records of a browsing client: what every body has in common, and which field is which.
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
#include "record_family.h"
#include "support_memory.h"

using namespace harness;
using namespace std::string_literals;

namespace {

std::string wire_of_videos() {
    return wire(2, 31, 1, nullptr, "/a.mp4", 32, 2, "下", "/b.mp4");
}
std::string wire_of_movies() { // a full one and an empty one
    return wire(2, 1001, "TV-1", "霸王别姬", 93, 20170101, 19930102, "/n", "/b", "BWBJ", 6, 1993, 3, 11, 12) +
           wire(13, 0, 0, 1, -1, "SN", 4) + wire(0, nullptr, nullptr, 0, 0, 0, nullptr, nullptr, nullptr) +
           wire(0, 0, 0, 0, 0, 0, nullptr, 0);
}

} // namespace

const std::vector<FAMILY_T> &harness::families() {
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
