// One stream for all files of lines; they differ in how a line is cut into fields.
#include "import/table_file.h"

#include <algorithm>
#include <vector>

#include "error.h"
#include "import/field.h"
#include "import/line_reader.h"
#include "import/number_lines.h"
#include "import/record.h"

namespace kelvo {
namespace {

constexpr std::size_t elements_per_block = 16384;

struct Column {
  std::string name;
  std::size_t offset;
  const Type* type;
  NumberReader read;  // null where fields need more than reading a number
};

struct TableForm {
  Cutter cut;
  char separator;       // of lines without anything to unescape; ' ' stands for any blanks
  bool nested_members;  // have columns of their own
};

class TableStream : public ElementStream {
 public:
  TableStream(const std::string& path, const Type& type, TableForm form, bool header)
      : lines_(path), form_(form), header_(header), is_compound_(type.kind == Kind::compound) {
    if (is_compound_) {
      add_members("", type, 0);
    } else {
      columns_.push_back({"VALUE", 0, &type, number_reader(type)});
    }
  }

  void read_all(const Type& type, const Taker& take) override {
    EncodedElements block(type);
    std::string_view line;
    read_first(block);
    for (;;) {
      add_number_lines(block, take);
      if (!next_line(&line)) break;
      cut(line);
      add_record(block);
      take_full(block, take);
    }
    take(block);
  }

 private:
  void add_members(const std::string& prefix, const Type& type, std::size_t offset) {
    for (const Member& member : type.members) {
      const std::size_t place = offset + member.offset;
      if (member.type.kind == Kind::compound && form_.nested_members) {
        add_members(prefix + member.name + ".", member.type, place);
      } else {
        columns_.push_back({prefix + member.name, place, &member.type, number_reader(member.type)});
      }
    }
  }

  // The first line may be a header, and tells how many columns there are.
  void read_first(EncodedElements& block) {
    std::string_view line;
    if (!next_line(&line)) return;
    cut(line);
    const bool names = names_columns();
    if (header_ || (names && !can_be_values(block.type()))) {
      if (names) order_columns();
      if (!next_line(&line)) return;
      cut(line);
      header_ = true;
    }
    width_ = is_compound_ ? columns_.size() : record_.fields.size();
    prepare_numbers(block.type());
    add_record(block);
  }

  bool names_columns() const {
    return std::is_permutation(
        columns_.begin(), columns_.end(), record_.fields.begin(), record_.fields.end(),
        [](const auto& one, const auto& other) { return name_of(one) == name_of(other); });
  }
  static std::string_view name_of(const Column& column) { return column.name; }
  static std::string_view name_of(std::string_view field) { return field; }

  // Strings that happen to be the names are values, unless HEADER says otherwise.
  bool can_be_values(const Type& type) const {
    EncodedElements trial(type);
    trial.append_room(1);
    try {
      for (std::size_t i = 0; i < columns_.size(); ++i)
        put_field(trial, *columns_[i].type, columns_[i].offset, record_.fields[i]);
    } catch (const StatementError&) {
      return false;
    }
    return true;
  }

  void order_columns() {
    for (std::size_t i = 0; i < columns_.size(); ++i) {
      const auto named =
          std::find_if(columns_.begin() + static_cast<std::ptrdiff_t>(i), columns_.end(),
                       [&](const Column& column) { return column.name == record_.fields[i]; });
      std::iter_swap(columns_.begin() + static_cast<std::ptrdiff_t>(i), named);
    }
  }

  // An empty line holds nothing, unless a single column of text may be empty.
  bool next_line(std::string_view* line) {
    const bool may_be_empty = columns_.size() == 1 && is_text(columns_[0].type->kind);
    do {
      if (!lines_.next(line)) return false;
    } while (line->empty() && !may_be_empty);
    return true;
  }

  void cut(std::string_view line) {
    record_.clear();
    record_.line = lines_.line_number();
    form_.cut(lines_, line, &record_);
  }

  static void take_full(EncodedElements& block, const Taker& take) {
    if (block.count() < elements_per_block) return;
    take(block);
    block.clear();
  }

