// Datasets that take their data from other files: external raw data and virtual datasets.
#pragma once

#include <string>
#include <vector>

#include "storage/handle.h"

namespace kelvo {

/// Access list for opening datasets, with which the files that one names are looked for beside its
/// own file. The HDF5 library wants the same list wherever one dataset is opened twice.
PropertyHandle dataset_access();

/// A dataset and the files that its sources are in, held open: the HDF5 library takes a source that
/// it cannot open for one that is not there, and gives fill values instead.
struct SourcedDataset {
  std::vector<FileHandle> sources;
  DatasetHandle dataset;
};

/// The same dataset, ready to be read: all that it takes from elsewhere is within reach (see
/// storage/reach.h) and can be opened, or is not there at all; else StatementError. `shown` as in
/// `Dataset "/x"`. To be called before anything is asked of the dataset but its creation
/// properties, since already its extent may depend on its sources.
SourcedDataset within_reach(DatasetHandle dataset, const std::string& shown);

}  // namespace kelvo
