#pragma once

namespace platform {

// The text of a CUDA 3 runtime error, for platforms without a runtime to ask.
const char* errorText(int error);

}  // namespace platform
