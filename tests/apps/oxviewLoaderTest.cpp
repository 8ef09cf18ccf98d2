// The parts of oxview's loader that stand between a hostile file and the program: the child
// process the import runs in, the stream it reports through, and the PLY header check; and what
// it makes of each kind of primitive.
#include "childProcess.h"
#include "meshFileLoader.h"
#include "meshStream.h"
#include "plyHeader.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace oxview;
using eEnd = childOutcome_t::eEnd;

std::size_t openDescriptors() {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                                                  std::filesystem::directory_iterator()));
}

void put(int fd, const std::string& text) {
    if (::write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size())) std::abort();
}

TEST(childProcessTest, everyWayAChildCanEndIsReportedAndNothingIsLeftBehind) {
    struct row {
        const char* what;
        std::function<int(int)> work;
        eEnd end;
        int code;
        std::string output;    // exactly, for children that exit
        std::string messages;  // a part of what they print
    };
    constexpr std::size_t kMaxOutput = 1 << 20;
    const std::vector<row> rows = {
        {"result", [](int fd) { put(fd, "mesh"); return 0; }, eEnd::exited, 0, "mesh", ""},
        {"status and message", [](int) { std::fputs("no luck\n", stderr); return 3; }, eEnd::exited, 3, "", "no luck"},
        {"printf output, flushed at the end", [](int) { std::printf("buffered"); return 0; }, eEnd::exited, 0, "",
         "buffered"},
        {"an exception", [](int) -> int { throw std::runtime_error("x"); }, eEnd::exited, EXIT_FAILURE, "", ""},
        {"a crash mid-stream", [](int fd) { put(fd, "me"); std::raise(SIGSEGV); return 0; }, eEnd::signalled, SIGSEGV,
         "", ""},
        {"an abort, the caller's handler notwithstanding", [](int) -> int { std::abort(); }, eEnd::signalled, SIGABRT,
         "", ""},
        {"a hang", [](int) { for (;;) ::pause(); return 0; }, eEnd::timedOut, 0, "", ""},
        {"a hang after closing its output",
         [](int fd) {
             ::close(fd);
             ::close(STDOUT_FILENO);
             ::close(STDERR_FILENO);
             for (;;) ::pause();
             return 0;
         },
         eEnd::timedOut, 0, "", ""},
        {"a flood of output",
         [](int fd) {
             const std::string block(65536, 'x');
             for (;;) put(fd, block);
             return 0;
         },
         eEnd::outputTooLarge, 0, "", ""},
        {"a flood of messages with the result",  // never blocks on the unread part
         [](int fd) {
             const std::string block(65536, 'm');
             for (int i = 0; i < 64; ++i) std::fputs(block.c_str(), stderr);
             put(fd, "done");
             return 0;
         },
         eEnd::exited, 0, "done", "mmmm"},
        {"an allocation beyond the memory limit",
         [](int) {
             std::vector<char> huge(std::size_t(1) << 31, 1);
             return int(huge[12345]);
         },
         eEnd::outOfMemory, 0, "", ""},
    };

    // A caller's crash handler must not see the child's crash.
    auto* previous = std::signal(SIGABRT, [](int) { std::_Exit(99); });
    const std::size_t descriptors = openDescriptors();
    for (const row& r : rows) {
        if (r.end == eEnd::outOfMemory && !childMemoryLimitAvailable()) continue;
        const childOutcome_t outcome = runInChild(r.work, {std::chrono::milliseconds(300), 256 << 20, kMaxOutput, {}});
        EXPECT_EQ(outcome.mEnd, r.end) << r.what << ": " << outcome.mError;
        EXPECT_EQ(outcome.mCode, r.code) << r.what;
        if (r.end == eEnd::exited) {
            EXPECT_EQ(std::string(outcome.mOutput.begin(), outcome.mOutput.end()), r.output) << r.what;
        }
        EXPECT_NE(outcome.mMessages.find(r.messages), std::string::npos) << r.what << ": " << outcome.mMessages;
        EXPECT_LE(outcome.mMessages.size(), 4096u) << r.what;
        EXPECT_LE(outcome.mOutput.size(), kMaxOutput) << r.what;
    }
    std::signal(SIGABRT, previous);
    EXPECT_EQ(openDescriptors(), descriptors) << "no pipe left open";
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "no child left, running or zombie";
    EXPECT_EQ(errno, ECHILD);
}

std::vector<char> streamOf(const std::function<bool(int)>& write) {
    int fds[2];
    EXPECT_EQ(::pipe(fds), 0);
    EXPECT_TRUE(write(fds[1]));
    ::close(fds[1]);
    std::vector<char> bytes;
    char buffer[4096];
    for (ssize_t n; (n = ::read(fds[0], buffer, sizeof buffer)) > 0;) bytes.insert(bytes.end(), buffer, buffer + n);
    ::close(fds[0]);
    return bytes;
}

