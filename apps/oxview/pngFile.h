#pragma once
// Writing a read-back frame as a PNG file.
#include <string>

namespace oxview {

/// Writes width·height BGRA pixels, bottom row first (as the scene reads them back), as an 8-bit
/// RGB PNG. The image goes to a temporary file beside `path` that is renamed over `path` only
/// when complete, so a failure leaves no file, not even a partial one. An existing `path` that is
/// not a regular file is left alone. Returns the reason of a failure, empty on success.
std::string writePngFile(const std::string& path, const unsigned char* bgraBottomUp, int width, int height);

} // namespace oxview
