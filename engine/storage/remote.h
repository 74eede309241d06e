// Files behind addresses (http, https, s3), read through the HDF5 library's read-only S3 driver.
#pragma once

#include <string>

#include "storage/handle.h"

namespace kelvo {

/// Whether a file word is an address instead of a host path.
bool is_remote(const std::string& path);

/// Makes `access` open the address, after having asked its server whether it can deliver parts of
/// the file, which is all that the driver asks for. Throws StatementError that says what the server
/// answered. Credentials come from the environment (AWS_*), for s3:// alone.
///
/// Returns the address that the driver wants, which is another one for s3://.
std::string prepare_remote(const std::string& address, hid_t access);

}  // namespace kelvo
