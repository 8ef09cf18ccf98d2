#pragma once
// A one-shot gate: threads wait until the test opens it.
#include <condition_variable>
#include <mutex>

namespace oxtest {

struct gate {
    std::mutex m;
    std::condition_variable cv;
    bool open = false;
    void release() {
        {
            std::lock_guard lock(m);
            open = true;
        }
        cv.notify_all();
    }
    void wait() {
        std::unique_lock lock(m);
        cv.wait(lock, [this] { return open; });
    }
};

} // namespace oxtest
