#include "metadata_parse.h"

#include <cctype>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>
#include <memory>
#include <string_view>
#include <unordered_set>

#include "dbdata_movinfo/category_table.h"
#include "support/list.h"
#include "support/log.h"
#include "support/owner.h"
#include "support/xml_reader.h"
#include "support_memory.h"
#include "support_text.h"

using namespace tavisys;

namespace {

constexpr const INT8_T *LOG_FILE = "utils/metadata_parse.c";
// The lines of every step bear the name of the walk through the steps, so that they can be filtered by it.
constexpr const INT8_T *LOG_FUNCTION = "parse_tavi_metadata_from_object";

constexpr size_t VALUE_SIZE = 1024;
constexpr size_t DESCRIPTION_SIZE = 20480;
constexpr const INT8_T *ALL = TAVISYS_NAME_OF_ALL;
constexpr const INT8_T *KIND_3D = "3D";
constexpr INT32_T ALL_YEARS = 0;
constexpr INT32_T DEFAULT_DATE = 20130101;

constexpr const INT8_T *filter_kinds[] = {"情色", "同志", "暴力"};

// How a failure is told when the parser speaks.
enum class FORM_E {
    SILENT,
    LINE,       // the text
    NAMED_LINE, // the movie's Chinese title and the text
    NAMED,      // the same without a line end
    NAMED_LOG,  // the same to the log alone
    FILTERED    // words of its own
};

struct FAILURE_T {
    TAVI_METADATA_FAILURE_E failure;
    FORM_E form;
    const INT8_T *text;
};

constexpr FAILURE_T FAILURES[] = {
    {TAVI_METADATA_OK, FORM_E::SILENT, "成功"},
    {TAVI_METADATA_INVALID_ARGUMENT, FORM_E::LINE, "无效的参数"},
    {TAVI_METADATA_NOT_WELL_FORMED, FORM_E::LINE, "从字符串获取DOC对象失败"},
    {TAVI_METADATA_NO_ROOT, FORM_E::LINE, "从DOC对象获取ROOT对象失败"},
    {TAVI_METADATA_MEMORY, FORM_E::LINE, "创建影片元数据信息缓存失败"},
    {TAVI_METADATA_CODE_AND_NAME, FORM_E::LINE, "解析影片编码和名称时出错"},
    {TAVI_METADATA_IMDB, FORM_E::NAMED_LINE, "解析影片IMDB评分时出错"},
    {TAVI_METADATA_INDEX, FORM_E::NAMED_LINE, "解析影片名称首字母索引时出错"},
    {TAVI_METADATA_CATEGORY, FORM_E::NAMED_LINE, "解析影片分类信息时出错"},
    {TAVI_METADATA_NO_CATEGORY, FORM_E::SILENT, "影片没有分类"},
    {TAVI_METADATA_KINDS, FORM_E::NAMED_LINE, "解析影片类型信息时出错"},
    {TAVI_METADATA_DISALLOWED_KIND, FORM_E::FILTERED, "影片属于禁止的类型"},
    {TAVI_METADATA_AREAS, FORM_E::NAMED_LINE, "解析影片拍摄地信息时出错"},
    {TAVI_METADATA_DIRECTORS, FORM_E::NAMED_LINE, "解析影片导演信息时出错"},
    {TAVI_METADATA_ACTORS, FORM_E::NAMED_LINE, "解析影片主演信息时出错"},
    {TAVI_METADATA_PUT_TIME, FORM_E::NAMED_LINE, "解析影片上映时间时出错"},
    {TAVI_METADATA_PUBLISH_TIME, FORM_E::NAMED_LINE, "解析影片发布时间时出错"},
    {TAVI_METADATA_DURATION, FORM_E::NAMED_LINE, "解析影片时长信息时出错"},
    {TAVI_METADATA_POSTERS, FORM_E::NAMED_LOG, "解析影片海报信息时出错"},
    {TAVI_METADATA_SUMMARY, FORM_E::NAMED, "解析影片简介信息时出错"},
    {TAVI_METADATA_EPISODES, FORM_E::NAMED_LINE, "解析影片视频集数时出错"},
    {TAVI_METADATA_VIDEOS, FORM_E::NAMED_LINE, "解析影片视频列表时出错"},
};

constexpr bool failures_stand_at_their_number() {
    for (size_t i = 0; i < std::size(FAILURES); i++) {
        if (static_cast<size_t>(FAILURES[i].failure) != i)
            return false;
    }
    return std::size(FAILURES) == TAVI_METADATA_VIDEOS + 1;
}
static_assert(failures_stand_at_their_number());

// The children of the root, in the order in which documents mostly have them.
enum CHILD_E {
    MOVIE,
    IMDB_VALUE,
    INDEX,
    DIMENSION_INFO,
    RESOLUTION_INFO,
    CATEGORY,
    KINDS,
    AREAS,
    DIRECTORS,
    ACTORS,
    PUT_TIME,
    PUBLISH_TIME,
    DURATION,
    POSTER,
    POSTER_TV_B,
    POSTER_TV_M,
    POSTER_TV_S,
    DETAILED_DESC,
    DESCRIPTION,
    EPISODES,
    VIDEOS,
    CHILDREN
};
constexpr const INT8_T *CHILD_NAMES[] = {
    "movie",       "imdb_value",  "index",       "dimension_info", "resolution_info", "category", "kinds",
    "areas",       "directors",   "actors",      "put_time",       "publish_time",    "duration", "poster",
    "poster_tv_b", "poster_tv_m", "poster_tv_s", "detailed_desc",  "description",     "episodes", "videos"};
static_assert(std::size(CHILD_NAMES) == CHILDREN);

struct FREE_DOCUMENT_T {
    void operator()(XML_DOCUMENT_T *document) const { free_xml_document(document); }
};
using OWNED_DOCUMENT_T = std::unique_ptr<XML_DOCUMENT_T, FREE_DOCUMENT_T>;
using OWNED_MOVIE_T = OWNED_T<DBDATA_MOVIE_INFORMATION_T, release_dbdata_movie_information>;

// One document on its way into a record, and whether that is told.
struct PARSER_T {
    const XML_ELEMENT_T *children[CHILDREN]; // NULL for those that the document lacks
    DBDATA_MOVIE_INFORMATION_T *info;
    bool aloud;

