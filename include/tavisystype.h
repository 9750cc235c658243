/** @file tavisystype.h
 *  The base types of the library and the vocabulary of the message channel: message types, filter
 *  types, sort orders, result codes of the server, and the request records that travel as they lie
 *  in memory.
 *
 *  Ground rules of every function of the library, unless its own description says otherwise:
 *  - Strings are NUL-terminated UTF-8. A string field belongs to the record that holds it.
 *  - Records are made with calloc() and freed with free(); use the family's delete function.
 *  - Out-arguments are written on success only.
 *  - What deletes, releases or frees ignores NULL, be it the address or the pointer there; what appends
 *    ignores NULL arguments; what prints a record prints nothing for NULL, what prints a list no
 *    more than its headline or title, and both "(null)" for a NULL string.
 *  - A negative length is as good as 0: too short a body, no room.
 *  - A node may be made without a record: NULL.
 *  - Nothing is printed or logged, but for a list node that finds no memory: "分配...字节的内存出错,错误原因:
 *    ..." on standard output, whoever makes the node, a decoder and an _ex function included.
 *  - A function touches its arguments alone, so any number of threads may call it at once on
 *    different records, and several may read the same ones. What one thread changes must not be used by
 *    another meanwhile: a record, its count of references included, and every list that shares it. */
#ifndef TAVISYS_TAVISYSTYPE_H
#define TAVISYS_TAVISYSTYPE_H

/** Marks what the shared library exports. Programs that link the static one define TAVISYS_STATIC. */
#if defined(TAVISYS_STATIC)
#define TAVISYS_API
#else
#define TAVISYS_API __attribute__((visibility("default")))
#endif

/** Gives an enumeration that travels on the wire its 32 bits in C++, where a value that came from a peer
 *  may then be any of them. In C an enumeration is as wide already. */
#ifdef __cplusplus
#define TAVISYS_32_BITS : INT32_T
#else
#define TAVISYS_32_BITS
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef char INT8_T;           /**< a character */
typedef int INT32_T;           /**< a 32-bit signed integer */
typedef unsigned int UINT32_T; /**< a 32-bit unsigned integer */
typedef void *PVOID;           /**< an untyped pointer */
typedef INT32_T RTSTATUS;      /**< 0 success, negative failure, positive a result code of the peer */

/** Port of the message channel (TCP). */
#define TAVISYS_MSG_CHANNEL_PORT 40001
/** Address at which the agent calls reach the local server. */
#define TAVISYS_LOCAL_SERVER_ADDRESS "127.0.0.1"

/** Name of the value that heads the lists of kinds, areas, years and dimensions and filters nothing. */
#define TAVISYS_NAME_OF_ALL "全部"

/** Message types. A reply carries the type of its request. The spellings are part of the interface. */
enum {
    TAVISYS_MSGTYPE_REQUEST_SOFTWARE_VERSION = 1000,        /**< version information */
    TAVISYS_MSGTYPE_REQUEST_SERVER_RUNNING_STATUS = 1001,   /**< progress of the server's scan */
    TAVISYS_MSGTYPE_REQUEST_SYSTEM_INFORMATION = 1002,      /**< number of disks and movies */
    TAVISYS_MSGTYPE_REQUEST_CATEGORY_LIST = 1003,           /**< category list */
    TAVISYS_MSGTYPE_REQUEST_KIND_LIST = 1004,               /**< kind list of a category */
    TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST = 1005,        /**< values of one attribute of a category */
    TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO = 1006,        /**< one page of movies */
    TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO = 1007,       /**< everything about one movie */
    TAVISYS_MSGTYPE_REQUEST_RANDOM_BASIC_MOVIE_INFO = 1008, /**< path of a random poster */
    TAVISYS_MSGTYPE_REQUEST_SEARCH_MOVIE_INFO = 1010,
    TAVISYS_MSGTYPE_REQUEST_HARDDISK_INFO = 3000,        /**< disks and their partitions */
    TAVISYS_MSGTYPE_REQUEST_PARTITION_INFO = 3001,       /**< partitions of one disk */
    TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES = 3002,     /**< number of movies on a partition */
    TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIE_INFO = 3003, /**< whole records of a partition */
    TAVISYS_MSGTYPE_REQUEST_GET_UUID_INFO = 3004,        /**< the server's uuid */
    AVISYS_MSGTYPE_REQUEST_MOVIE_INFO_BY_MOVCODE = 3005, /**< whole records of the movies of some codes */
    TAVISYS_MSGTYPE_REQUEST_MOVIE_INFO_BY_MID_AND_VID = 3006,
    TAVISYS_MSGTYPE_REQUEST_SEARCH_MOVCODE_DETAIL_MOVIE_INFO = 3007,
    TOUCHSCREEM_MSGTYPE_REQUEST_BASIC_MOVIE_INFO = 5006,  /**< one page for a touch screen */
    TOUCHSCREEM_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO = 5007, /**< as 1007, for a touch screen */
    TOUCHSCREEM_TAVISYS_REQUEST_SEARCH_MOVIE_INFO = 5008,
    TOUCHSCREEM_TAVISYS_REQUEST_SEARCH_MOVIE_LIST = 5009,
    SERVER_BASIC_INFO = 10010
};

