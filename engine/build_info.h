// How this engine was built.
#pragma once

namespace kelvo {

const char* version() noexcept;       // of the engine
const char* compiler() noexcept;      // with its version
const char* architecture() noexcept;  // of the machine that it runs on

/// What everything that needs MPI answers.
constexpr const char* without_mpi = "This engine was built without MPI";

}  // namespace kelvo