    const INT8_T *title() const { return info->info == nullptr ? "" : info->info->movie_name_ch; }
};

void tell_failure(TAVI_METADATA_FAILURE_E failure, const INT8_T *title) {
    const FAILURE_T &told = FAILURES[failure];
    switch (told.form) {
    case FORM_E::SILENT:
        break;
    case FORM_E::LINE:
        puts(told.text);
        break;
    case FORM_E::NAMED_LINE:
        printf("%s: %s\n", title, told.text);
        break;
    case FORM_E::NAMED:
        printf("%s: %s", title, told.text);
        break;
    case FORM_E::NAMED_LOG:
        TAVISYS_LOG_AS(LOG_FUNCTION, ZLOG_LEVEL_INFO, "%s: %s", title, told.text);
        break;
    case FORM_E::FILTERED:
        printf("filter movie(%s) due to disallow kind\n", title);
        break;
    }
}

void tell_progress(const PARSER_T &parser, const INT8_T *text) {
    if (parser.aloud)
        TAVISYS_LOG_AS(LOG_FUNCTION, ZLOG_LEVEL_INFO, "%s", text);
}

// For what a movie may lack. Readers of the log know these lines by the address in them.
void tell_lack(const PARSER_T &parser, const void *address, const INT8_T *text) {
    if (!parser.aloud)
        return;
    printf("%p: %s\n", address, text);
    TAVISYS_LOG_AS(LOG_FUNCTION, ZLOG_LEVEL_INFO, "%p: %s", address, text);
}

const XML_ELEMENT_T *child_of(const XML_ELEMENT_T *parent, const INT8_T *tagname) {
    return parent == nullptr ? nullptr : first_of_name(parent->children, tagname);
}

// The text of one element. It is not cleared: a document has some fifty of them.
struct VALUE_T {
    INT8_T text[VALUE_SIZE];

