// Arrays whose elements own memory, as texts and sequences do: the HDF5 library converts one array
// on the background of the one before it, and when it writes them takes what it has just stored for
// old values that it may give up.
#pragma once

namespace kelvo {

/// Makes the HDF5 library convert such arrays one by one, wherever they are read, written or
/// copied.
void mend_array_conversion();

}  // namespace kelvo
