// The driver's callbacks. Two things differ from the library's own driver: heaps are checked when
// they are read, since their reader trusts the sizes in them; and where a file is only read,
// metadata are not gathered, since what gathers them trusts their addresses. And what is written
// can be taken back until the statement ends (storage/undo.h).
#include "storage/driver.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <string_view>
#include <tuple>
#include <vector>

#include "storage/check.h"
#include "storage/handle.h"
#include "storage/undo.h"

namespace kelvo {
namespace {

struct HostFile;

// All that are open, and the one that was read last.
std::vector<HostFile*> open_files;
const HostFile* read_last = nullptr;

// What the statement that runs has changed, and why that failed.
struct Changes {
  Undo undo;
  std::optional<StatementError> failure;
};

std::optional<Changes> changes;

// The library knows it by its first member.
struct HostFile {
  H5FD_t base{};
  std::string path;
  int descriptor = -1;
  bool is_given_up = false;
  bool drops_writes = false;
  bool is_member = false;          // of a family
  ChangedFile* changed = nullptr;  // of one that is open for writing
  haddr_t end_allocated = 0;
  haddr_t size = 0;
  std::size_t length_bytes = 8;  // of a size in the file
  dev_t device = 0;
  ino_t inode = 0;

  HostFile() { open_files.push_back(this); }
  HostFile(const HostFile&) = delete;
  HostFile& operator=(const HostFile&) = delete;
  ~HostFile() {
    close_descriptor();
    std::erase(open_files, this);
    if (read_last == this) read_last = nullptr;
  }

