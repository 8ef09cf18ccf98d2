#include "oxfilesystem.h"

#include "oxlog.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string_view>
#include <system_error>

#if defined(_WIN32)
#ifndef NOMINMAX
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <link.h>
#endif

namespace ox {
namespace {

namespace fs = std::filesystem;

#if defined(_WIN32)
// Windows paths are wide already.
fs::path toPath(const string& path) { return fs::path(static_cast<const std::wstring&>(path)); }
string fromPath(const fs::path& path) { return string(path.native()); }
#else
// The UTF-8 bytes of the wide path, which is what the system takes on this platform.
fs::path toPath(const string& path) { return fs::path(getMBCS(path)); }
string fromPath(const fs::path& path) { return string::fromMBCtoWC(path.native()); }
#endif

} // namespace

// ---------------------------------------------------------------------------------------------
// fsEntry

string fsEntry::name() const { return fromPath(toPath(mPath).filename()); }

bool fsEntry::exists() const {
    std::error_code ec;
    return !mPath.empty() && fs::exists(toPath(mPath), ec);
}

bool fsEntry::rename(const string& newPath) {
    if (mPath.empty() || newPath.empty()) return false;
    std::error_code ec;
    fs::rename(toPath(mPath), toPath(newPath), ec);
    if (ec) {
        OX_LOG_DEBUG("ox::fsEntry::rename", L"cannot rename \"%ls\" to \"%ls\": %s", mPath.c_str(), newPath.c_str(),
                     ec.message().c_str());
        return false;
    }
    mPath = newPath;
    return true;
}

// ---------------------------------------------------------------------------------------------
// directory

directory directory::append(const string& name) const { return directory(fromPath(toPath(mPath) / toPath(name))); }

directory directory::parent() const {
    fs::path p = toPath(mPath);
    // "a/b/" names the directory b: drop the empty last component before going up.
    if (!p.has_filename() && p.has_relative_path()) p = p.parent_path();
    return directory(fromPath(p.parent_path()));
}

std::vector<file> directory::files() const {
    std::vector<file> result;
    std::error_code ec;
    for (fs::directory_iterator it(toPath(mPath), ec), end; !ec && it != end; it.increment(ec)) {
        std::error_code typeError;
        if (it->is_regular_file(typeError)) result.emplace_back(fromPath(it->path()));
    }
    std::sort(result.begin(), result.end(), [](const file& a, const file& b) { return a.path() < b.path(); });
    return result;
}

bool directory::isDirectory() const {
    std::error_code ec;
    return !mPath.empty() && fs::is_directory(toPath(mPath), ec);
}

// ---------------------------------------------------------------------------------------------
// file

file::file(const ox::directory& dir, const string& name) : fsEntry(dir.append(name).path()) {}

bool file::readAll(std::string& content) const {
    content.clear();
    std::ifstream in(toPath(mPath), std::ios::binary);
    if (!in) return false;
    content.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (in.bad()) {
        content.clear();
        return false;
    }
    return true;
}

ox::directory file::directory() const { return ox::directory(fromPath(toPath(mPath).parent_path())); }

// ---------------------------------------------------------------------------------------------
// getModulePath

#if defined(_WIN32)

// "<name>.dll", "lib<name>.dll" (as MinGW names DLLs) or exactly <name>.
bool getModulePath(const string& moduleName, directory& result) {
    HMODULE module = nullptr; // the executable
    if (!moduleName.empty()) {
        const std::wstring mingwName = L"lib" + moduleName + L".dll";
        module = GetModuleHandleW(mingwName.c_str());
        if (module == nullptr) module = GetModuleHandleW(moduleName.c_str()); // appends ".dll" itself
        if (module == nullptr) return false;
    }
    std::wstring file(MAX_PATH, L'\0');
    for (;;) {
        const DWORD length = GetModuleFileNameW(module, file.data(), static_cast<DWORD>(file.size()));
        if (length == 0) return false;
        if (length < file.size()) {
            file.resize(length);
            break;
        }
        file.resize(file.size() * 2); // truncated
    }
    result = directory(fromPath(fs::path(file).lexically_normal().parent_path()));
    return true;
}

#else

namespace {

// "lib<name>.so", "lib<name>.so.<version>" or exactly <name>.
bool isModuleFile(std::string_view fileName, std::string_view name) {
    if (fileName == name) return true;
    const std::string stem = "lib" + std::string(name) + ".so";
    if (fileName.substr(0, stem.size()) != stem) return false;
    const std::string_view rest = fileName.substr(stem.size());
    return rest.empty() || (rest.size() > 1 && rest[0] == '.' &&
                            std::all_of(rest.begin() + 1, rest.end(), [](char c) { return c == '.' || (c >= '0' && c <= '9'); }));
}

struct moduleSearch {
    std::string name;
    std::string found;
};

int visitModule(dl_phdr_info* info, std::size_t, void* data) {
    auto* search = static_cast<moduleSearch*>(data);
    if (info->dlpi_name == nullptr || *info->dlpi_name == '\0') return 0; // the executable
    const fs::path path(info->dlpi_name);
    if (!isModuleFile(path.filename().native(), search->name)) return 0;
    search->found = info->dlpi_name;
    return 1; // stop
}

} // namespace

bool getModulePath(const string& moduleName, directory& result) {
    std::error_code ec;
    fs::path modulePath;
    if (moduleName.empty()) {
        modulePath = fs::read_symlink("/proc/self/exe", ec);
        if (ec) return false;
    } else {
        moduleSearch search{getMBCS(moduleName), {}};
        if (dl_iterate_phdr(&visitModule, &search) == 0) return false;
        modulePath = search.found;
    }
    // The loader may hold a relative name; the directory is where it was loaded from, not
    // where symbolic links lead.
    const fs::path absolute = fs::absolute(modulePath, ec);
    if (ec) return false;
    result = directory(fromPath(absolute.lexically_normal().parent_path()));
    return true;
}

#endif

} // namespace ox
