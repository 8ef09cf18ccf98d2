#pragma once
// Where the PNG of a headless run goes.
#include <string>

namespace oxview {

/// The file to write for `--out PATH`, or why there is none.
struct outputTarget_t {
    std::string mPath;   ///< PATH, or the regular file a symbolic link at PATH leads to
    std::string mError;  ///< "cannot write 'PATH': REASON"; empty when mPath can be written
};

/// Checked before any work starts, so a bad --out fails fast. PATH must not exist or be a regular
/// file; anything else (a directory, device, FIFO, socket) is refused rather than replaced. A
/// symbolic link is followed to the regular file it leads to, which then gets the image while the
/// link stays as it is; a link that leads nowhere, or not to a regular file, is refused. The
/// directory of a new file must exist.
outputTarget_t resolveOutputTarget(const std::string& path);

} // namespace oxview
