#pragma once
// Wall-clock times of the named stages of one run, printed with --timings.
#include <chrono>
#include <ostream>
#include <string>
#include <vector>

namespace oxview {

class stageTimer {
public:
    /// Ends the running stage (if any) and starts `name`.
    void start(std::string name);
    /// Ends the running stage.
    void stop();
    /// One line per finished stage, "name: 12.3 ms", then the total.
    void print(std::ostream& out) const;

private:
    using clock = std::chrono::steady_clock;
    struct stage_t {
        std::string mName;
        double mMilliseconds;
    };
    std::vector<stage_t> mStages;
    std::string mRunning;
    clock::time_point mStart;
};

} // namespace oxview
