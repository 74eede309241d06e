// Shows what the scripted engine answers.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "executor/interrupt.h"
#include "executor/render.h"
#include "support/capture.h"
#include "support/scripted_engine.h"

inline const std::string bold_interrupted = "\x1b[1m(Interrupted by the user)\x1b[0m\n";

inline void raise_flag() { interrupt_status = 1; }

class RenderTest : public testing::Test {
 protected:
  RenderTest() { interrupt_status = 0; }
  ~RenderTest() override { interrupt_status = 0; }

  scripted::Answer& result() { return result_; }

  /// What the display of the scripted result writes; its outcome is kept.
  std::string shown() {
    kelvo_execute("query");
    return capture_stdout([this] { outcome_ = render_result(); });
  }

  RenderOutcome outcome() const { return outcome_; }

  /// The calls that the display made, shorn of the cursor, which must be null in each.
  static scripted::Calls display_calls() {
    scripted::Calls operations;
    for (const std::string& call : scripted::engine().calls()) {
      const std::size_t argument = call.find("(null)");
      if (call != "kelvo_execute(query)") {
        operations.push_back(argument == std::string::npos ? "not null: " + call
                                                           : call.substr(0, argument));
      }
    }
    return operations;
  }

 private:
  static scripted::Answer& fresh_answer() {
    scripted::engine().reset();
    return scripted::engine().answers("query");
  }

  scripted::Answer& result_ = fresh_answer();
  RenderOutcome outcome_ = render_finished;
};
