#include "dbdata_movie_stat.h"

#include <cstdio>

#include "support_memory.h"

void show_dbdata_movie_stat_information(const DBDATA_MOVIE_STAT_T *movstat, INT32_T indent) {
    if (movstat == nullptr)
        return;
    show_indent(indent);
    printf("影片信息: 影片共有%d部. 已解析%d部, 解析失败%d部\n", static_cast<INT32_T>(movstat->total_movies),
           static_cast<INT32_T>(movstat->parseok_movies), static_cast<INT32_T>(movstat->parseerr_movies));
}
