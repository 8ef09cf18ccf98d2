#include "outputTarget.h"

#include <cerrno>
#include <cstring>
#include <filesystem>

#include <sys/stat.h>

namespace oxview {
namespace {

std::string kindOf(mode_t mode) {
    if (S_ISDIR(mode)) return "a directory";
    if (S_ISCHR(mode)) return "a character device";
    if (S_ISBLK(mode)) return "a block device";
    if (S_ISFIFO(mode)) return "a FIFO";
    if (S_ISSOCK(mode)) return "a socket";
    return "a special file";
}

} // namespace

outputTarget_t resolveOutputTarget(const std::string& path) {
    namespace fs = std::filesystem;
    auto fail = [&](const std::string& reason) { return outputTarget_t{{}, "cannot write '" + path + "': " + reason}; };

    struct stat link {};
    if (::lstat(path.c_str(), &link) != 0) {
        if (errno != ENOENT) return fail(std::strerror(errno));
        const fs::path target(path);
        const fs::path directory = target.parent_path().empty() ? fs::path(".") : target.parent_path();
        std::error_code ec;
        if (!fs::is_directory(directory, ec))
            return fail("the directory '" + directory.string() + "' does not exist");
        return {path, {}};
    }
    if (S_ISREG(link.st_mode)) return {path, {}};
    if (!S_ISLNK(link.st_mode)) return fail("it is " + kindOf(link.st_mode) + ", not a regular file");

    std::error_code ec;
    const fs::path resolved = fs::canonical(path, ec);
    struct stat target {};
    if (ec || ::stat(resolved.c_str(), &target) != 0)
        return fail("it is a symbolic link that leads nowhere (" + (ec ? ec.message() : std::strerror(errno)) + ")");
    if (!S_ISREG(target.st_mode))
        return fail("it is a symbolic link to " + kindOf(target.st_mode) + ", not to a regular file");
    return {resolved.string(), {}};
}

} // namespace oxview
