// What the system's errors of opening, reading and writing mean for whoever looks after the server.
#ifndef TAVISYS_SERVER_SYSTEM_ERROR_TEXT_H
#define TAVISYS_SERVER_SYSTEM_ERROR_TEXT_H

namespace server {

// A static text for an errno, with what to do about it where that is known.
const char *system_error_text(int error);

} // namespace server

#endif
