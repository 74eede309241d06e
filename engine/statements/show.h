// The bodies of the SHOW forms, for the table in show.cpp.
#pragma once

#include "statements/family.h"

namespace kelvo {

// show_objects.cpp: what is in a file
Answer show_group(Parser& parser, Session& session);
Answer show_dataset(Parser& parser, Session& session);
Answer show_attribute(Parser& parser, Session& session);
Answer show_type(Parser& parser, Session& session);

// show_properties.cpp: what an object is like
Answer show_data_type(Parser& parser, Session& session);
Answer show_dimension(Parser& parser, Session& session);

// show_session.cpp: what is in use and how it is set
Answer show_use_file(Parser& parser, Session& session);
Answer show_use_group(Parser& parser, Session& session);
Answer show_kelvo_version(Parser& parser, Session& session);
Answer show_hdf5_version(Parser& parser, Session& session);
Answer show_mpi_version(Parser& parser, Session& session);
Answer show_debug(Parser& parser, Session& session);

}  // namespace kelvo
