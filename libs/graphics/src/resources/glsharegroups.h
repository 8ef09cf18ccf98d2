#pragma once
// Which contexts share GL objects. OpenGL cannot be asked; instead the first context of each
// group gets a small probe buffer carrying a label unique to the group, and a context belongs to
// a group when it sees that buffer with that label. Remembered answers are checked against the
// probe on every lookup, so a context created later at the address of a destroyed one is not
// mistaken for it. Without object labels (no KHR_debug) every context is its own group.
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace oxGraphics::openGL {

class glProgramLibrary;

class glShareGroups {
public:
    using libraryFactory = std::function<std::unique_ptr<glProgramLibrary>()>;

    glShareGroups();
    ~glShareGroups();
    glShareGroups(const glShareGroups&) = delete;
    glShareGroups& operator=(const glShareGroups&) = delete;

    /// The library of the current context's group, made with `makeLibrary` for a new group;
    /// null when no context is current.
    glProgramLibrary* libraryOfCurrentContext(const libraryFactory& makeLibrary);
    /// How many groups have been seen (for tests).
    std::size_t groupCount() const;

private:
    struct group_t {
        unsigned int probe = 0;  // buffer name in the group's contexts; 0 without labels
        std::string label;
        std::unique_ptr<glProgramLibrary> library;
    };
    struct member_t {
        void* context = nullptr;
        std::size_t group = 0;
    };

    bool contextSees(const group_t& group) const;
    std::size_t createGroup(void* context, const libraryFactory& makeLibrary);

    mutable std::mutex mMutex;
    std::vector<group_t> mGroups;
    std::vector<member_t> mMembers;
};

} // namespace oxGraphics::openGL
