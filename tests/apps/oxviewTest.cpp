// oxview driven through its command line: what it writes, what it prints, how it fails.
#include "pngImage.h"
#include "sphereStl.h"

#include <gtest/gtest.h>

#include <array>
#include <bit>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

struct runResult_t {
    int exitCode = -1;
    std::string out;
    std::string err;
};

struct image_t : oxtest::pngImage_t {
    /// The scene's default background, (0, 78, 152), within rounding.
    bool isBackground(int x, int y) const { return near(at(x, y), {0, 78, 152}, 6); }
};

std::string slurp(const fs::path& path) {
    std::ifstream in(path);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
}

std::optional<image_t> readPng(const fs::path& path) {
    auto image = oxtest::readPngFile(path);
    return image ? std::optional<image_t>(image_t{std::move(*image)}) : std::nullopt;
}

/// The bytes of the values, as a binary file stores them (little-endian, like this machine).
template <class... T>
std::string bytesOf(T... values) {
    std::string bytes;
    (bytes.append(reinterpret_cast<const char*>(&values), sizeof values), ...);
    return bytes;
}

/// The header of a PLY file of `vertices` x, y, z vertices and `faces` faces.
std::string plyHeader(const std::string& format, int vertices, int faces) {
    return "ply\nformat " + format + " 1.0\nelement vertex " + std::to_string(vertices) +
           "\nproperty float x\nproperty float y\nproperty float z\nelement face " + std::to_string(faces) +
           "\nproperty list uchar int vertex_indices\nend_header\n";
}

/// An ASCII STL facet.
std::string facet(const std::string& a, const std::string& b, const std::string& c) {
    return "facet normal 0 0 0\nouter loop\nvertex " + a + "\nvertex " + b + "\nvertex " + c + "\nendloop\nendfacet\n";
}

/// The eight facets of an octahedron with corners on the unit axes: it covers the centre of its
/// box from every side.
std::string octahedronFacets() {
    std::string facets;
    for (int s = 0; s < 8; ++s) {
        const std::string x = s & 1 ? "1 0 0" : "-1 0 0", y = s & 2 ? "0 1 0" : "0 -1 0", z = s & 4 ? "0 0 1" : "0 0 -1";
        // An odd number of negative axes mirrors the corner order: keeps every face counter-clockwise
        // seen from outside.
        const bool flip = std::popcount(unsigned(s)) % 2 == 0;
        facets += flip ? facet(x, z, y) : facet(x, y, z);
    }
    return facets;
}

class oxviewTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        sDir = fs::temp_directory_path() / ("oxviewTest-" + std::to_string(::getpid()));
        fs::remove_all(sDir);
        fs::create_directories(sDir / "in");
        ASSERT_TRUE(oxtest::writeSphereStl(in("lopsided.stl"), {24, 48, true, -1}));
    }
    static void TearDownTestSuite() { fs::remove_all(sDir); }

    static std::string in(const std::string& name) { return (sDir / "in" / name).string(); }

    /// A new empty directory for one run's output.
    static fs::path freshDir(const std::string& name) {
        const fs::path dir = sDir / name;
        fs::remove_all(dir);
        fs::create_directories(dir);
        return dir;
    }

    static runResult_t run(const std::string& args, const fs::path& cwd) {
        const fs::path out = sDir / "stdout.txt", err = sDir / "stderr.txt";
        const std::string command = "cd '" + cwd.string() + "' && '" OXVIEW_EXE "' " + args + " >'" + out.string() +
                                    "' 2>'" + err.string() + "'";
        const int status = std::system(command.c_str());
        runResult_t result;
        result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        result.out = slurp(out);
        result.err = slurp(err);
        return result;
    }

    /// Renders into a fresh directory and reads the image back; fails the test when the run does.
    static image_t render(const std::string& args, const std::string& what) {
        const fs::path dir = freshDir("render");
        const runResult_t r = run(args + " --out image.png", dir);
        EXPECT_EQ(r.exitCode, 0) << what << ": " << r.err;
        EXPECT_EQ(r.err, "") << what;
        const auto image = readPng(dir / "image.png");
        EXPECT_TRUE(image) << what << ": no readable PNG";
        return image.value_or(image_t{});
    }

    static inline fs::path sDir;
};

