#include "dbdata_actor.h"
#include "dbdata_director.h"
#include "dbdata_movie.h"
#include "dbdata_video.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <thread>

#include "fake_netif.h"
#include "harness.h"

using namespace harness;

namespace {

using Person = LEAK_CHECKED_T;
using Video = LEAK_CHECKED_T;

INT32_T video_id() {
    auto *video = create_dbdata_video_information(1, "n", "f", nullptr);
    const INT32_T id = video->id;
    delete_dbdata_video_information(&video);
    return id;
}

} // namespace

TEST_F(Person, TheCodeAloneTellsPersonsApart) {
    auto *list = create_dbdata_actor_information_list_node_ex("P1", "甲", nullptr);
    auto *renamed = create_dbdata_actor_information_list_node_ex("P1", "乙", nullptr);
    EXPECT_EQ(1, add_node_to_dbdata_actor_information_list(&list, renamed));
    EXPECT_EQ(0, add_node_to_dbdata_actor_information_list(
                     &list, create_dbdata_actor_information_list_node_ex("P2", "甲", nullptr)));
    EXPECT_EQ(nullptr, found_node_from_dbdata_actor_information_list_by_code(nullptr, "P1"));
    EXPECT_EQ(nullptr, create_dbdata_actor_information("P3", nullptr));
    EXPECT_EQ(nullptr, create_dbdata_director_information(nullptr, "丙"));
    testing::internal::CaptureStdout();
    show_dbdata_actor_information_list(list, 1);
    EXPECT_EQ(
        "演员编码: P1, 演员名称: 甲. 该节点被引用了1次\n演员编码: P2, 演员名称: 甲. 该节点被引用了1次\n",
        testing::internal::GetCapturedStdout());
    for (auto *node : {renamed, list})
        delete_dbdata_actor_information_list(&node);
}

TEST(IdsDeathTest, AFreshProcessCountsUpFromTheBaseThatEth0GivesAndMoviesPrint) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto exit_as_told = [] {
        std::vector<INT32_T> movies, videos;
        testing::internal::CaptureStdout();
        for (const INT8_T *address : {"", "1.2.3", "10.0.0.0", "192.168.1.23", "10.0.0.9"}) {
            fake_netif::s_address = *address == '\0' ? nullptr : address;
            auto *movie = create_dbdata_movie_information();
            movies.push_back(movie->id);
            release_dbdata_movie_information(&movie);
            videos.push_back(video_id());
        }
        const std::string printed = testing::internal::GetCapturedStdout();
        const std::string none = "s_id_base :0 .. basicdata:0 \n";
        const bool told = printed == none + none + "s_id_base :1150000 .. basicdata:23 \n";
        const bool counted = videos == std::vector{1, 2, 3, 1150004, 1150005} && movies == videos;
        exit(told && counted && fake_netif::s_queries == 8 ? 0 : 1);
    };
    EXPECT_EXIT(exit_as_told(), testing::ExitedWithCode(0), "");
}

TEST_F(Video, HoldsCopiesOfItsPaths) {
    INT8_T name[] = "第1集";
    auto *node = create_dbdata_video_information_list_node_ex(-3, name, "/v/1.mkv", "/v/1.mp4");
    name[0] = 'x';
    EXPECT_EQ(-3, node->info->seqno);
    EXPECT_STREQ("第1集", node->info->name);
    EXPECT_STREQ("/v/1.mkv", node->info->filepath);
    EXPECT_STREQ("/v/1.mkv", node->info->relative_filepath);
    EXPECT_STREQ("/v/1.mp4", node->info->mp4);
    EXPECT_STREQ("/v/1.mp4", node->info->relative_mp4);
    delete_dbdata_video_information_list_node(&node);
    EXPECT_EQ(nullptr, create_dbdata_video_information(1, nullptr, "/v", nullptr));
    EXPECT_EQ(nullptr, create_dbdata_video_information(1, "n", nullptr, nullptr));
}

TEST_F(Video, AListTakesAnyVideoButNoNodeWithoutOne) {
    DBDATA_VIDEO_INFORMATION_LIST_T *list = nullptr;
    const auto twin = [] { return create_dbdata_video_information_list_node_ex(1, "同", "/v", nullptr); };
    auto *empty = create_dbdata_video_information_list_node(nullptr);
    for (auto *node : {twin(), empty, twin()})
        EXPECT_EQ(0, add_node_to_dbdata_video_information_list(&list, node));
    testing::internal::CaptureStdout();
    show_dbdata_video_information_list(list);
    EXPECT_EQ("视频序号: 1, 视频名称: 同, 视频路径: /v\n视频序号: 1, 视频名称: 同, 视频路径: /v\n",
              testing::internal::GetCapturedStdout());
    for (auto *node : {empty, list})
        delete_dbdata_video_information_list(&node);
}

TEST_F(Video, ThreadsGetIdsOfTheirOwnWithoutGaps) {
    const INT32_T before = video_id();
    std::vector<INT32_T> ids(8 * 400);
    std::vector<std::thread> threads(8);
    for (auto from = ids.begin(); std::thread & thread : threads) {
        thread = std::thread([from] { std::generate_n(from, 400, video_id); });
        from += 400;
    }
    for (std::thread &thread : threads)
        thread.join();
    std::sort(ids.begin(), ids.end());
    EXPECT_EQ(before + 1, ids.front());
    EXPECT_EQ(before + 8 * 400, ids.back());
    EXPECT_EQ(ids.end(), std::adjacent_find(ids.begin(), ids.end()));
}
