/** @file dbdata_movie_stat.h
 *  How many movies a storage position holds; every node of the position lists carries one by value. */
#ifndef TAVISYS_DBDATA_MOVIE_STAT_H
#define TAVISYS_DBDATA_MOVIE_STAT_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Movie statistics of a position. The library sets the first field when it makes the node; the server
 *  program keeps all three up to date. */
typedef struct {
    UINT32_T total_movies;    /**< movies found there */
    UINT32_T parseok_movies;  /**< movies whose metadata was parsed; 0 at creation */
    UINT32_T parseerr_movies; /**< movies whose metadata failed to parse; 0 at creation */
} DBDATA_MOVIE_STAT_T;

/** Print the statistics to standard output.
 *  @param movstat [in] may be NULL.
 *  @param indent  [in] nesting level, see show_indent(). */
TAVISYS_API void show_dbdata_movie_stat_information(const DBDATA_MOVIE_STAT_T *movstat, INT32_T indent);

#ifdef __cplusplus
}
#endif

#endif
