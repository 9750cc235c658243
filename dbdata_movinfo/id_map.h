// Ids that follow from a key: the first key that a family meets gets 1, the next new one 2, and so on. An
// id names its key until the process ends.
#ifndef TAVISYS_DBDATA_MOVINFO_ID_MAP_H
#define TAVISYS_DBDATA_MOVINFO_ID_MAP_H

#include <functional>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>

#include "tavisystype.h"

namespace tavisys {

constexpr INT32_T FIRST_ID = 1;

// KEY: std::string for names, INT32_T for years.
template <class KEY>
class ID_MAP_T {
public:
    using VIEW_T = std::conditional_t<std::is_same_v<KEY, std::string>, std::string_view, KEY>;

    // The key's id, a new one if need be. Throws when memory is short; the map is unchanged then.
    INT32_T id_of(VIEW_T key) {
        if (const auto found = ids_.find(key); found != ids_.end())
            return found->second;
        const INT32_T id = static_cast<INT32_T>(ids_.size()) + FIRST_ID;
        ids_.emplace(key, id);
        return id;
    }

private:
    struct HASH_T {
        using is_transparent = void;
        size_t operator()(VIEW_T key) const { return std::hash<VIEW_T>()(key); }
    };
    std::unordered_map<KEY, INT32_T, HASH_T, std::equal_to<>> ids_;
};

// The id from the family's own FAMILY::ID_MAP_T, or -1 when memory is short. The map is never destroyed:
// threads may create records while the process exits.
template <class FAMILY, class... KEY>
INT32_T alloc_id(KEY... key) noexcept {
    using MAP_T = typename FAMILY::ID_MAP_T;
    static std::mutex s_id_mutex;
    alignas(MAP_T) static unsigned char s_room[sizeof(MAP_T)];
    try {
        const std::lock_guard<std::mutex> lock(s_id_mutex);
        static auto *const s_id_map = new (s_room) MAP_T;
        return s_id_map->id_of(key...);
    } catch (...) {
        return -1;
    }
}

} // namespace tavisys

#endif
