// Serial numbers, UUIDs and mount points of the disks that a library lies on.
#ifndef TAVISYS_SERVER_DEVICES_H
#define TAVISYS_SERVER_DEVICES_H

#include <string>
#include <vector>

#include "storage.h"

namespace server {

// Fills what the system knows: where a folder lies on a file system that is mounted at the library folder or
// below it, the disk's serial number, the UUID and the mount point. What the system doesn't know, and all
// of it for plain folders, is made up from the machine's uuid and the folders' names, so that it stays
// the same; the mount point is the partition's folder then. A failure to read is logged and treated as
// not knowing.
void identify_devices(const std::string &library, const std::string &machine, std::vector<DISK_T> *disks);

} // namespace server

#endif