    bool read(const XML_ELEMENT_T *parent, const INT8_T *tagname) { return read(child_of(parent, tagname)); }
    bool read(const XML_ELEMENT_T *element) {
        return get_value_of_xml_element(element, text, VALUE_SIZE) == 0;
    }
    INT8_T *stripped() { return strip_char_space_and_return_from_string(text); }
};

// Scans an integer as "%d" does and moves behind it. One that is out of range is none.
bool scan_number(const INT8_T *&text, INT32_T *number) {
    INT8_T *end = nullptr;
    errno = 0;
    const long value = strtol(text, &end, 10);
    if (end == text || errno == ERANGE || value < std::numeric_limits<INT32_T>::min() ||
        value > std::numeric_limits<INT32_T>::max())
        return false;
    text = end;
    *number = static_cast<INT32_T>(value);
    return true;
}

// 0 for a text that does not begin with a number.
INT32_T number_of(const INT8_T *text) {
    INT32_T number = 0;
    return scan_number(text, &number) ? number : 0;
}

// YYYYMMDD for year-month-day, a fixed day for any other text.
INT32_T date_of(const INT8_T *text) {
    INT32_T year = 0;
    INT32_T month = 0;
    INT32_T day = 0;
    if (!scan_number(text, &year) || *text++ != '-' || !scan_number(text, &month) || *text++ != '-' ||
        !scan_number(text, &day))
        return DEFAULT_DATE;
    const long long date = year * 10000LL + month * 100LL + day;
    const bool fits =
        date >= std::numeric_limits<INT32_T>::min() && date <= std::numeric_limits<INT32_T>::max();
    return fits ? static_cast<INT32_T>(date) : DEFAULT_DATE;
}

// A text without a number leaves the field as it is and passes; an empty one does not.
bool store_number(const XML_ELEMENT_T *element, INT32_T *field) {
    VALUE_T value;
    if (!value.read(element))
        return false;
    const INT8_T *text = value.text;
    while (isspace(static_cast<unsigned char>(*text)) != 0)
        text++;
    if (*text == '\0')
        return false;
    scan_number(text, field);
    return true;
}

bool store_stripped(const XML_ELEMENT_T *element, INT8_T *&field) {
    VALUE_T value;
    return value.read(element) && store_copy(field, value.stripped());
}

// Adds a node by the family's own rule; a duplicate, which nobody else holds, is deleted.
template <class NODE>
void add_or_delete(NODE **list, NODE *node, RTSTATUS (*add)(NODE **, NODE *), void (*delete_node)(NODE **)) {
    if (add(list, node) != 0)
        delete_node(&node);
}

// Fills an empty list by the catalogue's rule, each key once, at a cost for each node that does not grow
// with the list: anybody may have written a document with a hundred thousand actors.
template <class NODE, auto KEY, auto DELETE_NODE>
class KEYED_LIST_T {
public:
    explicit KEYED_LIST_T(NODE *&list) : list_(list) {}

    // Takes the node; false when memory is short, also for the node itself.
    bool add(NODE *fresh) {
        OWNED_T<NODE, DELETE_NODE> node{fresh};
        if (node == nullptr)
            return false;
        try {
            if (!is_new(node->info->*KEY))
                return true;
        } catch (...) {
            return false;
        }
        tail_.append(node.release());
        list_ = tail_.head();
        count_++;
        return true;
    }

private:
    // A list of this many nodes is compared sooner than hashed.
    static constexpr INT32_T SHORT_LIST = 16;

    bool is_new(std::string_view key) {
        if (count_ < SHORT_LIST)
            return find_node(list_, [key](const NODE *node) { return key == node->info->*KEY; }) == nullptr;
        if (keys_.empty()) {
            for (const NODE *node : nodes_of(list_))
                keys_.insert(node->info->*KEY);
        }
        return keys_.insert(key).second;
    }

