// The categories of the system, in the order of their ids.
#ifndef TAVISYS_DBDATA_MOVINFO_CATEGORY_TABLE_H
#define TAVISYS_DBDATA_MOVINFO_CATEGORY_TABLE_H

#include "tavisystype.h"

namespace tavisys {

struct CATEGORY_ID_MAP_T {
    INT32_T id;
    INT8_T name[64];
};

inline constexpr CATEGORY_ID_MAP_T category_ids_map[] = {
    {1, "电影"}, {2, "电视剧"}, {3, "音乐"}, {4, "综艺"}, {5, "兴趣爱好"}, {6, "醇音乐"},
};

// What the system does not know is filed here.
inline constexpr const CATEGORY_ID_MAP_T &DEFAULT_CATEGORY = category_ids_map[0];

} // namespace tavisys

#endif