TEST_F(oxviewTest, withoutArgumentsTheSampleGoesToOxviewPngInTheWorkingDirectory) {
    const fs::path dir = freshDir("default");
    const runResult_t r = run("", dir);
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "oxview: wrote " + fs::canonical(dir / "oxview.png").string() +
                         " (800x600, front-right view, 4 samples)\n");
    EXPECT_EQ(r.err, "");
    const auto image = readPng(dir / "oxview.png");
    ASSERT_TRUE(image);
    EXPECT_EQ(image->width, 800);
    EXPECT_EQ(image->height, 600);
    EXPECT_FALSE(image->isBackground(400, 300)) << "the centre shows the sample's parts";
    EXPECT_TRUE(image->isBackground(2, 2)) << "zoomAll leaves a margin of background";
    EXPECT_EQ(std::distance(fs::directory_iterator(dir), fs::directory_iterator()), 1) << "no temporary file left";
    // The manipulator on the shaft: its blue ring and Z arrow. Without it only the triad's Z axis
    // is that blue (some 300 pixels; with it, about 3000).
    int blue = 0;
    for (int y = 0; y < image->height; ++y)
        for (int x = 0; x < image->width; ++x) {
            const auto p = image->at(x, y);
            blue += !image->isBackground(x, y) && p[2] > p[0] + 120 && p[2] > p[1] + 80;
        }
    EXPECT_GT(blue, 1500) << "the sample shows the manipulator";
}

TEST_F(oxviewTest, everyStandardViewShowsTheMeshDifferentlyAndFrontRightIsTheDefault) {
    const char* views[] = {"front", "back", "left", "right", "top", "bottom",
                           "front-left", "front-right", "back-left", "back-right"};
    std::set<std::vector<unsigned char>> distinct;
    std::vector<unsigned char> frontRight;
    for (const char* view : views) {
        const image_t image = render(in("lopsided.stl") + " --size 160x120 --samples 0 --view " + view, view);
        ASSERT_EQ(image.width, 160) << view;
        EXPECT_FALSE(image.isBackground(80, 60)) << view;
        EXPECT_TRUE(image.isBackground(0, 0)) << view;
        distinct.insert(image.rgb);
        if (std::string(view) == "front-right") frontRight = image.rgb;
    }
    EXPECT_EQ(distinct.size(), std::size(views));
    EXPECT_EQ(render(in("lopsided.stl") + " --size 160x120 --samples 0", "default view").rgb, frontRight);
}

TEST_F(oxviewTest, sizeSamplesAndShaderOptions) {
    struct row {
        const char* args;
        int width, height;
    };
    const row rows[] = {
        {"--size 320x200", 320, 200},
        {"--size 1x1", 1, 1},
        {"--samples 0", 800, 600},
        {"--samples 4", 800, 600},
        {"--no-shaders", 800, 600},
        {"--no-shaders --samples 0 --size 64x48", 64, 48},
    };
    std::map<std::string, std::vector<unsigned char>> images;
    for (const row& r : rows) {
        const image_t image = render(in("lopsided.stl") + " " + r.args, r.args);
        ASSERT_EQ(image.width, r.width) << r.args;
        ASSERT_EQ(image.height, r.height) << r.args;
        EXPECT_FALSE(image.isBackground(r.width / 2, r.height / 2)) << r.args;
        images[r.args] = image.rgb;
    }
    // Multisampling smooths the silhouette, so the pixels must differ.
    EXPECT_NE(images["--samples 0"], images["--samples 4"]);

    // More samples than the driver offers are reduced to its limit, not rendered black.
    const fs::path dir = freshDir("manySamples");
    const runResult_t many = run(in("lopsided.stl") + " --samples 32 --size 64x48 --out image.png", dir);
    EXPECT_EQ(many.exitCode, 0);
    EXPECT_TRUE(many.err.empty() ||
                std::regex_match(many.err, std::regex("oxview: 32 samples asked for, the driver offers at most "
                                                      "([0-9]+); using \\1\n")))
        << many.err;
    const auto image = readPng(dir / "image.png");
    ASSERT_TRUE(image);
    EXPECT_FALSE(image->isBackground(32, 24));
    EXPECT_NE(image->at(32, 24), (std::array<int, 3>{0, 0, 0}));
}

