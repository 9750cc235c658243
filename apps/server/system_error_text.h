// What the system's errors of opening, reading and writing mean for whoever looks after the server.
#ifndef TAVISYS_SERVER_SYSTEM_ERROR_TEXT_H
#define TAVISYS_SERVER_SYSTEM_ERROR_TEXT_H

namespace server {

enum class WANTED_T { READ_FILE, READ_FOLDER, WRITE_FILE, OTHER }; // when it failed

// A static text for an errno, with what to do about it where that is known.
const char *system_error_text(int error, WANTED_T wanted = WANTED_T::OTHER);

} // namespace server

#endif
