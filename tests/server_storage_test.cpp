// What tavisys-server tells of its disks, and the whole records that it sends to other servers.
#include "server_harness.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sched.h>
#include <set>
#include <sys/mount.h>

#include "devices.h"

using namespace harness;
namespace fs = std::filesystem;

namespace {

constexpr const INT8_T *HERE = "127.0.0.1";

struct PLACE_T {
    std::string disk, partition, serial, uuid, mount_point;
    auto operator<=>(const PLACE_T &) const = default;
};
using PLACES_T = std::set<PLACE_T>;

// Frees the list.
PLACES_T places_of(TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *list) {
    const DISKS_PTR owner(list);
    PLACES_T places;
    for (; list != nullptr; list = static_cast<TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *>(list->next))
        for_each(list->list, [&](const auto &partition) {
            places.insert({list->info->devname, partition.devname, list->info->serialno, partition.uuid,
                           partition.mntp});
        });
    return places;
}

PLACES_T ask_for_places() {
    TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *list = nullptr;
    EXPECT_LE(0, tavisysapi_get_vod_harddisk_information(HERE, &list));
    return places_of(list);
}

TRANSFER_PTR ask_for_movies(const std::string &disk, const std::string &partition) {
    TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list = nullptr;
    EXPECT_LE(0, tavisysapi_get_movie_metadata_from_server(HERE, disk.c_str(), partition.c_str(), &list));
    return TRANSFER_PTR(list);
}

template <class NODE>
std::string names_of(const NODE *list) {
    std::string names;
    for_each(list, [&](const auto &value) { names += std::string(value.name) + " "; });
    return names;
}

} // namespace

TEST(ServerStorage, TellsItsDisksAndPartitionsAndCountsTheirMovies) {
    const FOLDER_T library;
    fs::copy(SAMPLE_LIBRARY, library.path(), fs::copy_options::recursive);
    fs::create_directories(library.path() / "sdc" / "sdc1"); // without movies
    fs::create_directories(library.path() / "sdd");          // without partitions
    PLACES_T places;
    for (int run = 0; run < 2; run++) { // what is made up stays the same
        const auto server = SERVER_PROCESS_T::serving(library.path());
        const PLACES_T found = ask_for_places();
        EXPECT_TRUE(run == 0 || found == places);
        places = found;
        INT32_T sum = 0;
        for (const PLACE_T &place : places) {
            INT32_T movies = -1;
            EXPECT_EQ(0, tavisysapi_get_movies_from_server(HERE, place.disk.c_str(), place.partition.c_str(),
                                                           &movies));
            INT32_T fetched = 0;
            for_each(ask_for_movies(place.disk, place.partition).get(), [&](const auto &) { fetched++; });
            EXPECT_EQ(movies, fetched) << place.partition;
            sum += movies;
        }
        EXPECT_EQ(ask_for_status().parseok_movies, sum);
        TP_TAVISYS_SYSTEM_INFORMATION_T *system = nullptr;
        ASSERT_EQ(0, tavisysapi_get_system_information(&system));
        EXPECT_EQ(4, system->hdnum);
        EXPECT_EQ(sum, system->movnum);
        delete_tavisys_system_information(&system);
    }

    std::set<std::string> serials, uuids;
    for (const PLACE_T &place : places) {
        serials.insert(place.serial);
        uuids.insert(place.uuid);
        EXPECT_EQ(36U, place.uuid.size());
        EXPECT_EQ(library.path() / place.disk / place.partition, place.mount_point);
    }
    EXPECT_EQ(3U, serials.size());
    EXPECT_EQ(4U, uuids.size());
    EXPECT_EQ(4U, places.size());

    const auto server = SERVER_PROCESS_T::serving(library.path());
    const TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T request{"", "sda", "ignored"};
    const RAW_REPLY_T reply = exchange(TAVISYS_MSGTYPE_REQUEST_PARTITION_INFO, bytes_of(request));
    TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *list = nullptr;
    EXPECT_EQ(reply.head.length, decode_tavisys_harddisk_information_list_from_message(
                                     reply.body.data(), reply.head.length, &list));
    std::erase_if(places, [](const PLACE_T &place) { return place.disk != "sda"; });
    EXPECT_EQ(places, places_of(list));

    const PAGE_PTR page = ask_for_page({0, 0, 0, 0, 0, 1, 100, 0});
    for_each(page->list, [&](const auto &movie) { EXPECT_EQ(1U, serials.count(movie.hdsn)); });
}