TEST_F(oxviewTest, readsAsciiStlObjAndPlyAndGivesEachFileItsOwnColour) {
    // Two unit cubes side by side: x in [-2, -1] (OBJ, quads) and [1, 2] (PLY, quads).
    std::ofstream(in("left.obj")) << "v -2 0 0\nv -1 0 0\nv -1 1 0\nv -2 1 0\nv -2 0 1\nv -1 0 1\nv -1 1 1\nv -2 1 1\n"
                                     "f 1 4 3 2\nf 5 6 7 8\nf 1 2 6 5\nf 2 3 7 6\nf 3 4 8 7\nf 4 1 5 8\n";
    std::ofstream(in("right.ply")) << "ply\nformat ascii 1.0\nelement vertex 8\nproperty float x\nproperty float y\n"
                                      "property float z\nelement face 6\nproperty list uchar int vertex_indices\n"
                                      "end_header\n1 0 0\n2 0 0\n2 1 0\n1 1 0\n1 0 1\n2 0 1\n2 1 1\n1 1 1\n"
                                      "4 0 3 2 1\n4 4 5 6 7\n4 0 1 5 4\n4 1 2 6 5\n4 2 3 7 6\n4 3 0 4 7\n";
    std::ofstream(in("octahedron.stl")) << "solid octahedron\n" << octahedronFacets() << "endsolid octahedron\n";
    for (const char* file : {"left.obj", "right.ply", "octahedron.stl"}) {
        const image_t image = render(in(file) + " --size 200x150", file);
        EXPECT_FALSE(image.isBackground(100, 75)) << file;
    }
    // In the front view the cubes' front faces sit left and right of the centre, equally lit.
    const image_t both = render(in("left.obj") + " " + in("right.ply") + " --view front --size 200x100", "two files");
    ASSERT_EQ(both.width, 200);
    EXPECT_TRUE(both.isBackground(100, 50)) << "the gap between the cubes";
    EXPECT_FALSE(both.isBackground(30, 50));
    EXPECT_FALSE(both.isBackground(170, 50));
    EXPECT_NE(both.at(30, 50), both.at(170, 50)) << "each file has a colour of its own";
}

