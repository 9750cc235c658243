/** @file player_operation.h
 *  The display name of a player, which its user can change. It is kept in the file /tmp/tavisys.name; as
 *  long as there is none, the name is "影柜播放机".
 *
 *  The file has to be an ordinary one: a link or a pipe in its place is treated as a file that can't be
 *  opened. Reading and setting the name at the same time may read a part of it. */
#ifndef TAVISYS_PLAYER_OPERATION_H
#define TAVISYS_PLAYER_OPERATION_H

#include "tavisystype.h"

#ifdef __cplusplus
extern "C" {
#endif

/** Read the player's name: at most the first 1024 bytes of the file, without the blanks and line ends
 *  around it. Surprise: no NUL is written behind a name from the file, so clear the buffer before; behind
 *  the default name there is one.
 *  @param name   [out] receives the name.
 *  @param length [in]  bytes in the buffer. A name that doesn't fit with a NUL behind it gives way to the
 *                      default name, which needs 16 bytes.
 *  @return 0, or -1 with the buffer untouched: NULL buffer, no room for the default name. */
TAVISYS_API RTSTATUS tavisys_get_player_name(INT8_T *name, INT32_T length);

/** Set the player's name.
 *  @param name [in] the name; an empty one stays an empty one and does not bring back the default.
 *  @return 0, or -1: NULL name, the file can't be opened, or it can't be written, which leaves in it what
 *          could be. */
TAVISYS_API RTSTATUS tavisys_set_player_name(const INT8_T *name);

#ifdef __cplusplus
}
#endif

#endif
