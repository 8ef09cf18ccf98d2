#pragma once
// Records assertion texts while alive instead of letting them only go to the log.
#include "oxassert.h"

#include <mutex>
#include <string>
#include <vector>

namespace oxtest {

class assertRecorder {
public:
    assertRecorder() {
        mPrevious = ox::setAssertHandler([this](const std::wstring& message) {
            std::lock_guard lock(mMutex);
            mMessages.push_back(message);
        });
    }
    ~assertRecorder() { ox::setAssertHandler(std::move(mPrevious)); }
    assertRecorder(const assertRecorder&) = delete;
    assertRecorder& operator=(const assertRecorder&) = delete;

    std::vector<std::wstring> messages() const {
        std::lock_guard lock(mMutex);
        return mMessages;
    }
    /// The conditions of the recorded assertions (the text between the first and second line break).
    std::vector<std::wstring> conditions() const {
        std::vector<std::wstring> result;
        for (const auto& m : messages()) {
            const auto first = m.find(L'\n');
            const auto second = m.find(L'\n', first + 1);
            result.push_back(first == std::wstring::npos ? m : m.substr(first + 1, second - first - 1));
        }
        return result;
    }
    std::size_t count() const { return messages().size(); }
    void clear() {
        std::lock_guard lock(mMutex);
        mMessages.clear();
    }

private:
    mutable std::mutex mMutex;
    std::vector<std::wstring> mMessages;
    ox::assertHandler mPrevious;
};

} // namespace oxtest
