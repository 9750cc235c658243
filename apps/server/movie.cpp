#include "movie.h"

#include <cstring>
#include <map>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "on_loan.h"

namespace server {

namespace {

// The values of an attribute and the lists of them, which movies have in common: of the room that a movie's
// nodes and records take, a third is that of its attributes. They stay until the process ends, as the ids of
// the values do. TEXT: the value's name; a year has none.
template <class NODE, class INFO, INT8_T *INFO::*TEXT = nullptr>
class SHARED_VALUES_T {
public:
    INFO *value(const INFO &value) {
        const std::lock_guard lock(mutex_);
        return kept(value);
    }
    NODE *list(const NODE *from) {
        const std::lock_guard lock(mutex_);
        std::vector<INFO *> key;
        for (const NODE *node = from; node != nullptr; node = next_of(node))
            key.push_back(kept(*node->info));
        const auto [found, fresh] = lists_.try_emplace(std::move(key));
        std::vector<NODE> &nodes = found->second;
        if (fresh) {
            nodes.resize(found->first.size());
            for (size_t i = 0; i < nodes.size(); i++)
                nodes[i].info = found->first[i];
            chain(&nodes);
        }
        return nodes.data();
    }

private:
    INFO *kept(const INFO &value) {
        const auto [found, fresh] = values_.try_emplace({value.id, text_of(value)}, value);
        if constexpr (TEXT != nullptr)
            if (fresh)
                found->second.*TEXT = on_loan(found->first.second.c_str());
        return &found->second;
    }
    static std::string text_of(const INFO &value) {
        if constexpr (TEXT != nullptr)
            return value.*TEXT;
        else
            return "";
    }
    std::mutex mutex_;
    std::map<std::pair<INT32_T, std::string>, INFO> values_;
    std::map<std::vector<INFO *>, std::vector<NODE>> lists_;
};

// Lays records and texts one behind the other. Without a block it only measures how large one must be.
class LAYOUT_T {
public:
    explicit LAYOUT_T(std::byte *records = nullptr, std::byte *texts = nullptr)
        : measuring_(records == nullptr), records_(records), texts_(texts) {}

    template <class RECORD>
    RECORD *place(const RECORD &record) {
        static_assert(sizeof(RECORD) <= sizeof spare_);
        constexpr size_t SIZE = (sizeof(RECORD) + alignof(PVOID) - 1) / alignof(PVOID) * alignof(PVOID);
        std::byte *at = measuring_ ? spare_ : records_;
        record_bytes_ += SIZE;
        records_ += measuring_ ? 0 : SIZE;
        return new (at) RECORD{record};
    }
    INT8_T *text(std::string_view text) {
        auto *at = reinterpret_cast<INT8_T *>(measuring_ ? spare_ : texts_);
        text_bytes_ += text.size() + 1;
        if (measuring_)
            return at;
        texts_ += text.size() + 1;
        at[text.copy(at, text.size())] = '\0';
        return at;
    }
    // A text that the record may lack.
    INT8_T *text(const INT8_T *text) {
        return text == nullptr ? nullptr : this->text(std::string_view(text));
    }
    // A text that often is the same as another one, which stands at `known` by now.
    INT8_T *text(const INT8_T *text, const INT8_T *other, INT8_T *known) {
        return text != nullptr && other != nullptr && strcmp(text, other) == 0 ? known : this->text(text);
    }

