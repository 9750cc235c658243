#include "options.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <sstream>
#include <unistd.h>

#include "system_error_text.h"
#include "toml_parser.h"

namespace server {

namespace {

constexpr const char *DEFAULT_CONFIG = "/etc/tavisys/tavisys-server.toml";
constexpr size_t LARGEST_CONFIG = 1024 * 1024;
constexpr unsigned MOST_THREADS = 1024;
constexpr size_t LONGEST_NAME = 255;
constexpr const char *SETTINGS = "设置, 也可写在配置文件中(键为不带--的选项名), 以命令行为准";
constexpr const char *OTHERS = "其他选项";

constexpr const char *FOOTER = R"(
信号:
  SIGHUP           重新扫描影片库, 其间照常服务
  SIGTERM, SIGINT  回应已到的请求, 一秒内结束

退出状态:
  0  正常结束; --check: 全部影片都可提供
  1  无法服务(端口被占用, 影片库无法打开等); --check: 可以服务, 但有文档未收入
  2  选项或配置有误; --check: 无法服务

示例:
  tavisys-server --library /srv/movies --name 客厅影柜
  tavisys-server --library /srv/movies --check)";

std::string check_threads(const std::string &text) {
    unsigned value = 0;
    const char *end = text.data() + text.size();
    const auto [behind, error] = std::from_chars(text.data(), end, value);
    const bool fits = error == std::errc() && behind == end && value >= 1 && value <= MOST_THREADS &&
                      text.front() != '0'; // which would make it an octal number
    return fits ? "" : "应为1到" + std::to_string(MOST_THREADS) + "的整数";
}

std::string check_ranges(const std::string &ranges) {
    const std::string wrong = ACCESS_T().read(ranges);
    return wrong.empty() ? "" : wrong + "不是IPv4地址段";
}

std::string check_level(const std::string &level) {
    for (const char *known : {"DEBUG", "INFO", "NOTICE", "WARN", "ERROR", "FATAL"})
        if (strcasecmp(level.c_str(), known) == 0)
            return "";
    return "应为DEBUG, INFO, NOTICE, WARN, ERROR或FATAL";
}

void declare_settings(CLI::App *app, OPTIONS_T *options) {
    app->option_defaults()->group(SETTINGS);
    app->add_option("--library", options->library, "影片库目录, 其下为 硬盘/分区/.../metadata.xml (必需)")
        ->type_name("目录");
    app->add_option("--name", options->name, "设备名称")
        ->type_name("名称")
        ->capture_default_str()
        ->check([](const std::string &name) {
            return name.empty() || name.size() > LONGEST_NAME ? "应为1到255个字节" : "";
        });
    app->add_option("--threads", options->threads, "应答请求的线程数")
        ->type_name("个数")
        ->capture_default_str()
        ->check(check_threads);
    app->add_option("--allow", options->allowed, "允许哪些IPv4地址查询, 其他地址一律拒绝")
        ->type_name("地址/位数,...")
        ->capture_default_str()
        ->check(check_ranges);
    app->add_option("--log-level", options->log_level,
                    "从哪一级起写日志: DEBUG INFO NOTICE WARN ERROR FATAL (默认: INFO)")
        ->type_name("级别")
        ->check(check_level);
    app->add_option("--metrics", options->metrics, "每隔几秒把运行指标写入此文件(Prometheus文本格式)")
        ->type_name("文件");
}

void declare_others(CLI::App *app, OPTIONS_T *options) {
    app->option_defaults()->group(OTHERS);
    app->set_help_flag("-h,--help", "显示本帮助")->group(OTHERS);
    app->set_version_flag("--version", "tavisys-server " TAVISYS_VERSION, "显示版本号")->group(OTHERS);
    app->add_option("--config", options->config,
                    std::string("配置文件(TOML), 不指定时读取 ") + DEFAULT_CONFIG + " (如有)")
        ->type_name("文件");
    app->add_flag("--check", options->check,
                  "只检查配置和影片库, 列出可提供的影片和未收入的原因, 不提供服务");
}

// Columns a text takes on a terminal: two for each character beyond ASCII, for these are Chinese.
size_t width_of(const std::string &text) {
    size_t width = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        width += byte < 0x80 ? 1 : byte >= 0xc0 ? 2 : 0; // not for the bytes that continue a character
    }
    return width;
}

// The help's form: descriptions in one column, defaults behind them.
class HELP_T : public CLI::Formatter {
public:
    HELP_T() {
        label("Usage", "用法");
        label("OPTIONS", "选项");
    }
    std::string make_option(const CLI::Option *option, bool is_positional) const override {
        std::string text = "  " + make_option_name(option, is_positional);
        if (option->get_type_size() != 0)
            text += ' ' + option->get_type_name();
        if (const size_t width = width_of(text); width + 2 > COLUMN)
            text += '\n' + std::string(COLUMN, ' ');
        else
            text.append(COLUMN - width, ' ');
        text += make_option_desc(option);
        if (!option->get_default_str().empty())
            text += " (默认: " + option->get_default_str() + ')';
        return text + '\n';
    }

private:
    static constexpr size_t COLUMN = 24;
};

