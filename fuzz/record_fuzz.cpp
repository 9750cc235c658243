// Records of every family, made up from the input: encoded, decoded and compared.
//
// Each family is described here once more, by hand, in the order in which its fields travel. The description
// fills a record, and it writes down the bytes of one. So the library's encoder has to make the bytes that
// are written here, or to refuse where this says so; and what its decoder makes of them has to be written
// down as the same bytes again, which compares the two records field by field.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <type_traits>
#include <vector>

#include "families.h"
#include "fuzz.h"
#include "tavisys.h"

using namespace fuzz;

namespace {

using PAGE_T = TP_TAVISYS_BASIC_MOVIE_EXT_INFORMATION_T;
using MOVIE_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_T;

// What a list may not have: nodes without a record, which otherwise aren't sent; being NULL, which
// otherwise is sent as a count of 0.
struct RULES_T {
    bool needs_records;
    bool needs_list;
};
constexpr RULES_T SKIPPING{false, true};
constexpr RULES_T STRICT{true, true};
constexpr RULES_T LENIENT{false, false};

template <class RECORD>
RECORD *make() {
    return static_cast<RECORD *>(calloc(1, sizeof(RECORD)));
}
template <class NODE>
NODE *next_of(const NODE *node) {
    return static_cast<NODE *>(node->next);
}
// Whether the nodes of a list are its records, too.
template <class VISITOR, class NODE, class DESCRIBE>
constexpr bool IS_INTRUSIVE = std::is_invocable_v<DESCRIBE, VISITOR &, NODE &>;

// ---- Fills a record from the input. An input that has ended gives lists of one node with nothing in it.

class FILL_T {
public:
    explicit FILL_T(INPUT_T *from) : from_(from) {}

    template <class VALUE>
    void integer(VALUE &value) {
        value = static_cast<VALUE>(from_->integer());
    }
    void text(INT8_T *&text) {
        const uint8_t size = from_->byte();
        if (size == 0)
            return; // NULL
        std::string content(size == UINT8_MAX ? LONG_TEXT : size - 1U, 'x');
        const std::string_view start = from_->bytes(std::min<size_t>(content.size(), LONGEST_START));
        std::replace_copy(start.begin(), start.end(), content.begin(), '\0', '0');
        text = strdup(content.c_str());
    }
    void ids(BASIC_MOVIE_IDS_T *&ids) {
        ids = create_tavisys_basic_movie_ids_information(static_cast<INT32_T>(from_->below(5)));
        for (INT32_T i = 0; ids != nullptr && i < ids->num; i++)
            ids->ids[i] = from_->integer();
    }
    template <class RECORD, class DESCRIBE>
    void owned(RECORD *&record, DESCRIBE describe) {
        if (from_->byte() == UINT8_MAX)
            return; // NULL
        record = make<RECORD>();
        describe(*this, *record);
    }
    template <class RECORD, class DESCRIBE>
    void optional(RECORD *&record, DESCRIBE describe) {
        owned(record, describe);
    }
    template <class RECORD, class DESCRIBE>
    void sized(RECORD *&record, DESCRIBE describe) {
        owned(record, describe);
    }
    template <class NODE, class DESCRIBE>
    void list(NODE *&list, RULES_T, DESCRIBE describe) {
        const uint8_t form = from_->byte();
        if (form == UINT8_MAX)
            return; // NULL
        NODE *last = nullptr;
        for (int count = form % MOST_NODES; count >= 0; count--) {
            auto *node = make<NODE>();
            if constexpr (IS_INTRUSIVE<FILL_T, NODE, DESCRIBE>)
                describe(*this, *node);
            else
                owned(node->info, describe);
            (last == nullptr ? list : *reinterpret_cast<NODE **>(&last->next)) = node;
            last = node;
        }
    }
    template <class NODE, class KEY, class DESCRIBE>
    void keyed_list(NODE *&list, KEY, DESCRIBE describe) {
        this->list(list, STRICT, describe);
    }

private:
    static constexpr size_t LONG_TEXT = 5000;
    static constexpr size_t LONGEST_START = 32;
    static constexpr int MOST_NODES = 40;
    INPUT_T *from_;
};

// ---- Writes down the bytes of a record, or that it can't be encoded.

class WRITE_T {
public:
    // Of nodes with the same key, the bytes of the first alone: what is left of a list when it is decoded.
    explicit WRITE_T(bool drops_repeats = false) : drops_repeats_(drops_repeats) {}

