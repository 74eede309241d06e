// HELP and HELP with the keyword of a menu: the whole of each menu, column by column.
#include <gtest/gtest.h>

#include "tests/help/help_request.h"

namespace {

constexpr char main_menu[] = R"(Select one of the following topics (example: "help create"):

  <b>CREATE</b>     Create directories, files, groups, datasets, etc.
  <b>ALTER</b>      Alter (change) a dataset dimensions.
  <b>RENAME</b>     Rename or move directories, files, groups, datasets, etc.
  <b>COPY</b>       Copy files, groups, datasets, etc., to a new location.
  <b>DROP</b>       Drop (delete) directories, files, groups, datasets, etc.
  <b>INSERT</b>     Insert (write) data into a dataset or attribute.
  <b>SELECT</b>     Select (read) data stored in a dataset or attribute.
  <b>SHOW</b>       Show information about files, groups, datasets, etc.
  <b>USE</b>        Use (open) directory, file or group for subsequent operations.
  <b>FLUSH</b>      Write buffered data into the file in use.
  <b>CLOSE</b>      Close file or group in use.
  <b>SET</b>        Set library bounds, cache parameters, flushing, debugging, etc.
  <b>DATA TYPE</b>  Show existing data types.
  <b>ALL</b>        Show all help topics/subtopics in a tree-like structure.
)";

constexpr char create_menu[] =
    R"(Select one of the following subtopics (example: "help create directory"):

  <b>CREATE DIRECTORY</b>      Create a new directory.
  <b>CREATE FILE</b>           Create a new HDF5 file.
  <b>CREATE GROUP</b>          Create a new group.
  <b>CREATE DATASET</b>        Create a new dataset.
  <b>CREATE ATTRIBUTE</b>      Create a new attribute.
  <b>CREATE LINK</b>           Create a new soft or hard link to an existing object.
  <b>CREATE EXTERNAL LINK</b>  Create a new external link to an existing object.
)";

constexpr char rename_menu[] =
    R"(Select one of the following subtopics (example: "help rename directory"):

  <b>RENAME DIRECTORY</b>      Rename or move an existing directory.
  <b>RENAME FILE</b>           Rename or move an existing file.
  <b>RENAME GROUP</b>          Rename or move an existing group.
  <b>RENAME DATASET</b>        Rename or move an existing dataset.
  <b>RENAME ATTRIBUTE</b>      Rename or move an existing attribute.
  <b>RENAME LINK</b>           Rename or move an existing soft link.
  <b>RENAME EXTERNAL LINK</b>  Rename or move an existing external link.
)";

constexpr char copy_menu[] = R"(Select one of the following subtopics (example: "help copy file"):

  <b>COPY FILE</b>           Copy an existing file to a new location.
  <b>COPY GROUP</b>          Copy an existing group to a new location.
  <b>COPY DATASET</b>        Copy an existing dataset to a new location.
  <b>COPY ATTRIBUTE</b>      Copy an existing attribute to a new location.
  <b>COPY LINK</b>           Copy an existing soft link to a new location.
  <b>COPY EXTERNAL LINK</b>  Copy an existing external link to a new location.
)";

constexpr char drop_menu[] =
    R"(Select one of the following subtopics (example: "help drop directory"):

  <b>DROP DIRECTORY</b>      Drop (delete) an existing directory.
  <b>DROP FILE</b>           Drop (delete) an existing file.
  <b>DROP GROUP</b>          Drop (delete) an existing group.
  <b>DROP DATASET</b>        Drop (delete) an existing dataset.
  <b>DROP ATTRIBUTE</b>      Drop (delete) an existing attribute.
  <b>DROP LINK</b>           Drop (delete) an existing soft link.
  <b>DROP EXTERNAL LINK</b>  Drop (delete) an existing external link.
)";

