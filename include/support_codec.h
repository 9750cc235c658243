/** @file support_codec.h
 *  The wire form of one integer and one string, of which every message body is made.
 *
 *  - Integer: 4 bytes, two's complement, little-endian on every host.
 *  - String: an integer byte count, then that many bytes without a terminator. NULL is count -1, an
 *    empty string count 0.
 *
 *  What all encoders and decoders of the library keep to:
 *  - No encoder writes and no decoder reads outside the length that it is given.
 *  - A body of more than 2147483647 bytes is a failure like the others of its encoder. An encoder that fails
 *    may have filled a part of a buffer of the caller's.
 *  - A decoder leaves unread what lies behind the record. A body is malformed when a string has a count
 *    below -1 or a NUL inside, or when a list or an array announces more than the rest can hold. A list's
 *    count below 0 is taken for 0, an array's is malformed. Of a flag or the length of a part that may be
 *    missing only 0 matters. */
#ifndef TAVISYS_SUPPORT_CODEC_H
#define TAVISYS_SUPPORT_CODEC_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** @return bytes that encode_int_data_to_buffer() writes for any value: 4. */
TAVISYS_API INT32_T calc_codec_int_data_length(void);

/** @param string [in] NUL-terminated, may be NULL.
 *  @return bytes that encode_ptr_data_to_buffer() writes for the string; -1 for one so long that the
 *          count doesn't fit into an integer. */
TAVISYS_API INT32_T calc_codec_ptr_data_length(const INT8_T *string);

/** Write an integer.
 *  @param value  [in]  the integer.
 *  @param buffer [out] destination.
 *  @param left   [in]  bytes left in the destination.
 *  @return bytes written (4), or -1: NULL destination, fewer than 4 bytes left. */
TAVISYS_API INT32_T encode_int_data_to_buffer(INT32_T value, PVOID buffer, INT32_T left);

/** Write a string.
 *  @param string [in]  NUL-terminated, or NULL, which is carried as such.
 *  @param buffer [out] destination.
 *  @param left   [in]  bytes left in the destination.
 *  @return bytes written, or -1 with nothing written: NULL destination, too few bytes left. */
TAVISYS_API INT32_T encode_ptr_data_to_buffer(const INT8_T *string, PVOID buffer, INT32_T left);

/** Read an integer.
 *  @param buffer [in]  source.
 *  @param left   [in]  bytes left in the source.
 *  @param value  [out] the integer; untouched on failure.
 *  @return bytes consumed (4), or -1: NULL argument, fewer than 4 bytes left. */
TAVISYS_API INT32_T decode_int_data_from_buffer(const void *buffer, INT32_T left, INT32_T *value);

/** Read a string.
 *  @param buffer  [in]  source.
 *  @param left    [in]  bytes left in the source.
 *  @param string  [out] a fresh NUL-terminated copy, which the caller frees with safe_free(), or NULL
 *                       for an encoded NULL; untouched on failure.
 *  @param longest [in]  longest accepted string in bytes; 0 or less: no limit but the source.
 *  @return bytes consumed, or -1: NULL argument, source too short, a count below -1, a string longer
 *          than `longest` or with a NUL inside, memory short. */
TAVISYS_API INT32_T decode_ptr_data_from_buffer(const void *buffer, INT32_T left, INT8_T **string,
                                                INT32_T longest);

#ifdef __cplusplus
}
#endif

#endif
