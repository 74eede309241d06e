// Types of columns.
#include "query/column.h"

namespace kelvo {

Type type_of_domain(Domain domain) {
  Type type;
  type.kind = domain == Domain::real ? Kind::real : Kind::integer;
  type.size = type.file_size = 8;
  type.is_signed = domain != Domain::unsigned_integer;
  return type;
}

}  // namespace kelvo
