// Two servers, each in a network namespace of its own with an eth0: all that one of them has is fetched,
// loaded by the other and compared. Takes the right to make namespaces; TAVISYS_DATA names a large library.
#include "server_harness.h"

#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <limits>
#include <map>
#include <sched.h>
#include <unistd.h>

using namespace harness;
namespace fs = std::filesystem;

namespace {

constexpr const char *FIRST = "10.77.0.9";
constexpr const char *SECOND = "10.77.0.23";
constexpr INT32_T FIRST_ID_OF_SECOND = 23 * 50000 + 1;

bool run(const std::string &command) {
    return system((command + " >/dev/null 2>&1").c_str()) == 0; // NOLINT(cert-env33-c): our own text
}

// A network namespace that this process has made; closed with its object.
class NAMESPACE_T {
public:
    NAMESPACE_T() = default;
    NAMESPACE_T(const NAMESPACE_T &) = delete;
    NAMESPACE_T &operator=(const NAMESPACE_T &) = delete;
    ~NAMESPACE_T() {
        if (file_ >= 0)
            close(file_);
    }
    // Makes it the calling thread's own.
    bool make() {
        if (unshare(CLONE_NEWNET) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0)
            return false;
        file_ = open("/proc/thread-self/ns/net", O_RDONLY | O_CLOEXEC);
        return file_ >= 0;
    }
    void enter() const { EXPECT_EQ(0, setns(file_, CLONE_NEWNET)); }
    std::string path() const { return "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(file_); }

private:
    int file_ = -1;
};

// Two machines with one cable between them.
struct NETWORK_T {
    NAMESPACE_T first, second;

    bool make() {
        return first.make() && run("ip link set lo up") && second.make() && run("ip link set lo up") &&
               run("ip link add eth0 type veth peer name eth0 netns " + first.path()) &&
               run(std::string("ip address add ") + SECOND + "/24 dev eth0") && run("ip link set eth0 up") &&
               give_first_its_address();
    }

private:
    bool give_first_its_address() const {
        first.enter();
        return run(std::string("ip address add ") + FIRST + "/24 dev eth0") && run("ip link set eth0 up");
    }
};

using MOVIE_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T;

// Everything that a record says, but for the ids, which go.
std::string content_of(MOVIE_T *movie) {
    movie->mid = 0;
    for_each(movie->video_list, [](auto &video) { video.vid = 0; });
    const TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T alone{nullptr, movie};
    PVOID body = nullptr;
    INT32_T length = 0;
    EXPECT_EQ(0, encode_tp_tavisys_dbdata_movie_information_list_to_message_packed(&alone, &body, &length));
    std::string bytes(static_cast<char *>(body), static_cast<size_t>(length));
    safe_free(body);
    return bytes;
}

struct PARTITION_T {
    std::string disk, name;
    auto operator<=>(const PARTITION_T &) const = default;
};
using CONTENTS_T = std::map<PARTITION_T, std::map<std::string, std::string>>; // movies by code

struct SERVED_T {
    CONTENTS_T contents;
    INT32_T first_movie = std::numeric_limits<INT32_T>::max();
    INT32_T first_video = std::numeric_limits<INT32_T>::max();
};

SERVED_T ask_for_everything(const char *address) {
    SERVED_T served;
    TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *disks = nullptr;
    EXPECT_LT(0, tavisysapi_get_vod_harddisk_information(address, &disks));
    for (const auto *disk = disks; disk != nullptr;
         disk = static_cast<const TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *>(disk->next))
        for_each(disk->list, [&](const auto &partition) {
            TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *movies = nullptr;
            EXPECT_LT(0, tavisysapi_get_movie_metadata_from_server(address, disk->info->devname,
                                                                   partition.devname, &movies));
            auto &contents = served.contents[{disk->info->devname, partition.devname}];
            for_each(movies, [&](MOVIE_T &movie) {
                served.first_movie = std::min(served.first_movie, movie.mid);
                for_each(movie.video_list, [&](const auto &video) {
                    served.first_video = std::min(served.first_video, video.vid);
                });
                contents[movie.movcode] = content_of(&movie);
            });
            delete_tp_tavisys_dbdata_movie_information_list(&movies);
        });
    release_tavisys_harddisk_information_list(&disks);
    return served;
}

} // namespace

TEST(ServerFetch, AnotherServerHasEveryMovieAfterwards) {
    NETWORK_T network;
    if (!network.make())
        GTEST_SKIP() << "no network namespaces can be made here";
    const char *data = getenv("TAVISYS_DATA");
    if (data == nullptr)
        puts("TAVISYS_DATA names no folder of movie documents: fetching the sample library");

    network.first.enter();
    const auto first =
        SERVER_PROCESS_T::serving(data == nullptr ? SAMPLE_LIBRARY : data, {"--log-level", "NOTICE"});
    network.second.enter();
    const SERVED_T wanted = ask_for_everything(FIRST);
    EXPECT_LT(1U, wanted.contents.size());
    const FOLDER_T library;
    size_t movies = 0;
    for (const auto &[partition, contents] : wanted.contents) {
        EXPECT_TRUE(run(std::string(TAVISYS_CLIENT) + " fetch --server " + FIRST + ' ' + partition.disk +
                        ' ' + partition.name + " --out " + library.path().string()));
        movies += contents.size();
    }

    const auto second = SERVER_PROCESS_T::serving(library.path(), {"--log-level", "NOTICE"});
    const auto status = ask_for_status();
    EXPECT_EQ(movies, static_cast<size_t>(status.parseok_movies));
    EXPECT_EQ(0, status.parseerr_movies);
    SERVED_T found = ask_for_everything("127.0.0.1");
    for (const auto &[partition, contents] : wanted.contents)
        for (const auto &[code, content] : contents)
            ASSERT_EQ(content, found.contents[partition][code]) << code;
    EXPECT_EQ(wanted.contents.size(), found.contents.size());
    // Ids begin at 50000 times the last number of eth0's address: those of servers lie apart.
    EXPECT_EQ(FIRST_ID_OF_SECOND, found.first_movie);
    EXPECT_EQ(FIRST_ID_OF_SECOND, found.first_video);
}