/** Which attribute list a TAVISYS_MSGTYPE_REQUEST_FILTER_INFO_LIST request asks for. */
typedef enum TAVISYS_32_BITS {
    TP_FILTER_TYPE_KIND = 1,
    TP_FILTER_TYPE_AREA = 2,
    TP_FILTER_TYPE_YEAR = 3,
    TP_FILTER_TYPE_DIMENSION = 4
} TP_FILTER_TYPE_E;

/** Sort orders of a page, the values of `orderby`. Equal movies follow each other by movie code. */
typedef enum TAVISYS_32_BITS {
    TP_ORDER_BY_PUT_TIME = 0,     /**< latest on the shelf first */
    TP_ORDER_BY_PUBLISH_TIME = 1, /**< latest published first */
    TP_ORDER_BY_SCORE = 2,        /**< best score first */
    TP_ORDER_BY_NAME = 3          /**< by the bytes of the title, which is the order of its code points */
} TP_ORDER_BY_E;

/** What tavisys-server answers when it can't answer: the result in the head of its reply. They stay
 *  clear of the transport codes of tp_trlv.h, so that a caller can tell who said no. */
typedef enum TAVISYS_32_BITS {
    TAVISYS_RESULT_UNKNOWN_TYPE = -101,    /**< a message type that the server doesn't answer */
    TAVISYS_RESULT_BAD_REQUEST = -102,     /**< a body of the wrong length, or a value out of range */
    TAVISYS_RESULT_NO_SUCH_MOVIE = -103,   /**< no movie of that id in that category */
    TAVISYS_RESULT_SERVER_ERROR = -104,    /**< the server is short of memory or can't encode its reply */
    TAVISYS_RESULT_NO_SUCH_POSITION = -105 /**< no hard disk or partition of that name */
} TAVISYS_RESULT_E;

/* The request records. They travel byte for byte as they lie in memory: little-endian, without
 * padding. Clear a record before filling it, so that no stray memory travels with it. */

/** Body of requests 1004 and 1005, 8 bytes. For 1004 `type` is TP_FILTER_TYPE_KIND. */
typedef struct {
    TP_FILTER_TYPE_E type; /**< which attribute list is wanted */
    INT32_T cid;           /**< category whose values are wanted; 0 means all categories */
} TP_TAVISYS_MSGTYPE_REQUEST_FILTER_LIST_ARGS_T;

/** Body of requests 1006 and 5006, 32 bytes. An id of 0, and the id of the value "全部", filter
 *  nothing. Ids come from the category list and the filter lists. */
typedef struct {
    INT32_T cid;      /**< category id; 0 means all categories */
    INT32_T tid;      /**< kind (type) id filter */
    INT32_T aid;      /**< area id filter */
    INT32_T yid;      /**< year id filter: the id from the filter list, not the year's number */
    INT32_T did;      /**< dimension id filter */
    INT32_T pagenum;  /**< page asked for, from 1; a page behind the last is an empty page */
    INT32_T pagesize; /**< movies per page, 1 to 1000 */
    INT32_T orderby;  /**< sort order, a TP_ORDER_BY_E */
} TP_TAVISYS_MSGTYPE_REQUEST_BASIC_MOVIE_INFO_ARGS_T;

/** Body of requests 1007 and 5007, 8 bytes. */
typedef struct {
    INT32_T cid; /**< category of the movie; 0 means any */
    INT32_T mid; /**< movie id, as a page carries it in `movid` */
} TP_TAVISYS_MSGTYPE_REQUEST_DETAIL_MOVIE_INFO_ARGS_T;

/** Body of requests 3001, which reads the disk's name alone, 3002 and 3003, 160 bytes. */
typedef struct {
    INT8_T deviceid[128]; /**< identifier of the asking device; servers don't rely on it */
    INT8_T hddevname[16]; /**< device name of the hard disk, NUL-terminated */
    INT8_T ptdevname[16]; /**< device name of the partition, NUL-terminated */
} TP_TAVISYS_MSGTYPE_REQUEST_PARTITION_MOVIES_ARGS_T;

#ifdef __cplusplus
}
#endif

#endif
