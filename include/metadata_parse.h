/** @file metadata_parse.h
 *  From a movie's XML metadata document to its catalogue record.
 *
 *  The rules of the catalogue are applied on the way: an unknown category is filed as 电影; the value
 *  "全部" heads dimensions, resolutions, kinds and areas, the year 0 the years; a movie of a disallowed kind
 *  (情色, 同志, 暴力) is refused; a 3D movie gets the kind 3D; dates become YYYYMMDD.
 *
 *  When memory is short for one of them, a movie goes without the dimension, the resolution, a year, the
 *  kind 3D, the abbreviation, the television posters or the detailed synopsis, and is none the worse for it.
 *  A document that is refused after it has been found well-formed may have used up ids of movies and videos.
 *
 *  Any number of threads may parse documents at once. */
#ifndef TAVISYS_METADATA_PARSE_H
#define TAVISYS_METADATA_PARSE_H

#include "dbdata_movie.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Why a document was refused. A part for which memory is short counts as missing. */
typedef enum {
    TAVI_METADATA_OK = 0,           /**< it was not */
    TAVI_METADATA_INVALID_ARGUMENT, /**< NULL argument or length below 1 */
    TAVI_METADATA_NOT_WELL_FORMED,  /**< no XML document, one that declares an entity, memory short */
    TAVI_METADATA_NO_ROOT,          /**< no root element */
    TAVI_METADATA_MEMORY,           /**< no memory for the movie */
    TAVI_METADATA_CODE_AND_NAME,    /**< movie code or a title missing */
    TAVI_METADATA_IMDB,             /**< rating missing */
    TAVI_METADATA_INDEX,            /**< abbreviation missing */
    TAVI_METADATA_CATEGORY,         /**< category missing */
    TAVI_METADATA_NO_CATEGORY,      /**< no memory for the category */
    TAVI_METADATA_KINDS,            /**< kinds missing or incomplete */
    TAVI_METADATA_DISALLOWED_KIND,  /**< complete so far, but of a disallowed kind */
    TAVI_METADATA_AREAS,            /**< areas missing or incomplete */
    TAVI_METADATA_DIRECTORS,        /**< directors missing or incomplete */
    TAVI_METADATA_ACTORS,           /**< actors missing or incomplete */
    TAVI_METADATA_PUT_TIME,         /**< never happens: a date stands in for any other text */
    TAVI_METADATA_PUBLISH_TIME,     /**< publishing day missing */
    TAVI_METADATA_DURATION,         /**< running time missing or empty */
    TAVI_METADATA_POSTERS,          /**< a poster missing */
    TAVI_METADATA_SUMMARY,          /**< short synopsis missing */
    TAVI_METADATA_EPISODES,         /**< number of episodes missing or empty */
    TAVI_METADATA_VIDEOS            /**< videos missing, none of them, or incomplete */
} TAVI_METADATA_FAILURE_E;

/** Parse a document, telling about it. Progress goes to zlog's default category (dzlog) at INFO, the line
 *  "过滤影片类型" at its kinds to standard output, and to both what a movie may lack: the television posters
 *  and the detailed synopsis.
 *
 *  A failure goes to standard output as the text of get_tavi_metadata_failure_text(). That of a part of the
 *  movie stands behind its Chinese title and ": ", but for its code and titles, and before a line
 *  "分析并提取XML数据失败". Of these a short synopsis has no line end, posters go to dzlog at INFO, a
 *  category without memory says nothing, and a disallowed kind is "filter movie(title) due to disallow kind".
 *  @param string  [in]  the document's text, NUL-terminated.
 *  @param movinfo [out] receives a fresh movie of count 1, which the caller releases with
 *                       release_dbdata_movie_information(); untouched on failure.
 *  @return 0, or -1: NULL argument, a document that is not well-formed or lacks what is required, a
 *          disallowed kind, memory short. */
TAVISYS_API RTSTATUS get_tavi_metadata_information_from_string(const INT8_T *string,
                                                               DBDATA_MOVIE_INFORMATION_T **movinfo);

/** Parse a document by the same rules, telling nothing but of a list node that finds no memory and of the
 *  base of movie ids, see create_dbdata_movie_information(); for programs that load many.
 *  @param document [in]  the document's bytes, in any encoding that its declaration or byte order mark
 *                        names.
 *  @param length   [in]  bytes in the document.
 *  @param movinfo  [out] as above.
 *  @param failure  [out] receives the reason, TAVI_METADATA_OK on success; may be NULL.
 *  @return 0, or -1 as above, also for a length below 1. */
TAVISYS_API RTSTATUS get_tavi_metadata_information_from_document(const void *document, INT32_T length,
                                                                 DBDATA_MOVIE_INFORMATION_T **movinfo,
                                                                 TAVI_METADATA_FAILURE_E *failure);

/** @return a static Chinese text that says why; for a value of another origin one that says so. */
TAVISYS_API const INT8_T *get_tavi_metadata_failure_text(TAVI_METADATA_FAILURE_E failure);

#ifdef __cplusplus
}
#endif

#endif
