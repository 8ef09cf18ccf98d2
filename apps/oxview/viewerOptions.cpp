#include "viewerOptions.h"

#include <charconv>
#include <string_view>

namespace oxview {
namespace {

/// A whole-string decimal integer within [low, high]; nothing otherwise.
std::optional<int> parseInt(std::string_view text, int low, int high) {
    int value = 0;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (text.empty() || error != std::errc() || stop != end || value < low || value > high) return std::nullopt;
    return value;
}

// Larger targets than this exceed what the drivers allocate for a renderbuffer.
constexpr int kMaxSide = 16384;
constexpr int kMaxSamples = 32;

} // namespace

parsedOptions_t parseOptions(const std::vector<std::string>& args) {
    viewerOptions_t options;
    auto fail = [](std::string message) { return parsedOptions_t{std::nullopt, std::move(message)}; };
    bool framesGiven = false;
    bool onlyFiles = false;

    for (std::size_t i = 0; i < args.size(); ++i) {
        std::string_view arg = args[i];
        if (onlyFiles || arg.empty() || arg[0] != '-' || arg == "-") {
            options.mMeshFiles.emplace_back(arg);
            continue;
        }
        if (arg == "--") {
            onlyFiles = true;
            continue;
        }
        // "--name value" and "--name=value" are both accepted.
        std::string_view name = arg;
        std::optional<std::string_view> inlineValue;
        if (const auto eq = arg.find('='); eq != std::string_view::npos) {
            name = arg.substr(0, eq);
            inlineValue = arg.substr(eq + 1);
        }
        auto value = [&]() -> std::optional<std::string_view> {
            if (inlineValue) return inlineValue;
            // An option word is never taken as a value: "--out --view top" lacks the file name.
            if (i + 1 < args.size() && args[i + 1].rfind("--", 0) != 0) return std::string_view(args[++i]);
            return std::nullopt;
        };
        auto flag = [&](bool& target) {
            if (inlineValue) return false;
            target = true;
            return true;
        };

        if (name == "--help" || name == "-h") {
            if (!flag(options.mHelp)) return fail("option " + std::string(name) + " takes no value");
        } else if (name == "--window") {
            if (!flag(options.mWindow)) return fail("option --window takes no value");
        } else if (name == "--timings") {
            if (!flag(options.mTimings)) return fail("option --timings takes no value");
        } else if (name == "--no-shaders") {
            bool off = false;
            if (!flag(off)) return fail("option --no-shaders takes no value");
            options.mShaders = false;
        } else if (name == "--view") {
            const auto text = value();
            if (!text) return fail("option --view needs a view name (" + std::string(standardViewNames()) + ")");
            const auto view = standardViewFromName(*text);
            if (!view)
                return fail("unknown view '" + std::string(*text) + "' (use one of " +
                            std::string(standardViewNames()) + ")");
            options.mView = *view;
        } else if (name == "--size") {
            const auto text = value();
            const auto x = text ? text->find('x') : std::string_view::npos;
            const auto w = x != std::string_view::npos ? parseInt(text->substr(0, x), 1, kMaxSide) : std::nullopt;
            const auto h = x != std::string_view::npos ? parseInt(text->substr(x + 1), 1, kMaxSide) : std::nullopt;
            if (!w || !h)
                return fail("option --size needs WIDTHxHEIGHT with each side 1 to " + std::to_string(kMaxSide) +
                            (text ? ", not '" + std::string(*text) + "'" : std::string()));
            options.mWidth = *w;
            options.mHeight = *h;
        } else if (name == "--samples") {
            const auto text = value();
            const auto samples = text ? parseInt(*text, 0, kMaxSamples) : std::nullopt;
            if (!samples)
                return fail("option --samples needs a count from 0 to " + std::to_string(kMaxSamples) +
                            (text ? ", not '" + std::string(*text) + "'" : std::string()));
            options.mSamples = *samples;
        } else if (name == "--out") {
            const auto text = value();
            if (!text || text->empty()) return fail("option --out needs a file name");
            options.mOutFile = std::string(*text);
        } else if (name == "--frames") {
            const auto text = value();
            const auto frames = text ? parseInt(*text, 1, 1000000) : std::nullopt;
            if (!frames) return fail("option --frames needs a positive count");
            options.mFrames = *frames;
            framesGiven = true;
        } else {
            return fail("unknown option '" + std::string(arg) + "' (try --help)");
        }
    }
    if (framesGiven && !options.mWindow) return fail("option --frames only applies to --window");
    return {options, {}};
}

std::string usageText() {
    return "Usage: oxview [options] [mesh files...]\n"
           "\n"
           "Renders the mesh files (STL, OBJ, PLY), or without any the built-in sample scene, headless\n"
           "into a PNG file and prints where it went; --window shows them in an interactive window.\n"
           "\n"
           "Options:\n"
           "  --view NAME     standard view: " + std::string(standardViewNames()) + "\n"
           "                  (default front-right)\n"
           "  --size WxH      image or window size in pixels (default 800x600)\n"
           "  --samples N     multisamples, 0 for none (default 4)\n"
           "  --out FILE      the PNG to write (default oxview.png); an existing FILE must be a regular\n"
           "                  file, which is replaced, or a symbolic link to one, whose target is\n"
           "                  replaced while the link stays; directories, devices, FIFOs and sockets\n"
           "                  are refused\n"
           "  --no-shaders    draw with the fixed-function pipeline only\n"
           "  --timings       print the time of each stage to stderr: load, setup, record (the first\n"
           "                  frame, which records the geometry), frame (one more frame, replayed),\n"
           "                  readback, png\n"
           "  --window        interactive window: left drag rotates, right or middle drag pans,\n"
           "                  the wheel zooms about the cursor, 1-9 and 0 choose the standard\n"
           "                  views, 'a' fits everything, 's' saves the frame to the --out file,\n"
           "                  Esc quits. A click on a part selects it and puts the move/rotate\n"
           "                  manipulator on it (a click on nothing deselects); hovering lights\n"
           "                  up a grip, dragging an arrow, the square or the ring moves or turns\n"
           "                  the part (dragging the part itself moves it in its XY plane), Esc\n"
           "                  during the drag puts it back; the arrow keys move it in the view\n"
           "                  plane by a tenth of its size, Page Up/Down turn it 15 degrees\n"
           "                  about its Z axis\n"
           "  --frames N      with --window: close after N frames\n"
           "  --help          this text\n"
           "\n"
           "Exit codes: 0 done, 1 a file or the rendering failed, 2 bad options.\n";
}

} // namespace oxview
