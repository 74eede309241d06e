// HELP ALL: the topic tree, whole.
#include <gtest/gtest.h>

#include "tests/help/help_request.h"

namespace {

constexpr char topic_tree[] =
    R"(Select one of the following topics/subtopics (example: "help create"):

  <b>CREATE</b>  Create directories, files, groups, datasets, etc.
    <b>DIRECTORY</b>      Create a new directory.
    <b>FILE</b>           Create a new HDF5 file.
    <b>GROUP</b>          Create a new group.
    <b>DATASET</b>        Create a new dataset.
    <b>ATTRIBUTE</b>      Create a new attribute.
    <b>LINK</b>           Create a new soft or hard link to an existing object.
    <b>EXTERNAL LINK</b>  Create a new external link to an existing object.
  <b>ALTER</b>  Alter (change) a dataset dimensions.
  <b>RENAME</b>  Rename or move directories, files, groups, datasets, etc.
    <b>DIRECTORY</b>      Rename or move an existing directory.
    <b>FILE</b>           Rename or move an existing file.
    <b>GROUP</b>          Rename or move an existing group.
    <b>DATASET</b>        Rename or move an existing dataset.
    <b>ATTRIBUTE</b>      Rename or move an existing attribute.
    <b>LINK</b>           Rename or move an existing soft link.
    <b>EXTERNAL LINK</b>  Rename or move an existing external link.
  <b>COPY</b>  Copy files, groups, datasets, etc., to a new location.
    <b>FILE</b>           Copy an existing file to a new location.
    <b>GROUP</b>          Copy an existing group to a new location.
    <b>DATASET</b>        Copy an existing dataset to a new location.
    <b>ATTRIBUTE</b>      Copy an existing attribute to a new location.
    <b>LINK</b>           Copy an existing soft link to a new location.
    <b>EXTERNAL LINK</b>  Copy an existing external link to a new location.
  <b>DROP</b>  Drop (delete) directories, files, groups, datasets, etc.
    <b>DIRECTORY</b>      Drop (delete) an existing directory.
    <b>FILE</b>           Drop (delete) an existing file.
    <b>GROUP</b>          Drop (delete) an existing group.
    <b>DATASET</b>        Drop (delete) an existing dataset.
    <b>ATTRIBUTE</b>      Drop (delete) an existing attribute.
    <b>LINK</b>           Drop (delete) an existing soft link.
    <b>EXTERNAL LINK</b>  Drop (delete) an existing external link.
  <b>INSERT</b>  Insert (write) data into a dataset or attribute.
  <b>SELECT</b>  Select (read) data stored in a dataset or attribute.
  <b>SHOW</b>  Show information about files, groups, datasets, etc.
    <b>FILE VALIDITY</b>         Show if a file is a valid HDF5 one or not.
    <b>USE DIRECTORY</b>         Show current working directory in use.
    <b>USE FILE</b>              Show name of the HDF5 file in use.
    <b>ALL USE FILE</b>          Show names of all HDF5 files in use.
    <b>USE GROUP</b>             Show name of the group in use.
    <b>GROUP</b>                 Show existing groups.
    <b>DATASET</b>               Show existing datasets.
    <b>ATTRIBUTE</b>             Show existing attributes.
    <b>LINK</b>                  Show existing soft links.
    <b>EXTERNAL LINK</b>         Show existing external links.
    <b>TYPE</b>                  Show type of an object.
    <b>DATA TYPE</b>             Show data type of a dataset or attribute.
    <b>MEMBER</b>                Show members of a dataset or attribute.
    <b>MASK</b>                  Show (filter) mask of a dataset.
    <b>ENDIANNESS</b>            Show endianness of a dataset or attribute.
    <b>CHARSET</b>               Show charset of a dataset or attribute.
    <b>STORAGE TYPE</b>          Show storage type of a dataset.
    <b>STORAGE ALLOCATION</b>    Show storage allocation of a dataset.
    <b>STORAGE DIMENSION</b>     Show storage dimensions of a dataset.
    <b>DIMENSION</b>             Show dimensions of a dataset or attribute.
    <b>ORDER</b>                 Show creation order in a group or dataset.
    <b>TAG</b>                   Show tag of a dataset or attribute.
    <b>OFFSET</b>                Show offset of members of a dataset or attribute.
    <b>FILL TYPE</b>             Show fill type of a dataset.
    <b>FILL VALUE</b>            Show fill values of a dataset.
    <b>FILE SIZE</b>             Show size of a file.
    <b>SIZE</b>                  Show size of a dataset or attribute.
    <b>KELVO VERSION</b>         Show version of the Kelvo library in use.
    <b>HDF5 VERSION</b>          Show version of the HDF5 library in use.
    <b>MPI VERSION</b>           Show version of the MPI library in use.
    <b>DIRECTORY</b>             Show existing directories.
    <b>FILE</b>                  Show existing files.
    <b>EXECUTE STATUS</b>        Show last statement execution status.
    <b>LIBRARY BOUNDS</b>        Show library bound values.
    <b>CACHE</b>                 Show cache parameters.
    <b>ATOMIC</b>                Show atomic status.
    <b>EXTERNAL LINK PREFIX</b>  Show external link prefix.
    <b>FLUSH</b>                 Show flush status.
    <b>THREAD</b>                Show number of (CPU) threads in use.
    <b>PLUGIN PATH</b>           Show plugin paths.
    <b>DEBUG</b>                 Show debug status.
  <b>USE</b>  Use (open) directory, file or group for subsequent operations.
    <b>DIRECTORY</b>  Use (open) an existing directory as the current working one.
    <b>FILE</b>       Use (open) an existing file for subsequent operations.
    <b>GROUP</b>      Use (open) an existing group for subsequent operations.
  <b>FLUSH</b>  Write buffered data into the file in use.
    <b>GLOBAL</b>  Write buffered data into the entire virtual file in use.
    <b>LOCAL</b>   Write buffered data only into the specific file in use.
  <b>CLOSE</b>  Close file or group in use.
    <b>FILE</b>       Close file in use.
    <b>ALL FILE</b>   Close all files in use.
    <b>GROUP</b>      Close group in use.
  <b>SET</b>  Set library bounds, cache parameters, atomic parallel operations, etc.
    <b>LIBRARY BOUNDS</b>        Set library bound values.
    <b>CACHE</b>                 Set cache parameters.
    <b>ATOMIC</b>                Set atomic parallel operations enabled or disabled.
    <b>EXTERNAL LINK PREFIX</b>  Set external link prefix.
    <b>FLUSH</b>                 Set automatic flushing enabled or disabled.
    <b>THREAD</b>                Set number of (CPU) threads to use.
    <b>PLUGIN PATH</b>           Set plugin paths.
    <b>DEBUG</b>                 Set debug information display enabled or disabled.
  <b>DATA TYPE</b>  Show existing data types.
  <b>ALL</b>  Show all help topics/subtopics in a tree-like structure.
)";

}  // namespace

TEST(Tree, ShowsAllTopicsAndSubtopics) { EXPECT_EQ(shown(topic_tree), help("HELP ALL")); }
