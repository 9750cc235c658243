// What the tests of the server share: a tavisys-server in a process of its own, and libraries of movie
// documents made for one test.
#ifndef TAVISYS_TESTS_SERVER_HARNESS_H
#define TAVISYS_TESTS_SERVER_HARNESS_H

#include <condition_variable>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

#include "tavisys.h"

namespace harness {

// A folder that is removed with its object.
class FOLDER_T {
public:
    FOLDER_T();
    FOLDER_T(const FOLDER_T &) = delete;
    FOLDER_T &operator=(const FOLDER_T &) = delete;
    ~FOLDER_T() { std::filesystem::remove_all(path_); }
    const std::filesystem::path &path() const { return path_; }

private:
    std::filesystem::path path_;
};

// A movie document with everything that is required.
struct MOVIE_DOCUMENT_T {
    std::string code = "TV1993-0015";
    std::string name = "霸王别姬";
    std::string score = "8.1";
    std::string dimension = "2D";
    std::string category = "电影";
    std::vector<std::string> kinds = {"剧情"};
    std::vector<std::string> areas = {"中国"};
    std::string put_time = "2020-01-01";
    std::string publish_time = "1993-01-01";
    std::string poster = "posters/b.jpg";

    std::string text() const;
};
std::filesystem::path write_document(const std::filesystem::path &library, const std::string &partition,
                                     const MOVIE_DOCUMENT_T &movie);
void write_file(const std::filesystem::path &path, const std::string &text);

// Runs tavisys-server and receives what it writes to standard error.
class SERVER_PROCESS_T {
public:
    explicit SERVER_PROCESS_T(const std::vector<std::string> &arguments);
    SERVER_PROCESS_T(const SERVER_PROCESS_T &) = delete;
    SERVER_PROCESS_T &operator=(const SERVER_PROCESS_T &) = delete;
    ~SERVER_PROCESS_T(); // ends it, and fails the test when that was no clean end

    // A server that has loaded its library.
    static std::unique_ptr<SERVER_PROCESS_T> serving(const std::filesystem::path &library,
                                                     std::vector<std::string> options = {});

    // Waits until the text has been written `times` times. False when the server ended before.
    bool wait_for(const std::string &text, size_t times = 1);
    bool wait_for_scans(size_t times) { return wait_for("扫描完成", times); }
    void signal(int number) const;
    int wait_for_end(); // its exit status, or 128 and the signal that ended it
    std::string log() const;
    long resident_kib() const;
    size_t open_files() const;

private:
    void read_log(int file);

    pid_t process_ = -1;
    int status_ = -1;
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::string log_;
    bool ended_ = false;
    std::thread reader_;
};

// One exchange by hand: the head's fields and the body of the reply. The type is -1 when none came.
struct RAW_REPLY_T {
    TRLV_MESSAGE_HEAD head;
    std::string body;
};
RAW_REPLY_T exchange(INT32_T type, const std::string &body);
RAW_REPLY_T receive_reply(int sock); // and close
int connect_to_server();
void send_request(int sock, INT32_T type, const std::string &body);
template <class RECORD>
std::string bytes_of(const RECORD &record) {
    return {reinterpret_cast<const char *>(&record), sizeof record};
}

// The body of a request for the movies of these codes; NULL names mean any.
std::string request_of_codes(const char *disk, const char *partition, const std::vector<std::string> &codes);

// A page, freed with its object.
struct DELETE_PAGE_T {
    void operator()(TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *page) const {
        delete_tavisys_basic_movie_ext_information(&page);
    }
};
using PAGE_PTR = std::unique_ptr<TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T, DELETE_PAGE_T>;
struct DELETE_TRANSFER_T {
    void operator()(TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T *list) const {
        delete_tp_tavisys_dbdata_movie_information_list(&list);
    }
};
using TRANSFER_PTR = std::unique_ptr<TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T, DELETE_TRANSFER_T>;

struct RELEASE_DISKS_T {
    void operator()(TP_TAVISYS_HARDDISK_INFORMATION_LIST_T *list) const {
        release_tavisys_harddisk_information_list(&list);
    }
};
using DISKS_PTR = std::unique_ptr<TP_TAVISYS_HARDDISK_INFORMATION_LIST_T, RELEASE_DISKS_T>;

PAGE_PTR ask_for_page(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request);

// Calls visit(info) for each record of a list.
template <class NODE, class VISIT>
void for_each(const NODE *list, VISIT visit) {
    for (const NODE *node = list; node != nullptr; node = static_cast<const NODE *>(node->next))
        visit(*node->info);
}

TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T ask_for_status();

} // namespace harness

#endif
