/** @file event_list.h
 *  What kind of host a movie lies on. */
#ifndef TAVISYS_EVENT_LIST_H
#define TAVISYS_EVENT_LIST_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Type of a host that holds movies. */
typedef enum TAVISYS_32_BITS {
    EVENT_HOST_TYPE_LOCALHOST = 0, /**< this machine */
    EVENT_HOST_TYPE_NFSVOD = 1,    /**< a video server reached by NFS */
    EVENT_HOST_TYPE_HDVOD = 2      /**< a hard disk video server */
} EVENT_HOST_TYPE_E;

#ifdef __cplusplus
}
#endif

#endif
