// The display of a statement's result.
#pragma once

enum RenderOutcome {
  render_finished,         // no row is left
  render_interrupted,      // by Ctrl-C; its message has been printed
  render_unexpected_type,  // a row of a type that is not shown; its message has been printed
};

/// Walks the engine's default cursor to its end and prints each row on a line of its own, formatted
/// by its data type. Looks at interrupt_status between values.
RenderOutcome render_result();
