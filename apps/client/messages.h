// Every text that the program shows, in one place: a wording is changed, or a language added, here alone.
// {0}, {1}, ... stand for what fill() puts in.
#ifndef TAVISYS_CLIENT_MESSAGES_H
#define TAVISYS_CLIENT_MESSAGES_H

namespace client::messages {

// Help
constexpr const char *PROGRAM = "影柜客户端: 向影柜服务器查询影片";
constexpr const char *HELP_FLAG = "显示帮助";
constexpr const char *HELP_USAGE = "用法";
constexpr const char *HELP_OPTIONS = "选项";
constexpr const char *HELP_ARGUMENTS = "参数";
constexpr const char *HELP_COMMANDS = "命令";
constexpr const char *HELP_FOOTER = "tavisys 命令 --help 显示该命令的帮助。\n"
                                    "退出状态: 0 完成,1 未能完成,如服务器拒绝或无法连接,2 用法错误。";
constexpr const char *HELP_VERSION = "服务器的软件版本、设备名称和设备编号";
constexpr const char *HELP_INFO = "硬盘数和影片数";
constexpr const char *HELP_STATUS = "服务器的运行状态和扫描进度";
constexpr const char *HELP_UUID = "服务器的UUID";
constexpr const char *HELP_CATEGORIES = "影片分类";
constexpr const char *HELP_FILTERS = "一个分类下可用来筛选的类型、地区、年代或维度";
constexpr const char *HELP_MOVIES = "按条件分页列出影片";
constexpr const char *HELP_MOVIE = "一部影片的详细信息";
constexpr const char *HELP_TOUCH = "触摸屏用的影片分页,另有视频数和时长";
constexpr const char *HELP_POSTER = "服务器随机挑选的一张海报的路径";
constexpr const char *HELP_NAME = "播放机的名称,用 set 设置";
constexpr const char *HELP_DISKS = "另一台服务器的硬盘和分区";
constexpr const char *HELP_COUNT = "另一台服务器的一个分区上的影片数";
constexpr const char *HELP_FETCH = "取回另一台服务器的一个分区上的影片元数据";
constexpr const char *HELP_DECODE = "解读一个截获的消息体";
constexpr const char *HELP_RAW = "发送一个消息,显示回应的原样和内容";
constexpr const char *HELP_DEFAULT = "(默认 {0})";
constexpr const char *HELP_JSON = "输出一个JSON文档,供程序使用";
constexpr const char *HELP_WATCH = "持续显示进度,直到扫描完成";
constexpr const char *HELP_BY_CATEGORY = "分类的名称或编号,“全部”或0表示所有分类";
constexpr const char *HELP_BY_KIND = "类型的名称或编号";
constexpr const char *HELP_BY_AREA = "地区的名称或编号";
constexpr const char *HELP_BY_YEAR = "年代,如1994,或其编号";
constexpr const char *HELP_BY_DIMENSION = "维度的名称(如3D)或编号";
constexpr const char *HELP_PAGE = "页码,从1开始";
constexpr const char *HELP_SIZE = "每页影片数,1到1000";
constexpr const char *HELP_ORDER = "排序: put 上架时间,publish 上映时间,score 评分,name 片名";
constexpr const char *HELP_ATTRIBUTE = "kind 类型,area 地区,year 年代,dimension 维度";
constexpr const char *HELP_MOVIE_ID = "影片编号,见 tavisys movies 的第一列";
constexpr const char *HELP_ACTION = "set 设置名称,不写则显示名称";
constexpr const char *HELP_PLAYER_NAME = "新的名称,至多1023个字节";
constexpr const char *HELP_HOST = "服务器的IPv4地址,如192.168.1.10";
constexpr const char *HELP_DISK = "硬盘的设备名,见 tavisys disks";
constexpr const char *HELP_PARTITION = "分区的设备名,见 tavisys disks";
constexpr const char *HELP_OUT = "影片库目录,写入其下的 硬盘/分区/影片编码/metadata.xml";
constexpr const char *HELP_TYPE = "消息类型的名称或编号,如movies或1006";
constexpr const char *HELP_ANY_TYPE = "消息类型的名称或任意编号,如movies或1006";
constexpr const char *HELP_BODY_FILE = "消息体所在的文件,不含消息头; - 为标准输入";
constexpr const char *HELP_REQUEST = "是请求的消息体,而不是回应的";
constexpr const char *HELP_HEX = "文件内容是十六进制文本";
constexpr const char *HELP_BODY = "请求的消息体,如\"01000000 01000000\",不写则没有消息体";
constexpr const char *HELP_PORT = "TCP端口";
constexpr const char *HELP_TEXT_HEAD = "用文本消息头,发给其他程序";
constexpr const char *ARGUMENT_CATEGORY = "分类";
constexpr const char *ARGUMENT_ATTRIBUTE = "属性";
constexpr const char *ARGUMENT_MOVIE_ID = "影片编号";
constexpr const char *ARGUMENT_ACTION = "操作";
constexpr const char *ARGUMENT_PLAYER_NAME = "新名称";
constexpr const char *ARGUMENT_HOST = "地址";
constexpr const char *ARGUMENT_DISK = "硬盘";
constexpr const char *ARGUMENT_PARTITION = "分区";
constexpr const char *ARGUMENT_TYPE = "消息类型";
constexpr const char *ARGUMENT_FILE = "文件";
constexpr const char *VALUE_HEX = "十六进制";
constexpr const char *VALUE_FOLDER = "目录";
constexpr const char *VALUE_NAME_OR_ID = "名称或编号";
constexpr const char *VALUE_NUMBER = "数字";
constexpr const char *VALUE_ORDER = "方式";

// Bad usage
constexpr const char *USAGE_HINT = "用 tavisys --help 查看用法";
constexpr const char *COMMAND_HINT = "用 tavisys {0} --help 查看用法";
constexpr const char *NO_COMMAND = "缺少命令";
constexpr const char *UNKNOWN_COMMAND = "没有“{0}”这个命令";
constexpr const char *UNKNOWN_OPTION = "不认识的选项: {0}";
constexpr const char *EXTRA_ARGUMENT = "多余的参数: {0}";
constexpr const char *MISSING_ARGUMENT = "缺少参数: {0}";
constexpr const char *BAD_OPTION_VALUE = "选项 {0} 的值缺失或多余";
constexpr const char *BAD_COMMAND_LINE = "命令行参数有误";
constexpr const char *NOT_IN_RANGE = "应为{0}到{1}的整数,而不是“{2}”";
constexpr const char *NOT_A_CHOICE = "应为{0}之一,而不是“{1}”";
constexpr const char *ID_TOO_LARGE = "编号不能大于{0},而这里是“{1}”";
constexpr const char *NOT_AN_ADDRESS = "应为点分十进制的IPv4地址,如192.168.1.10,而不是“{0}”";
constexpr const char *NOT_HEX = "应为十六进制文本,每个字节两位,而不是“{0}”";
constexpr const char *NOT_IN_TEXT_HEAD = "文本消息头放不下: 类型应为-999到9999,消息体不超过99999999个字节";
constexpr const char *NOT_A_DEVICE_NAME = "应为1到{0}个字节的设备名,而不是“{1}”";
constexpr const char *NOT_A_FOLDER_NAME = "将用作目录名,不能含有“/”,也不能是“.”或“..”,而这里是“{0}”";
constexpr const char *NAME_TOO_LONG = "不能超过{0}个字节";
constexpr const char *NAME_IN_BLANKS = "首尾不能是空格";
constexpr const char *NAME_NOT_PLAIN = "应为UTF-8文本,不能含有换行等控制字符";

// The server
constexpr const char *UNREACHABLE = "无法连接影柜服务器({0}:{1}),请确认 tavisys-server 正在运行";
constexpr const char *NO_ANSWER = "影柜服务器没有回答,请稍后再试";
constexpr const char *ANSWER_CUT_SHORT = "影柜服务器的回答不完整,请稍后再试";
constexpr const char *REQUEST_NOT_SENT = "请求没能发送给影柜服务器,请稍后再试";
constexpr const char *ANSWER_MALFORMED = "影柜服务器的回答无法解读,请确认服务器与客户端的版本相配";
constexpr const char *REFUSED_OR_MALFORMED = "影柜服务器拒绝了请求,或其回答无法解读(结果{0})";
constexpr const char *REFUSED_TYPE = "影柜服务器拒绝了请求: 不支持这种查询(结果{0})";
constexpr const char *REFUSED_REQUEST = "影柜服务器拒绝了请求: 请求有误,或有值超出范围(结果{0})";
constexpr const char *REFUSED_MOVIE = "影柜服务器拒绝了请求: 该分类下没有这个编号的影片(结果{0})";
constexpr const char *REFUSED_POSITION = "影柜服务器拒绝了请求: 没有这个硬盘或分区(结果{0})";
constexpr const char *REFUSED_BY_ERROR = "影柜服务器拒绝了请求: 服务器内部出错(结果{0})";
constexpr const char *REFUSED = "影柜服务器拒绝了请求(结果{0})";
constexpr const char *NO_POSTER = "影柜服务器目前没有海报";
constexpr const char *POSTER_DOES_NOT_FIT = "影柜服务器的海报路径过长,或内存不足(结果{0})";
constexpr const char *NO_MEMORY = "内存不足";
constexpr const char *WRITE_FAILED = "写标准输出失败({0}),请检查输出所在的磁盘或设备";

// Names that the server doesn't know
constexpr const char *NO_SUCH_NAME = "没有名为“{1}”的{0}";
constexpr const char *KNOWN_NAMES = ",可用的有: {0}";
constexpr const char *MORE_NAMES = " 等{0}个,用 {1} 查看全部";
constexpr const char *NO_NAMES = ",服务器目前没有任何{0}";
constexpr const char *NAME_SEPARATOR = "、";
constexpr const char *LIST_CATEGORIES = "tavisys categories";
constexpr const char *LIST_FILTERS = "tavisys filters {0} {1}";
constexpr const char *EVERYTHING = "全部";

// Attributes
constexpr const char *CATEGORY = "分类";
constexpr const char *KIND = "类型";
constexpr const char *AREA = "地区";
constexpr const char *YEAR = "年代";
constexpr const char *DIMENSION = "维度";

// Tables
constexpr const char *NOTHING = "-";
constexpr const char *ID = "编号";
constexpr const char *NAME = "名称";
constexpr const char *SOFTWARE_VERSION = "软件版本";
constexpr const char *DEVICE_NAME = "设备名称";
constexpr const char *DEVICE_ID = "设备编号";
constexpr const char *DISKS = "硬盘数";
constexpr const char *MOVIES = "影片数";
constexpr const char *TITLE = "片名";
constexpr const char *SCORE = "评分";
constexpr const char *PUT_TIME = "上架";
constexpr const char *PUBLISH_TIME = "上映";
constexpr const char *POSTER = "海报";
constexpr const char *DIRECTORS = "导演";
constexpr const char *ACTORS = "主演";
constexpr const char *DURATION = "时长";
constexpr const char *SUMMARY = "简介";
constexpr const char *VIDEOS = "视频数";
constexpr const char *EPISODE = "集数";
constexpr const char *FILE_PATH = "文件";
constexpr const char *MINUTES = "{0}分钟";
constexpr const char *PAGE_LINE = "第{0}页,共{1}页,{2}部影片\n";
constexpr const char *EMPTY_PAGE = "这一页没有影片\n";

// The player's name
constexpr const char *NAME_NOT_READ = "无法读取播放机的名称";
constexpr const char *NAME_NOT_SET = "无法写入播放机的名称,请检查文件 /tmp/tavisys.name 和它所在的磁盘";

// Disks and partitions
constexpr const char *DISK = "硬盘";
constexpr const char *SERIAL_NUMBER = "序列号";
constexpr const char *NUMBER = "序号";
constexpr const char *PARTITION = "分区";
constexpr const char *UUID = "UUID";
constexpr const char *MOUNT_POINT = "挂载点";
constexpr const char *NO_DISKS = "没有硬盘\n";

// Documents
constexpr const char *FOLDER = "目录";
constexpr const char *WRITTEN = "已写入";
constexpr const char *SKIPPED = "已跳过";
constexpr const char *WRITING_DOCUMENTS = "写入影片";
constexpr const char *FOLDER_FAILED = "无法写入 {0} ({1}),请检查目录的权限和磁盘的空间";
constexpr const char *NOT_A_FOLDER = "不是目录,或是符号链接";
constexpr const char *RECORD_SKIPPED = "跳过影片“{0}”(编号{1}): {2}";
constexpr const char *RECORD_WITHOUT_CODE = "没有影片编码";
constexpr const char *RECORD_WITHOUT_TITLE = "没有片名";
constexpr const char *RECORD_WITHOUT_VIDEO = "没有视频";
constexpr const char *RECORD_REPEATS_CODE = "同一分区上已有相同影片编码的影片";
constexpr const char *RECORD_TOO_LARGE = "元数据超过4 MiB";

// Single messages
constexpr const char *MOVIE_CODE = "影片编码";
constexpr const char *ENGLISH_TITLE = "英文片名";
constexpr const char *RESOLUTION = "分辨率";
constexpr const char *EPISODES = "总集数";
constexpr const char *NO_MOVIES = "没有影片\n";
constexpr const char *NO_BODY = "没有消息体\n";
constexpr const char *MESSAGE_TYPE = "消息类型";
constexpr const char *RESULT = "结果";
constexpr const char *LENGTH = "长度";
constexpr const char *FILE_NOT_READ = "无法读取 {0} ({1})";
constexpr const char *FILE_NOT_HEX = "{0} 的内容不是十六进制文本,每个字节应为两位";
constexpr const char *NO_SUCH_REPLY = "无法解读: 这{0}个字节不是 {1} 回应的消息体,或不完整";
constexpr const char *NO_SUCH_REQUEST = "无法解读: 这{0}个字节不是 {1} 请求的消息体,或不完整";
constexpr const char *BYTES_LEFT = "末尾有{0}个字节不属于任何字段";
constexpr const char *OTHER_TYPE = "回应的消息类型是{0},不是请求的{1}";

// Running status
constexpr const char *PHASE = "状态";
constexpr const char *PHASES[] = {"正在启动", "正在查找影片", "正在解析", "解析完成", "运行中"};
constexpr const char *PHASE_UNKNOWN = "未知({0})";
constexpr const char *FOUND = "已找到";
constexpr const char *PARSED = "已解析";
constexpr const char *FAILED = "解析失败";
constexpr const char *LEFT = "待解析";
constexpr const char *PROGRESS_WAITING = "{0}: 已找到{1}部";
constexpr const char *PROGRESS_PARSING = "{0}: {1}/{2} ({3}%),失败{4}部";
constexpr const char *PROGRESS_DONE = "{0}: {1}部影片,失败{2}部";

} // namespace client::messages

#endif