TEST(meshStreamTest, aMeshOrAReasonArrivesIntactAndEveryDamagedStreamIsRefused) {
    const importedMesh_t square{{0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0}, {0, 1, 2, 0, 2, 3}, {}, {}, {}};
    const std::vector<char> good = streamOf([&](int fd) { return writeMeshStream(fd, square); });
    const meshStreamContent_t read = readMeshStream(good);
    ASSERT_TRUE(read.mMesh) << read.mError;
    EXPECT_EQ(read.mMesh->mPositions, square.mPositions);
    EXPECT_EQ(read.mMesh->mTriangles, square.mTriangles);

    const meshStreamContent_t empty = readMeshStream(streamOf([](int fd) { return writeMeshStream(fd, {}); }));
    ASSERT_TRUE(empty.mMesh) << empty.mError;
    EXPECT_EQ(empty.mMesh->vertexCount(), 0u);

    const meshStreamContent_t rejected = readMeshStream(streamOf([](int fd) { return writeMeshStreamError(fd, "bad"); }));
    EXPECT_FALSE(rejected.mMesh);
    EXPECT_EQ(rejected.mImportError, "bad");
    EXPECT_EQ(rejected.mError, "");

    // A child that dies mid-stream leaves a prefix: none may pass.
    for (std::size_t size = 0; size < good.size(); ++size)
        EXPECT_NE(readMeshStream({good.begin(), good.begin() + static_cast<long>(size)}).mError, "") << size;

    // Signature 8, then per section kind, reserved (4 + 4) and size (8); the vertex data is 48
    // bytes, so the first index sits at 8 + 16 + 48 + 16.
    const std::size_t firstIndex = 88;
    std::vector<char> beyond = good;
    const std::uint32_t four = 4;
    std::memcpy(&beyond[firstIndex], &four, 4);
    EXPECT_EQ(readMeshStream(beyond).mError, "triangle 0 refers to vertex 4 of 4");
    std::vector<char> trailing = good;
    trailing.push_back(0);
    EXPECT_EQ(readMeshStream(trailing).mError, "data follows the end marker");
    std::vector<char> unknownKind = good;  // a section of a later kind, placed before the end marker
    const char section[20] = {9, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0, 'l', 'i', 'n', 'e'};
    unknownKind.insert(unknownKind.end() - 16, section, section + sizeof section);
    EXPECT_TRUE(readMeshStream(unknownKind).mMesh) << readMeshStream(unknownKind).mError;

    // Points with their colours and line segments travel alike, and are checked alike.
    importedMesh_t mixed = square;
    mixed.mPoints = {3, 1};
    mixed.mPointColors = {255, 0, 0, 0, 0, 255};
    mixed.mSegments = {0, 1, 1, 2};
    const meshStreamContent_t back = readMeshStream(streamOf([&](int fd) { return writeMeshStream(fd, mixed); }));
    ASSERT_TRUE(back.mMesh) << back.mError;
    EXPECT_EQ(back.mMesh->mPoints, mixed.mPoints);
    EXPECT_EQ(back.mMesh->mPointColors, mixed.mPointColors);
    EXPECT_EQ(back.mMesh->mSegments, mixed.mSegments);
    const struct {
        std::function<void(importedMesh_t&)> damage;
        std::string error;
    } damaged[] = {
        {[](importedMesh_t& m) { m.mPoints = {0, 4}; }, "point 1 refers to vertex 4 of 4"},
        {[](importedMesh_t& m) { m.mSegments = {0, 1, 2, 7}; }, "line segment 1 refers to vertex 7 of 4"},
        {[](importedMesh_t& m) { m.mPointColors = {1, 2}; }, "bad point colour section"},
        {[](importedMesh_t& m) { m.mPointColors = {1, 2, 3}; }, "the point colours do not match the points"},
    };
    for (const auto& d : damaged) {
        importedMesh_t bad = mixed;
        d.damage(bad);
        EXPECT_EQ(readMeshStream(streamOf([&](int fd) { return writeMeshStream(fd, bad); })).mError, d.error);
    }
}

