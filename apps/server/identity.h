// The server's uuid.
#ifndef TAVISYS_SERVER_IDENTITY_H
#define TAVISYS_SERVER_IDENTITY_H

#include <string>

namespace server {

// A uuid that stays the same on this machine, made from its machine id; on a machine without one it
// changes with every boot.
std::string machine_uuid();

} // namespace server

#endif
