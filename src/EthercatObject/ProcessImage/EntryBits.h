#ifndef ETHERCATOBJECT_PROCESSIMAGE_ENTRYBITS_H
#define ETHERCATOBJECT_PROCESSIMAGE_ENTRYBITS_H

#include <ecrt.h>
#include <vector>

// Appends the bits that each entry of this layout has in the image, in the order of its registration rows; 0
// for a gap. Of an object that only the slave itself maps, because its PDO got other entries, the start alone
// is known: 1.
void appendEntryBits(const ec_sync_info_t* layout, std::vector<unsigned char>& bits);

#endif
