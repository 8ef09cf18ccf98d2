// oxview --window driven like a user: synthetic mouse and key input through xdotool on the X
// display the test runs under (xvfb-run), frames saved with the window's 's' key.
//
// The view is known: one cube seen from the top in a wide window, so zoomAll puts its top face
// (where the manipulator sits) in the window's centre with X to the right, and the handle keeps
// 120 pixels for its arrows. The cube's size on the screen is measured from the first frame.
#include "pngImage.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

namespace fs = std::filesystem;
using clock_type = std::chrono::steady_clock;

// Generous for sanitizer builds; every wait polls and returns as soon as its condition holds.
constexpr std::chrono::seconds kWait{30};
constexpr int kWidth = 640, kHeight = 240;
constexpr int kCx = kWidth / 2, kCy = kHeight / 2;
// Along the X arrow, clear of the XY square (up to about 63 pixels) and short of the head.
constexpr int kGripOffset = 80;

using oxtest::rgb_t;

struct image_t : oxtest::pngImage_t {
    bool isBackground(int x, int y) const { return near(at(x, y), at(2, 2), 6); }
    /// The red of the X arrow, lit.
    bool isRedGrip(int x, int y) const {
        const rgb_t p = at(x, y);
        return p[0] > p[1] + 60 && p[0] > p[2] + 60;
    }
};

std::optional<image_t> readPng(const fs::path& path) {
    auto image = oxtest::readPngFile(path);
    return image ? std::optional<image_t>(image_t{std::move(*image)}) : std::nullopt;
}

/// A closed cube of side 20 standing on z = 0, centred on the Z axis, as ASCII STL.
void writeCube(const fs::path& path) {
    const double c[8][3] = {{-10, -10, 0}, {10, -10, 0}, {10, 10, 0}, {-10, 10, 0},
                            {-10, -10, 20}, {10, -10, 20}, {10, 10, 20}, {-10, 10, 20}};
    const int quads[6][4] = {{0, 3, 2, 1}, {4, 5, 6, 7}, {0, 1, 5, 4}, {1, 2, 6, 5}, {2, 3, 7, 6}, {3, 0, 4, 7}};
    std::ofstream out(path);
    out << "solid cube\n";
    const auto vertex = [&](int i) { out << "vertex " << c[i][0] << ' ' << c[i][1] << ' ' << c[i][2] << "\n"; };
    for (const auto& q : quads)
        for (const auto& tri : {std::array<int, 3>{q[0], q[1], q[2]}, std::array<int, 3>{q[0], q[2], q[3]}}) {
            out << "facet normal 0 0 0\nouter loop\n";
            for (int i : tri) vertex(i);
            out << "endloop\nendfacet\n";
        }
    out << "endsolid cube\n";
}

/// The output of a shell command (bounded by `timeout`), without the trailing newline.
std::string capture(const std::string& command) {
    std::string out;
    if (FILE* pipe = ::popen(command.c_str(), "r")) {
        char buffer[256];
        while (std::fgets(buffer, sizeof buffer, pipe)) out += buffer;
        ::pclose(pipe);
    }
    while (!out.empty() && (out.back() == '\n' || out.back() == '\r')) out.pop_back();
    return out;
}

