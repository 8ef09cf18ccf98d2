#include "glsharegroups.h"

#include "oxglcontext.h"
#include "oxglprogramlibrary.h"

#include <GL/glew.h>

#include <algorithm>
#include <array>

namespace oxGraphics::openGL {

glShareGroups::glShareGroups() = default;
glShareGroups::~glShareGroups() = default;

std::size_t glShareGroups::groupCount() const {
    std::lock_guard lock(mMutex);
    return mGroups.size();
}

bool glShareGroups::contextSees(const group_t& group) const {
    if (group.probe == 0 || glIsBuffer(group.probe) != GL_TRUE) return false;
    std::array<char, 64> label{};
    GLsizei length = 0;
    glGetObjectLabel(GL_BUFFER, group.probe, static_cast<GLsizei>(label.size()), &length, label.data());
    return group.label == std::string(label.data(), static_cast<std::size_t>(length));
}

std::size_t glShareGroups::createGroup(void* context, const libraryFactory& makeLibrary) {
    group_t group;
    if (GLEW_KHR_debug && GLEW_ARB_direct_state_access) {
        // Created, not only named, so that it can carry a label; no binding is touched.
        glCreateBuffers(1, &group.probe);
        group.label = "oxGraphics share group " + std::to_string(mGroups.size() + 1);
        glObjectLabel(GL_BUFFER, group.probe, -1, group.label.c_str());
    }
    group.library = makeLibrary();
    mGroups.push_back(std::move(group));
    mMembers.push_back({context, mGroups.size() - 1});
    return mGroups.size() - 1;
}

glProgramLibrary* glShareGroups::libraryOfCurrentContext(const libraryFactory& makeLibrary) {
    void* const context = currentNativeContext();
    if (context == nullptr) return nullptr;
    std::lock_guard lock(mMutex);
    const auto known = std::find_if(mMembers.begin(), mMembers.end(), [&](const member_t& m) { return m.context == context; });
    if (known != mMembers.end()) {
        const group_t& group = mGroups[known->group];
        if (group.probe == 0 || contextSees(group)) return group.library.get();
        mMembers.erase(known); // a new context where a destroyed one used to be
    }
    for (std::size_t i = 0; i < mGroups.size(); ++i) {
        if (!contextSees(mGroups[i])) continue;
        mMembers.push_back({context, i});
        return mGroups[i].library.get();
    }
    return mGroups[createGroup(context, makeLibrary)].library.get();
}

} // namespace oxGraphics::openGL
