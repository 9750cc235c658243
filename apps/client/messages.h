// Every text that the program shows, once in each language: a wording is changed, or a language added, here
// alone. {0}, {1}, ... stand for what fill() puts in.
#ifndef TAVISYS_CLIENT_MESSAGES_H
#define TAVISYS_CLIENT_MESSAGES_H

#include "language.h"

namespace client::messages {

// Help
inline constexpr TEXT_T PROGRAM{"影柜客户端: 向影柜服务器查询影片",
                                "Client of a movie cabinet: asks its server about the movies"};
inline constexpr TEXT_T HELP_FLAG{"显示帮助", "show help"};
inline constexpr TEXT_T HELP_VERSION_FLAG{"显示本程序的版本", "show the version of this program"};
inline constexpr TEXT_T HELP_USAGE{"用法", "Usage"};
inline constexpr TEXT_T HELP_OPTIONS{"选项", "OPTIONS"};
inline constexpr TEXT_T HELP_ARGUMENTS{"参数", "ARGUMENTS"};
inline constexpr TEXT_T HELP_COMMANDS{"命令", "COMMANDS"};
inline constexpr TEXT_T HELP_FOOTER{
    "tavisys 命令 --help 显示该命令的帮助。\n"
    "退出状态: 0 完成,1 未能完成,如服务器拒绝或无法连接,2 用法错误。",
    "tavisys COMMAND --help shows the help of that command.\n"
    "Exit status: 0 done, 1 not done, as the server refused or can't be reached, 2 bad usage."};
inline constexpr TEXT_T HELP_VERSION{"服务器的软件版本、设备名称和设备编号",
                                     "the server's software version, device name and device ID"};
inline constexpr TEXT_T HELP_INFO{"硬盘数和影片数", "number of disks and movies"};
inline constexpr TEXT_T HELP_STATUS{"服务器的运行状态和扫描进度",
                                    "running status of the server and progress of its scan"};
inline constexpr TEXT_T HELP_UUID{"服务器的UUID", "the server's UUID"};
inline constexpr TEXT_T HELP_CATEGORIES{"影片分类", "categories of movies"};
inline constexpr TEXT_T HELP_FILTERS{
    "一个分类下可用来筛选的类型、地区、年代或维度",
    "kinds, areas, years or dimensions to filter the movies of a category by"};
inline constexpr TEXT_T HELP_MOVIES{"按条件分页列出影片", "list movies, filtered and page by page"};
inline constexpr TEXT_T HELP_MOVIE{"一部影片的详细信息", "everything about one movie"};
inline constexpr TEXT_T HELP_TOUCH{"触摸屏用的影片分页,另有视频数和时长",
                                   "pages of movies as touch screens ask for them, with videos and duration"};
inline constexpr TEXT_T HELP_POSTER{"服务器随机挑选的一张海报的路径",
                                    "path of a poster that the server picks at random"};
inline constexpr TEXT_T HELP_NAME{"播放机的名称,用 set 设置", "name of the player; set changes it"};
inline constexpr TEXT_T HELP_DISKS{"服务器的硬盘和分区", "disks and partitions of a server"};
inline constexpr TEXT_T HELP_COUNT{"服务器的一个分区上的影片数", "number of movies on a server's partition"};
inline constexpr TEXT_T HELP_FETCH{"取回服务器的一个分区上的影片元数据",
                                   "fetch the metadata of the movies on a server's partition"};
inline constexpr TEXT_T HELP_DECODE{"解读一个截获的消息体", "show what a captured body says"};
inline constexpr TEXT_T HELP_RAW{"发送一个消息,显示回应的原样和内容",
                                 "send one message, show the reply's bytes and what they say"};
inline constexpr TEXT_T HELP_TYPE{"消息类型的名称或编号,如movies或1006",
                                  "word or number of the message type, such as movies or 1006"};
inline constexpr TEXT_T HELP_ANY_TYPE{"消息类型的名称或任意编号,如movies或1006",
                                      "word of the message type or any number, such as movies or 1006"};
inline constexpr TEXT_T HELP_TYPE_WORDS{"消息类型的名称: {0}", "Words of message types: {0}"};
inline constexpr TEXT_T HELP_BODY_FILE{"消息体所在的文件,不含消息头; - 为标准输入",
                                       "file with the body, without its head; - is standard input"};
inline constexpr TEXT_T HELP_REQUEST{"是请求的消息体,而不是回应的",
                                     "the body is that of the request, not of the reply"};
inline constexpr TEXT_T HELP_HEX{"文件内容是十六进制文本", "the file holds hexadecimal text"};
inline constexpr TEXT_T HELP_BODY{"请求的消息体,如\"01000000 01000000\",不写则没有消息体",
                                  "body of the request, such as \"01000000 01000000\"; none if not given"};
inline constexpr TEXT_T HELP_PORT{"TCP端口", "TCP port"};
inline constexpr TEXT_T HELP_TEXT_HEAD{"用文本消息头,发给其他程序",
                                       "with a head of text, for other programs"};
inline constexpr TEXT_T HELP_DEFAULT{"(默认 {0})", " (default {0})"};
inline constexpr TEXT_T HELP_JSON{"输出一个JSON文档,供程序使用", "write one JSON document, for programs"};
inline constexpr TEXT_T HELP_WATCH{"每隔若干秒重新查询,直到按Ctrl-C",
                                   "ask again every so many seconds, until Ctrl-C"};
inline constexpr TEXT_T HELP_WATCH_STATUS{"持续显示进度,直到扫描完成",
                                          "show the progress until the scan is done"};
inline constexpr TEXT_T HELP_LANG{
    "语言: zh 中文,en 英文,默认由环境变量LC_ALL、LC_MESSAGES、LANG决定",
    "language: zh Chinese, en English; by default that of LC_ALL, LC_MESSAGES, LANG"};
inline constexpr TEXT_T HELP_COLOR{"颜色: auto 仅在终端上使用,always 总是,never 从不",
                                   "colors: auto on a terminal alone, always or never"};
inline constexpr TEXT_T HELP_BY_CATEGORY{"分类的名称或编号,“全部”或0表示所有分类",
                                         "name or ID of a category, “全部” or 0 for all"};
inline constexpr TEXT_T HELP_BY_KIND{"类型的名称或编号", "name or ID of a kind"};
inline constexpr TEXT_T HELP_BY_AREA{"地区的名称或编号", "name or ID of an area"};
inline constexpr TEXT_T HELP_BY_YEAR{"年代,如1994,或其编号", "year, such as 1994, or its ID"};
inline constexpr TEXT_T HELP_BY_DIMENSION{"维度的名称(如3D)或编号", "name (such as 3D) or ID of a dimension"};
inline constexpr TEXT_T HELP_PAGE{"页码,从1开始", "page, from 1 on"};
inline constexpr TEXT_T HELP_SIZE{"每页影片数,1到1000", "movies on a page, 1 to 1000"};
inline constexpr TEXT_T HELP_ORDER{"排序: put 上架时间,publish 上映时间,score 评分,name 片名",
                                   "order: put time added, publish time released, score, name title"};
inline constexpr TEXT_T HELP_ATTRIBUTE{"kind 类型,area 地区,year 年代,dimension 维度",
                                       "kind, area, year or dimension"};
inline constexpr TEXT_T HELP_MOVIE_ID{"影片编号,见 tavisys movies 的第一列",
                                      "ID of the movie, see the first column of tavisys movies"};
inline constexpr TEXT_T HELP_ACTION{"set 设置名称,不写则显示名称",
                                    "set sets the name; without it the name is shown"};
inline constexpr TEXT_T HELP_PLAYER_NAME{"新的名称,至多1023个字节", "the new name, at most 1023 bytes"};

inline constexpr TEXT_T HELP_SERVER{"服务器的IPv4地址或主机名,不写则为本机",
                                    "IPv4 address or name of the server; without it that of this machine"};
inline constexpr TEXT_T HELP_DISK{"硬盘的设备名,见 tavisys disks",
                                  "device name of the disk, see tavisys disks"};
inline constexpr TEXT_T HELP_PARTITION{"分区的设备名,见 tavisys disks",
                                       "device name of the partition, see tavisys disks"};
inline constexpr TEXT_T HELP_OUT{
    "影片库目录,写入其下的 硬盘/分区/影片编码/metadata.xml",
    "folder of the library; DISK/PARTITION/CODE/metadata.xml is written below it"};
inline constexpr TEXT_T ARGUMENT_CATEGORY{"分类", "CATEGORY"};
inline constexpr TEXT_T ARGUMENT_ATTRIBUTE{"属性", "ATTRIBUTE"};
inline constexpr TEXT_T ARGUMENT_MOVIE_ID{"影片编号", "MOVIE-ID"};
inline constexpr TEXT_T ARGUMENT_ACTION{"操作", "ACTION"};
inline constexpr TEXT_T ARGUMENT_PLAYER_NAME{"新名称", "NEW-NAME"};

inline constexpr TEXT_T ARGUMENT_DISK{"硬盘", "DISK"};
inline constexpr TEXT_T ARGUMENT_PARTITION{"分区", "PARTITION"};
inline constexpr TEXT_T VALUE_FOLDER{"目录", "FOLDER"};
inline constexpr TEXT_T VALUE_HOST{"地址", "HOST"};
inline constexpr TEXT_T VALUE_SECONDS{"秒", "SECONDS"};
inline constexpr TEXT_T VALUE_LANGUAGE{"语言", "LANGUAGE"};
inline constexpr TEXT_T VALUE_WHEN{"何时", "WHEN"};
inline constexpr TEXT_T VALUE_NAME_OR_ID{"名称或编号", "NAME-OR-ID"};
inline constexpr TEXT_T VALUE_NUMBER{"数字", "NUMBER"};
inline constexpr TEXT_T VALUE_ORDER{"方式", "ORDER"};

// Bad usage
inline constexpr TEXT_T USAGE_HINT{"用 tavisys --help 查看用法", "see tavisys --help"};
inline constexpr TEXT_T COMMAND_HINT{"用 tavisys {0} --help 查看用法", "see tavisys {0} --help"};
inline constexpr TEXT_T NO_COMMAND{"缺少命令", "a command is missing"};
inline constexpr TEXT_T UNKNOWN_COMMAND{"没有“{0}”这个命令", "there is no command “{0}”"};
inline constexpr TEXT_T UNKNOWN_OPTION{"不认识的选项: {0}", "unknown option: {0}"};
inline constexpr TEXT_T EXTRA_ARGUMENT{"多余的参数: {0}", "one argument too many: {0}"};
inline constexpr TEXT_T MISSING_ARGUMENT{"缺少参数: {0}", "missing argument: {0}"};
inline constexpr TEXT_T BAD_OPTION_VALUE{"选项 {0} 的值缺失或多余",
                                         "the value of option {0} is missing, or there should be none"};
inline constexpr TEXT_T BAD_COMMAND_LINE{"命令行参数有误", "the command line can't be understood"};
inline constexpr TEXT_T ARGUMENT_TYPE{"消息类型", "TYPE"};
inline constexpr TEXT_T ARGUMENT_FILE{"文件", "FILE"};
inline constexpr TEXT_T VALUE_HEX{"十六进制", "HEX"};
inline constexpr TEXT_T NOT_HEX{"应为十六进制文本,每个字节两位,而不是“{0}”",
                                "wants hexadecimal text, two digits a byte, not “{0}”"};
inline constexpr TEXT_T NOT_IN_TEXT_HEAD{
    "文本消息头放不下: 类型应为-999到9999,消息体不超过99999999个字节",
    "a head of text has room for types from -999 to 9999 and bodies of up to 99999999 bytes"};
inline constexpr TEXT_T NOT_IN_RANGE{"应为{0}到{1}的整数,而不是“{2}”",
                                     "must be an integer from {0} to {1}, not “{2}”"};
inline constexpr TEXT_T NOT_A_CHOICE{"应为{0}之一,而不是“{1}”", "must be one of {0}, not “{1}”"};
inline constexpr TEXT_T ID_TOO_LARGE{"编号不能大于{0},而这里是“{1}”",
                                     "an ID is at most {0}, but this is “{1}”"};

inline constexpr TEXT_T NOT_A_HOST{
    "应为IPv4地址(如192.168.1.10)或主机名,而不是“{0}”",
    "must be an IPv4 address (such as 192.168.1.10) or the name of a host, not “{0}”"};
inline constexpr TEXT_T ONLY_THIS_MACHINE{
    "这个命令只能查询本机的影柜,能查询其他影柜的命令有 disks、count、fetch 和 raw",
    "this command can only ask the cabinet of this machine; disks, count, fetch and raw can ask others"};
inline constexpr TEXT_T NOT_AN_INTERVAL{"应为0.1到86400的秒数,而不是“{0}”",
                                        "must be 0.1 to 86400 seconds, not “{0}”"};
inline constexpr TEXT_T NOT_A_DEVICE_NAME{"应为1到{0}个字节的设备名,而不是“{1}”",
                                          "must be a device name of 1 to {0} bytes, not “{1}”"};
inline constexpr TEXT_T NOT_A_FOLDER_NAME{
    "将用作目录名,不能含有“/”,也不能是“.”或“..”,而这里是“{0}”",
    "becomes a folder, so it can't hold “/” nor be “.” or “..”, but this is “{0}”"};
inline constexpr TEXT_T NAME_TOO_LONG{"不能超过{0}个字节", "can't be longer than {0} bytes"};
inline constexpr TEXT_T NAME_IN_BLANKS{"首尾不能是空格", "can't begin or end with a blank"};
inline constexpr TEXT_T NAME_NOT_PLAIN{"应为UTF-8文本,不能含有换行等控制字符",
                                       "must be UTF-8 text without line breaks or other control characters"};

// The server
inline constexpr TEXT_T UNREACHABLE{
    "无法连接影柜服务器({0}:{1}),请确认 tavisys-server 正在运行",
    "can't reach the cabinet's server ({0}:{1}); make sure that tavisys-server is running"};
inline constexpr TEXT_T UNKNOWN_HOST{"找不到主机“{0}”({1}),请检查名称和网络",
                                     "can't find the host “{0}” ({1}); check its name and the network"};
inline constexpr TEXT_T NO_ANSWER{"影柜服务器没有回答,请稍后再试",
                                  "the cabinet's server doesn't answer; try again later"};
inline constexpr TEXT_T ANSWER_CUT_SHORT{"影柜服务器的回答不完整,请稍后再试",
                                         "the answer of the cabinet's server is incomplete; try again later"};
inline constexpr TEXT_T REQUEST_NOT_SENT{
    "请求没能发送给影柜服务器,请稍后再试",
    "the request couldn't be sent to the cabinet's server; try again later"};
inline constexpr TEXT_T ANSWER_MALFORMED{"影柜服务器的回答无法解读,请确认服务器与客户端的版本相配",
                                         "the answer of the cabinet's server makes no sense; make sure that "
                                         "server and client are of matching versions"};
inline constexpr TEXT_T REFUSED_OR_MALFORMED{
    "影柜服务器拒绝了请求,或其回答无法解读(结果{0})",
    "the cabinet's server refused the request, or its answer makes no sense (result {0})"};
inline constexpr TEXT_T REFUSED_TYPE{
    "影柜服务器拒绝了请求: 不支持这种查询(结果{0})",
    "the cabinet's server refused the request: it doesn't know this question (result {0})"};
inline constexpr TEXT_T REFUSED_REQUEST{
    "影柜服务器拒绝了请求: 请求有误,或有值超出范围(结果{0})",
    "the cabinet's server refused the request: it is malformed, or a value is out of range (result {0})"};
inline constexpr TEXT_T REFUSED_MOVIE{
    "影柜服务器拒绝了请求: 该分类下没有这个编号的影片(结果{0})",
    "the cabinet's server refused the request: the category has no movie of this ID (result {0})"};
inline constexpr TEXT_T REFUSED_POSITION{
    "影柜服务器拒绝了请求: 没有这个硬盘或分区(结果{0})",
    "the cabinet's server refused the request: there is no such disk or partition (result {0})"};
inline constexpr TEXT_T REFUSED_BY_ERROR{
    "影柜服务器拒绝了请求: 服务器内部出错(结果{0})",
    "the cabinet's server refused the request: it has an internal error (result {0})"};
inline constexpr TEXT_T REFUSED{"影柜服务器拒绝了请求(结果{0})",
                                "the cabinet's server refused the request (result {0})"};
inline constexpr TEXT_T NO_POSTER{"影柜服务器目前没有海报", "the cabinet's server has no posters now"};
inline constexpr TEXT_T POSTER_DOES_NOT_FIT{
    "影柜服务器的海报路径过长,或内存不足(结果{0})",
    "the path of the poster is too long, or memory is short (result {0})"};
inline constexpr TEXT_T NO_MEMORY{"内存不足", "out of memory"};
inline constexpr TEXT_T WRITE_FAILED{"写标准输出失败({0}),请检查输出所在的磁盘或设备",
                                     "can't write standard output ({0}); check the disk or device behind it"};

// Names that the server doesn't know
inline constexpr TEXT_T NO_SUCH_NAME{"没有名为“{1}”的{0}", "{0}: there is no “{1}”"};
inline constexpr TEXT_T KNOWN_NAMES{",可用的有: {0}", ", available: {0}"};
inline constexpr TEXT_T MORE_NAMES{" 等{0}个,用 {1} 查看全部", " ... {0} in all, {1} lists them"};
inline constexpr TEXT_T NO_NAMES{",服务器目前没有任何{0}", ", the server's list “{0}” is empty"};
inline constexpr TEXT_T NAME_SEPARATOR{"、", ", "};
constexpr const char *LIST_CATEGORIES = "tavisys categories";
constexpr const char *LIST_FILTERS = "tavisys filters {0} {1}";

// Attributes
inline constexpr TEXT_T CATEGORY{"分类", "Category"};
inline constexpr TEXT_T KIND{"类型", "Kind"};
inline constexpr TEXT_T AREA{"地区", "Area"};
inline constexpr TEXT_T YEAR{"年代", "Year"};
inline constexpr TEXT_T DIMENSION{"维度", "Dimension"};

// Tables
constexpr const char *NOTHING = "-";
inline constexpr TEXT_T ID{"编号", "ID"};
inline constexpr TEXT_T NAME{"名称", "Name"};
inline constexpr TEXT_T SOFTWARE_VERSION{"软件版本", "Software version"};
inline constexpr TEXT_T DEVICE_NAME{"设备名称", "Device name"};
inline constexpr TEXT_T DEVICE_ID{"设备编号", "Device ID"};
inline constexpr TEXT_T DISKS{"硬盘数", "Disks"};
inline constexpr TEXT_T MOVIES{"影片数", "Movies"};
inline constexpr TEXT_T TITLE{"片名", "Title"};
inline constexpr TEXT_T SCORE{"评分", "Score"};
inline constexpr TEXT_T PUT_TIME{"上架", "Added"};
inline constexpr TEXT_T PUBLISH_TIME{"上映", "Released"};
inline constexpr TEXT_T POSTER{"海报", "Poster"};
inline constexpr TEXT_T DIRECTORS{"导演", "Directors"};
inline constexpr TEXT_T ACTORS{"主演", "Actors"};
inline constexpr TEXT_T DURATION{"时长", "Duration"};
inline constexpr TEXT_T SUMMARY{"简介", "Summary"};
inline constexpr TEXT_T VIDEOS{"视频数", "Videos"};
inline constexpr TEXT_T EPISODE{"集数", "Episode"};
inline constexpr TEXT_T FILE_PATH{"文件", "File"};
inline constexpr TEXT_T MINUTES{"{0}分钟", "{0} min"};
inline constexpr TEXT_T PAGE_LINE{"第{0}页,共{1}页,{2}部影片\n", "Page {0} of {1}, {2} found\n"};
inline constexpr TEXT_T EMPTY_PAGE{"这一页没有影片\n", "No movies on this page\n"};

// The player's name
inline constexpr TEXT_T NAME_NOT_READ{"无法读取播放机的名称", "can't read the player's name"};
inline constexpr TEXT_T NAME_NOT_SET{
    "无法写入播放机的名称,请检查文件 /tmp/tavisys.name 和它所在的磁盘",
    "can't write the player's name; check the file /tmp/tavisys.name and its disk"};

// Disks and partitions
inline constexpr TEXT_T DISK{"硬盘", "Disk"};
inline constexpr TEXT_T SERIAL_NUMBER{"序列号", "Serial number"};
inline constexpr TEXT_T NUMBER{"序号", "No."};
inline constexpr TEXT_T PARTITION{"分区", "Partition"};
constexpr const char *UUID = "UUID";
inline constexpr TEXT_T MOUNT_POINT{"挂载点", "Mount point"};
inline constexpr TEXT_T NO_DISKS{"没有硬盘\n", "No disks\n"};

// Single messages
inline constexpr TEXT_T MOVIE_CODE{"影片编码", "Movie code"};
inline constexpr TEXT_T ENGLISH_TITLE{"英文片名", "English title"};
inline constexpr TEXT_T RESOLUTION{"分辨率", "Resolution"};
inline constexpr TEXT_T EPISODES{"总集数", "Episodes"};
inline constexpr TEXT_T NO_MOVIES{"没有影片\n", "No movies\n"};
inline constexpr TEXT_T NO_BODY{"没有消息体\n", "No body\n"};
inline constexpr TEXT_T MESSAGE_TYPE{"消息类型", "Message type"};
inline constexpr TEXT_T RESULT{"结果", "Result"};
inline constexpr TEXT_T LENGTH{"长度", "Length"};
inline constexpr TEXT_T FILE_NOT_READ{"无法读取 {0} ({1})", "can't read {0} ({1})"};
inline constexpr TEXT_T FILE_NOT_HEX{"{0} 的内容不是十六进制文本,每个字节应为两位",
                                     "{0} holds no hexadecimal text of two digits a byte"};
inline constexpr TEXT_T NO_SUCH_REPLY{
    "无法解读: 这{0}个字节不是 {1} 回应的消息体,或不完整",
    "can't be read: these {0} bytes are no body of a reply to {1}, or not the whole of it"};
inline constexpr TEXT_T NO_SUCH_REQUEST{
    "无法解读: 这{0}个字节不是 {1} 请求的消息体,或不完整",
    "can't be read: these {0} bytes are no body of the request {1}, or not the whole of it"};
inline constexpr TEXT_T BYTES_LEFT{"末尾有{0}个字节不属于任何字段", "{0} bytes at the end are no field"};
inline constexpr TEXT_T OTHER_TYPE{"回应的消息类型是{0},不是请求的{1}",
                                   "the reply has the message type {0}, not the request's {1}"};

// Documents
inline constexpr TEXT_T FOLDER{"目录", "Folder"};
inline constexpr TEXT_T WRITTEN{"已写入", "Written"};
inline constexpr TEXT_T SKIPPED{"已跳过", "Skipped"};
inline constexpr TEXT_T WRITING_DOCUMENTS{"写入影片", "writing movies"};
inline constexpr TEXT_T BAR_FAILED{"失败", "failed "}; // and a number
inline constexpr TEXT_T FOLDER_FAILED{
    "无法写入 {0} ({1}),请检查目录的权限和磁盘的空间",
    "can't write {0} ({1}); check the rights to the folder and the room on its disk"};
inline constexpr TEXT_T NOT_A_FOLDER{"不是目录,或是符号链接", "not a folder, or a symbolic link"};
inline constexpr TEXT_T RECORD_SKIPPED{"跳过影片“{0}”(编号{1}): {2}", "skipped movie “{0}” (ID {1}): {2}"};
inline constexpr TEXT_T RECORD_WITHOUT_CODE{"没有影片编码", "it has no code"};
inline constexpr TEXT_T RECORD_WITHOUT_TITLE{"没有片名", "it has no title"};
inline constexpr TEXT_T RECORD_WITHOUT_VIDEO{"没有视频", "it has no video"};
inline constexpr TEXT_T RECORD_REPEATS_CODE{"同一分区上已有相同影片编码的影片",
                                            "another movie of the partition has the same code"};
inline constexpr TEXT_T RECORD_NOT_LOADABLE{"{0}", "servers don't load it: {0}"}; // the library's reason
inline constexpr TEXT_T RECORD_TOO_LARGE{"元数据超过4 MiB", "its metadata is larger than 4 MiB"};

// Looking again
inline constexpr TEXT_T WATCHING{"{0}  每{1}秒更新,按Ctrl-C结束", "{0}  every {1} s, Ctrl-C ends"};

// Running status
inline constexpr TEXT_T PHASE{"状态", "Status"};
inline constexpr TEXT_T PHASES[] = {{"正在启动", "starting"},
                                    {"正在查找影片", "looking for movies"},
                                    {"正在解析", "parsing"},
                                    {"解析完成", "parsed"},
                                    {"运行中", "running"}};
inline constexpr TEXT_T PHASE_UNKNOWN{"未知({0})", "unknown ({0})"};
inline constexpr TEXT_T FOUND{"已找到", "Found"};
inline constexpr TEXT_T PARSED{"已解析", "Parsed"};
inline constexpr TEXT_T FAILED{"解析失败", "Failed"};
inline constexpr TEXT_T LEFT{"待解析", "Left"};
inline constexpr TEXT_T PROGRESS_WAITING{"{0}: 已找到{1}部", "{0}: {1} found"};
inline constexpr TEXT_T PROGRESS_PARSING{"{0}: {1}/{2} ({3}%),失败{4}部", "{0}: {1}/{2} ({3}%), {4} failed"};
inline constexpr TEXT_T PROGRESS_DONE{"{0}: {1}部影片,失败{2}部", "{0}: {1} movies, {2} failed"};

} // namespace client::messages

#endif