  // Where all columns are of numbers that are just read.
  void prepare_numbers(const Type& type) {
    const bool readable = std::all_of(columns_.begin(), columns_.end(),
                                      [](const Column& column) { return column.read != nullptr; });
    if (!readable || width_ == 0) return;
    line_.separator = form_.separator;
    line_.elements = is_compound_ ? 1 : width_;
    line_.element_bytes = type.size;
    for (const Column& column : columns_) line_.fields.push_back({column.offset, column.read});
    lines_at_once_ = std::max<std::size_t>(1, elements_per_block / line_.elements);
    numbers_.resize(lines_at_once_ * line_.elements * type.size);
    read_lines_ = lines_reader(line_);
  }

  // Lines of nothing but numbers, up to one that holds anything else.
  void add_number_lines(EncodedElements& block, const Taker& take) {
    if (read_lines_ == nullptr) return;
    for (std::string_view text = lines_.whole_lines(); !text.empty(); text = lines_.whole_lines()) {
      const LinesRead read = read_lines_(line_, text, lines_at_once_, numbers_.data());
      lines_.pass_lines(read.bytes, read.lines);
      block.append_bytes(numbers_.data(), read.lines * line_.elements);
      take_full(block, take);
      if (read.lines < lines_at_once_ && read.bytes < text.size()) return;
    }
  }

  void add_record(EncodedElements& elements) {
    if (is_whole_compound()) {
      elements.append_room(1);
      put(elements, {"", 0, &elements.type(), nullptr}, 0);
      return;
    }
    if (record_.fields.size() != width_) fail_width();
    if (is_compound_) elements.append_room(1);
    for (std::size_t i = 0; i < width_; ++i) {
      if (!is_compound_) elements.append_room(1);
      put(elements, columns_[is_compound_ ? i : 0], i);
    }
  }

  // {id: 1, name: 'a'}: how .txt files hold a compound that is one item.
  bool is_whole_compound() const {
    return is_compound_ && record_.fields.size() == 1 && record_.fields[0].starts_with('{') &&
           record_.fields[0].ends_with('}');
  }

  [[noreturn]] void fail_width() const {
    const std::size_t count = record_.fields.size();
    lines_.fail(
        record_.line, 0,
        StatementError(Status::out_of_range, std::to_string(width_) +
                                                 (width_ == 1 ? " column is" : " columns are") +
                                                 " needed, the line has " + std::to_string(count)));
  }

  void put(EncodedElements& elements, const Column& column, std::size_t field) {
    try {
      put_field(elements, *column.type, column.offset, record_.fields[field]);
    } catch (const StatementError& error) {
      const bool hint = record_.line == 1 && !header_ && error.status() == Status::wrong_kind;
      const std::string message =
          error.what() + std::string(hint ? " (HEADER behind the file skips a line of names)" : "");
      lines_.fail(record_.line, field + 1, StatementError(error.status(), message));
    }
  }

  LineReader lines_;
  TableForm form_;
  bool header_;
  bool is_compound_;
  std::vector<Column> columns_;
  Record record_;
  std::size_t width_ = 0;
  NumberLine line_;
  LinesReader read_lines_ = nullptr;  // null where lines hold more than plain numbers
  std::size_t lines_at_once_ = 0;
  std::vector<std::byte> numbers_;  // of those lines
};

}  // namespace

std::unique_ptr<ElementStream> open_csv(const std::string& path, const Type& type, bool header) {
  return std::make_unique<TableStream>(path, type, TableForm{cut_csv, ',', true}, header);
}

std::unique_ptr<ElementStream> open_tsv(const std::string& path, const Type& type, bool header) {
  return std::make_unique<TableStream>(path, type, TableForm{cut_tsv, '\t', true}, header);
}

std::unique_ptr<ElementStream> open_txt(const std::string& path, const Type& type, bool header) {
  TableForm form{cut_nothing, '\n', false};
  if (type.kind == Kind::compound) form = {cut_tabs, '\t', false};
  if (type.is_numeric()) form = {cut_numbers, ' ', false};
  return std::make_unique<TableStream>(path, type, form, header);
}

}  // namespace kelvo
