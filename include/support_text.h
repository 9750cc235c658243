/** @file support_text.h
 *  Text helpers of the metadata parser and the player name. */
#ifndef TAVISYS_SUPPORT_TEXT_H
#define TAVISYS_SUPPORT_TEXT_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Strip blanks, tabs and line ends from both ends of a string, in place: the trailing ones are cut off
 *  with a NUL, the leading ones skipped.
 *  @return pointer into the string, at its first character that stays; NULL for NULL. */
TAVISYS_API INT8_T *strip_char_space_and_return_from_string(INT8_T *string);

/** Remove every byte that is neither an ASCII letter nor an ASCII digit, in place, whatever the locale.
 *  NULL is ignored. */
TAVISYS_API void skip_nonchar_and_nonnum_in_string(INT8_T *string);

#ifdef __cplusplus
}
#endif

#endif
