// Room on the disk for what is about to be written. The HDF5 library cannot undo what it began, and
// a file that it could not finish is lost: so a disk that is too full must be known before.
#pragma once

#include <sys/types.h>

#include "storage/element_io.h"
#include "values/selection.h"

namespace kelvo {

class ReservedRoom {
 public:
  /// Takes as much room behind the file's end as elements of the selection need at most, with
  /// `varying_bytes` for what their varying parts point to. Throws host_refused where the disk, or
  /// the process's limit, does not have it. Does nothing for files that are no single host file.
  ReservedRoom(const ElementPlace& place, const Selection& selection, Extent varying_bytes);
  ReservedRoom(const ReservedRoom&) = delete;
  ReservedRoom& operator=(const ReservedRoom&) = delete;
  /// Writes out what waits in memory and gives back what was not needed.
  ~ReservedRoom();

 private:
  void reserve(const ElementPlace& place, off_t bytes) const;

  FileHandle file_;
  int descriptor_ = -1;  // the HDF5 library's own; -1 where nothing is reserved
};

}  // namespace kelvo
