// Integers that do not use all their bits, in the byte order that is not the machine's: the HDF5
// library turns their bytes around and forgets to extend the sign.
#pragma once

#include <hdf5.h>

#include "values/type.h"

namespace kelvo {

/// Makes the HDF5 library read integers of the type right, wherever they are, where it would not.
void mend_narrow_conversion(const Type& type, hid_t file_type, hid_t memory_type);

}  // namespace kelvo