    NODE *&list_;
    TAIL_T<NODE> tail_;
    INT32_T count_ = 0;
    std::unordered_set<std::string_view> keys_;
};

// Calls read for each child of that name, until it fails.
template <class READ>
bool read_children(const XML_ELEMENT_T *parent, const INT8_T *tagname, READ read) {
    for (const XML_ELEMENT_T *child = child_of(parent, tagname); child != nullptr;
         child = first_of_name(child->next, tagname)) {
        if (!read(child))
            return false;
    }
    return true;
}

bool parse_basic_information(const PARSER_T &parser) {
    const XML_ELEMENT_T *movie = parser.children[MOVIE];
    VALUE_T code;
    VALUE_T name_ch;
    VALUE_T name_en;
    if (!code.read(movie, "movie_code") || !name_ch.read(movie, "movie_name_ch") ||
        !name_en.read(movie, "movie_name_en"))
        return false;
    parser.info->info = create_dbdata_basic_movie_information(code.text, name_ch.text, name_en.text);
    return parser.info->info != nullptr;
}

bool parse_imdb_value(const PARSER_T &parser) {
    return store_stripped(parser.children[IMDB_VALUE], parser.info->imdbvalue);
}

bool parse_index(const PARSER_T &parser) {
    VALUE_T value;
    if (!value.read(parser.children[INDEX]))
        return false;
    skip_nonchar_and_nonnum_in_string(value.text);
    parser.info->acronym = safe_strdup(value.stripped());
    return true;
}

struct SINGLE_ATTRIBUTE_T {
    const INT8_T *id;
    const INT8_T *name;
    INT32_T default_id;
    const INT8_T *default_name;
};

// The value for all, then the document's own or the default one. What finds no memory is left out.
template <class NODE>
void parse_single_attribute(const XML_ELEMENT_T *element, const SINGLE_ATTRIBUTE_T &attribute, NODE **list,
                            NODE *(*create_node)(INT32_T, const INT8_T *, PVOID),
                            RTSTATUS (*add)(NODE **, NODE *), void (*delete_node)(NODE **)) {
    add_or_delete(list, create_node(0, ALL, nullptr), add, delete_node);
    VALUE_T id;
    VALUE_T name;
    const INT32_T number = id.read(element, attribute.id) ? number_of(id.text) : attribute.default_id;
    const INT8_T *text = name.read(element, attribute.name) ? name.stripped() : attribute.default_name;
    add_or_delete(list, create_node(number, text, nullptr), add, delete_node);
}

bool parse_dimensions(const PARSER_T &parser) {
    constexpr SINGLE_ATTRIBUTE_T DIMENSION = {"dimension_id", "dimension_name", 0, "2D"};
    parse_single_attribute(parser.children[DIMENSION_INFO], DIMENSION, &parser.info->dimension_list,
                           create_dbdata_dimension_information_list_node_ex,
                           add_node_to_dbdata_dimension_information_list,
                           delete_dbdata_dimension_information_list_node);
    return true;
}

bool parse_resolutions(const PARSER_T &parser) {
    constexpr SINGLE_ATTRIBUTE_T RESOLUTION = {"resolution_id", "resolution_name", 2, "BD"};
    parse_single_attribute(parser.children[RESOLUTION_INFO], RESOLUTION, &parser.info->resolution_list,
                           create_dbdata_resolution_information_list_node_ex,
                           add_node_to_dbdata_resolution_information_list,
                           delete_dbdata_resolution_information_list_node);
    return true;
}

const INT8_T *correct_category_name(const INT8_T *name) {
    for (const CATEGORY_ID_MAP_T &known : category_ids_map) {
        if (safe_strcasecmp(known.name, name) == 0)
            return known.name;
    }
    return DEFAULT_CATEGORY.name;
}

bool parse_category(const PARSER_T &parser) {
    VALUE_T value;
    if (!value.read(parser.children[CATEGORY]))
        return false;
    parser.info->category_list =
        create_dbdata_category_information_list_node_ex(correct_category_name(value.stripped()), nullptr);
    return true;
}

bool has_category(const PARSER_T &parser) {
    return parser.info->category_list != nullptr;
}

INT32_T category_id(const PARSER_T &parser) {
    return parser.info->category_list->info->id;
}

bool parse_kinds(const PARSER_T &parser) {
    const XML_ELEMENT_T *kinds = parser.children[KINDS];
    if (kinds == nullptr)
        return false;
    KEYED_LIST_T<DBDATA_KIND_INFORMATION_LIST_T, &DBDATA_KIND_INFORMATION_T::name,
                 delete_dbdata_kind_information_list_node>
        list(parser.info->kind_list);
    const auto add = [&](const INT8_T *name) {
        return list.add(create_dbdata_kind_information_list_node_ex(category_id(parser), name, nullptr));
    };
    return add(ALL) && read_children(kinds, "kind", [&](const XML_ELEMENT_T *kind) {
               VALUE_T name;
               return name.read(kind, "kind_name") && add(name.text);
           });
}

bool is_disallowed_kind(const DBDATA_KIND_INFORMATION_LIST_T *node) {
    for (const INT8_T *disallowed : filter_kinds) {
        if (safe_strcmp(node->info->name, disallowed) == 0)
            return true;
    }
    return false;
}

bool allows_kinds(const PARSER_T &parser) {
    if (parser.aloud)
        puts("过滤影片类型");
    return find_node(parser.info->kind_list, is_disallowed_kind) == nullptr;
}

// A dimension is none of the values that clients list as kinds, but they offer 3D among them.
bool add_3d_kind(const PARSER_T &parser) {
    const bool is_3d = find_node(parser.info->dimension_list, [](const auto *node) {
        return safe_strcasecmp(node->info->dimension, KIND_3D) == 0;
    });
    if (is_3d) {
        add_or_delete(&parser.info->kind_list,
                      create_dbdata_kind_information_list_node_ex(category_id(parser), KIND_3D, nullptr),
                      add_node_to_dbdata_kind_information_list, delete_dbdata_kind_information_list_node);
    }
    return true;
}

bool parse_areas(const PARSER_T &parser) {
    const XML_ELEMENT_T *areas = parser.children[AREAS];
    if (areas == nullptr)
        return false;
    KEYED_LIST_T<DBDATA_AREA_INFORMATION_LIST_T, &DBDATA_AREA_INFORMATION_T::name,
                 delete_dbdata_area_information_list_node>
        list(parser.info->area_list);
    const auto add = [&](const INT8_T *name) {
        return list.add(create_dbdata_area_information_list_node_ex(name, nullptr));
    };
    return add(ALL) && read_children(areas, "area", [&](const XML_ELEMENT_T *area) {
               VALUE_T name;
               return name.read(area, "area_name") && add(name.text);
           });
}

struct PERSON_TAGS_T {
    CHILD_E list;
    const INT8_T *person;
    const INT8_T *code;
    const INT8_T *name;
};

template <class LIST, class CREATE_NODE>
bool parse_persons(const PARSER_T &parser, const PERSON_TAGS_T &tags, LIST list, CREATE_NODE create_node) {
    const XML_ELEMENT_T *persons = parser.children[tags.list];
    return persons != nullptr && read_children(persons, tags.person, [&](const XML_ELEMENT_T *person) {
               VALUE_T code;
               VALUE_T name;
               return code.read(person, tags.code) && name.read(person, tags.name) &&
                      list.add(create_node(code.text, name.text, nullptr));
           });
}

bool parse_directors(const PARSER_T &parser) {
    using LIST_T = KEYED_LIST_T<DBDATA_DIRECTOR_INFORMATION_LIST_T, &DBDATA_DIRECTOR_INFORMATION_T::code,
                                delete_dbdata_director_information_list_node>;
    return parse_persons(parser, {DIRECTORS, "director", "director_code", "director_name"},
                         LIST_T(parser.info->director_list), create_dbdata_director_information_list_node_ex);
}

bool parse_actors(const PARSER_T &parser) {
    using LIST_T = KEYED_LIST_T<DBDATA_ACTOR_INFORMATION_LIST_T, &DBDATA_ACTOR_INFORMATION_T::code,
                                delete_dbdata_actor_information_list_node>;
    return parse_persons(parser, {ACTORS, "actor", "actor_code", "actor_name"},
                         LIST_T(parser.info->actor_list), create_dbdata_actor_information_list_node_ex);
}

bool parse_put_time(const PARSER_T &parser) {
    VALUE_T value;
    const bool given = value.read(parser.children[PUT_TIME]);
    parser.info->put_time = given ? date_of(value.stripped()) : DEFAULT_DATE;
    return true;
}

bool parse_publish_time(const PARSER_T &parser) {
    VALUE_T value;
    if (!value.read(parser.children[PUBLISH_TIME]))
        return false;
    parser.info->publish_time = date_of(value.stripped());
    return true;
}

bool add_years(const PARSER_T &parser) {
    for (const INT32_T year : {ALL_YEARS, parser.info->publish_time / 10000}) {
        add_or_delete(&parser.info->year_list, create_dbdata_year_information_list_node_ex(year, nullptr),
                      add_node_to_dbdata_year_information_list, delete_dbdata_year_information_list_node);
    }
    return true;
}

bool parse_duration(const PARSER_T &parser) {
    return store_number(parser.children[DURATION], &parser.info->duration);
}

bool parse_posters(const PARSER_T &parser) {
    const XML_ELEMENT_T *poster = parser.children[POSTER];
    VALUE_T big;
    VALUE_T middle;
    VALUE_T small;
    if (!big.read(poster, "poster_b") || !middle.read(poster, "poster_m") || !small.read(poster, "poster_s"))
        return false;
    parser.info->posters = create_dbdata_poster_information(big.text, middle.text, small.text);
    return parser.info->posters != nullptr;
}

bool store_tv_posters(const PARSER_T &parser) {
    VALUE_T big;
    VALUE_T middle;
    VALUE_T small;
    if (!big.read(parser.children[POSTER_TV_B]) || !middle.read(parser.children[POSTER_TV_M]) ||
        !small.read(parser.children[POSTER_TV_S]))
        return false;
    DBDATA_POSTER_INFORMATION_T &posters = *parser.info->posters;
    return store_copy(posters.tv_big, big.text) && store_copy(posters.tv_middle, middle.text) &&
           store_copy(posters.tv_small, small.text);
}

bool parse_tv_posters(const PARSER_T &parser) {
    if (!store_tv_posters(parser))
        tell_lack(parser, parser.title(), "解析影片tv海报信息时出错");
    return true;
}

bool parse_detailed_description(const PARSER_T &parser) {
    INT8_T text[DESCRIPTION_SIZE];
    const bool given = get_value_of_xml_element(parser.children[DETAILED_DESC], text, DESCRIPTION_SIZE) == 0;
    if (!given || !store_copy(parser.info->description, strip_char_space_and_return_from_string(text)))
        tell_lack(parser, parser.info->description, "解析详细内容出错");
    return true;
}

bool parse_summary(const PARSER_T &parser) {
    return store_stripped(parser.children[DESCRIPTION], parser.info->summary);
}

bool parse_episodes(const PARSER_T &parser) {
    return store_number(parser.children[EPISODES], &parser.info->episodes);
}

bool parse_videos(const PARSER_T &parser) {
    TAIL_T<DBDATA_VIDEO_INFORMATION_LIST_T> list;
    const bool complete = read_children(parser.children[VIDEOS], "video", [&](const XML_ELEMENT_T *video) {
        VALUE_T seqno;
        VALUE_T name;
        VALUE_T filepath;
        if (!seqno.read(video, "video_seqno") || !name.read(video, "video_name") ||
            !filepath.read(video, "video_filepath"))
            return false;
        auto *node = create_dbdata_video_information_list_node_ex(number_of(seqno.text), name.text,
                                                                  filepath.text, nullptr);
        if (node != nullptr)
            list.append(node);
        return node != nullptr;
    });
    parser.info->video_list = list.head();
    return complete && list.head() != nullptr;
}

struct STEP_T {
    bool (*parse)(const PARSER_T &parser);
    TAVI_METADATA_FAILURE_E failure; // of a step that returns false
    const INT8_T *progress;          // logged before the step, or nullptr
};

constexpr STEP_T STEPS[] = {
    {parse_basic_information, TAVI_METADATA_CODE_AND_NAME, nullptr},
    {parse_imdb_value, TAVI_METADATA_IMDB, nullptr},
    {parse_index, TAVI_METADATA_INDEX, nullptr},
    {parse_dimensions, TAVI_METADATA_OK, nullptr},
    {parse_resolutions, TAVI_METADATA_OK, nullptr},
    {parse_category, TAVI_METADATA_CATEGORY, nullptr},
    {has_category, TAVI_METADATA_NO_CATEGORY, nullptr},
    {parse_kinds, TAVI_METADATA_KINDS, nullptr},
    {allows_kinds, TAVI_METADATA_DISALLOWED_KIND, nullptr},
    {add_3d_kind, TAVI_METADATA_OK, nullptr},
    {parse_areas, TAVI_METADATA_AREAS, "地区列表"},
    {parse_directors, TAVI_METADATA_DIRECTORS, "导演列表"},
    {parse_actors, TAVI_METADATA_ACTORS, "演员列表"},
    {parse_put_time, TAVI_METADATA_PUT_TIME, "上架时间"},
    {parse_publish_time, TAVI_METADATA_PUBLISH_TIME, "发布时间"},
    {add_years, TAVI_METADATA_OK, nullptr},
    {parse_duration, TAVI_METADATA_DURATION, "影片时长"},
    {parse_posters, TAVI_METADATA_POSTERS, "影片海报信息"},
    {parse_tv_posters, TAVI_METADATA_OK, "影片TV海报信息"},
    {parse_detailed_description, TAVI_METADATA_OK, "影片详细简介"},
    {parse_summary, TAVI_METADATA_SUMMARY, "影片简介"},
    {parse_episodes, TAVI_METADATA_EPISODES, "影片视频集数"},
    {parse_videos, TAVI_METADATA_VIDEOS, "影片视频列表"},
};

TAVI_METADATA_FAILURE_E parse_tavi_metadata_from_object(const PARSER_T &parser) {
    for (const STEP_T &step : STEPS) {
        if (step.progress != nullptr)
            tell_progress(parser, step.progress);
        if (!step.parse(parser))
            return step.failure;
    }
    tell_progress(parser, "完成");
    return TAVI_METADATA_OK;
}

TAVI_METADATA_FAILURE_E fail(TAVI_METADATA_FAILURE_E failure, bool aloud) {
    if (aloud)
        tell_failure(failure, "");
    return failure;
}

// The first child of each name. The search for one begins behind the name of the one before.
void find_children(const XML_ELEMENT_T *root, const XML_ELEMENT_T *(&children)[CHILDREN]) {
    size_t next = 0;
    for (const XML_ELEMENT_T *child = root->children; child != nullptr; child = child->next)
        for (size_t tried = 0; tried < CHILDREN; tried++) {
            const size_t at = (next + tried) % CHILDREN;
            if (strcmp(child->name, CHILD_NAMES[at]) != 0)
                continue;
            if (children[at] == nullptr)
                children[at] = child;
            next = at + 1;
            break;
        }
}

TAVI_METADATA_FAILURE_E load_movie(const void *document, size_t length, bool aloud,
                                   DBDATA_MOVIE_INFORMATION_T **movinfo) {
    const OWNED_DOCUMENT_T read{length > INT_MAX ? nullptr
                                                 : read_xml_document(document, static_cast<INT32_T>(length))};
    if (read == nullptr)
        return fail(TAVI_METADATA_NOT_WELL_FORMED, aloud);
    const XML_ELEMENT_T *root = get_root_of_xml_document(read.get());
    if (root == nullptr)
        return fail(TAVI_METADATA_NO_ROOT, aloud);
    OWNED_MOVIE_T movie{create_dbdata_movie_information()};
    if (movie == nullptr)
        return fail(TAVI_METADATA_MEMORY, aloud);

    PARSER_T parser{{}, movie.get(), aloud};
    find_children(root, parser.children);
    const TAVI_METADATA_FAILURE_E failure = parse_tavi_metadata_from_object(parser);
    if (failure == TAVI_METADATA_OK) {
        *movinfo = movie.release();
    } else if (aloud) {
        tell_failure(failure, parser.title());
        puts("分析并提取XML数据失败");
    }
    return failure;
}

} // namespace

