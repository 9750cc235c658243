// tavisys-server --check: what would be served, and what wouldn't and why.
#ifndef TAVISYS_SERVER_CHECK_H
#define TAVISYS_SERVER_CHECK_H

#include "options.h"

namespace server {

// Loads the library, whose path has been resolved, and prints what is found to standard output. Opens no port
// and writes no file, so it may run beside a server. Returns the status to exit with.
int check(const OPTIONS_T &options);

} // namespace server

#endif
