// The bodies of the SHOW forms, for the table in show.cpp.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "statements/family.h"

namespace kelvo {

// show_objects.cpp: what is in a file
Answer show_group(Parser& parser, Session& session);
Answer show_dataset(Parser& parser, Session& session);
Answer show_attribute(Parser& parser, Session& session);
Answer show_link(Parser& parser, Session& session);
Answer show_external_link(Parser& parser, Session& session);
Answer show_type(Parser& parser, Session& session);

// show_types.cpp: what the elements of a dataset or attribute are
Answer show_data_type(Parser& parser, Session& session);
Answer show_member(Parser& parser, Session& session);
Answer show_offset(Parser& parser, Session& session);
Answer show_tag(Parser& parser, Session& session);
Answer show_endianness(Parser& parser, Session& session);
Answer show_charset(Parser& parser, Session& session);

// show_storage.cpp: how large an object is and how it is stored
Answer show_dimension(Parser& parser, Session& session);
Answer show_size(Parser& parser, Session& session);
Answer show_storage_type(Parser& parser, Session& session);
Answer show_storage_allocation(Parser& parser, Session& session);
Answer show_storage_dimension(Parser& parser, Session& session);
Answer show_mask(Parser& parser, Session& session);
Answer show_order(Parser& parser, Session& session);
Answer show_fill_type(Parser& parser, Session& session);
Answer show_fill_value(Parser& parser, Session& session);

// show_host.cpp: files and directories
Answer show_file_validity(Parser& parser, Session& session);
Answer show_file_size(Parser& parser, Session& session);
Answer show_directory(Parser& parser, Session& session);
Answer show_file(Parser& parser, Session& session);

// show_session.cpp: what is in use, and versions
Answer show_use_directory(Parser& parser, Session& session);
Answer show_use_file(Parser& parser, Session& session);
Answer show_all_use_file(Parser& parser, Session& session);
Answer show_use_group(Parser& parser, Session& session);
Answer show_execute_status(Parser& parser, Session& session);
Answer show_kelvo_version(Parser& parser, Session& session);
Answer show_hdf5_version(Parser& parser, Session& session);
Answer show_mpi_version(Parser& parser, Session& session);

// show_settings.cpp: what SET sets
Answer show_library_bounds(Parser& parser, Session& session);
Answer show_cache(Parser& parser, Session& session);
Answer show_atomic(Parser& parser, Session& session);
Answer show_external_link_prefix(Parser& parser, Session& session);
Answer show_flush(Parser& parser, Session& session);
Answer show_thread(Parser& parser, Session& session);
Answer show_plugin_path(Parser& parser, Session& session);
Answer show_debug(Parser& parser, Session& session);

// show_rows.cpp: answers that they share
Answer text_row(std::string_view text);
Answer text_rows(std::span<const std::string> texts);
Answer text_rows_of(std::string_view texts);  // each ended by a NUL
Answer bigint_row(std::int64_t value);

}  // namespace kelvo
