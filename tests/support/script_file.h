// Scripts of the scripted engine as text, one line a fact. A line is a keyword and, after one
// blank, its arguments; TEXT runs to the end of the line and writes a backslash as "\\" and any
// other byte, where wanted, as "\xHH".
//
//   compiler TEXT            what the engine says about itself
//   architecture TEXT
//   group TEXT               group in use, in the order in which it is asked for; the last one
//   stays no-group                 likewise: NULL statement TEXT           opens the answer to a
//   statement, which the lines below belong to row TYPE NUMBER...       a row of numbers by its
//   type code; one number for a scalar type characters TYPE TEXT     a CHAR row text TYPE TEXT a
//   VARCHAR row null-text TYPE           a VARCHAR row that is a null string claiming NUMBER the
//   row above claims this many elements count NUMBER             number of elements returned, as
//   the engine reports it ending-with NUMBER       result of the `next` operations at the end of
//   rows and elements fails STATUS POSITION TEXT using-group TEXT         group in use from then on
//   using-no-group
//   interrupted-in OPERATION NUMBER   SIGINT is raised in this call of the operation, counted from
//   1 waiting-in OPERATION NUMBER       that call says "waiting" in the record and lasts until
//   SIGINT was handled
//
// Empty lines and lines that begin with '#' are skipped.
#pragma once

#include <istream>

#include "support/scripted_engine.h"

namespace scripted {

/// Adds a script to the engine. Throws std::runtime_error that quotes the first line it cannot
/// read.
void read_script(std::istream& script, ScriptedEngine* engine);

}  // namespace scripted
