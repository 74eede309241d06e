// Data only. The order of the rows is the order in which they are shown and searched.
#include "help/topics.h"

#include <iterator>

namespace {

constexpr Topic create_topics[] = {
    {"CREATE DIRECTORY", "Create a new directory."},
    {"CREATE FILE", "Create a new HDF5 file."},
    {"CREATE GROUP", "Create a new group."},
    {"CREATE DATASET", "Create a new dataset."},
    {"CREATE ATTRIBUTE", "Create a new attribute."},
    {"CREATE LINK", "Create a new soft or hard link to an existing object."},
    {"CREATE EXTERNAL LINK", "Create a new external link to an existing object."},
};

constexpr Topic rename_topics[] = {
    {"RENAME DIRECTORY", "Rename or move an existing directory."},
    {"RENAME FILE", "Rename or move an existing file."},
    {"RENAME GROUP", "Rename or move an existing group."},
    {"RENAME DATASET", "Rename or move an existing dataset."},
    {"RENAME ATTRIBUTE", "Rename or move an existing attribute."},
    {"RENAME LINK", "Rename or move an existing soft link."},
    {"RENAME EXTERNAL LINK", "Rename or move an existing external link."},
};

// Unlike CREATE, RENAME and DROP, COPY has no DIRECTORY topic: that statement does not exist.
constexpr Topic copy_topics[] = {
    {"COPY FILE", "Copy an existing file to a new location."},
    {"COPY GROUP", "Copy an existing group to a new location."},
    {"COPY DATASET", "Copy an existing dataset to a new location."},
    {"COPY ATTRIBUTE", "Copy an existing attribute to a new location."},
    {"COPY LINK", "Copy an existing soft link to a new location."},
    {"COPY EXTERNAL LINK", "Copy an existing external link to a new location."},
};

constexpr Topic drop_topics[] = {
    {"DROP DIRECTORY", "Drop (delete) an existing directory."},
    {"DROP FILE", "Drop (delete) an existing file."},
    {"DROP GROUP", "Drop (delete) an existing group."},
    {"DROP DATASET", "Drop (delete) an existing dataset."},
    {"DROP ATTRIBUTE", "Drop (delete) an existing attribute."},
    {"DROP LINK", "Drop (delete) an existing soft link."},
    {"DROP EXTERNAL LINK", "Drop (delete) an existing external link."},
};

// Twelve of these are worded more shortly in the tree. SHOW ORDER's wording here is kept as users
// know it.
constexpr Topic show_topics[] = {
    {"SHOW FILE VALIDITY", "Show if a file is a valid HDF5 one or not."},
    {"SHOW USE DIRECTORY", "Show current working directory in use."},
    {"SHOW USE FILE", "Show name of the HDF5 file in use."},
    {"SHOW ALL USE FILE", "Show names of all HDF5 files in use."},
    {"SHOW USE GROUP", "Show name of the group in use."},
    {"SHOW GROUP", "Show existing groups."},
    {"SHOW DATASET", "Show existing datasets."},
    {"SHOW ATTRIBUTE", "Show existing attributes."},
    {"SHOW LINK", "Show existing soft links."},
    {"SHOW EXTERNAL LINK", "Show existing external links."},
    {"SHOW TYPE", "Show type of an existing object.", "Show type of an object."},
    {"SHOW DATA TYPE", "Show data type of an existing dataset or attribute.",
     "Show data type of a dataset or attribute."},
    {"SHOW MEMBER", "Show members of an existing dataset or attribute.",
     "Show members of a dataset or attribute."},
    {"SHOW MASK", "Show (filter) mask of a dataset."},
    {"SHOW ENDIANNESS", "Show endianness of an existing dataset or attribute.",
     "Show endianness of a dataset or attribute."},
    {"SHOW CHARSET", "Show charset of an existing dataset or attribute.",
     "Show charset of a dataset or attribute."},
    {"SHOW STORAGE TYPE", "Show storage type of an existing dataset.",
     "Show storage type of a dataset."},
    {"SHOW STORAGE ALLOCATION", "Show storage allocation of an existing dataset.",
     "Show storage allocation of a dataset."},
    {"SHOW STORAGE DIMENSION", "Show storage dimensions of an existing dataset.",
     "Show storage dimensions of a dataset."},
    {"SHOW DIMENSION", "Show dimensions of an existing dataset or attribute.",
     "Show dimensions of a dataset or attribute."},
    {"SHOW ORDER", "Show creation order of an existing in a group or dataset.",
     "Show creation order in a group or dataset."},
    {"SHOW TAG", "Show tag of a dataset or attribute."},
    {"SHOW OFFSET", "Show offset of members of a dataset or attribute."},
    {"SHOW FILL TYPE", "Show fill type of a dataset."},
    {"SHOW FILL VALUE", "Show fill values of a dataset."},
    {"SHOW FILE SIZE", "Show size of an existing file.", "Show size of a file."},
    {"SHOW SIZE", "Show size of an existing dataset or attribute.",
     "Show size of a dataset or attribute."},
    {"SHOW KELVO VERSION", "Show version of the Kelvo library in use."},
    {"SHOW HDF5 VERSION", "Show version of the HDF5 library in use."},
    {"SHOW MPI VERSION", "Show version of the MPI library in use."},
    {"SHOW DIRECTORY", "Show existing directories."},
    {"SHOW FILE", "Show existing files."},
    {"SHOW EXECUTE STATUS", "Show last statement execution status."},
    {"SHOW LIBRARY BOUNDS", "Show library bound values."},
    {"SHOW CACHE", "Show cache parameters."},
    {"SHOW ATOMIC", "Show atomic status."},
    {"SHOW EXTERNAL LINK PREFIX", "Show external link prefix."},
    {"SHOW FLUSH", "Show flush status."},
    {"SHOW THREAD", "Show number of (CPU) threads in use."},
    {"SHOW PLUGIN PATH", "Show plugin paths."},
    {"SHOW DEBUG", "Show debug status."},
};

constexpr Topic use_topics[] = {
    {"USE DIRECTORY", "Use (open) an existing directory as the current working one."},
    {"USE FILE", "Use (open) an existing file for subsequent operations."},
    {"USE GROUP", "Use (open) an existing group for subsequent operations."},
};

constexpr Topic flush_topics[] = {
    {"FLUSH GLOBAL", "Write buffered data into the entire virtual file in use."},
    {"FLUSH LOCAL", "Write buffered data only into the specific file in use."},
};

constexpr Topic close_topics[] = {
    {"CLOSE FILE", "Close file in use."},
    {.keyword = "CLOSE ALL FILE",
     .description = "Close all files in use.",
     .syntax = "CLOSE ALL FILE"},
    {"CLOSE GROUP", "Close group in use."},
};

constexpr Topic set_topics[] = {
    {"SET LIBRARY BOUNDS", "Set library bound values."},
    {"SET CACHE", "Set cache parameters."},
    {"SET ATOMIC", "Set atomic parallel operations enabled or disabled."},
    {"SET EXTERNAL LINK PREFIX", "Set external link prefix."},
    {"SET FLUSH", "Set automatic flushing enabled or disabled."},
    {"SET THREAD", "Set number of (CPU) threads to use."},
    {"SET PLUGIN PATH", "Set plugin paths."},
    {"SET DEBUG", "Set debug information display enabled or disabled."},
};

constexpr Menu create_menu = {"create directory", create_topics};
constexpr Menu rename_menu = {"rename directory", rename_topics};
constexpr Menu copy_menu = {"copy file", copy_topics};
constexpr Menu drop_menu = {"drop directory", drop_topics};
constexpr Menu show_menu = {"show file validity", show_topics};
constexpr Menu use_menu = {"use directory", use_topics};
constexpr Menu flush_menu = {"flush global", flush_topics};
// The tree leaves one blank more after CLOSE's keywords than after all others: its output is kept
// as users know it.
constexpr Menu close_menu = {"close file", close_topics, /*tree_gap=*/3};
constexpr Menu set_menu = {"set library bounds", set_topics};

constexpr Topic menu_topic(const char* keyword, const char* description, const Menu& subtopics,
                           const char* tree_description = nullptr) {
  return {keyword, description, tree_description, TopicOutput::menu, &subtopics};
}

constexpr Topic main_topics[] = {
    menu_topic("CREATE", "Create directories, files, groups, datasets, etc.", create_menu),
    {"ALTER", "Alter (change) a dataset dimensions."},
    menu_topic("RENAME", "Rename or move directories, files, groups, datasets, etc.", rename_menu),
    menu_topic("COPY", "Copy files, groups, datasets, etc., to a new location.", copy_menu),
    menu_topic("DROP", "Drop (delete) directories, files, groups, datasets, etc.", drop_menu),
    {"INSERT", "Insert (write) data into a dataset or attribute."},
    {"SELECT", "Select (read) data stored in a dataset or attribute."},
    menu_topic("SHOW", "Show information about files, groups, datasets, etc.", show_menu),
    menu_topic("USE", "Use (open) directory, file or group for subsequent operations.", use_menu),
    menu_topic("FLUSH", "Write buffered data into the file in use.", flush_menu),
    menu_topic("CLOSE", "Close file or group in use.", close_menu),
    menu_topic("SET", "Set library bounds, cache parameters, flushing, debugging, etc.", set_menu,
               "Set library bounds, cache parameters, atomic parallel operations, etc."),
    {"DATA TYPE", "Show existing data types.", nullptr, TopicOutput::data_types},
    {"ALL", "Show all help topics/subtopics in a tree-like structure.", nullptr, TopicOutput::tree},
};

constexpr std::size_t subtopic_count() {
  std::size_t count = 0;
  for (const Topic& topic : main_topics) {
    if (topic.subtopics != nullptr) count += topic.subtopics->topics.size();
  }
  return count;
}

static_assert(std::size(show_topics) == 41);
static_assert(std::size(main_topics) == 14);
static_assert(subtopic_count() == 84);

}  // namespace

const Menu main_menu = {"create", main_topics};
