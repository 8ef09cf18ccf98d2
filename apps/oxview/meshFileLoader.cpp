#include "meshFileLoader.h"

#include "assimpImport.h"
#include "childProcess.h"
#include "meshFileCheck.h"
#include "meshStream.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <array>
#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>
#include <vector>

namespace oxview {
namespace {

childLimits_t budgetFor(std::uintmax_t fileSize, const meshLoadOptions_t& options) {
    const double seconds = options.mSeconds + options.mSecondsPerMegabyte * static_cast<double>(fileSize) / 1e6;
    const double memory = static_cast<double>(options.mMemory) +
                          static_cast<double>(options.mMemoryPerFileByte) * static_cast<double>(fileSize);
    const auto bytes = memory < 0x1p62 ? static_cast<std::size_t>(memory) : std::size_t(1) << 62;
    // Whatever the child sends back was built within its memory budget, so that bounds it too.
    return {std::chrono::milliseconds(static_cast<long long>(std::ceil(seconds * 1000.0))), bytes, bytes,
            options.mWhileWaiting};
}

/// "12 s", "2.5 s".
std::string secondsText(std::chrono::milliseconds time) {
    char text[32];
    std::snprintf(text, sizeof text, "%g s", static_cast<double>(time.count()) / 1000.0);
    return text;
}

/// Text from the importer made fit for a one-line message: printable and not too long.
std::string oneLine(const std::string& text) {
    constexpr std::size_t kShown = 200;
    std::string line;
    for (std::size_t i = 0; i < text.size() && i < kShown; ++i) line += text[i] >= ' ' && text[i] < 127 ? text[i] : ' ';
    return text.size() > kShown ? line + "..." : line;
}

/// The first informative line the child printed, after ": ". The rulers that sanitizer reports
/// start with are skipped.
std::string messageDetail(const std::string& messages) {
    std::size_t start = 0;
    while (start < messages.size()) {
        std::size_t end = messages.find('\n', start);
        if (end == std::string::npos) end = messages.size();
        const std::string line = messages.substr(start, end - start);
        start = end + 1;
        if (line.find_first_not_of("=-*# \t\r") != std::string::npos) return ": " + oneLine(line);
    }
    return {};
}

/// Why the child did not deliver a result; empty when it did.
std::string childFailure(const childOutcome_t& outcome, const childLimits_t& limits) {
    using eEnd = childOutcome_t::eEnd;
    const std::string mebibytes = std::to_string(limits.mMemory >> 20) + " MiB";
    switch (outcome.mEnd) {
    case eEnd::exited:
        if (outcome.mCode == 0) return {};
        return "the importer failed (exit status " + std::to_string(outcome.mCode) + ")" +
               messageDetail(outcome.mMessages);
    case eEnd::signalled:
        return "the importer crashed (signal " + std::to_string(outcome.mCode) + ")" + messageDetail(outcome.mMessages);
    case eEnd::timedOut:
        return "import took longer than " + secondsText(limits.mTime);
    case eEnd::outOfMemory:
        return "import ran out of its memory budget (" + mebibytes + ")";
    case eEnd::outputTooLarge:
        return "the importer's result exceeds its memory budget (" + mebibytes + ")";
    case eEnd::failedToRun:
        break;
    }
    return "cannot run the importer: " + outcome.mError;
}

/// What the child does: import, convert, and write the mesh or the importer's reason.
int importIntoStream(const std::string& path, int fd) {
    std::string error;
    const std::optional<importedMesh_t> mesh = importWithAssimp(path, error);
    const bool written = mesh ? writeMeshStream(fd, *mesh) : writeMeshStreamError(fd, error);
    return written ? EXIT_SUCCESS : EXIT_FAILURE;
}

bool usableCorner(const float* p) {
    return oxGeo::isUsableCoordinate(p[0]) && oxGeo::isUsableCoordinate(p[1]) && oxGeo::isUsableCoordinate(p[2]);
}

/// The mesh of the triangles whose corners are all usable, with only the vertices they use (an
/// unused far-away vertex would still count in the bounding box). `skipped` counts the others.
std::shared_ptr<oxGeo::mesh3d> buildMesh(const importedMesh_t& imported, std::size_t& skipped) {
    constexpr std::uint32_t kUnmapped = std::numeric_limits<std::uint32_t>::max();
    auto mesh = std::make_shared<oxGeo::mesh3d>();
    mesh->reserve(imported.vertexCount(), imported.triangleCount());
    std::vector<std::uint32_t> meshIndex(imported.vertexCount(), kUnmapped);
    auto map = [&](std::uint32_t v) {
        if (meshIndex[v] == kUnmapped) {
            const float* p = &imported.mPositions[3 * std::size_t(v)];
            meshIndex[v] = mesh->addVertex({p[0], p[1], p[2]});
        }
        return meshIndex[v];
    };
    skipped = 0;
    for (std::size_t t = 0; t < imported.mTriangles.size(); t += 3) {
        const std::uint32_t* corners = &imported.mTriangles[t];
        if (!usableCorner(&imported.mPositions[3 * std::size_t(corners[0])]) ||
            !usableCorner(&imported.mPositions[3 * std::size_t(corners[1])]) ||
            !usableCorner(&imported.mPositions[3 * std::size_t(corners[2])])) {
            ++skipped;
            continue;
        }
        mesh->addTriangle(map(corners[0]), map(corners[1]), map(corners[2]));
    }
    return mesh;
}

/// The usable points, and their mean colour when they have colours; `skipped` counts the others.
void buildPoints(const importedMesh_t& imported, meshLoadResult_t& out, std::size_t& skipped) {
    const bool colored = !imported.mPointColors.empty();
    std::array<double, 3> sum{};
    for (std::size_t i = 0; i < imported.mPoints.size(); ++i) {
        const float* p = &imported.mPositions[3 * std::size_t(imported.mPoints[i])];
        if (!usableCorner(p)) {
            ++skipped;
            continue;
        }
        out.mPoints.push_back({p[0], p[1], p[2]});
        for (int c = 0; colored && c < 3; ++c) sum[c] += imported.mPointColors[3 * i + c];
    }
    if (!colored || out.mPoints.empty()) return;
    std::array<std::uint8_t, 3> mean;
    for (int c = 0; c < 3; ++c) mean[c] = static_cast<std::uint8_t>(sum[c] / double(out.mPoints.size()) + 0.5);
    out.mPointColor = mean;
}

/// The usable segments as polylines: a segment that starts (or ends) where the previous one ended
/// continues its polyline, so a path written as segments is drawn as one strip.
void buildPolylines(const importedMesh_t& imported, meshLoadResult_t& out, std::size_t& skipped) {
    std::vector<std::uint32_t> chain;
    auto flush = [&] {
        if (chain.empty()) return;
        std::vector<oxGeo::point3d> points;
        points.reserve(chain.size());
        for (const std::uint32_t v : chain) {
            const float* p = &imported.mPositions[3 * std::size_t(v)];
            points.push_back({p[0], p[1], p[2]});
        }
        out.mPolylines.emplace_back(std::move(points));
        chain.clear();
    };
    for (std::size_t s = 0; s < imported.mSegments.size(); s += 2) {
        const std::uint32_t a = imported.mSegments[s], b = imported.mSegments[s + 1];
        if (!usableCorner(&imported.mPositions[3 * std::size_t(a)]) ||
            !usableCorner(&imported.mPositions[3 * std::size_t(b)])) {
            ++skipped;
            flush();
            continue;
        }
        if (!chain.empty() && chain.back() == a) {
            chain.push_back(b);
        } else if (!chain.empty() && chain.back() == b) {
            chain.push_back(a);
        } else {
            flush();
            chain = {a, b};
        }
    }
    flush();
}

/// "2 of 10 triangles, 1 of 3 points" for the kinds with skipped items.
std::string skippedTally(const std::size_t (&skipped)[3], const std::size_t (&total)[3]) {
    static const char* const kNames[3] = {" triangles", " points", " line segments"};
    std::string tally;
    for (int k = 0; k < 3; ++k)
        if (skipped[k])
            tally += (tally.empty() ? "" : ", ") + std::to_string(skipped[k]) + " of " + std::to_string(total[k]) +
                     kNames[k];
    return tally;
}

} // namespace

bool isSupportedMeshExtension(const std::string& path) {
    const std::string ext = lowerExtension(path);
    return ext == ".stl" || ext == ".obj" || ext == ".ply";
}

meshLoadResult_t loadMeshFile(const std::string& path, const meshLoadOptions_t& options) {
    auto fail = [](std::string reason) {
        meshLoadResult_t failed;
        failed.mError = std::move(reason);
        return failed;
    };

    std::error_code ec;
    const auto status = std::filesystem::status(path, ec);
    if (ec && ec != std::errc::no_such_file_or_directory) return fail("cannot be read: " + ec.message());
    if (!std::filesystem::exists(status)) return fail("no such file");
    if (std::filesystem::is_directory(status)) return fail("is a directory, not a file");
    if (!isSupportedMeshExtension(path)) {
        const std::string ext = std::filesystem::path(path).extension().string();
        return fail((ext.empty() ? std::string("no file extension") : "unknown extension '" + ext + "'") +
                    " (oxview reads .stl, .obj and .ply)");
    }
    {
        std::ifstream probe(path, std::ios::binary);
        if (!probe) return fail(std::string("cannot be read: ") + std::strerror(errno));
    }
    const std::uintmax_t size = std::filesystem::file_size(path, ec);
    if (size == 0 && !ec) return fail("the file is empty");
    if (std::string reason = checkMeshFileContent(path, size); !reason.empty()) return fail(std::move(reason));

    const childLimits_t limits = budgetFor(size, options);
    const childOutcome_t outcome = runInChild([&](int fd) { return importIntoStream(path, fd); }, limits);
    if (std::string reason = childFailure(outcome, limits); !reason.empty()) return fail(std::move(reason));
    const meshStreamContent_t content = readMeshStream(outcome.mOutput);
    if (!content.mError.empty()) return fail("the importer's result is unusable: " + content.mError);
    if (!content.mMesh) return fail("corrupt or unsupported content: " + oneLine(content.mImportError));

    const importedMesh_t& imported = *content.mMesh;
    meshLoadResult_t result;
    std::size_t skipped[3] = {0, 0, 0};
    const std::size_t total[3] = {imported.triangleCount(), imported.mPoints.size(), imported.segmentCount()};
    result.mMesh = buildMesh(imported, skipped[0]);
    if (result.mMesh->patchCount() == 0) result.mMesh.reset();
    buildPoints(imported, result, skipped[1]);
    buildPolylines(imported, result, skipped[2]);
    char limit[32];
    std::snprintf(limit, sizeof limit, "%g", kMaxCoordinate);
    const std::string tally = skippedTally(skipped, total) + ": a corner is not finite or beyond " + limit +
                              " in magnitude";
    const bool anySkipped = skipped[0] + skipped[1] + skipped[2] > 0;
    if (!result.mMesh && result.mPoints.empty() && result.mPolylines.empty()) {
        if (!anySkipped) return fail("contains no triangles, points or lines");
        // Names what the file had: "no usable triangles", "no usable points or line segments".
        static const char* const kKinds[3] = {"triangles", "points", "line segments"};
        std::string kinds;
        for (int k = 0; k < 3; ++k)
            if (total[k]) kinds += (kinds.empty() ? "" : " or ") + std::string(kKinds[k]);
        return fail("no usable " + kinds + " (skipped " + tally + ")");
    }
    if (anySkipped) result.mWarning = "skipped " + tally;
    return result;
}

} // namespace oxview
