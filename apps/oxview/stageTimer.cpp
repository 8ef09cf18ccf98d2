#include "stageTimer.h"

#include <cstdio>

namespace oxview {

void stageTimer::start(std::string name) {
    stop();
    mRunning = std::move(name);
    mStart = clock::now();
}

void stageTimer::stop() {
    if (mRunning.empty()) return;
    const std::chrono::duration<double, std::milli> elapsed = clock::now() - mStart;
    mStages.push_back({std::move(mRunning), elapsed.count()});
    mRunning.clear();
}

void stageTimer::print(std::ostream& out) const {
    double total = 0.0;
    char line[128];
    for (const auto& stage : mStages) {
        std::snprintf(line, sizeof line, "timing %-10s %10.1f ms\n", stage.mName.c_str(), stage.mMilliseconds);
        out << line;
        total += stage.mMilliseconds;
    }
    std::snprintf(line, sizeof line, "timing %-10s %10.1f ms\n", "total", total);
    out << line;
}

} // namespace oxview
