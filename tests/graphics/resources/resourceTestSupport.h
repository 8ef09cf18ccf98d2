#pragma once
// Helpers of the resource tests: a scratch directory for shader files and a guard that turns
// shaders off globally for one scope.
#include "oxglshader.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

namespace oxtest {

/// A new empty directory, removed with its content at the end of the scope.
class scratchDirectory {
public:
    scratchDirectory() {
        const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
        mPath = std::filesystem::temp_directory_path() /
                ("oxResources-" + std::string(test != nullptr ? test->name() : "test") + "-" + std::to_string(::getpid()));
        std::filesystem::remove_all(mPath);
        std::filesystem::create_directories(mPath);
    }
    ~scratchDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(mPath, ignored);
    }
    scratchDirectory(const scratchDirectory&) = delete;
    scratchDirectory& operator=(const scratchDirectory&) = delete;

    std::string path() const { return mPath.string(); }
    /// Writes `content` to the file `name` in the directory; returns the file's path.
    std::string write(const std::string& name, const std::string& content) const {
        const auto file = mPath / name;
        std::ofstream(file, std::ios::binary) << content;
        return file.string();
    }

private:
    std::filesystem::path mPath;
};

/// Shaders off globally while alive; the switch is on again afterwards, whatever the test did.
class shadersSwitchedOff {
public:
    shadersSwitchedOff() { oxGraphics::enableGlShadersGlobally(false); }
    ~shadersSwitchedOff() { oxGraphics::enableGlShadersGlobally(true); }
    shadersSwitchedOff(const shadersSwitchedOff&) = delete;
    shadersSwitchedOff& operator=(const shadersSwitchedOff&) = delete;
};

} // namespace oxtest
