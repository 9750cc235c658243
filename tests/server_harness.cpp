#include "server_harness.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace harness {

namespace fs = std::filesystem;

FOLDER_T::FOLDER_T() {
    std::string path = (fs::temp_directory_path() / "tavisys-test-XXXXXX").string();
    if (mkdtemp(path.data()) == nullptr)
        ADD_FAILURE() << "no folder for the test";
    path_ = path;
}

std::string MOVIE_DOCUMENT_T::text() const {
    const auto element = [](const std::string &tag, const std::string &value) {
        return "<" + tag + ">" + value + "</" + tag + ">";
    };
    std::string kind_list;
    for (const std::string &kind : kinds)
        kind_list += element("kind", element("kind_name", kind));
    std::string area_list;
    for (const std::string &area : areas)
        area_list += element("area", element("area_name", area));
    return element(
        "metadata",
        element("movie", element("movie_code", code) + element("movie_name_ch", name) +
                             element("movie_name_en", name)) +
            element("imdb_value", score) + element("index", "BWBJ") +
            element("dimension_info", element("dimension_id", "1") + element("dimension_name", dimension)) +
            element("category", category) + element("kinds", kind_list) + element("areas", area_list) +
            "<directors/><actors/>" + element("put_time", put_time) + element("publish_time", publish_time) +
            element("duration", "171") +
            element("poster",
                    element("poster_b", poster) + element("poster_m", poster) + element("poster_s", poster)) +
            element("description", "两个京剧伶人半个世纪的悲欢离合。") + element("episodes", "1") +
            element("videos", element("video", element("video_seqno", "1") + element("video_name", name) +
                                                   element("video_filepath", "videos/1.mkv"))));
}

void write_file(const fs::path &path, const std::string &text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

fs::path write_document(const fs::path &library, const std::string &partition,
                        const MOVIE_DOCUMENT_T &movie) {
    // The folder carries no more of a long code than a file name may have.
    const fs::path path = library / partition / movie.code.substr(0, 200) / "metadata.xml";
    write_file(path, movie.text());
    return path;
}

SERVER_PROCESS_T::SERVER_PROCESS_T(const std::vector<std::string> &arguments) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipe";
        return;
    }
    std::vector<std::string> words = {TAVISYS_SERVER};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char *> argv;
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    EXPECT_EQ(0, posix_spawn(&process_, argv[0], &actions, nullptr, argv.data(), environ));
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    reader_ = std::thread([this, file = ends[0]] { read_log(file); });
}

SERVER_PROCESS_T::~SERVER_PROCESS_T() {
    if (status_ < 0) {
        signal(SIGTERM);
        EXPECT_EQ(0, wait_for_end()) << log();
    }
    if (reader_.joinable())
        reader_.join();
}

std::unique_ptr<SERVER_PROCESS_T> SERVER_PROCESS_T::serving(const fs::path &library,
                                                            std::vector<std::string> options) {
    options.insert(options.begin(), {"--library", library.string()});
    auto server = std::make_unique<SERVER_PROCESS_T>(options);
    EXPECT_TRUE(server->wait_for_scans(1)) << server->log();
    return server;
}

void SERVER_PROCESS_T::read_log(int file) {
    char buffer[4096];
    ssize_t count = 0;
    while ((count = read(file, buffer, sizeof buffer)) > 0) {
        const std::lock_guard lock(mutex_);
        log_.append(buffer, static_cast<size_t>(count));
        changed_.notify_all();
    }
    close(file);
    const std::lock_guard lock(mutex_);
    ended_ = true;
    changed_.notify_all();
}

bool SERVER_PROCESS_T::wait_for(const std::string &text, size_t times) {
    size_t seen = 0;
    size_t from = 0;
    std::unique_lock lock(mutex_);
    for (;;) {
        for (size_t at = 0; (at = log_.find(text, from)) != std::string::npos; from = at + text.size())
            seen++;
        if (seen >= times || ended_)
            return seen >= times;
        changed_.wait(lock);
    }
}

void SERVER_PROCESS_T::signal(int number) const {
    kill(process_, number);
}

int SERVER_PROCESS_T::wait_for_end() {
    int status = 0;
    EXPECT_EQ(process_, waitpid(process_, &status, 0));
    status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return status_;
}

std::string SERVER_PROCESS_T::log() const {
    const std::lock_guard lock(mutex_);
    return log_;
}

long SERVER_PROCESS_T::resident_kib() const {
    std::ifstream file("/proc/" + std::to_string(process_) + "/statm");
    long pages = 0;
    file >> pages >> pages;
    return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

size_t SERVER_PROCESS_T::open_files() const {
    const fs::directory_iterator files("/proc/" + std::to_string(process_) + "/fd");
    return static_cast<size_t>(std::distance(begin(files), end(files)));
}

int connect_to_server() {
    return agent_open_tavisys_msg_channel();
}

void send_request(int sock, INT32_T type, const std::string &body) {
    const TRLV_MESSAGE_HEAD head{type, 0, static_cast<INT32_T>(body.size())};
    send_data_to_tavisys_msg_channel(sock, &head, sizeof head, body.data());
}

RAW_REPLY_T receive_reply(int sock) {
    RAW_REPLY_T reply{{-1, 0, 0}, ""};
    PVOID body = nullptr;
    if (receive_data_from_tavisys_msg_channel(sock, &reply.head, sizeof reply.head, &body, 5) < 0)
        reply.head.type = -1;
    else if (body != nullptr)
        reply.body.assign(static_cast<const char *>(body), static_cast<size_t>(reply.head.length));
    safe_free(body);
    close_tavisys_msg_channel(sock);
    return reply;
}

RAW_REPLY_T exchange(INT32_T type, const std::string &body) {
    const int sock = connect_to_server();
    EXPECT_GE(sock, 0);
    send_request(sock, type, body);
    return receive_reply(sock);
}

PAGE_PTR ask_for_page(const TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T &request) {
    TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T *page = nullptr;
    EXPECT_EQ(0, tavisysapi_get_movie_basic_ext_information(&request, &page));
    return PAGE_PTR(page);
}

TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T ask_for_status() {
    TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T *info = nullptr;
    EXPECT_EQ(20, tavisysapi_get_system_running_status(&info));
    const TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T status =
        info == nullptr ? TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T{} : *info;
    delete_tavisys_sysrun_status_information(&info);
    return status;
}

std::string request_of_codes(const char *disk, const char *partition, const std::vector<std::string> &codes) {
    TP_MOVCODE_INFORMATION_LIST_T *list = nullptr;
    for (const std::string &code : codes)
        add_node_to_tp_movcode_information_list(&list,
                                                create_tp_movcode_information_list_node_ex(code.c_str()));
    auto *request = create_tp_tavisys_movcode_information("tests", disk, partition, list);
    PVOID body = nullptr;
    INT32_T length = 0;
    EXPECT_EQ(0, encode_movinfo_request_information_to_message(request, &body, &length));
    std::string bytes(static_cast<char *>(body), static_cast<size_t>(length));
    safe_free(body);
    delete_tp_tavisys_movieinfo_request_information(&request);
    return bytes;
}

} // namespace harness
