// Reserves disk blocks without making the file longer.
#include "storage/room.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "storage/check.h"

namespace kelvo {
namespace {

// Indexes of chunks and the file's own tables: what one chunk adds, and what any change may.
constexpr Extent bytes_per_chunk = 128;
constexpr Extent bytes_of_tables = Extent{256} * 1024;

// Chunks are written whole, so their borders count. They are counted as if none of them were there
// yet.
Extent chunked_bytes(const PropertyHandle& creation, const ElementPlace& place,
                     const Selection& selection) {
  std::vector<hsize_t> chunk(selection.count.size());
  if (H5Pget_chunk(creation.get(), static_cast<int>(chunk.size()), chunk.data()) < 0) return 0;
  Extent bytes = H5Tget_size(place.file_type.get());
  Extent chunks = 1;
  for (std::size_t d = 0; d < chunk.size(); ++d) {
    const Extent first = selection.start[d] / chunk[d];
    const Extent last =
        (selection.start[d] + (selection.count[d] - 1) * selection.stride[d]) / chunk[d];
    chunks *= std::min(selection.count[d], last - first + 1);
    bytes *= chunk[d];
  }
  return chunks * (bytes + bytes_per_chunk);
}

// Storage that is there already is written in place.
Extent whole_bytes(const ElementPlace& place) {
  if (H5Dget_storage_size(place.dataset.get()) > 0) return 0;
  return place.space.elements() * H5Tget_size(place.file_type.get());
}

Extent bytes_needed(const ElementPlace& place, const Selection& selection) {
  if (selection.elements() == 0 || place.attribute) return 0;
  const PropertyHandle creation(H5Dget_create_plist(place.dataset.get()));
  const bool chunked = creation && H5Pget_layout(creation.get()) == H5D_CHUNKED;
  return chunked ? chunked_bytes(creation, place, selection) : whole_bytes(place);
}

// A family of files has one for each member.
int descriptor_of(hid_t file) {
  const PropertyHandle access(H5Fget_access_plist(file));
  void* descriptor = nullptr;
  const bool single = access && H5Pget_driver(access.get()) != H5FD_FAMILY &&
                      H5Fget_vfd_handle(file, access.get(), &descriptor) >= 0;
  return single ? *static_cast<int*>(descriptor) : -1;
}

}  // namespace

ReservedRoom::ReservedRoom(const ElementPlace& place, const Selection& selection,
                           Extent varying_bytes) {
  const hid_t object = place.attribute ? place.attribute.get() : place.dataset.get();
  file_ = FileHandle(H5Iget_file_id(object));
  if (!file_) return;
  descriptor_ = descriptor_of(file_.get());
  const Extent data = bytes_needed(place, selection);
  if (descriptor_ < 0 || data + varying_bytes == 0) return;
  const Extent bytes = data + 2 * varying_bytes + bytes_of_tables;
  reserve(place,
          static_cast<off_t>(std::min<Extent>(bytes, std::numeric_limits<off_t>::max() / 2)));
}

void ReservedRoom::reserve(const ElementPlace& place, off_t bytes) const {
  struct stat status {};
  rlimit limit{};
  if (fstat(descriptor_, &status) != 0 || getrlimit(RLIMIT_FSIZE, &limit) != 0) return;
  const auto end = static_cast<rlim_t>(status.st_size) + static_cast<rlim_t>(bytes);
  int cause = limit.rlim_cur != RLIM_INFINITY && end > limit.rlim_cur ? EFBIG : 0;
  if (cause == 0 && fallocate(descriptor_, FALLOC_FL_KEEP_SIZE, status.st_size, bytes) != 0)
    cause = errno;
  // Some file systems cannot reserve; then writing has to show.
  if (cause == 0 || cause == EOPNOTSUPP || cause == ENOSYS) return;
  throw StatementError(Status::host_refused, place.name + " cannot be written, it may need " +
                                                 std::to_string(bytes) +
                                                 " bytes: " + std::strerror(cause));
}

ReservedRoom::~ReservedRoom() {
  if (descriptor_ < 0) return;
  H5Fflush(file_.get(), H5F_SCOPE_LOCAL);
  struct stat status {};
  // Cutting a file to the length that it has gives back the blocks behind it.
  if (fstat(descriptor_, &status) == 0 && ftruncate(descriptor_, status.st_size) != 0) return;
}

}  // namespace kelvo