TEST(ServerStorage, SendsWholeRecords) {
    const FOLDER_T library;
    MOVIE_DOCUMENT_T document{"C1", "甲", " 9.0 ", "3D", "音乐", {"摇滚", "民谣"}, {"美国"}, "2020-01-02"};
    const fs::path path = write_document(library.path(), "sda/sda1", document);
    std::string text = document.text();
    const std::string directors = "<directors/>"; // nobody plays in it, but somebody directed it
    text.replace(text.find(directors), directors.size(),
                 "<directors><director><director_code>P1</director_code><director_name>谁</director_name>"
                 "</director></directors>");
    write_file(path, text);
    write_document(library.path(), "sdb/sdb1", document);
    const auto server = SERVER_PROCESS_T::serving(library.path());

    const TRANSFER_PTR list = ask_for_movies("sda", "sda1");
    ASSERT_NE(nullptr, list);
    ASSERT_EQ(nullptr, list->next);
    const auto &movie = *list->info;
    EXPECT_STREQ("C1", movie.movcode);
    EXPECT_STREQ("甲", movie.movnamech);
    EXPECT_STREQ("9.0", movie.imdbvalue);
    EXPECT_EQ("全部 3D ", names_of(movie.dimension_list));
    EXPECT_EQ("全部 BD ", names_of(movie.resolution_list));
    EXPECT_EQ("音乐 ", names_of(movie.category_list));
    EXPECT_EQ("全部 摇滚 民谣 3D ", names_of(movie.kind_list));
    EXPECT_EQ("全部 美国 ", names_of(movie.area_list));
    EXPECT_EQ(nullptr, movie.actor_list);
    EXPECT_EQ("谁 ", names_of(movie.director_list));
    EXPECT_EQ(20200102, movie.puttime);
    EXPECT_EQ(19930101, movie.pubtime);
    EXPECT_STREQ("posters/b.jpg", movie.posters->big); // as the document has it
    EXPECT_EQ(movie.episodes, 1);
    EXPECT_NE(nullptr, movie.video_list);

    const TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T kinds{TP_FILTER_TYPE_KIND, 0};
    const RAW_REPLY_T reply = exchange(TAVISYS_MSGTYPE_REQUEST_KIND_LIST, bytes_of(kinds));
    EXPECT_NE(std::string::npos, reply.body.find("民谣"));

    struct CODES_T {
        std::vector<std::string> codes;
        const char *disk;
        const char *partition;
        size_t found;
    };
    for (const CODES_T &c : {CODES_T{{"C1"}, nullptr, "", 2},
                             {{"C1", "C0", "C1"}, "sda", nullptr, 1},
                             {{"C1"}, "", "sdb1", 1},
                             {{"C1"}, "sda", "sdb1", 0},
                             {{"C", "C11", ""}, nullptr, nullptr, 0},
                             {{}, nullptr, nullptr, 0}}) {
        const RAW_REPLY_T by_code = exchange(AVISYS_MSGTYPE_REQUEST_MOVIE_INFO_BY_MOVCODE,
                                             request_of_codes(c.disk, c.partition, c.codes));
        TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *movies = nullptr;
        EXPECT_EQ(by_code.head.length, decode_tp_tavisys_dbdata_movie_information_list_from_message(
                                           by_code.body.data(), by_code.head.length, &movies));
        const TRANSFER_PTR owner(movies);
        size_t found = 0;
        for_each(movies, [&](const auto &) { found++; });
        EXPECT_EQ(c.found, found);
    }
}

