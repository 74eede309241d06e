// The engine's own description of a data type: one for SHOW, CREATE, INSERT, SELECT, import and
// export alike. It also fixes how an element lies in memory, so that values are read and written
// without asking the HDF5 library again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "values/real_format.h"

namespace kelvo {

enum class Kind {
  integer,           // memory: the machine's integer of 1, 2, 4 or 8 bytes
  real,              // memory: float (4) or double (8)
  bit_field,         // memory: the machine's unsigned integer of 1, 2, 4 or 8 bytes
  time,              // memory: the file's bytes, a signed integer
  text,              // memory: `size` bytes with their padding
  varying_text,      // memory: a char*, null for a null string
  opaque,            // memory: `size` bytes
  enumeration,       // memory: the file's bytes, an integer of base's size and sign
  object_reference,  // memory: the HDF5 library's own
  region_reference,  // memory: the HDF5 library's own
  compound,          // memory: the members one after the other, without holes
  array,             // memory: elements of base, last index fastest
  sequence,          // memory: {size_t count; void* elements of base}, the HDF5 library's hvl_t
};

enum class ByteOrder { little, big };
enum class Charset { ascii, utf8 };
enum class Padding { null_terminated, null_padded, space_padded };

ByteOrder machine_order() noexcept;

/// Makes a reference, as it lies in memory, to the object at the path. Throws StatementError where
/// there is none. Values know nothing of files, so whoever writes references passes this in.
using ReferenceMaker = std::function<void(const std::string& path, std::byte* element)>;

struct Member;

struct EnumName {
  std::string name;
  std::uint64_t bits = 0;  // the value, sign-extended where the base is signed
};

struct Type {
  Kind kind = Kind::integer;
  std::size_t size = 4;                    // bytes of an element in memory
  std::size_t file_size = 4;               // bytes of an element in the file
  bool is_signed = true;                   // integer, time, enumeration
  ByteOrder order = machine_order();       // in the file
  Charset charset = Charset::utf8;         // text, varying_text
  Padding padding = Padding::null_padded;  // text, varying_text
  std::size_t precision = 0;               // integer, bit_field: bits in use in the file; 0: all
  std::size_t bit_offset = 0;              // integer, bit_field: of the lowest of them
  std::optional<RealFormat> format;        // real: in the file, where it is not the standard one
  std::string tag;                         // opaque
  std::vector<EnumName> names;             // enumeration
  std::vector<std::uint32_t> by_value;     // enumeration: its names' indices, sorted; or none
  std::vector<std::uint32_t> by_text;      // enumeration: likewise
  ReferenceMaker make_reference;           // object_reference: none where it is not to be written
  std::vector<Member> members;             // compound
  std::vector<std::uint64_t> extents;      // array
  std::vector<Type> base;                  // one, for enumeration, array and sequence; else none

  [[nodiscard]] bool is_numeric() const noexcept {
    return kind == Kind::integer || kind == Kind::real || kind == Kind::bit_field ||
           kind == Kind::time;
  }
  /// Whether elements hold memory of their own beyond `size` bytes, which the reader must give
  /// back.
  [[nodiscard]] bool has_varying_parts() const;
  /// Whether the bytes of an element are all of its value: none lies elsewhere or points into a
  /// file.
  [[nodiscard]] bool is_self_contained() const;
  /// Bits that a value has in the file, 64 at most. For integers, bit fields, times and
  /// enumerations.
  [[nodiscard]] std::size_t value_bits() const;
  /// Whether the file holds every number that its form in memory can hold. For integers, bit
  /// fields, reals and enumerations.
  [[nodiscard]] bool is_full_width() const;
  /// How a real number lies in the file.
  [[nodiscard]] RealFormat real_format() const;
  /// Elements of an array; 1 for any other type.
  [[nodiscard]] std::uint64_t array_length() const;
};

struct Member {
  std::string name;
  std::size_t offset = 0;       // in memory
  std::size_t file_offset = 0;  // in the file
  Type type;
};

/// To be called when the last name of an enumeration is known: many are found faster then.
void index_names(Type* enumeration);

/// What is named so in an enumeration; null where nothing is.
const EnumName* find_name(const Type& enumeration, std::string_view text);

/// The name of a value of an enumeration; null where none has it.
const EnumName* name_of(const Type& enumeration, std::uint64_t bits);

/// Bytes of the machine's integer that holds the file's: 1, 2, 4 or 8.
std::size_t integer_size_in_memory(std::size_t file_size);

/// The data-type code of a row that holds one element of the type: VARCHAR for all that has none of
/// its own.
std::int32_t row_code(const Type& type);

/// The code of a row that lists elements of the numeric type; 0 where there is none.
std::int32_t list_code(const Type& element);

/// A member's or value's name as statements write it: between double quotes where it is no plain
/// identifier.
std::string written_name(const std::string& name);

/// The type in the notation of CREATE DATASET, so that it can be pasted back.
std::string notation(const Type& type);

/// A short name for messages: "TINYINT", "CHAR(5)", "COMPOUND".
std::string type_name(const Type& type);

}  // namespace kelvo
