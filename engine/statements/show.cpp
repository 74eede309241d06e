// SHOW: the table of its forms, in the order of the help. Their bodies are in show_*.cpp.
#include "statements/show.h"

#include <array>

namespace kelvo {
namespace {

constexpr std::array forms = {
    Form{"FILE VALIDITY", show_file_validity},
    Form{"USE DIRECTORY", show_use_directory, Calls::no_hdf5},
    Form{"USE FILE", show_use_file, Calls::no_hdf5},
    Form{"ALL USE FILE", show_all_use_file, Calls::no_hdf5},
    Form{"USE GROUP", show_use_group, Calls::no_hdf5},
    Form{"GROUP", show_group},
    Form{"DATASET", show_dataset},
    Form{"ATTRIBUTE", show_attribute},
    Form{"LINK", show_link},
    Form{"EXTERNAL LINK", show_external_link},
    Form{"TYPE", show_type},
    Form{"DATA TYPE", show_data_type},
    Form{"MEMBER", show_member},
    Form{"MASK", show_mask},
    Form{"ENDIANNESS", show_endianness},
    Form{"CHARSET", show_charset},
    Form{"STORAGE TYPE", show_storage_type},
    Form{"STORAGE ALLOCATION", show_storage_allocation},
    Form{"STORAGE DIMENSION", show_storage_dimension},
    Form{"DIMENSION", show_dimension},
    Form{"ORDER", show_order},
    Form{"TAG", show_tag},
    Form{"OFFSET", show_offset},
    Form{"FILL TYPE", show_fill_type},
    Form{"FILL VALUE", show_fill_value},
    Form{"FILE SIZE", show_file_size},
    Form{"SIZE", show_size},
    Form{"KELVO VERSION", show_kelvo_version, Calls::no_hdf5},
    Form{"HDF5 VERSION", show_hdf5_version},
    Form{"MPI VERSION", show_mpi_version, Calls::no_hdf5},
    Form{"DIRECTORY", show_directory, Calls::no_hdf5},
    Form{"FILE", show_file, Calls::no_hdf5},
    Form{"EXECUTE STATUS", show_execute_status, Calls::no_hdf5},
    Form{"LIBRARY BOUNDS", show_library_bounds, Calls::no_hdf5},
    Form{"CACHE", show_cache, Calls::no_hdf5},
    Form{"ATOMIC", show_atomic, Calls::no_hdf5},
    Form{"EXTERNAL LINK PREFIX", show_external_link_prefix, Calls::no_hdf5},
    Form{"FLUSH", show_flush, Calls::no_hdf5},
    Form{"THREAD", show_thread, Calls::no_hdf5},
    Form{"PLUGIN PATH", show_plugin_path},
    Form{"DEBUG", show_debug, Calls::no_hdf5},
};

}  // namespace

Answer run_show(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