  // A lock of the file ends with it.
  void close_descriptor() noexcept {
    if (descriptor >= 0) ::close(descriptor);
    descriptor = -1;
  }
};

constexpr haddr_t largest_address = (haddr_t{1} << 63) - 1;

HostFile* file_of(H5FD_t* file) { return reinterpret_cast<HostFile*>(file); }
const HostFile* file_of(const H5FD_t* file) { return reinterpret_cast<const HostFile*>(file); }

// The bytes of a size, as the superblock tells: it is at the file's beginning, or at 512, 1024, …
// bytes behind a user block.
std::size_t read_length_bytes(const HostFile& file) {
  std::array<unsigned char, 16> bytes{};
  for (haddr_t at = 0; at < file.size; at = at == 0 ? 512 : 2 * at) {
    const ssize_t read =
        ::pread(file.descriptor, bytes.data(), bytes.size(), static_cast<off_t>(at));
    if (read != static_cast<ssize_t>(bytes.size())) break;
    if (std::memcmp(bytes.data(), "\x89HDF\r\n\x1a\n", 8) != 0) continue;
    const unsigned char length = bytes[8] < 2 ? bytes[14] : bytes[10];
    return length == 2 || length == 4 ? length : 8;
  }
  return 8;
}

int host_flags(unsigned flags) {
  int host = O_CLOEXEC;
  host |= (flags & H5F_ACC_RDWR) != 0 ? O_RDWR : O_RDONLY;
  if ((flags & H5F_ACC_TRUNC) != 0) host |= O_TRUNC;
  if ((flags & H5F_ACC_CREAT) != 0) host |= O_CREAT;
  if ((flags & H5F_ACC_EXCL) != 0) host |= O_EXCL;
  return host;
}

// Null for want of memory: exceptions must not pass through the library.
std::unique_ptr<HostFile> make_host_file(const char* path) noexcept {
  try {
    auto file = std::make_unique<HostFile>();
    file->path = path;
    return file;
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

// A file that the statement opens for writing again keeps the lock that it has.
bool open_again(HostFile& file, ChangedFile* known) {
  file.changed = known;
  file.close_descriptor();
  file.descriptor = ::fcntl(known->descriptor(), F_DUPFD_CLOEXEC, 0);
  return file.descriptor >= 0;
}

bool begin_changes(HostFile& file, unsigned flags) noexcept {
  try {
    if (!changes) changes.emplace();
    if (ChangedFile* known = changes->undo.find(file.device, file.inode))
      return open_again(file, known);
    const int descriptor = ::fcntl(file.descriptor, F_DUPFD_CLOEXEC, 0);
    if (descriptor < 0) return false;
    const bool is_new = (flags & H5F_ACC_CREAT) != 0 && file.size == 0;
    file.changed = changes->undo.add(descriptor, file.path, is_new);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

H5FD_t* open_file(const char* name, unsigned flags, hid_t /*access*/, haddr_t /*largest*/) {
  auto file = make_host_file(name);
  if (file == nullptr) return nullptr;
  file->descriptor = ::open(name, host_flags(flags), 0666);
  struct stat status {};
  if (file->descriptor < 0 || ::fstat(file->descriptor, &status) != 0) return nullptr;
  file->size = static_cast<haddr_t>(status.st_size);
  file->device = status.st_dev;
  file->inode = status.st_ino;
  file->length_bytes = read_length_bytes(*file);
  if ((flags & H5F_ACC_RDWR) != 0 && !begin_changes(*file, flags)) return nullptr;
  return &file.release()->base;
}

H5FD_t* open_member(const char* name, unsigned flags, hid_t access, haddr_t largest) {
  H5FD_t* file = open_file(name, flags, access, largest);
  if (file != nullptr) file_of(file)->is_member = true;
  return file;
}

herr_t close_file(H5FD_t* file) {
  const std::unique_ptr<HostFile> owned(file_of(file));
  return 0;
}

// The library shares what it knows of a file among all that have it open: files that were given up
// are kept out of that.
int compare(const H5FD_t* left, const H5FD_t* right) {
  if (file_of(left)->is_given_up || file_of(right)->is_given_up)
    return left == right ? 0 : std::less<>()(left, right) ? -1 : 1;
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
  if (file == nullptr || file_of(file)->changed != nullptr) *flags |= H5FD_FEAT_ACCUMULATE_METADATA;
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

// --- heaps ---

constexpr H5FD_mem_t global_heap_type = H5FD_MEM_DRAW;  // the library passes them off as raw data

bool begins_with(const unsigned char* bytes, std::size_t read, std::string_view signature) {
  return read >= signature.size() && std::memcmp(bytes, signature.data(), signature.size()) == 0;
}

std::uint64_t number_at(const unsigned char* bytes, std::size_t size) {
  std::uint64_t number = 0;
  for (std::size_t i = size; i-- > 0;) number = number << 8 | bytes[i];
  return number;
}

// A global heap: whether a walk from object to object comes to its end. A heap that was read in
// part passes, as it is read again as a whole.
bool is_sound_global_heap(const unsigned char* bytes, std::size_t read, std::size_t length_bytes) {
  using namespace std::string_view_literals;
  const std::size_t header = 8 + length_bytes;
  if (!begins_with(bytes, read, "GCOL\1\0\0\0"sv) || read < header) return true;
  const std::uint64_t size = number_at(bytes + 8, length_bytes);
  if (size > read) return true;
  std::uint64_t at = 16;
  while (at <= size && size - at >= header) {
    const bool is_free_space = number_at(bytes + at, 2) == 0;
    const std::uint64_t length = number_at(bytes + at + 8, length_bytes);
    const std::uint64_t left = size - at;
    if (length > left) return false;
    const std::uint64_t step = is_free_space ? length : (header + 7) / 8 * 8 + (length + 7) / 8 * 8;
    if (step < header || step > left) return false;
    at += step;
  }
  return at <= size;
}

// A local heap: whether its data could be in the file at all. Those of a family may go on in the
// next member.
bool is_sound_local_heap(const unsigned char* bytes, std::size_t read, const HostFile& file) {
  using namespace std::string_view_literals;
  if (file.is_member || !begins_with(bytes, read, "HEAP\0\0\0\0"sv)) return true;
  if (read < 8 + file.length_bytes) return true;
  return number_at(bytes + 8, file.length_bytes) <= std::max(file.size, file.end_allocated);
}

bool is_sound_heap(H5FD_mem_t type, const unsigned char* bytes, std::size_t read,
                   const HostFile& file) {
  if (type == global_heap_type) return is_sound_global_heap(bytes, read, file.length_bytes);
  return type != H5FD_MEM_LHEAP || is_sound_local_heap(bytes, read, file);
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
  const HostFile& host = *file_of(file);
  read_last = &host;
  if (host.is_given_up || !read_bytes(host.descriptor, address, size, bytes)) return -1;
  if (is_sound_heap(type, bytes, size, host)) return 0;
  leave_error(StatementError(
      Status::hdf5_refused,
      "The file is damaged: its heap at byte " + std::to_string(address) + " cannot be read"));
  return -1;
}

// --- writing ---

// The library's own words for it name everything but the reason; and not all that fails when a file
// is closed is told to the one who closes it.
herr_t fail_write(const StatementError& error) {
  if (!changes->failure) changes->failure = error;
  leave_error(error);
  return -1;
}

herr_t fail_write(const HostFile& file, int error) {
  return fail_write(
      StatementError(Status::host_refused,
                     "File " + quoted(file.path) + " cannot be written: " + std::strerror(error)));
}

bool keep_old_bytes(const HostFile& file, haddr_t begin, haddr_t end) noexcept {
  try {
    changes->undo.keep(*file.changed, begin, end);
    return true;
  } catch (const StatementError& error) {
    fail_write(error);
  } catch (const std::bad_alloc&) {
    fail_write(file, ENOMEM);
  }
  return false;
}

herr_t write(H5FD_t* file, H5FD_mem_t /*type*/, hid_t /*transfer*/, haddr_t address,
             std::size_t size, const void* buffer) {
  if (address > largest_address || size > largest_address - address) return -1;
  HostFile& host = *file_of(file);
  if (host.drops_writes) return 0;
  if (!keep_old_bytes(host, address, address + size)) return -1;
  const auto* bytes = static_cast<const unsigned char*>(buffer);
  while (size > 0) {
    const ssize_t done = ::pwrite(host.descriptor, bytes, size, static_cast<off_t>(address));
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return fail_write(host, errno);
    bytes += done;
    address += static_cast<haddr_t>(done);
    size -= static_cast<std::size_t>(done);
  }
  host.size = std::max(host.size, address);
  return 0;
}

herr_t truncate(H5FD_t* file, hid_t /*transfer*/, hbool_t /*closing*/) {
  HostFile& host = *file_of(file);
  if (host.drops_writes || host.changed == nullptr || host.size == host.end_allocated) return 0;
  host.changed->cut(host.end_allocated);
  const haddr_t length = std::max<haddr_t>(host.end_allocated, host.changed->old_length());
  if (::ftruncate(host.descriptor, static_cast<off_t>(length)) != 0) return fail_write(host, errno);
  host.size = host.end_allocated;
  return 0;
}

// Locks are taken elsewhere (storage/lock.h).
herr_t pass_lock(H5FD_t* /*file*/, hbool_t /*writes*/) { return 0; }
herr_t pass_unlock(H5FD_t* /*file*/) { return 0; }

hid_t register_driver(const char* name, decltype(H5FD_class_t::open) open) {
  H5FD_class_t driver{};
  driver.name = name;
  driver.maxaddr = largest_address;
  driver.fc_degree = H5F_CLOSE_WEAK;
  driver.open = open;
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

hid_t driver_id() {
  static const hid_t driver = register_driver("kelvo", open_file);
  return driver;
}

hid_t member_driver_id() {
  static const hid_t driver = register_driver("kelvo-member", open_member);
  return driver;
}

std::string cannot_set_up() { return "File access cannot be set up"; }

void give_up(HostFile& file) {
  file.is_given_up = file.drops_writes = true;
  file.changed = nullptr;
  file.close_descriptor();
}

}  // namespace

void set_driver(hid_t access) {
  check_done(H5Pset_driver(access, driver_id(), nullptr), cannot_set_up);
}

void set_family_driver(hid_t access) {
  const PropertyHandle members(check_id(H5Pcreate(H5P_FILE_ACCESS), cannot_set_up));
  check_done(H5Pset_driver(members.get(), member_driver_id(), nullptr), cannot_set_up);
  check_done(H5Pset_fapl_family(access, H5F_FAMILY_DEFAULT, members.get()), cannot_set_up);
}

std::string give_up_files() {
  for (HostFile* file : open_files) give_up(*file);
  return read_last == nullptr ? "" : read_last->path;
}

bool is_changed(const std::string& path) {
  struct stat status {};
  return changes && ::stat(path.c_str(), &status) == 0 &&
         changes->undo.find(status.st_dev, status.st_ino) != nullptr;
}

std::optional<StatementError> write_failure() { return changes ? changes->failure : std::nullopt; }

void keep_changes() {
  if (!changes) return;
  if (changes->failure) throw StatementError(*changes->failure);
  for (const HostFile* file : open_files) {
    if (file->changed == nullptr) continue;
    throw StatementError(Status::hdf5_refused, "File " + quoted(file->path) + " cannot be closed");
  }
  changes->undo.finish();
  changes.reset();
}

void drop_changes() {
  for (HostFile* file : open_files) file->drops_writes = file->changed != nullptr;
}

std::optional<StatementError> undo_changes() {
  if (!changes) return std::nullopt;
  for (HostFile* file : open_files) {
    if (file->changed != nullptr) give_up(*file);
  }
  std::optional<StatementError> failure = changes->undo.put_back();
  changes.reset();
  return failure;
}

bool uses_driver(hid_t access) { return H5Pget_driver(access) == driver_id(); }

bool uses_family_driver(hid_t access) { return H5Pget_driver(access) == H5FD_FAMILY; }

}  // namespace kelvo