TEST_F(oxviewTest, badInputGivesOneErrorLineAnExitCodeAndNoOutputFile) {
    oxtest::writeSphereStl(in("truncated.stl"), {24, 48, false, 1000});
    oxtest::writeSphereStl(in("empty.stl"), {0, 48, false, -1});
    std::ofstream(in("model.xyz")) << "v 0 0 0\n";
    std::ofstream(in("emptySolid.stl")) << "solid a\nendsolid a\n";
    std::ofstream(in("farPoint.obj")) << "v 0 0 0\nv 1e20 0 0\np 2\nl 1 2\n";
    fs::create_directories(in("folder.stl"));
    // Files that crashed, aborted or hung the importer, or passed as a blank image.
    std::ofstream(in("cut.ply"), std::ios::binary)
        << plyHeader("binary_little_endian", 3, 2) << bytesOf(0.f, 0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 1.f, 0.f);
    std::ofstream(in("miscounted.ply")) << plyHeader("ascii", 3, 3) << "0 0 0\n1 0 0\n0 1 0\n3 0 1 2\n";
    std::ofstream(in("cornerless.ply")) << plyHeader("ascii", 3, 1) << "0 0 0\n1 0 0\n0 1 0\n0\n";
    std::string unterminated = plyHeader("binary_little_endian", 3, 1);
    unterminated.replace(unterminated.find("end_header"), 10, "end_heaDer");
    std::ofstream(in("unterminated.ply"), std::ios::binary)
        << unterminated << bytesOf(0.f, 0.f, 0.f, 1.f, 0.f, 0.f, 0.f, 1.f, 0.f, '\3', 0, 1, 2);
    std::ofstream(in("garbage.stl")) << "solid x\nfacet normal 0 0 0\nouter loop\nvertex 1 2\nvertex zz \x01\x02\n";
    std::ofstream(in("infinite.stl")) << "solid x\n" << facet("0 0 0", "inf 0 0", "0 1 0") << "endsolid x\n";
    std::ofstream(in("huge.stl")) << "solid x\n" << facet("0 0 0", "1e308 0 0", "0 1 0") << "endsolid x\n";
    const std::string fifo = in("fifo.png");
    ASSERT_EQ(::mkfifo(fifo.c_str(), 0600), 0);
    // A character device: /dev/null, except for root, who could replace it; root makes its own.
    std::string device = "/dev/null";
    if (::geteuid() == 0) {
        device = in("null.png");
        ASSERT_EQ(::mknod(device.c_str(), S_IFCHR | 0600, makedev(1, 3)), 0);
    }
    fs::create_symlink(fifo, in("toFifo.png"));
    fs::create_symlink(in("nowhere/image.png"), in("dangling.png"));

    struct row {
        std::string args;
        int exitCode;
        std::string error;  // a regular expression for the whole line
    };
    const std::string stl = in("lopsided.stl");
    std::vector<row> rows = {
        {in("missing.stl"), 1, "oxview: cannot load '.*/missing.stl': no such file"},
        {in("truncated.stl"), 1,
         "oxview: cannot load '.*/truncated.stl': corrupt binary STL: truncated \\(the header announces 2304 "
         "triangles in 115284 bytes, the file has 50084\\)"},
        {in("model.xyz"), 1, "oxview: cannot load '.*/model.xyz': unknown extension '.xyz' .*"},
        {in("empty.stl"), 1, "oxview: cannot load '.*/empty.stl': contains no triangles \\(empty mesh\\)"},
        {in("emptySolid.stl"), 1, "oxview: cannot load '.*/emptySolid.stl': contains no triangles, points or lines"},
        {in("farPoint.obj"), 1,
         "oxview: cannot load '.*/farPoint.obj': no usable points or line segments \\(skipped 1 of 1 points, 1 of 1 "
         "line segments: .*\\)"},
        {in("folder.stl"), 1, "oxview: cannot load '.*/folder.stl': is a directory, not a file"},
        {stl + " " + in("missing.obj"), 1, "oxview: cannot load '.*/missing.obj': no such file"},
        {stl + " --out nowhere/image.png", 1,
         "oxview: cannot write 'nowhere/image.png': the directory 'nowhere' does not exist"},
        {in("cut.ply"), 1,
         "oxview: cannot load '.*/cut.ply': corrupt PLY: truncated \\(the header declares 3 vertex, 2 face records, at "
         "least 62 bytes of data; the file has 36\\)"},
        {in("miscounted.ply"), 1,
         "oxview: cannot load '.*/miscounted.ply': corrupt PLY: truncated \\(the header declares 6 records \\(3 vertex, "
         "3 face\\), the file has 4 data lines\\)"},
        // The importer asserts on a face without corners; should a later version refuse it instead,
        // that is fine too.
        {in("cornerless.ply"), 1,
         "oxview: cannot load '.*/cornerless.ply': (the importer crashed \\(signal 6\\).*|corrupt or unsupported "
         "content: .*)"},
        {in("unterminated.ply"), 1,
         "oxview: cannot load '.*/unterminated.ply': corrupt PLY: header has no end_header line"},
        {in("garbage.stl"), 1, "oxview: cannot load '.*/garbage.stl': corrupt or unsupported content: .*"},
        {in("infinite.stl"), 1,
         "oxview: cannot load '.*/infinite.stl': no usable triangles \\(skipped 1 of 1 triangles: a corner is not "
         "finite or beyond 1e\\+15 in magnitude\\)"},
        {in("huge.stl"), 1, "oxview: cannot load '.*/huge.stl': no usable triangles \\(skipped 1 of 1 triangles: .*\\)"},
        {stl + " --out " + device, 1, "oxview: cannot write '" + device + "': it is a character device, not a regular file"},
        {stl + " --out " + fifo, 1, "oxview: cannot write '.*/fifo.png': it is a FIFO, not a regular file"},
        {stl + " --out " + in("folder.stl"), 1, "oxview: cannot write '.*/folder.stl': it is a directory, not a regular file"},
        {stl + " --out " + in("toFifo.png"), 1,
         "oxview: cannot write '.*/toFifo.png': it is a symbolic link to a FIFO, not to a regular file"},
        {stl + " --out " + in("dangling.png"), 1,
         "oxview: cannot write '.*/dangling.png': it is a symbolic link that leads nowhere \\(No such file or directory\\)"},
        {stl + " --view sideways", 2, "oxview: unknown view 'sideways' \\(use one of front, .*, back-right\\)"},
        {stl + " --view", 2, "oxview: option --view needs a view name .*"},
        {stl + " --size 0x600", 2, "oxview: option --size needs WIDTHxHEIGHT .*, not '0x600'"},
        {stl + " --size 800", 2, "oxview: option --size needs WIDTHxHEIGHT .*, not '800'"},
        {stl + " --samples -1", 2, "oxview: option --samples needs a count from 0 to 32, not '-1'"},
        {stl + " --samples 33", 2, "oxview: option --samples needs a count from 0 to 32, not '33'"},
        {stl + " --frobnicate", 2, "oxview: unknown option '--frobnicate' \\(try --help\\)"},
        {stl + " --frames 3", 2, "oxview: option --frames only applies to --window"},
    };
    if (::geteuid() != 0) {  // root reads any file
        std::ofstream(in("locked.stl")) << "solid x\n";
        fs::permissions(in("locked.stl"), fs::perms::none);
        rows.push_back({in("locked.stl"), 1, "oxview: cannot load '.*/locked.stl': cannot be read: Permission denied"});
    }
    for (const row& r : rows) {
        const fs::path dir = freshDir("failing");
        // --out comes first so that a row's own --out wins and a dangling option stays last.
        const runResult_t result = run("--out image.png " + r.args, dir);
        EXPECT_EQ(result.exitCode, r.exitCode) << r.args;
        EXPECT_EQ(result.out, "") << r.args;
        EXPECT_TRUE(std::regex_match(result.err, std::regex(r.error + "\n"))) << r.args << "\n" << result.err;
        EXPECT_TRUE(fs::is_empty(dir)) << r.args << ": no output file, not even a partial one";
    }
    EXPECT_TRUE(fs::is_fifo(fifo)) << "a refused target stays what it was";
    EXPECT_TRUE(fs::is_character_file(device));
    EXPECT_TRUE(fs::is_symlink(in("toFifo.png")));
}

