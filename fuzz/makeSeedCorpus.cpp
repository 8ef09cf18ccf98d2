// Writes the fuzzer's seed corpus: small valid files of every format and flavour oxview reads,
// so that mutation starts from inputs that get past the importers' first checks.
// Usage: makeSeedCorpus DIRECTORY
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

namespace {

static_assert(std::endian::native == std::endian::little, "binary STL and PLY are written little-endian");

// A tetrahedron: four corners, four counter-clockwise faces.
constexpr float kCorners[4][3] = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
constexpr int kFaces[4][3] = {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}};

template <class T>
void put(std::string& bytes, T value, bool bigEndian = false) {
    char raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    if (bigEndian)
        for (std::size_t i = 0; i < sizeof value / 2; ++i) std::swap(raw[i], raw[sizeof value - 1 - i]);
    bytes.append(raw, sizeof value);
}

std::string asciiStl() {
    std::string text = "solid tetrahedron\n";
    for (const auto& f : kFaces) {
        text += "  facet normal 0 0 0\n    outer loop\n";
        for (int i : f)
            text += "      vertex " + std::to_string(kCorners[i][0]) + " " + std::to_string(kCorners[i][1]) + " " +
                    std::to_string(kCorners[i][2]) + "\n";
        text += "    endloop\n  endfacet\n";
    }
    return text + "endsolid tetrahedron\n";
}

std::string binaryStl() {
    std::string bytes = "binary tetrahedron";  // not "solid": that starts an ASCII file
    bytes.resize(80, ' ');
    put(bytes, std::uint32_t(4));
    for (const auto& f : kFaces) {
        for (int k = 0; k < 3; ++k) put(bytes, 0.0f);
        for (int i : f)
            for (float c : kCorners[i]) put(bytes, c);
        put(bytes, std::uint16_t(0));
    }
    return bytes;
}

std::string obj() {
    // A unit cube of quads, with a group, a negative index and a texture coordinate: the paths
    // an OBJ file commonly takes.
    return "# cube\no cube\nv 0 0 0\nv 1 0 0\nv 1 1 0\nv 0 1 0\nv 0 0 1\nv 1 0 1\nv 1 1 1\nv 0 1 1\nvt 0 0\n"
           "g sides\nf 1 4 3 2\nf 5 6 7 8\nf 1/1 2/1 6/1 5/1\nf 2 3 7 6\nf 3 4 8 7\nf -5 -8 -4 -1\n";
}

std::string plyHeader(const char* format) {
    return std::string("ply\nformat ") + format +
           " 1.0\ncomment tetrahedron\nelement vertex 4\nproperty float x\nproperty float y\nproperty float z\n"
           "element face 4\nproperty list uchar int vertex_indices\nend_header\n";
}

std::string asciiPly() {
    std::string text = plyHeader("ascii");
    for (const auto& c : kCorners)
        text += std::to_string(c[0]) + " " + std::to_string(c[1]) + " " + std::to_string(c[2]) + "\n";
    for (const auto& f : kFaces)
        text += "3 " + std::to_string(f[0]) + " " + std::to_string(f[1]) + " " + std::to_string(f[2]) + "\n";
    return text;
}

std::string binaryPly(bool bigEndian) {
    std::string bytes = plyHeader(bigEndian ? "binary_big_endian" : "binary_little_endian");
    for (const auto& c : kCorners)
        for (float v : c) put(bytes, v, bigEndian);
    for (const auto& f : kFaces) {
        put(bytes, std::uint8_t(3));
        for (int i : f) put(bytes, std::int32_t(i), bigEndian);
    }
    return bytes;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: makeSeedCorpus DIRECTORY\n");
        return 2;
    }
    const std::filesystem::path dir(argv[1]);
    std::filesystem::create_directories(dir);
    const std::pair<const char*, std::string> files[] = {
        {"tetrahedron-ascii.stl", asciiStl()},     {"tetrahedron-binary.stl", binaryStl()},
        {"cube.obj", obj()},                       {"tetrahedron-ascii.ply", asciiPly()},
        {"tetrahedron-le.ply", binaryPly(false)}, {"tetrahedron-be.ply", binaryPly(true)},
        // Points, lines, an empty solid: the other primitive kinds and the parts that are skipped.
        {"mixed.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nv 1 1 1 0.5 0.2 0.9\ng empty\ng some\nf 1 2 3\np 4\nl 1 2 4 1\n"},
        {"colored-cloud.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\n"
                              "property float z\nproperty uchar red\nproperty uchar green\nproperty uchar blue\n"
                              "end_header\n0 0 0 255 0 0\n1 0 0 0 255 0\n0 1 0 0 0 255\n"},
        {"two-solids.stl", "solid empty\nendsolid empty\n" + asciiStl()},
    };
    for (const auto& [name, content] : files) {
        std::ofstream out(dir / name, std::ios::binary);
        out << content;
        if (!out) {
            std::fprintf(stderr, "makeSeedCorpus: cannot write %s\n", (dir / name).c_str());
            return 1;
        }
    }
    return 0;
}
