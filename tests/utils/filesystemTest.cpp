#include "oxfilesystem.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// A fresh scratch directory per test, removed afterwards.
class filesystemTest : public testing::Test {
protected:
    void SetUp() override {
        mRoot = fs::temp_directory_path() /
                ("oxUtilsTests-" + std::to_string(::getpid()) + "-" + testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(mRoot);
        fs::create_directories(mRoot / "sub");
    }
    void TearDown() override { fs::remove_all(mRoot); }
    ox::string root() const { return ox::string::fromMBCtoWC(mRoot.native()); }
    void write(const fs::path& p, const std::string& content) { std::ofstream(p, std::ios::binary) << content; }
    fs::path mRoot;
};

TEST_F(filesystemTest, renameReadAllAndListing) {
    const std::string binary("a\0b\xff\n", 5);
    write(mRoot / "b.txt", binary);
    write(mRoot / "a.txt", "first");

    ox::directory dir(root());
    ox::file source(dir, L"b.txt");
    std::string content = "stale";
    ASSERT_TRUE(source.readAll(content));
    EXPECT_EQ(content, binary);

    // Non-ASCII names survive the wide/UTF-8 conversion both ways.
    const ox::string target = dir.append(L"r\u00e9sum\u00e9.txt").path();
    ASSERT_TRUE(source.rename(target));
    EXPECT_EQ(source.path(), target);
    EXPECT_TRUE(source.exists());
    EXPECT_FALSE(ox::file(dir, L"b.txt").exists());
    EXPECT_TRUE(fs::exists(mRoot / "r\xc3\xa9sum\xc3\xa9.txt"));
    EXPECT_EQ(source.directory(), dir);
    EXPECT_EQ(source.name(), L"r\u00e9sum\u00e9.txt");

    // A failed rename leaves the entry as it was.
    ox::file missing(dir, L"missing.txt");
    const ox::string before = missing.path();
    EXPECT_FALSE(missing.rename(dir.append(L"other.txt").path()));
    EXPECT_EQ(missing.path(), before);
    EXPECT_FALSE(missing.readAll(content));
    EXPECT_TRUE(content.empty());
    EXPECT_FALSE(ox::fsEntry().rename(target));

    // Only regular files, sorted; the subdirectory is not one.
    const auto files = dir.files();
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0].name(), L"a.txt");
    EXPECT_EQ(files[1].name(), L"r\u00e9sum\u00e9.txt");
    EXPECT_TRUE(dir.append(L"missing").files().empty());
}

TEST_F(filesystemTest, parentAndAppend) {
    const ox::directory dir(root());
    EXPECT_EQ(dir.append(L"sub").parent(), dir);
    EXPECT_EQ(ox::directory(dir.append(L"sub").path() + L"/").parent(), dir) << "a trailing separator names the same directory";
    EXPECT_TRUE(dir.append(L"sub").isDirectory());
    EXPECT_FALSE(ox::directory(ox::file(dir, L"none").path()).isDirectory());
    EXPECT_EQ(ox::directory(L"/").parent().path(), L"/");
    EXPECT_EQ(ox::directory(L"a/b").append(L"c").path(), L"a/b/c");
}

TEST(getModulePath, findsLoadedModulesOnly) {
    ox::directory dir;
    ASSERT_TRUE(ox::getModulePath(L"oxUtils", dir));
    EXPECT_TRUE(fs::path(getMBCS(dir.path())).is_absolute());
    // The exact file name the loader used matches too; which versioned name that is depends
    // on the link, so try them all.
    int exactMatches = 0;
    for (const auto& f : dir.files()) {
        if (f.name().rfind(L"liboxUtils.so", 0) != 0) continue;
        ox::directory exact;
        if (ox::getModulePath(f.name(), exact)) {
            ++exactMatches;
            EXPECT_EQ(exact, dir);
        }
    }
    EXPECT_GE(exactMatches, 1) << getMBCS(dir.path());

    // A prefix or an extension of the name does not match.
    ox::directory untouched(L"/unchanged");
    EXPECT_FALSE(ox::getModulePath(L"oxUtil", untouched));
    EXPECT_FALSE(ox::getModulePath(L"oxUtilsX", untouched));
    EXPECT_FALSE(ox::getModulePath(L"noSuchModule", untouched));
    EXPECT_EQ(untouched.path(), L"/unchanged");

    // The empty name is the executable.
    ox::directory executable;
    ASSERT_TRUE(ox::getModulePath(L"", executable));
    EXPECT_TRUE(ox::file(executable, L"oxUtilsTests").exists()) << getMBCS(executable.path());
}

} // namespace
