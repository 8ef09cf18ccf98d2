#include "plyHeader.h"

#include <charconv>
#include <limits>

namespace oxview {
namespace {

std::vector<std::string_view> splitWords(std::string_view line) {
    std::vector<std::string_view> words;
    auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; };
    std::size_t i = 0;
    while (i < line.size()) {
        while (i < line.size() && isSpace(line[i])) ++i;
        const std::size_t start = i;
        while (i < line.size() && !isSpace(line[i])) ++i;
        if (i > start) words.push_back(line.substr(start, i - start));
    }
    return words;
}

/// A header line as it may appear in a one-line message: printable and short.
std::string quoted(std::string_view line) {
    constexpr std::size_t kShown = 40;
    std::string text;
    for (std::size_t i = 0; i < line.size() && i < kShown; ++i)
        text += line[i] >= ' ' && line[i] < 127 ? line[i] : '?';
    if (line.size() > kShown) text += "...";
    return "'" + text + "'";
}

/// Bytes of a PLY scalar type, 0 for an unknown name.
int scalarSize(std::string_view type) {
    if (type == "char" || type == "uchar" || type == "int8" || type == "uint8") return 1;
    if (type == "short" || type == "ushort" || type == "int16" || type == "uint16") return 2;
    if (type == "int" || type == "uint" || type == "int32" || type == "uint32" || type == "float" ||
        type == "float32")
        return 4;
    if (type == "double" || type == "float64") return 8;
    return 0;
}

/// The lines of `text`, each without its '\n'; the last one may lack it.
class lineReader {
public:
    explicit lineReader(std::string_view text) : mText(text) {}
    bool next(std::string_view& line) {
        if (mPos >= mText.size()) return false;
        const std::size_t end = mText.find('\n', mPos);
        line = mText.substr(mPos, end == std::string_view::npos ? std::string_view::npos : end - mPos);
        mPos = end == std::string_view::npos ? mText.size() : end + 1;
        return true;
    }
    std::size_t position() const { return mPos; }

private:
    std::string_view mText;
    std::size_t mPos = 0;
};

/// Where the data starts: after the first line that is exactly "end_header"; npos without one.
std::size_t findDataOffset(std::string_view text) {
    lineReader lines(text);
    std::string_view line;
    while (lines.next(line)) {
        const auto words = splitWords(line);
        if (words.size() == 1 && words[0] == "end_header") return lines.position();
    }
    return std::string_view::npos;
}

/// Parses one declaration line into the header; the reason when it is not valid.
std::string parseLine(std::string_view line, plyHeader_t& header, bool& formatSeen) {
    const auto words = splitWords(line);
    if (words.empty() || words[0] == "comment" || words[0] == "obj_info") return {};
    if (words[0] == "format") {
        if (formatSeen) return "header has a second format line";
        if (words.size() != 3) return "bad format line " + quoted(line);
        if (words[1] == "ascii") header.mFormat = plyHeader_t::eFormat::ascii;
        else if (words[1] == "binary_little_endian") header.mFormat = plyHeader_t::eFormat::binaryLittleEndian;
        else if (words[1] == "binary_big_endian") header.mFormat = plyHeader_t::eFormat::binaryBigEndian;
        else return "unknown format " + quoted(words[1]);
        formatSeen = true;
        return {};
    }
    if (words[0] == "element") {
        if (!formatSeen) return "element before the format line";
        std::uint64_t count = 0;
        const std::string_view text = words.size() == 3 ? words[2] : std::string_view();
        const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), count);
        if (text.empty() || error != std::errc() || stop != text.data() + text.size())
            return "bad element line " + quoted(line);
        // The importer counts in 32 bits.
        if (count > std::numeric_limits<std::uint32_t>::max())
            return "element " + quoted(words[1]) + " declares " + std::string(text) + " records, too many";
        header.mElements.push_back({std::string(words[1]), count, {}});
        return {};
    }
    if (words[0] == "property") {
        if (header.mElements.empty()) return "property before any element";
        plyProperty_t property;
        if (words.size() == 5 && words[1] == "list") {
            property.mIsList = true;
            property.mCountSize = scalarSize(words[2]);
            property.mSize = scalarSize(words[3]);
            // A count must be an integer; floating-point counts would be read as garbage.
            const bool integerCount = words[2] != "float" && words[2] != "float32" && words[2] != "double" &&
                                      words[2] != "float64";
            if (property.mCountSize == 0 || property.mSize == 0 || !integerCount)
                return "bad property line " + quoted(line);
            property.mName = std::string(words[4]);
        } else if (words.size() == 3) {
            property.mSize = scalarSize(words[1]);
            if (property.mSize == 0) return "bad property line " + quoted(line);
            property.mName = std::string(words[2]);
        } else {
            return "bad property line " + quoted(line);
        }
        header.mElements.back().mProperties.push_back(std::move(property));
        return {};
    }
    return "unknown header line " + quoted(line);
}

} // namespace

std::uint64_t plyElement_t::minimalRecordBytes() const {
    std::uint64_t bytes = 0;
    for (const plyProperty_t& p : mProperties) {
        const bool corners = mName == "face" && (p.mName == "vertex_indices" || p.mName == "vertex_index");
        bytes += p.mIsList ? std::uint64_t(p.mCountSize) + (corners ? 3u * std::uint64_t(p.mSize) : 0u)
                           : std::uint64_t(p.mSize);
    }
    return bytes;
}

parsedPlyHeader_t parsePlyHeader(std::string_view start, bool wholeFile) {
    auto fail = [](std::string reason) { return parsedPlyHeader_t{std::nullopt, std::move(reason)}; };
    const bool clipped = start.size() > kMaxPlyHeaderBytes;
    if (clipped) start = start.substr(0, kMaxPlyHeaderBytes);

    lineReader lines(start);
    std::string_view line;
    if (!lines.next(line) || splitWords(line) != std::vector<std::string_view>{"ply"})
        return fail("does not start with a 'ply' line");
    const std::size_t dataOffset = findDataOffset(start);
    if (dataOffset == std::string_view::npos)
        return fail(wholeFile && !clipped ? "header has no end_header line"
                                          : "header has no end_header line in its first " +
                                                std::to_string(kMaxPlyHeaderBytes / 1024) + " KiB");

    plyHeader_t header;
    header.mDataOffset = dataOffset;
    bool formatSeen = false;
    while (lines.position() < dataOffset && lines.next(line)) {
        if (lines.position() == dataOffset) break;  // the end_header line itself
        if (std::string reason = parseLine(line, header, formatSeen); !reason.empty()) return fail(std::move(reason));
    }
    if (!formatSeen) return fail("header has no format line");
    if (header.mElements.empty()) return fail("header declares no elements");
    return {std::move(header), {}};
}

} // namespace oxview
