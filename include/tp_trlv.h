/** @file tp_trlv.h
 *  The head of a message (type, result, length, value) and the transport error codes. */
#ifndef TAVISYS_TP_TRLV_H
#define TAVISYS_TP_TRLV_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Head of a message of the TRLV channel: 12 bytes, three little-endian integers, then `length` bytes
 *  of body. */
typedef struct {
    INT32_T type;   /**< message type; a reply carries the type of its request */
    INT32_T result; /**< 0 in a request; in a reply the result of the server's handler */
    INT32_T length; /**< bytes of body behind the head; 0 without a body */
} TRLV_MESSAGE_HEAD;

/** Head of a message of the text-headed channel, as it is held in memory. */
typedef struct {
    INT32_T type;   /**< as in TRLV_MESSAGE_HEAD */
    INT32_T result; /**< as there */
    INT32_T length; /**< as there */
} TP_MESSAGE_HEAD;

/** Transport error codes. A channel function returns one of them negated. */
enum {
    TRLV_TP_ERRCODE_OK = 0,
    TRLV_TP_ERRCODE_ERROR = 1,
    TRLV_TP_ERRCODE_INVALID_ARGS = 2,
    TRLV_TP_ERRCODE_MALLOC_FAIL = 3,
    TRLV_TP_ERRCODE_RECEIVE_MSGHEAD_FAIL = 4,
    TRLV_TP_ERRCODE_RECEIVE_MSGBODY_FAIL = 5,
    TRLV_TP_ERRCODE_SEND_MSGHEAD_FAIL = 6,
    TRLV_TP_ERRCODE_SEND_MSGBODY_FAIL = 7,
    TRLV_TP_ERRCODE_CHECK_TYPE_MISMATCH = 8,
    TRLV_TP_ERRCODE_CHECK_RESULT_ERROR = 9,
    TRLV_TP_ERRCODE_RECEIVE_MESSAGE_FAIL = 10,
    TRLV_TP_ERRCODE_SEND_MESSAGE_FAIL = 11,
    TRLV_TP_ERRCODE_RECEIVE_INVALID_MESSAGE = 12
};

#ifdef __cplusplus
}
#endif

#endif