TEST(ServerStorage, OffersPostersAndTouchScreenPages) {
    {
        const auto server = SERVER_PROCESS_T::serving(SAMPLE_LIBRARY);
        std::set<std::string> known;
        const PAGE_PTR page = ask_for_page({0, 0, 0, 0, 0, 1, 100, 0});
        for_each(page->list, [&](const auto &movie) { known.insert(movie.bposter); });
        std::set<std::string> shown;
        for (int i = 0; i < 100; i++) {
            INT8_T poster[1025] = "";
            ASSERT_EQ(0, tavisysapi_random_get_movie_poster(poster, sizeof poster - 1));
            EXPECT_EQ(1U, known.count(poster)) << poster;
            shown.insert(poster);
        }
        EXPECT_LT(10U, shown.size());

        TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T request{0, 0, 0, 0, 0, 1, 100, 1};
        TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *touch = nullptr;
        ASSERT_EQ(0, touchscreen_get_movie_basic_ext_information(&request, &touch));
        const PAGE_PTR owner(touch);
        EXPECT_EQ(28, touch->pageinfo.replymovies);
        for_each(touch->list, [&](const auto &movie) {
            TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T which{0, movie.movid};
            TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T *detail = nullptr;
            ASSERT_EQ(0, touch_screenapi_get_movie_detail_information(&which, &detail));
            EXPECT_EQ(detail->videos, static_cast<INT32_T>(movie.totalvideo));
            EXPECT_EQ(detail->duration_info->value, std::to_string(movie.duration) + "分钟");
            release_tavisys_detail_movie_information(&detail);
            const std::string body = bytes_of(which);
            EXPECT_EQ(exchange(TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, body).body,
                      exchange(TOUCHSCREEM_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO, body).body);
        });
    }
    const FOLDER_T empty;
    const auto server = SERVER_PROCESS_T::serving(empty.path());
    INT8_T poster[100] = "";
    EXPECT_EQ(-2, tavisysapi_random_get_movie_poster(poster, sizeof poster - 1));
    EXPECT_TRUE(ask_for_places().empty());
}

// Takes root, a loop device and a file system of its own; in a mount namespace that nobody else sees.
TEST(ServerStorage, ReadsUuidAndMountPointOfAMountedPartition) {
    constexpr const char *UUID = "6e1f4d0a-5b7c-4a68-9d0e-0123456789ab";
    const FOLDER_T folder;
    const fs::path library = folder.path() / "library";
    const fs::path mounted = library / "sda" / "sda1";
    fs::create_directories(mounted);
    fs::create_directories(library / "sda" / "sda2");
    const fs::path image = folder.path() / "image";
    std::ofstream(image).close();
    fs::resize_file(image, 1024UL * 1024);
    const auto run = [](const std::string &command) {
        return system((command + " >/dev/null 2>&1").c_str()) == 0; // NOLINT(cert-env33-c): our own text
    };
    if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        !run(std::string("mkfs.ext4 -F -U ") + UUID + " " + image.string()) ||
        !run("mount -o loop " + image.string() + " " + mounted.string()))
        GTEST_SKIP() << "no file system can be mounted here";

    std::vector<server::DISK_T> disks{{"sda", "", {{"sda1", "", "", {}}, {"sda2", "", "", {}}}}};
    server::identify_devices(library.string(), "machine", &disks);
    EXPECT_EQ(UUID, disks[0].partitions[0].uuid);
    EXPECT_EQ(mounted, disks[0].partitions[0].mount_point);
    EXPECT_NE(UUID, disks[0].partitions[1].uuid);
    EXPECT_EQ(library / "sda" / "sda2", disks[0].partitions[1].mount_point);
    EXPECT_FALSE(disks[0].serial.empty());
    EXPECT_TRUE(run("umount " + mounted.string()));
}
