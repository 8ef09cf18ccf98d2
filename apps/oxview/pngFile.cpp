#include "pngFile.h"

#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

namespace oxview {
namespace {

/// libpng reports errors by longjmp; this function holds no object with a destructor, so the
/// jump skips nothing. Returns libpng's message, empty on success.
std::string encode(std::FILE* file, png_bytep* rows, int width, int height) {
    static thread_local char message[256];
    message[0] = '\0';
    png_structp png = png_create_write_struct(
        PNG_LIBPNG_VER_STRING, nullptr,
        [](png_structp p, png_const_charp text) {
            std::snprintf(message, sizeof message, "%s", text);
            png_longjmp(p, 1);
        },
        [](png_structp, png_const_charp) {});
    if (!png) return "libpng could not start";
    png_infop info = png_create_info_struct(png);
    if (!info || setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, info ? &info : nullptr);
        return message[0] ? message : "libpng could not start";
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, static_cast<png_uint_32>(width), static_cast<png_uint_32>(height), 8, PNG_COLOR_TYPE_RGB,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    png_write_image(png, rows);
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    return {};
}

/// Removes the temporary file unless the rename took it.
class temporaryFile {
public:
    explicit temporaryFile(std::string pattern) : mPath(std::move(pattern)) {
        mDescriptor = mkstemp(mPath.data());
        if (mDescriptor < 0) mPath.clear();
    }
    ~temporaryFile() {
        if (mFile) std::fclose(mFile);
        else if (mDescriptor >= 0) ::close(mDescriptor);
        if (!mPath.empty()) ::unlink(mPath.c_str());
    }
    temporaryFile(const temporaryFile&) = delete;
    temporaryFile& operator=(const temporaryFile&) = delete;

    bool isOpen() const { return mDescriptor >= 0; }
    /// The stream over the descriptor; it owns the descriptor from then on.
    std::FILE* stream() {
        if (!mFile && mDescriptor >= 0) mFile = fdopen(mDescriptor, "wb");
        return mFile;
    }
    /// Flushes and closes; false with errno set when the data did not reach the file.
    bool close() {
        std::FILE* f = mFile;
        mFile = nullptr;
        mDescriptor = -1;
        return f && std::fflush(f) == 0 && fsync(fileno(f)) == 0 && std::fclose(f) == 0;
    }
    /// Moves the file to `target`; afterwards nothing is left to remove.
    bool renameTo(const std::string& target) {
        if (std::rename(mPath.c_str(), target.c_str()) != 0) return false;
        mPath.clear();
        return true;
    }
    const std::string& path() const { return mPath; }

private:
    std::string mPath;
    int mDescriptor = -1;
    std::FILE* mFile = nullptr;
};

} // namespace

std::string writePngFile(const std::string& path, const unsigned char* bgraBottomUp, int width, int height) {
    if (!bgraBottomUp || width <= 0 || height <= 0) return "no image to write";

    // RGB rows, top row first.
    const std::size_t stride = static_cast<std::size_t>(width) * 3;
    std::vector<unsigned char> rgb(stride * static_cast<std::size_t>(height));
    std::vector<png_bytep> rows(static_cast<std::size_t>(height));
    for (int y = 0; y < height; ++y) {
        const unsigned char* src = bgraBottomUp + static_cast<std::size_t>(height - 1 - y) * width * 4;
        unsigned char* dst = rgb.data() + static_cast<std::size_t>(y) * stride;
        for (int x = 0; x < width; ++x, src += 4, dst += 3) {
            dst[0] = src[2];
            dst[1] = src[1];
            dst[2] = src[0];
        }
        rows[static_cast<std::size_t>(y)] = rgb.data() + static_cast<std::size_t>(y) * stride;
    }

    const std::filesystem::path target(path);
    const std::filesystem::path directory = target.parent_path().empty() ? "." : target.parent_path();
    temporaryFile temp((directory / ("." + target.filename().string() + ".XXXXXX")).string());
    if (!temp.isOpen())
        return std::string("cannot create a file in '") + directory.string() + "': " + std::strerror(errno);
    std::FILE* stream = temp.stream();
    if (!stream) return std::string("cannot write '") + temp.path() + "': " + std::strerror(errno);
    // mkstemp makes the file private; give it the permissions a plainly created file would get.
    const mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fileno(stream), 0666 & ~mask);
    if (std::string error = encode(stream, rows.data(), width, height); !error.empty())
        return "PNG encoding failed: " + error;
    if (!temp.close()) return std::string("cannot write '") + path + "': " + std::strerror(errno);
    // rename replaces whatever has the name, a device node or a FIFO too. The caller checked the
    // target before rendering; checking again here narrows the window for a swap to a moment.
    struct stat existing {};
    if (::lstat(path.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode) && !S_ISLNK(existing.st_mode))
        return std::string("cannot write '") + path + "': it is not a regular file";
    if (!temp.renameTo(path)) return std::string("cannot write '") + path + "': " + std::strerror(errno);
    return {};
}

} // namespace oxview