    std::string bytes;
    bool is_refused = false;

    template <class VALUE>
    void integer(VALUE value) {
        for (unsigned shift = 0; shift < 32; shift += 8)
            bytes.push_back(static_cast<char>(static_cast<uint32_t>(value) >> shift));
    }
    void text(const INT8_T *text) {
        integer(text == nullptr ? -1 : static_cast<INT32_T>(strlen(text)));
        bytes.append(text == nullptr ? "" : text);
    }
    void ids(const BASIC_MOVIE_IDS_T *ids) {
        integer(ids == nullptr ? 0 : ids->num);
        for (INT32_T i = 0; ids != nullptr && i < ids->num; i++)
            integer(ids->ids[i]);
    }
    template <class RECORD, class DESCRIBE>
    void owned(RECORD *record, DESCRIBE describe) {
        is_refused = is_refused || record == nullptr;
        if (record != nullptr)
            describe(*this, *record);
    }
    template <class RECORD, class DESCRIBE>
    void optional(RECORD *record, DESCRIBE describe) {
        integer(record == nullptr ? 0 : 1);
        if (record != nullptr)
            describe(*this, *record);
    }
    // Behind its length.
    template <class RECORD, class DESCRIBE>
    void sized(RECORD *record, DESCRIBE describe) {
        WRITE_T inner(drops_repeats_);
        if (record != nullptr)
            describe(inner, *record);
        is_refused = is_refused || inner.is_refused;
        integer(static_cast<INT32_T>(inner.bytes.size()));
        bytes += inner.bytes;
    }
    template <class NODE, class DESCRIBE>
    void list(NODE *list, RULES_T rules, DESCRIBE describe) {
        is_refused = is_refused || (list == nullptr && rules.needs_list);
        const size_t place = bytes.size();
        INT32_T count = 0;
        integer(count);
        for (NODE *node = list; node != nullptr; node = next_of(node))
            count += write_node(*node, rules, describe) ? 1 : 0;
        WRITE_T number;
        number.integer(count);
        bytes.replace(place, number.bytes.size(), number.bytes);
    }
    template <class NODE, class KEY, class DESCRIBE>
    void keyed_list(NODE *list, KEY key, DESCRIBE describe) {
        std::vector<NODE> kept;
        for (NODE *node = list; node != nullptr; node = next_of(node)) {
            const auto repeats = [&](const NODE &other) { return safe_strcmp(key(other), key(*node)) == 0; };
            if (!drops_repeats_ || std::none_of(kept.begin(), kept.end(), repeats))
                kept.push_back(*node);
        }
        for (size_t i = 0; i + 1 < kept.size(); i++)
            kept[i].next = &kept[i + 1];
        if (!kept.empty())
            kept.back().next = nullptr;
        this->list(kept.empty() ? nullptr : kept.data(), STRICT, describe);
    }

private:
    template <class NODE, class DESCRIBE>
    bool write_node(NODE &node, RULES_T rules, DESCRIBE describe) {
        if constexpr (IS_INTRUSIVE<WRITE_T, NODE, DESCRIBE>) {
            describe(*this, node);
            return true;
        } else {
            is_refused = is_refused || (node.info == nullptr && rules.needs_records);
            if (node.info != nullptr)
                describe(*this, *node.info);
            return node.info != nullptr;
        }
    }
    bool drops_repeats_;
};

// ---- The families

constexpr auto BASIC_MOVIE = [](auto &v, TP_TAVISYS_BASIC_MOVIE_INFORMATION_T &movie) {
    v.integer(movie.movid);
    v.text(movie.movcode);
    v.text(movie.movname);
    v.integer(movie.score);
    v.integer(movie.puttime);
    v.integer(movie.pubtime);
    v.text(movie.nposter);
    v.text(movie.bposter);
    v.text(movie.acronym);
    v.integer(movie.category_id);
    v.integer(movie.year_id);
    v.ids(movie.kind_ids);
    v.ids(movie.area_ids);
    v.ids(movie.dimension_ids);
    v.ids(movie.resolution_ids);
    v.text(movie.hdsn);
    v.integer(movie.index);
};
constexpr auto TOUCH_MOVIE = [](auto &v, TP_TAVISYS_BASIC_MOVIE_INFORMATION_T &movie) {
    BASIC_MOVIE(v, movie);
    v.integer(movie.totalvideo);
    v.integer(movie.duration);
};
constexpr auto PAGE_NUMBERS = [](auto &v, TP_PAGE_INFORMATION &page) {
    v.integer(page.pagenum);
    v.integer(page.pagesize);
    v.integer(page.totalpages);
    v.integer(page.totalmovies);
    v.integer(page.replymovies);
};
constexpr auto PAGE = [](auto &v, PAGE_T &page) {
    PAGE_NUMBERS(v, page.pageinfo);
    v.list(page.list, SKIPPING, BASIC_MOVIE);
};
constexpr auto TOUCH_PAGE = [](auto &v, PAGE_T &page) {
    PAGE_NUMBERS(v, page.pageinfo);
    v.list(page.list, SKIPPING, TOUCH_MOVIE);
};

constexpr auto NAMED = [](auto &v, TP_TAVISYS_FILTER_INFORMATION_T &value) {
    v.integer(value.id);
    v.text(value.name);
};
template <class VALUE>
constexpr auto COUNTED = [](auto &v, VALUE &value) {
    v.integer(value.id);
    v.text(value.name);
    v.integer(value.movies);
};

constexpr auto VIDEO = [](auto &v, TP_TAVISYS_VIDEO_INFORMATION_T &video) {
    v.integer(video.id);
    v.integer(video.seqno);
    v.text(video.name);
    v.text(video.mp4);
};
constexpr auto DIMENSION = [](auto &v, TP_MOVIE_DIMENSION_INFORMATION_T &dimension) {
    v.integer(dimension.id);
    v.text(dimension.name);
};
constexpr auto LABELLED_VALUE = [](auto &v, TP_MOVIE_SINGLE_KVP_INFORMATION_T &value) {
    v.text(value.desc);
    v.text(value.value);
};
constexpr auto LABELLED_LIST = [](auto &v, TP_MOVIE_FILTER_KVP_INFORMATION_T &values) {
    v.text(values.desc);
    v.list(values.list, SKIPPING, [](auto &w, TP_MOVIE_FILTER_INFORMATION_T &value) { w.text(value.name); });
};
constexpr auto DETAIL = [](auto &v, TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T &movie) {
    v.text(movie.name);
    v.integer(movie.year);
    v.optional(movie.dimension_info, DIMENSION);
    v.text(movie.poster);
    v.optional(movie.director_info, LABELLED_LIST);
    v.optional(movie.actor_info, LABELLED_LIST);
    v.optional(movie.kind_info, LABELLED_LIST);
    v.optional(movie.duration_info, LABELLED_VALUE);
    v.optional(movie.summary_info, LABELLED_VALUE);
    v.integer(movie.videos);
    v.list(movie.video_list, SKIPPING, VIDEO);
};

constexpr auto VALUE = [](auto &v, TP_TAVISYS_DBDATA_FILTER_INFORMATION_T &value) { v.text(value.name); };
constexpr auto YEAR = [](auto &v, TP_TAVISYS_DBDATA_YEAR_INFORMATION_T &year) { v.integer(year.year); };
constexpr auto PERSON = [](auto &v, TP_TAVISYS_DBDATA_PERSON_INFORMATION_T &person) {
    v.text(person.code);
    v.text(person.name);
};
constexpr auto POSTERS = [](auto &v, TP_TAVISYS_DBDATA_POSTER_INFORMATION_T &posters) {
    v.text(posters.big);
    v.text(posters.middle);
    v.text(posters.small);
};
constexpr auto WHOLE_VIDEO = [](auto &v, TP_TAVISYS_DBDATA_VIDEO_INFORMATION_T &video) {
    v.integer(video.vid);
    v.integer(video.seqno);
    v.text(video.name);
    v.text(video.filepath);
    v.text(video.mp4);
};
constexpr auto WHOLE_MOVIE = [](auto &v, MOVIE_T &movie) {
    v.integer(movie.mid);
    v.text(movie.movcode);
    v.text(movie.movnamech);
    v.text(movie.movnameen);
    v.text(movie.imdbvalue);
    v.text(movie.acronym);
    v.list(movie.dimension_list, LENIENT, VALUE);
    v.list(movie.resolution_list, LENIENT, VALUE);
    v.list(movie.category_list, LENIENT, VALUE);
    v.list(movie.kind_list, LENIENT, VALUE);
    v.list(movie.area_list, LENIENT, VALUE);
    v.list(movie.director_list, SKIPPING, PERSON);
    v.list(movie.actor_list, SKIPPING, PERSON);
    v.list(movie.year_list, SKIPPING, YEAR);
    v.integer(movie.puttime);
    v.integer(movie.pubtime);
    v.integer(movie.putintime);
    v.integer(movie.duration);
    v.optional(movie.posters, POSTERS);
    v.text(movie.summary);
    v.integer(movie.episodes);
    v.list(movie.video_list, SKIPPING, WHOLE_VIDEO);
};

constexpr auto CODE = [](auto &v, TP_MOVCODE_INFORMATION_T &code) { v.text(code.movcode); };
constexpr auto CODE_NODE = [](auto &v, TP_MOVCODE_INFORMATION_LIST_T &node) { v.sized(node.info, CODE); };
constexpr auto REQUEST = [](auto &v, TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T &request) {
    v.text(request.deviceid);
    v.text(request.hddevname);
    v.text(request.ptdevname);
    v.list(request.list, LENIENT, CODE_NODE);
};

constexpr auto PARTITION = [](auto &v, TP_TAVISYS_PARTITION_INFORMATION_T &partition) {
    v.integer(partition.seqno);
    v.text(partition.devname);
    v.text(partition.uuid);
    v.text(partition.mntp);
};
constexpr auto DISK = [](auto &v, TP_TAVISYS_HARDDISK_INFORMATION_T &disk) {
    v.text(disk.devname);
    v.text(disk.serialno);
};
// Of a node without a record, which isn't sent, there is no key.
constexpr auto DEVICE = [](const auto &node) { return node.info == nullptr ? nullptr : node.info->devname; };
constexpr auto DISK_NODE = [](auto &v, TP_TAVISYS_HARDDISK_INFORMATION_LIST_T &node) {
    v.owned(node.info, DISK);
    v.keyed_list(node.list, DEVICE, PARTITION);
};

constexpr auto DISK_VIDEO = [](auto &v, TP_VIDEO_LIST &video) {
    v.integer(video.index);
    v.text(video.hdsn);
    v.text(video.movname);
};
constexpr auto DISK_MOVIE = [](auto &v, TP_HARD_DISK_VIDEO_INFORMATION_T &movie) {
    v.text(movie.movcode);
    v.list(movie.list, SKIPPING, DISK_VIDEO);
};
constexpr auto ID_PAIR = [](auto &v, TP_TAVISYS_MOVIE_ID_INFORMATION_T &pair) {
    v.integer(pair.mid);
    v.integer(pair.vid);
};

constexpr auto PLAYER = [](auto &v, TP_TAVISYS_PLAYER_STATUS_INFORMATION_T &player) {
    v.integer(player.status);
    v.text(player.filename);
    v.text(player.filepath);
    v.integer(player.playtime);
    v.integer(player.duration);
    v.integer(player.mute);
    v.integer(player.volume);
    v.integer(player.movid);
    v.integer(player.videoid);
    v.integer(player.seqno);
    v.integer(player.category_id);
};
constexpr auto SYSTEM = [](auto &v, TP_TAVISYS_SYSTEM_INFORMATION_T &system) {
    v.integer(system.hdnum);
    v.integer(system.movnum);
};
constexpr auto STATUS = [](auto &v, TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T &status) {
    v.integer(status.status);
    v.integer(status.total_movies);
    v.integer(status.parseok_movies);
    v.integer(status.parseerr_movies);
    v.integer(status.left_movies);
};
constexpr auto VERSION = [](auto &v, TP_TAVISYS_VERSION_INFORMATION_T &version) {
    v.text(version.version);
    v.text(version.name);
    v.text(version.devid);
};

// ---- A record's way there and back

void require_way_back(const FAMILY_T &family, const std::string &bytes, void **decoded) {
    const std::unique_ptr<char[]> body(new char[bytes.size()]); // its end is watched
    memcpy(body.get(), bytes.data(), bytes.size());
    const auto length = static_cast<INT32_T>(bytes.size());
    const INT32_T used = family.decode(body.get(), length, decoded);
    require(used == (family.tells_bytes ? length - family.unread : 0), "the record does not come back",
            family.name);
}

void require_bytes(const FAMILY_T &family, const void *record, const WRITE_T &expected) {
    INT8_T mark = 0;
    PVOID body = &mark;
    INT32_T length = 7;
    const RTSTATUS result = family.encode(record, &body, &length);
    require(result == (expected.is_refused ? -1 : 0), "refused or accepted in error", family.name);
    if (result != 0) {
        require(body == &mark && length == 7, "out-arguments of a failure", family.name);
        return;
    }
    const std::string_view got(static_cast<const char *>(body), static_cast<size_t>(length));
    require(got == expected.bytes, "other bytes than the fields say", family.name);
    safe_free(body);
}

// `describe` takes a visitor and the address of the record or of the head of the list.
template <class RECORD, class DESCRIBE>
void try_record(const char *name, INPUT_T *input, DESCRIBE describe) {
    const FAMILY_T &family = family_of(name);
    const auto written = [&](void *record, bool drops_repeats) {
        WRITE_T write(drops_repeats);
        auto *top = static_cast<RECORD *>(record);
        describe(write, top);
        write.bytes.append(static_cast<size_t>(family.unread), '\0');
        return write;
    };
    RECORD *made = nullptr;
    FILL_T fill(input);
    describe(fill, made);
    const WRITE_T expected = written(made, false);
    require_bytes(family, made, expected);
    if (!expected.is_refused) {
        void *decoded = nullptr;
        require_way_back(family, expected.bytes, &decoded);
        require(written(decoded, false).bytes == written(made, true).bytes,
                "other fields than those of the record", family.name);
        family.release(&decoded);
    }
    void *record = made;
    family.release(&record);
}

template <auto DESCRIBE, class RECORD>
void try_one(const char *name, INPUT_T *input) {
    try_record<RECORD>(name, input, [](auto &v, RECORD *&top) { v.owned(top, DESCRIBE); });
}
template <auto DESCRIBE, class RECORD>
void try_sized(const char *name, INPUT_T *input) {
    try_record<RECORD>(name, input, [](auto &v, RECORD *&top) { v.sized(top, DESCRIBE); });
}
template <auto DESCRIBE, class NODE, bool NEEDS_RECORDS>
void try_list(const char *name, INPUT_T *input) {
    try_record<NODE>(name, input, [](auto &v, NODE *&top) {
        v.list(top, RULES_T{NEEDS_RECORDS, true}, DESCRIBE);
    });
}
void try_disks(const char *name, INPUT_T *input) {
    using NODE_T = TP_TAVISYS_HARDDISK_INFORMATION_LIST_T;
    try_record<NODE_T>(name, input, [](auto &v, NODE_T *&top) { v.keyed_list(top, DEVICE, DISK_NODE); });
}

// ---- Encoders of a form of their own

// The encoder that writes several movies over each other: of one movie it makes the body that the family's
// makes, of more a body as long.
void try_overlapping(const char *name, INPUT_T *input) {
    using NODE_T = TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T;
    NODE_T *list = nullptr;
    FILL_T fill(input);
    fill.list(list, SKIPPING, WHOLE_MOVIE);
    WRITE_T expected;
    expected.list(list, SKIPPING, WHOLE_MOVIE);
    PVOID body = nullptr;
    INT32_T length = 0;
    const RTSTATUS result = encode_tp_tavisys_dbdata_movie_information_list_to_message(list, &body, &length);
    require(result == (expected.is_refused ? -1 : 0), "refused or accepted in error", name);
    if (result == 0) {
        const std::string_view got(static_cast<const char *>(body), static_cast<size_t>(length));
        require(got.size() == expected.bytes.size(), "another length", name);
        require(list->next != nullptr || got == expected.bytes, "another body of one movie", name);
    }
    safe_free(body);
    delete_tp_tavisys_dbdata_movie_information_list(&list);
}

// Into a buffer of the caller's, as long as the input says: the bytes, or a failure when there are too many.
template <auto ENCODE, auto DESCRIBE, auto DELETE, class NODE>
void try_buffer(const char *name, INPUT_T *input) {
    const size_t room = static_cast<size_t>(input->integer()) % 256;
    NODE *list = nullptr;
    FILL_T fill(input);
    fill.list(list, SKIPPING, DESCRIBE);
    WRITE_T expected;
    expected.list(list, SKIPPING, DESCRIBE);
    const bool fits = !expected.is_refused && expected.bytes.size() <= room;
    const std::unique_ptr<char[]> buffer(new char[room]); // its end is watched
    const INT32_T written = ENCODE(list, buffer.get(), static_cast<INT32_T>(room));
    require(written == (fits ? static_cast<INT32_T>(expected.bytes.size()) : -1), "another number of bytes",
            name);
    require(!fits || memcmp(buffer.get(), expected.bytes.data(), expected.bytes.size()) == 0,
            "other bytes in the buffer", name);
    DELETE(&list);
}

struct TRIAL_T {
    const char *family;
    void (*run)(const char *name, INPUT_T *input);
};
// The place of a trial never changes, so that inputs keep their meaning: new ones go to the end.
constexpr TRIAL_T TRIALS[] = {
    {"page", try_one<PAGE, PAGE_T>},
    {"touch_page", try_one<TOUCH_PAGE, PAGE_T>},
    {"basic_movies", try_list<BASIC_MOVIE, TP_TAVISYS_BASIC_MOVIE_INFORMATION_LIST_T, false>},
    {"detail", try_one<DETAIL, TP_TAVISYS_DETAIL_MOVIE_INFORMATION_T>},
    {"categories",
     try_list<COUNTED<TP_TAVISYS_CATEGORY_INFORMATION_T>, TP_TAVISYS_CATEGORY_INFORMATION_LIST_T, true>},
    {"kinds", try_list<COUNTED<TP_TAVISYS_KIND_INFORMATION_T>, TP_TAVISYS_KIND_INFORMATION_LIST_T, true>},
    {"filters", try_list<NAMED, TP_TAVISYS_FILTER_INFORMATION_LIST_T, true>},
    {"movies", try_list<WHOLE_MOVIE, TP_TAVISYS_DBDATA_MOVIE_INFORMATION_LIST_T, false>},
    {"movcodes", try_sized<REQUEST, TP_TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_ARGS_T>},
    {"disks", try_disks},
    {"hdvideos", try_list<DISK_MOVIE, TP_HARD_DISK_VIDEO_INFORMATION_T, false>},
    {"movie_ids", try_list<ID_PAIR, TP_TAVISYS_MOVIE_ID_INFORMATION_T, false>},
    {"videos", try_list<VIDEO, TP_TAVISYS_VIDEO_INFORMATION_LIST_T, false>},
    {"player", try_one<PLAYER, TP_TAVISYS_PLAYER_STATUS_INFORMATION_T>},
    {"system", try_one<SYSTEM, TP_TAVISYS_SYSTEM_INFORMATION_T>},
    {"status", try_one<STATUS, TP_TAVISYS_SYSRUN_STATUS_INFORMATION_T>},
    {"version", try_one<VERSION, TP_TAVISYS_VERSION_INFORMATION_T>},
    {"movies", try_overlapping},
    {"videos", try_buffer<encode_tavisys_video_information_list_to_buffer, VIDEO,
                          delete_tavisys_video_information_list, TP_TAVISYS_VIDEO_INFORMATION_LIST_T>},
    {"hdvideos", try_buffer<encode_video_list_to_message, DISK_VIDEO, delete_video_list, TP_VIDEO_LIST>},
};

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
    start();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    INPUT_T input(data, size);
    const size_t pick = input.byte();
    if (pick >= std::size(TRIALS))
        return -1;
    TRIALS[pick].run(TRIALS[pick].family, &input);
    return 0;
}