constexpr char show_menu[] =
    R"(Select one of the following subtopics (example: "help show file validity"):

  <b>SHOW FILE VALIDITY</b>         Show if a file is a valid HDF5 one or not.
  <b>SHOW USE DIRECTORY</b>         Show current working directory in use.
  <b>SHOW USE FILE</b>              Show name of the HDF5 file in use.
  <b>SHOW ALL USE FILE</b>          Show names of all HDF5 files in use.
  <b>SHOW USE GROUP</b>             Show name of the group in use.
  <b>SHOW GROUP</b>                 Show existing groups.
  <b>SHOW DATASET</b>               Show existing datasets.
  <b>SHOW ATTRIBUTE</b>             Show existing attributes.
  <b>SHOW LINK</b>                  Show existing soft links.
  <b>SHOW EXTERNAL LINK</b>         Show existing external links.
  <b>SHOW TYPE</b>                  Show type of an existing object.
  <b>SHOW DATA TYPE</b>             Show data type of an existing dataset or attribute.
  <b>SHOW MEMBER</b>                Show members of an existing dataset or attribute.
  <b>SHOW MASK</b>                  Show (filter) mask of a dataset.
  <b>SHOW ENDIANNESS</b>            Show endianness of an existing dataset or attribute.
  <b>SHOW CHARSET</b>               Show charset of an existing dataset or attribute.
  <b>SHOW STORAGE TYPE</b>          Show storage type of an existing dataset.
  <b>SHOW STORAGE ALLOCATION</b>    Show storage allocation of an existing dataset.
  <b>SHOW STORAGE DIMENSION</b>     Show storage dimensions of an existing dataset.
  <b>SHOW DIMENSION</b>             Show dimensions of an existing dataset or attribute.
  <b>SHOW ORDER</b>                 Show creation order of an existing in a group or dataset.
  <b>SHOW TAG</b>                   Show tag of a dataset or attribute.
  <b>SHOW OFFSET</b>                Show offset of members of a dataset or attribute.
  <b>SHOW FILL TYPE</b>             Show fill type of a dataset.
  <b>SHOW FILL VALUE</b>            Show fill values of a dataset.
  <b>SHOW FILE SIZE</b>             Show size of an existing file.
  <b>SHOW SIZE</b>                  Show size of an existing dataset or attribute.
  <b>SHOW KELVO VERSION</b>         Show version of the Kelvo library in use.
  <b>SHOW HDF5 VERSION</b>          Show version of the HDF5 library in use.
  <b>SHOW MPI VERSION</b>           Show version of the MPI library in use.
  <b>SHOW DIRECTORY</b>             Show existing directories.
  <b>SHOW FILE</b>                  Show existing files.
  <b>SHOW EXECUTE STATUS</b>        Show last statement execution status.
  <b>SHOW LIBRARY BOUNDS</b>        Show library bound values.
  <b>SHOW CACHE</b>                 Show cache parameters.
  <b>SHOW ATOMIC</b>                Show atomic status.
  <b>SHOW EXTERNAL LINK PREFIX</b>  Show external link prefix.
  <b>SHOW FLUSH</b>                 Show flush status.
  <b>SHOW THREAD</b>                Show number of (CPU) threads in use.
  <b>SHOW PLUGIN PATH</b>           Show plugin paths.
  <b>SHOW DEBUG</b>                 Show debug status.
)";

constexpr char use_menu[] =
    R"(Select one of the following subtopics (example: "help use directory"):

  <b>USE DIRECTORY</b>  Use (open) an existing directory as the current working one.
  <b>USE FILE</b>       Use (open) an existing file for subsequent operations.
  <b>USE GROUP</b>      Use (open) an existing group for subsequent operations.
)";

constexpr char flush_menu[] =
    R"(Select one of the following subtopics (example: "help flush global"):

  <b>FLUSH GLOBAL</b>  Write buffered data into the entire virtual file in use.
  <b>FLUSH LOCAL</b>   Write buffered data only into the specific file in use.
)";

constexpr char close_menu[] = R"(Select one of the following subtopics (example: "help close file"):

  <b>CLOSE FILE</b>      Close file in use.
  <b>CLOSE ALL FILE</b>  Close all files in use.
  <b>CLOSE GROUP</b>     Close group in use.
)";

constexpr char set_menu[] =
    R"(Select one of the following subtopics (example: "help set library bounds"):

  <b>SET LIBRARY BOUNDS</b>        Set library bound values.
  <b>SET CACHE</b>                 Set cache parameters.
  <b>SET ATOMIC</b>                Set atomic parallel operations enabled or disabled.
  <b>SET EXTERNAL LINK PREFIX</b>  Set external link prefix.
  <b>SET FLUSH</b>                 Set automatic flushing enabled or disabled.
  <b>SET THREAD</b>                Set number of (CPU) threads to use.
  <b>SET PLUGIN PATH</b>           Set plugin paths.
  <b>SET DEBUG</b>                 Set debug information display enabled or disabled.
)";

}  // namespace

TEST(Menus, Main) { EXPECT_EQ(shown(main_menu), help("HELP")); }
TEST(Menus, Create) { EXPECT_EQ(shown(create_menu), help("HELP CREATE")); }
TEST(Menus, Rename) { EXPECT_EQ(shown(rename_menu), help("HELP RENAME")); }
TEST(Menus, Copy) { EXPECT_EQ(shown(copy_menu), help("HELP COPY")); }
TEST(Menus, Drop) { EXPECT_EQ(shown(drop_menu), help("HELP DROP")); }
TEST(Menus, Show) { EXPECT_EQ(shown(show_menu), help("HELP SHOW")); }
TEST(Menus, Use) { EXPECT_EQ(shown(use_menu), help("HELP USE")); }
TEST(Menus, Flush) { EXPECT_EQ(shown(flush_menu), help("HELP FLUSH")); }
TEST(Menus, Close) { EXPECT_EQ(shown(close_menu), help("HELP CLOSE")); }
TEST(Menus, Set) { EXPECT_EQ(shown(set_menu), help("HELP SET")); }
