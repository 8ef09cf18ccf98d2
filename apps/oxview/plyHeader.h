#pragma once
// The header of a PLY file: its format and the elements it declares, read without the importer so
// that a damaged or lying header is rejected before the importer trusts it.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace oxview {

struct plyProperty_t {
    std::string mName;
    bool mIsList = false;
    int mSize = 0;       ///< bytes of the value, or of each list item
    int mCountSize = 0;  ///< lists: bytes of the item count
};

struct plyElement_t {
    std::string mName;
    std::uint64_t mCount = 0;
    std::vector<plyProperty_t> mProperties;

    /// The fewest bytes a binary record can take. A face's corner list (vertex_indices or
    /// vertex_index) holds at least three indices; other lists may be empty.
    std::uint64_t minimalRecordBytes() const;
};

struct plyHeader_t {
    enum class eFormat { ascii, binaryLittleEndian, binaryBigEndian };
    eFormat mFormat = eFormat::ascii;
    std::vector<plyElement_t> mElements;
    std::size_t mDataOffset = 0;  ///< where the data starts: just after the end_header line
};

/// The header, or the one-line reason it is unusable.
struct parsedPlyHeader_t {
    std::optional<plyHeader_t> mHeader;
    std::string mError;  ///< e.g. "header has no end_header line"
};

/// Headers longer than this are taken as damaged: the importer would otherwise search the whole
/// file (and for some damage, search forever) for the end of the header.
constexpr std::size_t kMaxPlyHeaderBytes = 64 * 1024;

/// Parses the start of a file (at most kMaxPlyHeaderBytes are looked at). `wholeFile` tells
/// whether `start` is all of the file, which makes the missing-end_header reason precise.
parsedPlyHeader_t parsePlyHeader(std::string_view start, bool wholeFile);

} // namespace oxview
