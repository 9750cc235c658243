// The player's name at the command line. The file is put back as it was.
#include <gtest/gtest.h>

#include <filesystem>

#include "command.h"
#include "error.h"
#include "table.h"

using namespace std::string_literals;

namespace {

// What the command shows, or its exit status and message.
std::string run(std::vector<const char *> words) {
    words.insert(words.begin(), {"tavisys", "name"});
    try {
        const auto parsed = client::parse_command_line(static_cast<int>(words.size()), words.data());
        return parsed.command->run(parsed.arguments, client::UNLIMITED);
    } catch (const client::CLIENT_ERROR_T &error) {
        return std::to_string(error.status) + error.what();
    }
}

} // namespace

TEST(ClientName, IsShownAndSetUnlessItWouldNotBeReadBackAsItIs) {
    const std::filesystem::path file = "/tmp/tavisys.name";
    const std::filesystem::path saved = "/tmp/tavisys.name.saved-by-test";
    std::error_code none;
    rename(file, saved, none);
    EXPECT_EQ("影柜播放机\n", run({}));
    const std::string longest = std::string(1020, 'n') + "机";
    for (const std::string &name : {longest, "version"s, ""s, "客  厅"s}) {
        EXPECT_EQ(name + "\n", run({"set", name.c_str()}));
        EXPECT_EQ(name + "\n", run({}));
    }
    for (const std::string &name : {longest + "n", " x"s, "x "s, " "s, "\tx"s, "x\ny"s, "x\r"s, "\xFF"s})
        EXPECT_EQ("2新名称: ", run({"set", name.c_str()}).substr(0, 12)) << name;
    EXPECT_EQ(0U, run({"set"}).find("2缺少参数: 新名称\n"));
    EXPECT_EQ(0U, run({"客厅"}).find("2操作: 应为set之一"));
    EXPECT_EQ("{\n  \"name\": \"客  厅\"\n}\n", run({"--json"}));
    remove(file);
    create_directory(file);
    EXPECT_EQ(0U, run({"set", "x"}).find("1无法写入播放机的名称"));
    remove(file);
    rename(saved, file, none);
}
