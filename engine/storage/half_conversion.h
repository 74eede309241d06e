// Reals of half precision: the HDF5 library turns them bit by bit into what the machine computes
// with, which takes longer than everything else that is done to them.
#pragma once

#include <hdf5.h>

#include "values/type.h"

namespace kelvo {

/// Makes the HDF5 library read reals of the type, wherever they are, by a conversion of ours, where
/// they are of half precision; `memory_type` is single precision then.
void hasten_half_conversion(const Type& type, hid_t file_type, hid_t memory_type);

}  // namespace kelvo
