// libFuzzer target of the mesh loader: every input is tried as an STL, an OBJ and a PLY file
// through loadMeshFile, exactly as oxview loads its files. A crash, hang or sanitizer report in
// this process is a finding. The import runs in a child process whose coverage libFuzzer cannot
// see; the child's own sanitizer reports come back in the failure reason and are printed.
#include "meshFileLoader.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <unistd.h>

namespace {

/// A private directory for the input file, removed at exit (the import children end with _exit
/// and never remove it).
class scratchDirectory {
public:
    scratchDirectory() {
        std::string pattern = (std::filesystem::temp_directory_path() / "meshLoaderFuzzer.XXXXXX").string();
        if (!::mkdtemp(pattern.data())) std::abort();
        mPath = pattern;
    }
    ~scratchDirectory() {
        std::error_code ec;
        std::filesystem::remove_all(mPath, ec);
    }
    const std::string& path() const { return mPath; }

private:
    std::string mPath;
};

bool writeFile(const std::string& path, const std::uint8_t* data, std::size_t size) {
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (!file) return false;
    const bool written = std::fwrite(data, 1, size, file) == size;
    return std::fclose(file) == 0 && written;
}

/// What every load must hold to: usable triangles, points or polylines, or one line of reason.
void checkResult(const oxview::meshLoadResult_t& result) {
    if (!result.mError.empty()) {
        if (result.mError.empty() || result.mError.find('\n') != std::string::npos) std::abort();
        // Only a failed child's own first line can name a sanitizer; the input may spell the words
        // anywhere else (libFuzzer's comparison tracing soon finds them).
        const bool childFailed = result.mError.rfind("the importer failed (exit status ", 0) == 0;
        if (childFailed && (result.mError.find("Sanitizer") != std::string::npos ||
                            result.mError.find("runtime error") != std::string::npos))
            std::fprintf(stderr, "meshLoaderFuzzer: sanitizer report in the import child: %s\n", result.mError.c_str());
        return;
    }
    if (!result.mMesh && result.mPoints.empty() && result.mPolylines.empty()) std::abort();
    if (result.mMesh) {
        if (result.mMesh->patchCount() == 0) std::abort();
        for (const auto& patch : result.mMesh->patches())
            for (int c = 0; c < patch.cornerCount(); ++c)
                if (!oxGeo::isUsable(patch.corner(c))) std::abort();
    }
    for (const auto& p : result.mPoints)
        if (!oxGeo::isUsable(p)) std::abort();
    for (const auto& polyline : result.mPolylines) {
        if (polyline.points().size() < 2) std::abort();
        for (const auto& p : polyline.points())
            if (!oxGeo::isUsable(p)) std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const scratchDirectory directory;
    // Short budgets: a well-formed input of libFuzzer's sizes loads in milliseconds.
    oxview::meshLoadOptions_t options;
    options.mSeconds = 2.0;
    options.mSecondsPerMegabyte = 1.0;
    for (const char* extension : {".stl", ".obj", ".ply"}) {
        const std::string path = directory.path() + "/input" + extension;
        if (!writeFile(path, data, size)) std::abort();
        checkResult(oxview::loadMeshFile(path, options));
        std::filesystem::remove(path);
    }
    return 0;
}