/// One oxview window on the cube, and the user in front of it.
class windowSession {
public:
    explicit windowSession(const fs::path& dir) : mDir(dir) {
        writeCube(mDir / "cube.stl");
        const std::string size = std::to_string(kWidth) + "x" + std::to_string(kHeight);
        const std::string out = (mDir / "frame.png").string(), stl = (mDir / "cube.stl").string();
        std::vector<std::string> args{OXVIEW_EXE, "--window", "--view", "top", "--size", size, "--out", out, stl};
        std::vector<char*> argv;
        for (auto& a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        const std::string log = (mDir / "oxview.log").string();
        posix_spawn_file_actions_addopen(&actions, 1, log.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        mSpawned = posix_spawn(&mPid, OXVIEW_EXE, &actions, nullptr, argv.data(), environ) == 0;
        posix_spawn_file_actions_destroy(&actions);
        if (!mSpawned) return;
        // --sync waits until the window is mapped; timeout bounds it should it never come.
        const std::string seconds = std::to_string(kWait.count());
        mWindow = capture("timeout " + seconds + " " OX_XDOTOOL " search --sync --onlyvisible --name '^oxview$' | head -n 1");
        if (!mWindow.empty()) xdo("windowfocus " + mWindow);
    }
    ~windowSession() {
        if (mSpawned && !mExited) {
            ::kill(mPid, SIGKILL);
            ::waitpid(mPid, nullptr, 0);
        }
    }
    windowSession(const windowSession&) = delete;
    windowSession& operator=(const windowSession&) = delete;

    bool ready() const { return mSpawned && !mWindow.empty(); }

    void moveTo(int x, int y) { xdo("mousemove --window " + mWindow + " " + std::to_string(x) + " " + std::to_string(y)); }
    void click(int x, int y) {
        moveTo(x, y);
        xdo("click 1");
    }
    void press() { xdo("mousedown 1"); }
    void release() { xdo("mouseup 1"); }
    /// A drag from where the pointer is to (x, y) in a few moves, the button held throughout.
    void dragTo(int fromX, int fromY, int x, int y) {
        for (int i = 1; i <= 4; ++i) moveTo(fromX + (x - fromX) * i / 4, fromY + (y - fromY) * i / 4);
    }
    void key(const std::string& name) { xdo("key " + name); }

    /// The current frame, saved by the window's 's' key.
    std::optional<image_t> frame() {
        const fs::path file = mDir / "frame.png";
        fs::remove(file);
        key("s");
        // The window writes a temporary file and renames it, so a file that exists is complete.
        for (const auto end = clock_type::now() + kWait; clock_type::now() < end;) {
            if (fs::exists(file)) return readPng(file);
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return std::nullopt;
    }

    /// Esc, then the exit code (-1 when it did not end in time or not normally).
    int quit() {
        key("Escape");
        for (const auto end = clock_type::now() + kWait; clock_type::now() < end;) {
            int status = 0;
            if (::waitpid(mPid, &status, WNOHANG) == mPid) {
                mExited = true;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return -1;
    }

private:
    void xdo(const std::string& arguments) {
        const std::string command = "timeout " + std::to_string(kWait.count()) + " " OX_XDOTOOL " " + arguments;
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
    }

    fs::path mDir;
    pid_t mPid = -1;
    bool mSpawned = false;
    bool mExited = false;
    std::string mWindow;
};

class oxviewWindowTest : public ::testing::Test {
protected:
    void SetUp() override {
        mDir = fs::temp_directory_path() /
               ("oxviewWindowTest-" + std::to_string(::getpid()) + "-" +
                ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::remove_all(mDir);
        fs::create_directories(mDir);
        mSession = std::make_unique<windowSession>(mDir);
        ASSERT_TRUE(mSession->ready()) << "oxview's window did not appear (is DISPLAY set? is xdotool installed?)";
        // The cube before anything is selected: its half side in pixels and its colour.
        const auto first = mSession->frame();
        ASSERT_TRUE(first);
        ASSERT_EQ(first->width, kWidth);
        ASSERT_FALSE(first->isBackground(kCx, kCy)) << "the cube fills the centre";
        int x = kCx;
        while (x > 0 && !first->isBackground(x, kCy)) --x;
        mHalf = kCx - x;
        ASSERT_GT(mHalf, 40);
        ASSERT_LT(mHalf, kHeight / 2);
    }
    void TearDown() override {
        mSession.reset();
        fs::remove_all(mDir);
    }

    /// Selects the cube with a click on its corner, away from where the grips will be, and
    /// moves the pointer off so that no grip is lit. The frame then.
    image_t selectCube() {
        mSession->click(kCx - mHalf / 2, kCy + mHalf / 2);
        mSession->moveTo(2, 2);
        const auto selected = mSession->frame();
        EXPECT_TRUE(selected);
        if (!selected) return {};
        EXPECT_TRUE(selected->isRedGrip(kCx + kGripOffset, kCy)) << "the manipulator's X arrow on the cube";
        return *selected;
    }

    fs::path mDir;
    std::unique_ptr<windowSession> mSession;
    int mHalf = 0;  // half the cube's side in pixels
};

TEST_F(oxviewWindowTest, draggingTheXArrowMovesTheSelectedPartAndItsManipulator) {
    const image_t before = selectCube();
    ASSERT_GT(before.width, 0);
    const int checkY = kCy + mHalf / 2;  // a row crossed by no grip but the ring
    const int left = kCx - mHalf + 6;    // inside the cube's left edge
    const int right = kCx + 2 * mHalf - 6;  // inside its right edge once moved by its half side
    ASSERT_FALSE(before.isBackground(left, checkY));
    ASSERT_TRUE(before.isBackground(right, checkY));

    mSession->moveTo(kCx + kGripOffset, kCy);
    mSession->press();
    mSession->dragTo(kCx + kGripOffset, kCy, kCx + kGripOffset + mHalf, kCy);
    mSession->release();
    mSession->moveTo(2, 2);
    const auto after = mSession->frame();
    ASSERT_TRUE(after);
    EXPECT_TRUE(after->isBackground(left, checkY)) << "the cube left its old place";
    EXPECT_TRUE(image_t::near(after->at(right, checkY), before.at(left, checkY), 12))
        << "the cube's selected top face is at the new place";
    EXPECT_TRUE(after->isRedGrip(kCx + mHalf + kGripOffset, kCy)) << "the manipulator moved with it";
    EXPECT_EQ(mSession->quit(), 0);
}

TEST_F(oxviewWindowTest, aDragFollowsTheCursorLiveAndEscapePutsThePartBack) {
    const image_t before = selectCube();
    ASSERT_GT(before.width, 0);
    const int checkY = kCy + mHalf / 2, left = kCx - mHalf + 6;

    mSession->moveTo(kCx + kGripOffset, kCy);
    mSession->press();
    mSession->dragTo(kCx + kGripOffset, kCy, kCx + kGripOffset + mHalf, kCy);
    const auto during = mSession->frame();
    ASSERT_TRUE(during);
    EXPECT_TRUE(during->isBackground(left, checkY)) << "the part moves while the button is down";
    mSession->key("Escape");  // cancels the drag, does not quit
    mSession->release();
    mSession->moveTo(2, 2);
    const auto after = mSession->frame();
    ASSERT_TRUE(after);
    EXPECT_FALSE(after->isBackground(left, checkY)) << "the part is back";
    EXPECT_TRUE(after->isRedGrip(kCx + kGripOffset, kCy)) << "the manipulator is back";
    int differing = 0;
    for (int y = 0; y < kHeight; ++y)
        for (int x = 0; x < kWidth; ++x) differing += !image_t::near(after->at(x, y), before.at(x, y), 6);
    EXPECT_LT(differing, kWidth * kHeight / 200) << "the frame is the one before the drag";
    EXPECT_EQ(mSession->quit(), 0) << "Esc after the drag still quits";
}

TEST_F(oxviewWindowTest, pageUpTurnsAndTheArrowKeysMoveTheSelectedPart) {
    const image_t before = selectCube();
    ASSERT_GT(before.width, 0);
    const rgb_t top = before.at(kCx - mHalf + 6, kCy + mHalf / 2);
    for (int i = 0; i < 3; ++i) mSession->key("Page_Up");  // 45 degrees: the square becomes a diamond
    const auto turned = mSession->frame();
    ASSERT_TRUE(turned);
    const int corner = mHalf - 5, tip = mHalf * 5 / 4;
    EXPECT_TRUE(turned->isBackground(kCx + corner, kCy + corner)) << "a corner turned away";
    EXPECT_TRUE(image_t::near(turned->at(kCx + tip, kCy), top, 12)) << "a corner turned to the right";
    EXPECT_TRUE(image_t::near(turned->at(kCx - tip, kCy), top, 12)) << "about the part's own axis";

    for (int i = 0; i < 5; ++i) mSession->key("Right");  // a tenth of the side each: half the side
    const auto moved = mSession->frame();
    ASSERT_TRUE(moved);
    EXPECT_TRUE(moved->isBackground(kCx - tip, kCy));
    EXPECT_TRUE(image_t::near(moved->at(kCx + mHalf + tip, kCy), top, 12));
    EXPECT_EQ(mSession->quit(), 0);
}

TEST_F(oxviewWindowTest, aClickOnEmptySpaceDeselectsAndRemovesTheManipulator) {
    const image_t selected = selectCube();
    ASSERT_GT(selected.width, 0);
    mSession->click(kWidth - 5, 5);
    mSession->moveTo(2, 2);
    const auto cleared = mSession->frame();
    ASSERT_TRUE(cleared);
    EXPECT_FALSE(cleared->isRedGrip(kCx + kGripOffset, kCy)) << "no manipulator";
    EXPECT_FALSE(image_t::near(cleared->at(kCx - mHalf + 6, kCy + mHalf / 2),
                               selected.at(kCx - mHalf + 6, kCy + mHalf / 2), 6))
        << "no selection highlight";
    // A press on where the grip was now turns the view instead of moving the part.
    mSession->moveTo(kCx + kGripOffset, kCy);
    mSession->press();
    mSession->dragTo(kCx + kGripOffset, kCy, kCx + kGripOffset + mHalf, kCy);
    mSession->release();
    mSession->moveTo(2, 2);
    const auto turned = mSession->frame();
    ASSERT_TRUE(turned);
    EXPECT_NE(turned->rgb, cleared->rgb) << "the view turned";
    EXPECT_EQ(mSession->quit(), 0);
}

} // namespace
