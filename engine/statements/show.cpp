// SHOW: the table of its forms. Their bodies are in show_objects.cpp, show_properties.cpp and
// show_session.cpp.
#include "statements/show.h"

#include <array>

namespace kelvo {
namespace {

constexpr std::array forms = {
    Form{"USE FILE", show_use_file},
    Form{"USE GROUP", show_use_group},
    Form{"GROUP", show_group},
    Form{"DATASET", show_dataset},
    Form{"ATTRIBUTE", show_attribute},
    Form{"TYPE", show_type},
    Form{"DATA TYPE", show_data_type},
    Form{"DIMENSION", show_dimension},
    Form{"KELVO VERSION", show_kelvo_version},
    Form{"HDF5 VERSION", show_hdf5_version},
    Form{"MPI VERSION", show_mpi_version},
    Form{"DEBUG", show_debug},
};

}  // namespace

Answer run_show(Parser& parser, Session& session) { return run_form(forms, parser, session); }

}  // namespace kelvo
