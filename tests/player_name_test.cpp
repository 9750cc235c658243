// The player's name in its file, which is put back as it was after each test.
#include "player_operation.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

const std::filesystem::path NAME_FILE = "/tmp/tavisys.name";
const std::filesystem::path SAVED = "/tmp/tavisys.name.saved-by-test";
const std::string DEFAULT_NAME("影柜播放机\0", 16);

class PlayerName : public testing::Test {
protected:
    void SetUp() override {
        if (exists(symlink_status(SAVED))) // by a run that died: what is there now is that run's
            std::filesystem::remove(NAME_FILE);
        else
            move(NAME_FILE, SAVED);
    }
    void TearDown() override {
        std::filesystem::remove(NAME_FILE);
        move(SAVED, NAME_FILE);
    }
    static void move(const std::filesystem::path &from, const std::filesystem::path &to) {
        if (exists(symlink_status(from)))
            std::filesystem::rename(from, to);
    }
};

// What a call has written into a buffer of that size, or the failure that has written nothing.
std::string read_into(INT32_T size) {
    std::string buffer(static_cast<size_t>(std::max(size, 0)), '?');
    const RTSTATUS result = tavisys_get_player_name(buffer.data(), size);
    const std::string written = buffer.substr(0, buffer.find_last_not_of('?') + 1);
    return result == 0 ? written : written + std::to_string(result);
}

} // namespace

TEST_F(PlayerName, TheFilesTextIsTheNameUnlessItDoesNotFit) {
    EXPECT_EQ(DEFAULT_NAME, read_into(16));
    EXPECT_EQ("-1", read_into(15));
    const std::string longest(1024, 'n');
    const struct {
        std::string file;
        INT32_T size;
        std::string want; // without a NUL, but for the default name
    } CASES[] = {
        {"客厅\n", 7, "客厅"},           {"客厅\n", 6, "-1"}, {"a name of sixteen", 16, DEFAULT_NAME},
        {" \r\n a b \n", 20, "a b"},     {"", 1, ""},         {"", -1, "-1"},
        {longest + "xyz", 1025, longest}};
    for (const auto &c : CASES) {
        std::ofstream(NAME_FILE) << c.file;
        EXPECT_EQ(c.want, read_into(c.size)) << c.file;
    }
    EXPECT_EQ(-1, tavisys_get_player_name(nullptr, 16));
}

TEST_F(PlayerName, SettingANameReplacesTheFileOrFails) {
    for (const std::string name : {"客厅的播放机", "卧室", ""}) {
        EXPECT_EQ(0, tavisys_set_player_name(name.c_str()));
        EXPECT_EQ(name, read_into(30));
    }
    EXPECT_EQ(-1, tavisys_set_player_name(nullptr));
    rlimit limit{};
    getrlimit(RLIMIT_FSIZE, &limit);
    signal(SIGXFSZ, SIG_IGN);
    for (const rlim_t room : {0U, 3U}) { // as on a full disk
        limit.rlim_cur = room;
        setrlimit(RLIMIT_FSIZE, &limit);
        EXPECT_EQ(-1, tavisys_set_player_name("客厅"));
    }
    limit.rlim_cur = limit.rlim_max;
    setrlimit(RLIMIT_FSIZE, &limit);
}

TEST_F(PlayerName, ALinkOrAPipeInItsPlaceIsNotOpened) {
    const std::string target = NAME_FILE.string() + ".target-of-test";
    std::filesystem::remove(target); // what a library that follows links has left
    std::filesystem::create_symlink(target, NAME_FILE);
    EXPECT_EQ(-1, tavisys_set_player_name("客厅"));
    EXPECT_FALSE(std::filesystem::exists(NAME_FILE)); // nothing was made at its end
    std::filesystem::remove(NAME_FILE);
    std::filesystem::create_symlink("/dev/full", NAME_FILE);
    EXPECT_EQ(-1, tavisys_set_player_name("客厅"));
    std::filesystem::remove(NAME_FILE);
    ASSERT_EQ(0, mkfifo(NAME_FILE.c_str(), 0600));
    EXPECT_EQ(-1, tavisys_set_player_name("客厅"));
    EXPECT_EQ(DEFAULT_NAME, read_into(16));
}
