// The driver's callbacks. Two things differ from the library's own driver: global heaps are checked
// when they are read, since their reader trusts the sizes in them; and where a file is only read,
// metadata are not gathered, since what gathers them trusts their addresses.
#include "storage/driver.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <tuple>

#include "storage/check.h"

namespace kelvo {
namespace {

// The library knows it by its first member.
struct HostFile {
  H5FD_t base{};
  int descriptor = -1;
  bool is_written = false;
  haddr_t end_allocated = 0;
  haddr_t size = 0;
  dev_t device = 0;
  ino_t inode = 0;

  HostFile() = default;
  HostFile(const HostFile&) = delete;
  HostFile& operator=(const HostFile&) = delete;
  ~HostFile() {
    if (descriptor >= 0) ::close(descriptor);
  }
};

constexpr haddr_t largest_address = (haddr_t{1} << 63) - 1;

HostFile* file_of(H5FD_t* file) { return reinterpret_cast<HostFile*>(file); }
const HostFile* file_of(const H5FD_t* file) { return reinterpret_cast<const HostFile*>(file); }

int host_flags(unsigned flags) {
  int host = O_CLOEXEC;
  host |= (flags & H5F_ACC_RDWR) != 0 ? O_RDWR : O_RDONLY;
  if ((flags & H5F_ACC_TRUNC) != 0) host |= O_TRUNC;
  if ((flags & H5F_ACC_CREAT) != 0) host |= O_CREAT;
  if ((flags & H5F_ACC_EXCL) != 0) host |= O_EXCL;
  return host;
}

H5FD_t* open_file(const char* name, unsigned flags, hid_t /*access*/, haddr_t /*largest*/) {
  auto file = std::unique_ptr<HostFile>(new (std::nothrow) HostFile);
  if (file == nullptr) return nullptr;
  file->is_written = (flags & H5F_ACC_RDWR) != 0;
  file->descriptor = ::open(name, host_flags(flags), 0666);
  struct stat status {};
  if (file->descriptor < 0 || ::fstat(file->descriptor, &status) != 0) return nullptr;
  file->size = static_cast<haddr_t>(status.st_size);
  file->device = status.st_dev;
  file->inode = status.st_ino;
  return &file.release()->base;
}

herr_t close_file(H5FD_t* file) {
  const std::unique_ptr<HostFile> owned(file_of(file));
  return 0;
}

int compare(const H5FD_t* left, const H5FD_t* right) {
  const auto key = [](const H5FD_t* file) {
    return std::make_tuple(file_of(file)->device, file_of(file)->inode);
  };
  return key(left) < key(right) ? -1 : key(right) < key(left) ? 1 : 0;
}

herr_t query(const H5FD_t* file, unsigned long* flags) {
  if (flags == nullptr) return 0;
  *flags = H5FD_FEAT_AGGREGATE_METADATA | H5FD_FEAT_AGGREGATE_SMALLDATA | H5FD_FEAT_DATA_SIEVE |
           H5FD_FEAT_POSIX_COMPAT_HANDLE | H5FD_FEAT_SUPPORTS_SWMR_IO |
           H5FD_FEAT_DEFAULT_VFD_COMPATIBLE;
  if (file == nullptr || file_of(file)->is_written) *flags |= H5FD_FEAT_ACCUMULATE_METADATA;
  return 0;
}

haddr_t end_allocated(const H5FD_t* file, H5FD_mem_t /*type*/) {
  return file_of(file)->end_allocated;
}

herr_t set_end_allocated(H5FD_t* file, H5FD_mem_t /*type*/, haddr_t end) {
  file_of(file)->end_allocated = end;
  return 0;
}

haddr_t end_of_file(const H5FD_t* file, H5FD_mem_t /*type*/) { return file_of(file)->size; }

herr_t get_descriptor(H5FD_t* file, hid_t /*access*/, void** descriptor) {
  *descriptor = &file_of(file)->descriptor;
  return 0;
}

// --- global heaps ---

constexpr H5FD_mem_t heap_type = H5FD_MEM_DRAW;  // the library passes heaps off as raw data
constexpr std::size_t heap_header = 16;
constexpr std::size_t object_header = 16;

std::uint64_t number_at(const unsigned char* bytes, std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t i = size; i-- > 0;) number = number << 8 | bytes[i];
  return number;
}

// Whether a walk from object to object comes to the heap's end. Heaps that were read in part are
// read again as a whole; those of files whose sizes have not 8 bytes look like that, and pass.
bool is_sound_heap(const unsigned char* bytes, std::size_t read) {
  if (read < heap_header || std::memcmp(bytes, "GCOL\x01\0\0\0", 8) != 0) return true;
  const std::uint64_t size = number_at(bytes + 8, 8);
  if (size > read) return true;
  std::uint64_t at = heap_header;
  while (at <= size && size - at >= object_header) {
    const bool is_free_space = number_at(bytes + at, 2) == 0;
    const std::uint64_t length = number_at(bytes + at + 8, 8);
    const std::uint64_t left = size - at;
    if (length > left) return false;
    const std::uint64_t step = is_free_space ? length : object_header + (length + 7) / 8 * 8;
    if (step < object_header || step > left) return false;
    at += step;
  }
  return at <= size;
}

// --- reading ---

bool read_bytes(int descriptor, haddr_t address, std::size_t size, unsigned char* bytes) {
  while (size > 0) {
    const ssize_t done = ::pread(descriptor, bytes, size, static_cast<off_t>(address));
    if (done < 0 && errno == EINTR) continue;
    if (done < 0) return false;
    if (done == 0) {
      // What was allocated but never written.
      std::memset(bytes, 0, size);
      return true;
    }
    bytes += done;
    address += static_cast<haddr_t>(done);
    size -= static_cast<std::size_t>(done);
  }
  return true;
}

herr_t read(H5FD_t* file, H5FD_mem_t type, hid_t /*transfer*/, haddr_t address, std::size_t size,
            void* buffer) {
  if (address > largest_address || size > largest_address - address) return -1;
  auto* bytes = static_cast<unsigned char*>(buffer);
  if (!read_bytes(file_of(file)->descriptor, address, size, bytes)) return -1;
  if (type == heap_type && !is_sound_heap(bytes, size)) {
    leave_error(
        StatementError(Status::hdf5_refused,
                       "The file is damaged: the heap of its strings and sequences at byte " +
                           std::to_string(address) + " cannot be read"));
    return -1;
  }
  return 0;
}

// --- writing ---

// The library's own words for it name everything but the reason.
herr_t fail_write(int error) {
  leave_error(StatementError(Status::host_refused,
                             std::string("The file cannot be written: ") + std::strerror(error)));
  return -1;
}

herr_t write(H5FD_t* file, H5FD_mem_t /*type*/, hid_t /*transfer*/, haddr_t address,
             std::size_t size, const void* buffer) {
  if (address > largest_address || size > largest_address - address) return -1;
  HostFile& host = *file_of(file);
  const auto* bytes = static_cast<const unsigned char*>(buffer);
  while (size > 0) {
    const ssize_t done = ::pwrite(host.descriptor, bytes, size, static_cast<off_t>(address));
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return fail_write(errno);
    bytes += done;
    address += static_cast<haddr_t>(done);
    size -= static_cast<std::size_t>(done);
  }
  host.size = std::max(host.size, address);
  return 0;
}

herr_t truncate(H5FD_t* file, hid_t /*transfer*/, hbool_t /*closing*/) {
  HostFile& host = *file_of(file);
  if (!host.is_written || host.size == host.end_allocated) return 0;
  if (::ftruncate(host.descriptor, static_cast<off_t>(host.end_allocated)) != 0)
    return fail_write(errno);
  host.size = host.end_allocated;
  return 0;
}

// Locks are taken elsewhere (storage/lock.h).
herr_t pass_lock(H5FD_t* /*file*/, hbool_t /*writes*/) { return 0; }
herr_t pass_unlock(H5FD_t* /*file*/) { return 0; }

hid_t register_driver() {
  H5FD_class_t driver{};
  driver.name = "kelvo";
  driver.maxaddr = largest_address;
  driver.fc_degree = H5F_CLOSE_WEAK;
  driver.open = open_file;
  driver.close = close_file;
  driver.cmp = compare;
  driver.query = query;
  driver.get_eoa = end_allocated;
  driver.set_eoa = set_end_allocated;
  driver.get_eof = end_of_file;
  driver.get_handle = get_descriptor;
  driver.read = read;
  driver.write = write;
  driver.truncate = truncate;
  driver.lock = pass_lock;
  driver.unlock = pass_unlock;
  std::fill(std::begin(driver.fl_map), std::end(driver.fl_map), H5FD_MEM_DEFAULT);
  return H5FDregister(&driver);
}

}  // namespace

void set_driver(hid_t access) {
  static const hid_t driver = register_driver();
  check_done(H5Pset_driver(access, driver, nullptr),
             [] { return std::string("File access cannot be set up"); });
}

}  // namespace kelvo