TEST(meshFileLoaderTest, trianglesPointsAndLinesAreLoadedAsWhatTheyAre) {
    const std::filesystem::path dir =
        std::filesystem::temp_directory_path() / ("oxviewLoaderTest-" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir);
    const std::string square = "v 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\n";
    const std::string triangle =
        "facet normal 0 0 1\nouter loop\nvertex 0 0 0\nvertex 1 0 0\nvertex 0 1 0\nendloop\nendfacet\n";
    using color_t = std::optional<std::array<std::uint8_t, 3>>;
    const struct {
        std::string name, text;
        std::size_t triangles, points;
        std::vector<std::size_t> polylines;  // their point counts
        color_t pointColor;
    } rows[] = {
        {"cloud.ply",
         "ply\nformat ascii 1.0\nelement vertex 2\nproperty float x\nproperty float y\nproperty float z\n"
         "property uchar red\nproperty uchar green\nproperty uchar blue\nend_header\n0 0 0 255 0 0\n1 0 0 0 0 255\n",
         0, 2, {}, std::array<std::uint8_t, 3>{128, 0, 128}},
        {"points.obj", square + "p 1 2 3\n", 0, 3, {}, std::nullopt},
        {"chained.obj", square + "l 1 2\nl 2 3\nl 4 3\nl 4 1\n", 0, 0, {5}, std::nullopt},
        {"apart.obj", square + "l 1 2\nl 3 4\n", 0, 0, {2, 2}, std::nullopt},
        {"mixed.obj", square + "f 1 2 3\np 4\nl 1 4\n", 1, 1, {2}, std::nullopt},
        {"emptySolid.stl", "solid a\nendsolid a\nsolid b\n" + triangle + "endsolid b\n", 1, 0, {}, std::nullopt},
        {"emptyGroup.obj", "g nothing\ng some\n" + square + "f 1 2 3\n", 1, 0, {}, std::nullopt},
    };
    for (const auto& r : rows) {
        const std::string path = (dir / r.name).string();
        std::ofstream(path) << r.text;
        const meshLoadResult_t loaded = loadMeshFile(path);
        ASSERT_EQ(loaded.mError, "") << r.name;
        EXPECT_EQ(loaded.mMesh ? std::size_t(loaded.mMesh->patchCount()) : 0, r.triangles) << r.name;
        EXPECT_EQ(loaded.mPoints.size(), r.points) << r.name;
        std::vector<std::size_t> polylines;
        for (const auto& polyline : loaded.mPolylines) polylines.push_back(polyline.size());
        EXPECT_EQ(polylines, r.polylines) << r.name;
        EXPECT_EQ(loaded.mPointColor, r.pointColor) << r.name;
    }
    std::filesystem::remove_all(dir);
}

TEST(plyHeaderTest, headersAreReadOrRefusedWithTheirReason) {
    const std::string fine = "ply\nformat binary_little_endian 1.0\ncomment made by hand\nelement vertex 3\n"
                             "property float x\nproperty float y\nproperty float z\nelement face 1\n"
                             "property list uchar int vertex_indices\nend_header\n";
    const parsedPlyHeader_t parsed = parsePlyHeader(fine + "\x01\x02 binary data", false);
    ASSERT_TRUE(parsed.mHeader) << parsed.mError;
    EXPECT_EQ(parsed.mHeader->mDataOffset, fine.size());
    ASSERT_EQ(parsed.mHeader->mElements.size(), 2u);
    EXPECT_EQ(parsed.mHeader->mElements[0].minimalRecordBytes(), 12u);
    EXPECT_EQ(parsed.mHeader->mElements[1].minimalRecordBytes(), 13u) << "a count and three corners";

    auto replaced = [&](const std::string& from, const std::string& to) {
        std::string text = fine;
        return text.replace(text.find(from), from.size(), to);
    };
    const std::string longComment = "comment " + std::string(kMaxPlyHeaderBytes, 'c') + "\n";
    const struct {
        std::string text;
        bool whole;
        std::string error;
    } rows[] = {
        {"PLY\n" + fine.substr(4), true, "does not start with a 'ply' line"},
        {replaced("end_header", "end_heade"), true, "header has no end_header line"},
        {replaced("end_header", "end_header x"), true, "header has no end_header line"},
        {replaced("comment", longComment), false, "header has no end_header line in its first 64 KiB"},
        {replaced("format binary_little_endian 1.0\n", ""), true, "element before the format line"},
        {replaced("comment made", "format ascii 1.0\ncomment made"), true, "header has a second format line"},
        {replaced("binary_little_endian", "binary_middle_endian"), true, "unknown format 'binary_middle_endian'"},
        {replaced("element vertex 3", "element vertex 4294967296"), true,
         "element 'vertex' declares 4294967296 records, too many"},
        {replaced("element vertex 3", "element vertex -3"), true, "bad element line 'element vertex -3'"},
        {replaced("element vertex 3\n", ""), true, "property before any element"},
        {replaced("float x", "quad x"), true, "bad property line 'property quad x'"},
        {replaced("uchar int", "float int"), true, "bad property line 'property list float int vertex_indices'"},
        {replaced("comment", "\x7f\x01garbage"), true, "unknown header line '??garbage made by hand'"},
    };
    for (const auto& r : rows) EXPECT_EQ(parsePlyHeader(r.text, r.whole).mError, r.error) << r.text.substr(0, 80);
}

} // namespace
