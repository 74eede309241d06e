// Addresses, the question to their servers, and the driver's settings.
#include "storage/remote.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include "storage/check.h"

namespace kelvo {
namespace {

constexpr long connect_seconds = 30;
// Metadata is read in many small pieces, each a request of its own: contiguous data at least come
// in large ones.
constexpr std::size_t sieve_bytes = std::size_t{1} * 1024 * 1024;

constexpr std::array<std::string_view, 3> schemes = {"http://", "https://", "s3://"};

[[noreturn]] void refuse(Status status, const std::string& address, const std::string& why) {
  throw StatementError(status, "File " + quoted(address) + " " + why);
}

[[noreturn]] void refuse_empty(const std::string& address) {
  refuse(Status::hdf5_refused, address, "is not an HDF5 file: it is empty");
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): one thread
  return value == nullptr ? "" : value;
}

// --- s3:// ---

struct Credentials {
  std::string region;
  std::string identifier;
  std::string key;

  [[nodiscard]] bool present() const { return !identifier.empty() && !key.empty(); }
};

Credentials credentials_of_environment() {
  Credentials found;
  found.region = environment("AWS_REGION");
  if (found.region.empty()) found.region = environment("AWS_DEFAULT_REGION");
  if (found.region.empty()) found.region = "us-east-1";
  found.identifier = environment("AWS_ACCESS_KEY_ID");
  found.key = environment("AWS_SECRET_ACCESS_KEY");
  return found;
}

// s3://bucket/key as an address of the store: that of AWS_ENDPOINT_URL, or of the region.
std::string store_address(const std::string& address, const std::string& region) {
  const std::string place = address.substr(schemes[2].size());
  const std::size_t slash = place.find('/');
  if (slash == 0 || slash == std::string::npos || slash + 1 == place.size())
    refuse(Status::host_refused, address, "cannot be opened: an s3 address is s3://bucket/key");
  const std::string endpoint = environment("AWS_ENDPOINT_URL");
  if (!endpoint.empty()) return endpoint + (endpoint.ends_with('/') ? "" : "/") + place;
  return "https://" + place.substr(0, slash) + ".s3." + region + ".amazonaws.com" +
         place.substr(slash);
}

template <std::size_t size>
void copy_setting(const std::string& value, char (&to)[size], const char* name) {
  if (value.size() >= size) {
    throw StatementError(Status::out_of_range, std::string(name) + " has more than " +
                                                   std::to_string(size - 1) +
                                                   " bytes, all that the HDF5 library takes");
  }
  std::memcpy(to, value.c_str(), value.size() + 1);
}

// --- the question to the server ---

struct Reply {
  CURLcode result = CURLE_OK;
  long status = 0;
  std::size_t received = 0;  // bytes
  std::string moved_to;
};

// More than the page that comes with a refusal; a server that does not know ranges would send the
// whole file.
constexpr std::size_t surplus_bytes = std::size_t{64} * 1024;

std::size_t stop_at_surplus(const char* /*data*/, std::size_t size, std::size_t count,
                            void* received) {
  auto& bytes = *static_cast<std::size_t*>(received);
  bytes += size * count;
  return bytes > surplus_bytes ? 0 : size * count;
}

Reply ask_for_first_byte(const std::string& address) {
  static const CURLcode started = curl_global_init(CURL_GLOBAL_DEFAULT);
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> request(
      started == CURLE_OK ? curl_easy_init() : nullptr, curl_easy_cleanup);
  Reply reply;
  if (request == nullptr) {
    reply.result = CURLE_FAILED_INIT;
    return reply;
  }
  CURL* const curl = request.get();
  curl_easy_setopt(curl, CURLOPT_URL, address.c_str());
  curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(curl, CURLOPT_RANGE, "0-0");
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, connect_seconds);
  curl_easy_setopt(curl, CURLOPT_LOW_SPEED_LIMIT, 1L);
  curl_easy_setopt(curl, CURLOPT_LOW_SPEED_TIME, connect_seconds);
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, stop_at_surplus);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &reply.received);
  reply.result = curl_easy_perform(curl);
  curl_easy_getinfo(curl, CURLINFO_RESPONSE_CODE, &reply.status);
  const char* location = nullptr;
  curl_easy_getinfo(curl, CURLINFO_REDIRECT_URL, &location);
  if (location != nullptr) reply.moved_to = location;
  return reply;
}

// The HDF5 library's driver writes whatever comes into a buffer of the size that it asked for, so a
// server that would send more has to be found out before.
void check_server(const std::string& address) {
  const Reply reply = ask_for_first_byte(address);
  const std::string answered = "the server answered " + std::to_string(reply.status);
  switch (reply.status) {
    case 206:
      return;
    case 0:
      refuse(Status::host_refused, address,
             std::string("cannot be opened: ") + curl_easy_strerror(reply.result));
    case 200:
      if (reply.received == 0) refuse_empty(address);
      refuse(Status::host_refused, address,
             "cannot be opened: its server does not deliver parts of files (range requests); copy "
             "the file to this machine");
    case 404:
    case 410:
      refuse(Status::does_not_exist, address, "does not exist (" + answered + ")");
    case 416:
      refuse_empty(address);
    default:
      break;
  }
  if (!reply.moved_to.empty())
    refuse(Status::host_refused, address, "has moved to " + quoted(reply.moved_to));
  refuse(Status::host_refused, address, "cannot be opened: " + answered);
}

#ifdef H5_HAVE_ROS3_VFD
std::string prepare(const std::string& address, hid_t access) {
  H5FD_ros3_fapl_t driver{};
  driver.version = H5FD_CURR_ROS3_FAPL_T_VERSION;
  std::string wanted = address;
  if (address.starts_with(schemes[2])) {
    const Credentials found = credentials_of_environment();
    wanted = store_address(address, found.region);
    driver.authenticate = found.present();
    copy_setting(found.region, driver.aws_region, "AWS_REGION");
    if (found.present()) {
      if (!environment("AWS_SESSION_TOKEN").empty()) {
        refuse(Status::not_available, address,
               "cannot be opened: this HDF5 library does not send AWS_SESSION_TOKEN");
      }
      copy_setting(found.identifier, driver.secret_id, "AWS_ACCESS_KEY_ID");
      copy_setting(found.key, driver.secret_key, "AWS_SECRET_ACCESS_KEY");
    }
  }
  // A store that wants signed requests refuses the question, which is not signed.
  if (!driver.authenticate) check_server(wanted);
  const auto what = [] { return std::string("File access cannot be set up"); };
  check_done(H5Pset_fapl_ros3(access, &driver), what);
  check_done(H5Pset_sieve_buf_size(access, sieve_bytes), what);
  return wanted;
}
#else
std::string prepare(const std::string& address, hid_t /*access*/) {
  refuse(Status::not_available, address,
         "cannot be opened: this HDF5 library has no driver for remote files; copy it to this "
         "machine");
}
#endif

}  // namespace

bool is_remote(const std::string& path) {
  return std::any_of(schemes.begin(), schemes.end(),
                     [&path](std::string_view scheme) { return path.starts_with(scheme); });
}

std::string prepare_remote(const std::string& address, hid_t access) {
  const std::size_t host = address.find("://") + 3;
  const std::size_t at = address.find('@');
  if (at < address.find('/', host)) {
    refuse(Status::not_available, address,
           "cannot be opened: an address cannot hold a user's name and password");
  }
  return prepare(address, access);
}

}  // namespace kelvo
