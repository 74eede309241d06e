// Settings of the file space.
#include "storage/free_space.h"

#include "storage/check.h"

namespace kelvo {
namespace {

std::string cannot_set_up() { return "File space cannot be set up"; }

}  // namespace

bool remembers_free_space(hid_t creation) {
  H5F_fspace_strategy_t strategy = H5F_FSPACE_STRATEGY_FSM_AGGR;
  hbool_t remembered = false;
  hsize_t threshold = 0;
  check_done(H5Pget_file_space_strategy(creation, &strategy, &remembered, &threshold),
             cannot_set_up);
  return remembered;
}

void allocate_singly(hid_t access) {
  check_done(H5Pset_meta_block_size(access, 0), cannot_set_up);
  check_done(H5Pset_small_data_block_size(access, 0), cannot_set_up);
}

}  // namespace kelvo