TEST_F(oxviewTest, pointsAndLinesShowInTheirColoursAndTheFitTakesThemIn) {
    const std::string cloud = "ply\nformat ascii 1.0\nelement vertex 4\nproperty float x\nproperty float y\n"
                              "property float z\nproperty uchar red\nproperty uchar green\nproperty uchar blue\n"
                              "end_header\n";
    const std::string redRgb = " 230 20 20\n";
    std::ofstream(in("redCloud.ply")) << cloud << "0 0 0" + redRgb + "1 0 0" + redRgb + "0 1 0" + redRgb + "0 0 1" + redRgb;
    std::ofstream(in("farCloud.ply")) << cloud << "9 9 9" + redRgb + "9 8 9" + redRgb + "8 9 9" + redRgb + "9 9 8" + redRgb;
    const std::string square = "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\n";
    std::ofstream(in("dots.obj")) << square << "p 1 2 3 4\n";
    std::ofstream(in("frame.obj")) << square << "l 1 2 3 4 1\n";
    std::ofstream(in("solids.stl")) << "solid empty\nendsolid empty\nsolid octahedron\n"
                                    << octahedronFacets() << "endsolid octahedron\n";
    // The points' own colour, and the colour of the first file.
    const std::array<int, 3> red{230, 20, 20}, grey{190, 195, 205};
    const struct {
        std::string files;
        std::array<int, 3> color;
        int pixels;  // at least this many of that colour
        bool centre;  // whether the centre of the image is covered
    } rows[] = {
        {"redCloud.ply", red, 4 * 4, false},
        {"dots.obj", grey, 4 * 4, false},
        {"frame.obj", grey, 4 * 100, false},  // four sides, each some 100 pixels long
        {"solids.stl", grey, 0, true},        // the empty solid is passed over
        {"solids.stl farCloud.ply", red, 4 * 4, false},
        {"frame.obj solids.stl", grey, 4 * 50, true},
    };
    for (const auto& r : rows) {
        std::string args;
        for (std::istringstream files(r.files); files;) {
            std::string file;
            if (files >> file) args += in(file) + " ";
        }
        const image_t image = render(args + "--size 200x150 --samples 0", r.files);
        ASSERT_EQ(image.width, 200) << r.files;
        int matching = 0;
        for (int y = 0; y < image.height; ++y)
            for (int x = 0; x < image.width; ++x) matching += image_t::near(image.at(x, y), r.color, 12);
        EXPECT_GE(matching, r.pixels) << r.files;
        EXPECT_NE(image.isBackground(100, 75), r.centre) << r.files;
        // zoomAll reaches every part: nothing of them lies on the border.
        EXPECT_TRUE(image.isBackground(0, 0) && image.isBackground(199, 149)) << r.files;
    }
}