    // The list with the records that place_info(info) gives.
    template <class NODE, class PLACE>
    NODE *list(const NODE *from, PLACE place_info) {
        NODE *head = nullptr;
        NODE *tail = nullptr;
        for (const NODE *node = from; node != nullptr; node = next_of(node)) {
            NODE copied = *node;
            copied.next = nullptr;
            copied.info = place_info(*node->info);
            NODE *placed = place(copied);
            if (head == nullptr)
                head = placed;
            else
                tail->next = placed;
            tail = placed;
        }
        return head;
    }
    // A long list is hardly any other movie's.
    template <class NODE, class INFO, INT8_T *INFO::*TEXT>
    NODE *list(const NODE *from, SHARED_VALUES_T<NODE, INFO, TEXT> *values) {
        constexpr int LONGEST_SHARED = 16;
        int length = 0;
        for (const NODE *node = from; node != nullptr && length <= LONGEST_SHARED; node = next_of(node))
            length++;
        if (length > LONGEST_SHARED)
            return list(from, [&](const INFO &info) { return measuring_ ? nullptr : values->value(info); });
        return measuring_ || from == nullptr ? nullptr : values->list(from);
    }

    size_t record_bytes() const { return record_bytes_; }
    size_t text_bytes() const { return text_bytes_; }

private:
    const bool measuring_;
    std::byte *records_;
    std::byte *texts_;
    size_t record_bytes_ = 0;
    size_t text_bytes_ = 0;
    alignas(PVOID) std::byte spare_[sizeof(DBDATA_MOVIE_INFORMATION_T)];
};

template <class PERSON>
PERSON *place_person(LAYOUT_T *layout, const PERSON &person) {
    PERSON copied = person;
    copied.code = layout->text(person.code);
    copied.name = layout->text(person.name);
    return layout->place(copied);
}

DBDATA_VIDEO_INFORMATION_T *place_video(LAYOUT_T *layout, const DBDATA_VIDEO_INFORMATION_T &video) {
    DBDATA_VIDEO_INFORMATION_T copied = video;
    copied.name = layout->text(video.name);
    copied.filepath = layout->text(video.filepath);
    copied.mp4 = layout->text(video.mp4);
    copied.relative_mp4 = layout->text(video.relative_mp4, video.mp4, copied.mp4);
    copied.relative_filepath = layout->text(video.relative_filepath, video.filepath, copied.filepath);
    return layout->place(copied);
}

DBDATA_POSTER_INFORMATION_T *place_posters(LAYOUT_T *layout, const DBDATA_POSTER_INFORMATION_T &posters) {
    DBDATA_POSTER_INFORMATION_T copied = posters;
    copied.big = layout->text(posters.big);
    copied.middle = layout->text(posters.middle);
    copied.small = layout->text(posters.small);
    copied.relative_big_path = layout->text(posters.relative_big_path, posters.big, copied.big);
    copied.relative_middle_path = layout->text(posters.relative_middle_path, posters.middle, copied.middle);
    copied.relative_small_path = layout->text(posters.relative_small_path, posters.middle, copied.middle);
    copied.tv_big = layout->text(posters.tv_big);
    copied.tv_middle = layout->text(posters.tv_middle);
    copied.tv_small = layout->text(posters.tv_small);
    return layout->place(copied);
}

DBDATA_BASIC_MOVIE_INFORMATION_T *place_basic(LAYOUT_T *layout,
                                              const DBDATA_BASIC_MOVIE_INFORMATION_T &from) {
    DBDATA_BASIC_MOVIE_INFORMATION_T copied{};
    copied.movie_code = layout->text(from.movie_code);
    copied.movie_name_ch = layout->text(from.movie_name_ch);
    copied.movie_name_en = layout->text(from.movie_name_en, from.movie_name_ch, copied.movie_name_ch);
    return layout->place(copied);
}

void place_attributes(LAYOUT_T *layout, DBDATA_MOVIE_INFORMATION_T *movie) {
    static SHARED_VALUES_T<DBDATA_DIMENSION_INFORMATION_LIST_T, DBDATA_DIMENSION_INFORMATION_T,
                           &DBDATA_DIMENSION_INFORMATION_T::dimension>
        s_dimensions;
    static SHARED_VALUES_T<DBDATA_RESOLUTION_INFORMATION_LIST_T, DBDATA_RESOLUTION_INFORMATION_T,
                           &DBDATA_RESOLUTION_INFORMATION_T::resolution>
        s_resolutions;
    static SHARED_VALUES_T<DBDATA_CATEGORY_INFORMATION_LIST_T, DBDATA_CATEGORY_INFORMATION_T,
                           &DBDATA_CATEGORY_INFORMATION_T::name>
        s_categories;
    static SHARED_VALUES_T<DBDATA_KIND_INFORMATION_LIST_T, DBDATA_KIND_INFORMATION_T,
                           &DBDATA_KIND_INFORMATION_T::name>
        s_kinds;
    static SHARED_VALUES_T<DBDATA_AREA_INFORMATION_LIST_T, DBDATA_AREA_INFORMATION_T,
                           &DBDATA_AREA_INFORMATION_T::name>
        s_areas;
    static SHARED_VALUES_T<DBDATA_YEAR_INFORMATION_LIST_T, DBDATA_YEAR_INFORMATION_T> s_years;
    movie->dimension_list = layout->list(movie->dimension_list, &s_dimensions);
    movie->resolution_list = layout->list(movie->resolution_list, &s_resolutions);
    movie->category_list = layout->list(movie->category_list, &s_categories);
    movie->kind_list = layout->list(movie->kind_list, &s_kinds);
    movie->area_list = layout->list(movie->area_list, &s_areas);
    movie->year_list = layout->list(movie->year_list, &s_years);
}

// A movie with all that belongs to it.
DBDATA_MOVIE_INFORMATION_T *place_movie(LAYOUT_T *layout, const DBDATA_MOVIE_INFORMATION_T &from) {
    DBDATA_MOVIE_INFORMATION_T movie = from;
    movie.count = 1;
    movie.info = place_basic(layout, *from.info);
    movie.imdbvalue = layout->text(from.imdbvalue);
    movie.acronym = layout->text(from.acronym);
    place_attributes(layout, &movie);
    const auto place_someone = [&](const auto &person) { return place_person(layout, person); };
    movie.director_list = layout->list(from.director_list, place_someone);
    movie.actor_list = layout->list(from.actor_list, place_someone);
    movie.video_list = layout->list(
        from.video_list, [&](const DBDATA_VIDEO_INFORMATION_T &video) { return place_video(layout, video); });
    movie.posters = place_posters(layout, *from.posters);
    movie.summary = layout->text(from.summary);
    movie.description = layout->text(from.description);
    movie.ipaddr = layout->text(from.ipaddr);
    movie.hddevname = layout->text(from.hddevname);
    movie.ptdevname = layout->text(from.ptdevname);
    return layout->place(movie);
}

} // namespace

MOVIE_T::MOVIE_T(const DBDATA_MOVIE_INFORMATION_T &from, std::string_view of_folder, SLAB_T *slab,
                 std::span<std::byte> bytes, size_t record_bytes)
    : slab_(slab), bytes_(bytes) {
    LAYOUT_T layout(bytes_.data(), bytes_.data() + record_bytes);
    record = place_movie(&layout, from);
    folder = {layout.text(of_folder), of_folder.size()};
    slab_->enter(bytes_.size());
}

MOVIE_PTR make_movie(const DBDATA_MOVIE_INFORMATION_T &from, std::string_view folder) {
    constexpr size_t FRONT = TAKEN_MEMORY_T<MOVIE_T>::ROOM;
    LAYOUT_T measured;
    place_movie(&measured, from);
    const size_t size = measured.record_bytes() + measured.text_bytes() + folder.size() + 1;
    const SLAB_SHARE_T share = take_movie_memory(FRONT + size);
    const TAKEN_MEMORY_T<MOVIE_T> memory(share.slab, share.bytes.data());
    return std::allocate_shared<const MOVIE_T>(memory, from, folder, share.slab.get(),
                                               share.bytes.subspan(FRONT), measured.record_bytes());
}

} // namespace server