RTSTATUS get_tavi_metadata_information_from_string(const INT8_T *string,
                                                   DBDATA_MOVIE_INFORMATION_T **movinfo) {
    constexpr bool ALOUD = true;
    const TAVI_METADATA_FAILURE_E result = string == nullptr || movinfo == nullptr
                                               ? fail(TAVI_METADATA_INVALID_ARGUMENT, ALOUD)
                                               : load_movie(string, strlen(string), ALOUD, movinfo);
    return result == TAVI_METADATA_OK ? 0 : -1;
}

RTSTATUS get_tavi_metadata_information_from_document(const void *document, INT32_T length,
                                                     DBDATA_MOVIE_INFORMATION_T **movinfo,
                                                     TAVI_METADATA_FAILURE_E *failure) {
    constexpr bool ALOUD = false;
    const TAVI_METADATA_FAILURE_E result =
        document == nullptr || length < 1 || movinfo == nullptr
            ? TAVI_METADATA_INVALID_ARGUMENT
            : load_movie(document, static_cast<size_t>(length), ALOUD, movinfo);
    if (failure != nullptr)
        *failure = result;
    return result == TAVI_METADATA_OK ? 0 : -1;
}

const INT8_T *get_tavi_metadata_failure_text(TAVI_METADATA_FAILURE_E failure) {
    const auto number = static_cast<size_t>(failure);
    return number < std::size(FAILURES) ? FAILURES[number].text : "未知的失败原因";
}
