// Standard output of a call as a string, NUL bytes included.
#pragma once

#include <gtest/gtest.h>

#include <string>

template <typename Function>
std::string capture_stdout(Function function) {
  testing::internal::CaptureStdout();
  function();
  return testing::internal::GetCapturedStdout();
}
