#include "glrecording.h"

#include "gldrawerhost.h"
#include "gllistidregistry.h"

#include "oxlog.h"

#include <GL/glew.h>

#include <utility>

namespace oxGraphics::openGL {

ox::refPtr<glRecording> glRecording::create(const iDrawerHost& host) { return create(host.glContext()); }

ox::refPtr<glRecording> glRecording::create(const ox::refPtr<iGlContext>& context) {
    if (!context || !context->makeCurrent()) return {};
    GLint openList = 0;
    glGetIntegerv(GL_LIST_INDEX, &openList);
    if (openList != 0) {
        // glNewList inside glNewList is an error and would leave the outer list to the wrong owner.
        OX_LOG_DEBUG("oxGraphics::openGL::glRecording::create", L"list %i is still being compiled", openList);
        return {};
    }
    // Skip ids this context already uses for lists of its own (the host's, the screen quad's):
    // compiling into one would overwrite it.
    std::uint32_t id = glListIdRegistry::instance().next();
    for (int tries = 0; glIsList(id) == GL_TRUE && tries < (1 << 20); ++tries) id = glListIdRegistry::instance().next();
    glNewList(id, GL_COMPILE);
    return ox::refPtr<glRecording>(new glRecording(context, id));
}

glRecording::glRecording(ox::refPtr<iGlContext> context, std::uint32_t listId)
    : mListId(listId), mContext(std::move(context)) {}

bool glRecording::isValid() {
    if (mListId == 0 || !mContext || !mContext->makeCurrent() || !isAnyContextCurrent()) {
        mListId = 0;
        return false;
    }
    return glIsList(mListId) == GL_TRUE;
}

bool glRecording::endCompiling() {
    if (!mCompiling) return false;
    mCompiling = false;
    if (!mContext || !mContext->makeCurrent()) return false;
    glEndList();
    return true;
}

glRecording::~glRecording() {
    try {
        // Dropped while compiling (its drawer died mid-recording): close the list first, so the
        // context does not stay in compile mode swallowing everything drawn afterwards.
        if (mCompiling) endCompiling();
        const std::uint32_t id = mListId;
        if (isValid()) glDeleteLists(id, 1);
        if (id != 0) glListIdRegistry::instance().release(id);
    } catch (...) {
    }
}

} // namespace oxGraphics::openGL
