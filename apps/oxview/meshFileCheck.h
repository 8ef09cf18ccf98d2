#pragma once
// Consistency checks of a mesh file's structure, made before the importer sees the file.
#include <cstdint>
#include <string>

namespace oxview {

/// The extension of the file name in lower case, with its dot (".stl"); empty without one.
std::string lowerExtension(const std::string& path);

/// Why the content of `path` (of `size` bytes) cannot be right, judged by its extension; empty
/// when nothing is wrong that these checks look for.
/// - Binary STL: the file size must match the triangle count of its header.
/// - PLY: a well-formed header (the 'ply' line, one format line, element and property
///   declarations, an intact end_header line within kMaxPlyHeaderBytes), and data enough for
///   the declared counts: binary, every record at its smallest size (a face with three corners);
///   ASCII, one non-blank line per record.
/// The importer trusts the counts it is given; a file that lies about them crashed it or made it
/// search forever. Anything subtler is left to the import, which runs in a child process.
std::string checkMeshFileContent(const std::string& path, std::uintmax_t size);

} // namespace oxview
