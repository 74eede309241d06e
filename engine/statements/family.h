// A statement family: all statements that begin with one verb. Each family lives in a file of its
// own and is one row of family_table.cpp.
#pragma once

#include <memory>
#include <span>
#include <string_view>

#include "answers/row_source.h"
#include "language/parser.h"

namespace kelvo {

class Session;

/// The rows of a statement; null for a statement that has none.
using Answer = std::unique_ptr<RowSource>;

/// Reads the rest of a statement, to its end, and only then runs it.
using StatementFunction = Answer (*)(Parser& parser, Session& session);

/// What a form calls: the HDF5 library, which takes a while to start, or no function of it.
enum class Calls { hdf5, no_hdf5 };

/// One verb, or one form of a family: the words that it begins with, in capitals and separated by
/// one blank.
struct Form {
  std::string_view keywords;
  StatementFunction run;
  Calls calls = Calls::hdf5;
};

/// Runs the form with the most words that stand next in the text. Where none does, the error stands
/// at the first word that no form has there and names those that could stand there.
Answer run_form(std::span<const Form> forms, Parser& parser, Session& session);

/// The families of the language, one row each.
std::span<const Form> statement_families();

Answer run_create(Parser& parser, Session& session);
Answer run_alter(Parser& parser, Session& session);
Answer run_rename(Parser& parser, Session& session);
Answer run_copy(Parser& parser, Session& session);
Answer run_drop(Parser& parser, Session& session);
Answer run_flush(Parser& parser, Session& session);
Answer run_insert(Parser& parser, Session& session);
Answer run_select(Parser& parser, Session& session);
Answer run_show(Parser& parser, Session& session);
Answer run_use(Parser& parser, Session& session);
Answer run_close(Parser& parser, Session& session);
Answer run_set(Parser& parser, Session& session);

}  // namespace kelvo