// The command line's grammar, which fills the options: what isn't given stays as it is.
class GRAMMAR_T {
public:
    explicit GRAMMAR_T(OPTIONS_T *options)
        : app_("影柜服务器: 读取影片库, 在端口40001上回答查询", "tavisys-server") {
        app_.formatter(std::make_shared<HELP_T>());
        declare_settings(&app_, options);
        declare_others(&app_, options);
        app_.footer(FOOTER);
    }
    void parse(int argc, char **argv) { app_.parse(argc, argv); }
    int print(const CLI::Success &what) { return app_.exit(what); }
    // Returns "" or what is wrong.
    std::string set(const std::string &key, const std::string &value) {
        CLI::Option *option = app_.get_option_no_throw("--" + key);
        if (option == nullptr || option->get_group() != SETTINGS)
            return key + ": 没有这个设置";
        try {
            option->add_result(value);
            option->run_callback();
        } catch (const CLI::ParseError &error) {
            return std::string(error.what()).substr(strlen("--")); // it begins with the option's name
        }
        return "";
    }

private:
    CLI::App app_;
};

// A setting's value as the command line would have it. False when it is of a kind that no setting has.
bool text_of(const toml::node &node, std::string *text) {
    if (const auto *value = node.as_string(); value != nullptr)
        *text = value->get();
    else if (const auto *number = node.as_integer(); number != nullptr)
        *text = std::to_string(number->get());
    else
        return false;
    return true;
}

bool list_of(const toml::node &node, std::string *text) {
    const toml::array *list = node.as_array();
    if (list == nullptr)
        return text_of(node, text);
    for (const toml::node &entry : *list) {
        std::string value;
        if (!text_of(entry, &value))
            return false;
        text->append(text->empty() ? "" : ",").append(value);
    }
    return true;
}

// The content of a configuration file. Returns "" or what is wrong.
std::string read_file(const std::string &path, std::string *content) {
    FILE *file = fopen(path.c_str(), "re");
    if (file == nullptr)
        return system_error_text(errno, WANTED_T::READ_FILE);
    content->resize(LARGEST_CONFIG + 1);
    content->resize(fread(content->data(), 1, content->size(), file));
    const int error = ferror(file) != 0 ? errno : 0;
    fclose(file);
    if (error != 0)
        return system_error_text(error);
    return content->size() > LARGEST_CONFIG ? "超过1 MiB, 不是配置文件" : "";
}

// Sets what stands in the file. Returns "" or what is wrong, with the file's name and the place in it.
std::string read_config(const std::string &path, OPTIONS_T *options) {
    std::string content;
    if (const std::string wrong = read_file(path, &content); !wrong.empty())
        return "无法读取配置文件 " + path + ": " + wrong;
    const auto place = [&](const toml::source_region &source) {
        return "配置文件 " + path + " 第" + std::to_string(source.begin.line) + "行: ";
    };
    GRAMMAR_T grammar(options);
    try {
        for (const auto &[key, node] : toml::parse(content)) {
            const std::string name(key.str());
            std::string value;
            std::string wrong = name + ": 值应为文字或整数";
            if (list_of(node, &value))
                wrong = value.find('\0') == std::string::npos ? grammar.set(name, value)
                                                              : name + ": 不能含有NUL字符";
            if (!wrong.empty())
                return place(node.source()) + wrong;
        }
    } catch (const toml::parse_error &error) {
        return place(error.source()) + "不合TOML语法: " + std::string(error.description());
    }
    return "";
}

// The parser's own messages are English; those of our checks are whole.
std::string explain(const CLI::ParseError &error) {
    std::string message = error.what();
    const size_t colon = message.find(':');
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ExtrasError))
        return "多余的参数, 或不认识的选项" + message.substr(std::min(colon, message.size()));
    if (error.get_name() == "ArgumentMismatch")
        return message.substr(0, colon) + ": 值缺失或多余";
    return message;
}

int usage_error(const std::string &what, const char *hint = "") {
    fprintf(stderr, "tavisys-server: %s%s\n", what.c_str(), hint);
    return EXIT_USAGE;
}

} // namespace

std::optional<int> read_options(int argc, char **argv, OPTIONS_T *options) {
    OPTIONS_T given;
    GRAMMAR_T grammar(&given);
    try {
        grammar.parse(argc, argv);
        const bool named = !given.config.empty();
        const std::string config = named ? given.config : DEFAULT_CONFIG;
        if (named || access(config.c_str(), F_OK) == 0) {
            if (const std::string wrong = read_config(config, options); !wrong.empty())
                return usage_error(wrong);
            options->config = config;
        }
        GRAMMAR_T(options).parse(argc, argv); // the file's settings stay where the command line says nothing
    } catch (const CLI::Success &success) {
        return grammar.print(success);
    } catch (const CLI::ParseError &error) {
        return usage_error(explain(error), " (用 --help 查看用法)");
    }
    if (options->library.empty())
        return usage_error("没有指定影片库: 请用 --library 目录, 或在配置文件中写 library = \"目录\"");
    return std::nullopt;
}

} // namespace server
