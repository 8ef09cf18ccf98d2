#pragma once
// File-system entries named by wide paths. Paths convert to the system's byte paths as UTF-8.
// No operation throws: failures answer false or an empty result.
#include "oxstring.h"
#include "oxutils_export.h"

#include <string>
#include <vector>

namespace ox {

class file;

/// A path that may or may not exist.
class OX_UTILS_API fsEntry {
public:
    fsEntry() = default;
    explicit fsEntry(const string& path) : mPath(path) {}

    const string& path() const { return mPath; }
    /// The last component of the path ("shader.glsl" of "/a/shader.glsl").
    string name() const;
    bool exists() const;
    /// Moves the entry to `newPath`, replacing an existing file there. On success the entry
    /// names the new path.
    bool rename(const string& newPath);

    friend bool operator==(const fsEntry& a, const fsEntry& b) { return a.mPath == b.mPath; }

protected:
    string mPath;
};

class OX_UTILS_API directory : public fsEntry {
public:
    directory() = default;
    explicit directory(const string& path) : fsEntry(path) {}

    /// This directory with `name` appended as a further component ("a/b" + "c" → "a/b/c").
    directory append(const string& name) const;
    /// The containing directory; the root stays the root.
    directory parent() const;
    /// The regular files directly inside, sorted by name; empty when the directory cannot be read.
    std::vector<file> files() const;
    /// True when the path exists and is a directory.
    bool isDirectory() const;
};

class OX_UTILS_API file : public fsEntry {
public:
    file() = default;
    explicit file(const string& path) : fsEntry(path) {}
    /// The file `name` inside `dir`.
    file(const ox::directory& dir, const string& name);

    /// Reads the whole file as bytes into `content`. False (and `content` empty) when the file
    /// cannot be opened or read.
    bool readAll(std::string& content) const;
    /// The directory that contains the file.
    ox::directory directory() const;
};

/// The directory of a loaded module: the shared library whose file name is
/// "lib<moduleName>.so", possibly followed by a version suffix (".so.1.2"), or exactly
/// `moduleName`; an empty name means the main executable. False when no such module is loaded.
OX_UTILS_API bool getModulePath(const string& moduleName, directory& result);

} // namespace ox