TEST_F(oxviewTest, aSymbolicLinkOutputReplacesTheFileItLeadsToAndStays) {
    const fs::path dir = freshDir("link");
    fs::create_directories(dir / "real");
    std::ofstream(dir / "real" / "old.png") << "old";
    fs::create_symlink("real/old.png", dir / "image.png");
    const runResult_t r = run(in("lopsided.stl") + " --size 64x48 --out image.png", dir);
    ASSERT_EQ(r.exitCode, 0) << r.err;
    EXPECT_EQ(r.out, "oxview: wrote " + fs::canonical(dir / "real" / "old.png").string() +
                         " (64x48, front-right view, 4 samples)\n");
    EXPECT_TRUE(fs::is_symlink(dir / "image.png"));
    EXPECT_TRUE(readPng(dir / "real" / "old.png")) << "the link's target holds the image";
    EXPECT_EQ(std::distance(fs::directory_iterator(dir / "real"), fs::directory_iterator()), 1) << "no temporary file";
}

TEST_F(oxviewTest, trianglesWithUnusableCornersAreSkippedWithAWarning) {
    // 1e20 is a float, but far beyond any model; the far corners must not enter the fitted box.
    std::ofstream(in("partly.stl")) << "solid x\n" << octahedronFacets() << facet("0 0 0", "nan 0 0", "0 1 0")
                                    << facet("0 0 0", "1e20 0 0", "0 1 0") << "endsolid x\n";
    const fs::path dir = freshDir("partly");
    const runResult_t r = run(in("partly.stl") + " --size 80x60 --out image.png", dir);
    EXPECT_EQ(r.exitCode, 0);
    EXPECT_TRUE(std::regex_match(r.err, std::regex("oxview: warning: '.*/partly.stl': skipped 2 of 10 triangles: a "
                                                   "corner is not finite or beyond 1e\\+15 in magnitude\n")))
        << r.err;
    const auto image = readPng(dir / "image.png");
    ASSERT_TRUE(image);
    EXPECT_FALSE(image->isBackground(40, 30)) << "the octahedron fills the view";
}

TEST_F(oxviewTest, rendersAMillionTriangleBinaryStl) {
    const std::string big = (sDir / "million.stl").string();
    ASSERT_TRUE(oxtest::writeSphereStl(big, {500, 1000, false, -1}));
    EXPECT_EQ(fs::file_size(big), 84u + 50u * 1000000u);
    const image_t image = render(big + " --size 400x300", "million triangles");
    fs::remove(big);
    ASSERT_EQ(image.width, 400);
    EXPECT_FALSE(image.isBackground(200, 150));
    EXPECT_TRUE(image.isBackground(5, 5));
}

TEST_F(oxviewTest, helpDescribesEveryOption) {
    const runResult_t r = run("--help", sDir);
    EXPECT_EQ(r.exitCode, 0);
    for (const char* option : {"--view", "--size", "--samples", "--out", "--no-shaders", "--timings", "--window",
                               "--frames", "--help"})
        EXPECT_NE(r.out.find(option), std::string::npos) << option;
    for (const char* control : {"Esc", "'s'", "manipulator", "Page Up/Down", "arrow keys"})
        EXPECT_NE(r.out.find(control), std::string::npos) << control;
}

} // namespace
