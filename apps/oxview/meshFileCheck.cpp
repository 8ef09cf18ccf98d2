#include "meshFileCheck.h"

#include "plyHeader.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <vector>

namespace oxview {
namespace {

/// A binary STL file's size must match the triangle count in its header. The importer rejects
/// a mismatch with "Failed to determine STL storage representation"; this names the cause.
std::string checkBinaryStl(std::ifstream& in, std::uintmax_t size) {
    constexpr std::uintmax_t kHeader = 84, kRecord = 50;
    char head[kHeader];
    if (size < kHeader || !in.read(head, kHeader)) return {};
    std::uint32_t count = 0;
    std::memcpy(&count, head + 80, 4);  // little-endian, as the format stores it
    const std::uintmax_t expected = kHeader + kRecord * count;
    // ASCII files start with "solid"; a binary header may too, but then its size fits exactly.
    if (std::strncmp(head, "solid", 5) == 0 && size != expected) return {};
    if (size < expected)
        return "corrupt binary STL: truncated (the header announces " + std::to_string(count) + " triangles in " +
               std::to_string(expected) + " bytes, the file has " + std::to_string(size) + ")";
    if (count == 0) return "contains no triangles (empty mesh)";
    return {};
}

/// "3 vertex, 2 face" for the message of a truncated file.
std::string declaredCounts(const plyHeader_t& header) {
    std::string text;
    for (const plyElement_t& e : header.mElements)
        text += (text.empty() ? "" : ", ") + std::to_string(e.mCount) + " " + e.mName;
    return text;
}

/// The non-blank lines of the ASCII data from the stream's position, counted until `needed`.
std::uint64_t countDataLines(std::ifstream& in, std::uint64_t needed) {
    std::vector<char> buffer(64 * 1024);
    std::uint64_t lines = 0;
    bool content = false;  // the current line has a non-blank character
    while (lines < needed && in) {
        in.read(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        const auto got = static_cast<std::size_t>(in.gcount());
        for (std::size_t i = 0; i < got; ++i) {
            const char c = buffer[i];
            if (c == '\n') {
                lines += content;
                content = false;
            } else if (!std::isspace(static_cast<unsigned char>(c))) {
                content = true;
            }
        }
    }
    return lines + content;
}

std::string checkPly(std::ifstream& in, std::uintmax_t size) {
    std::string start(static_cast<std::size_t>(std::min<std::uintmax_t>(size, kMaxPlyHeaderBytes)), '\0');
    in.read(start.data(), static_cast<std::streamsize>(start.size()));
    start.resize(static_cast<std::size_t>(in.gcount()));
    const parsedPlyHeader_t parsed = parsePlyHeader(start, start.size() == size);
    if (!parsed.mHeader) return "corrupt PLY: " + parsed.mError;
    const plyHeader_t& header = *parsed.mHeader;

    const std::uintmax_t dataBytes = size - header.mDataOffset;
    if (header.mFormat == plyHeader_t::eFormat::ascii) {
        std::uint64_t records = 0;
        for (const plyElement_t& e : header.mElements) records += e.mCount;
        in.clear();
        in.seekg(static_cast<std::streamoff>(header.mDataOffset));
        const std::uint64_t lines = countDataLines(in, records);
        if (lines < records)
            return "corrupt PLY: truncated (the header declares " + std::to_string(records) + " records (" +
                   declaredCounts(header) + "), the file has " + std::to_string(lines) + " data lines)";
        return {};
    }
    // Counts are below 2^32 and records below 2^20 bytes (the header is short), so no sum overflows.
    std::uint64_t needed = 0;
    for (const plyElement_t& e : header.mElements) needed += e.mCount * e.minimalRecordBytes();
    if (needed > dataBytes)
        return "corrupt PLY: truncated (the header declares " + declaredCounts(header) + " records, at least " +
               std::to_string(needed) + " bytes of data; the file has " + std::to_string(dataBytes) + ")";
    return {};
}

} // namespace

std::string lowerExtension(const std::string& path) {
    std::string ext = std::filesystem::path(path).extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return ext;
}

std::string checkMeshFileContent(const std::string& path, std::uintmax_t size) {
    const std::string ext = lowerExtension(path);
    if (ext != ".stl" && ext != ".ply") return {};
    std::ifstream in(path, std::ios::binary);
    if (!in) return {};  // the importer reports unreadable files
    return ext == ".stl" ? checkBinaryStl(in, size) : checkPly(in, size);
}

} // namespace oxview
