// How this engine was built.
#pragma once

namespace kelvo {

const char* version() noexcept;       // of the engine
const char* compiler() noexcept;      // with its version
const char* architecture() noexcept;  // of the machine that it runs on

}  // namespace kelvo
