#pragma once
// glRecording: a display list that caches what a drawable emitted through a drawer.
//
// A recording belongs to the context it was compiled in and holds a reference to it, so the
// context object outlives its lists. It is valid while that context can be made current and the
// list exists there; a destroyed context makes it invalid for good (its id drops to 0).
//
// Each recording also owns the CPU capture of what its drawer emitted (pickcapture.h), which
// answers rectangle selections without selection mode. Only glDrawer fills and seals it; a list
// compiled by other means keeps an unsealed capture, which selections do not trust.
#include "oxrecorded.h"

#include "picking/pickcapture.h"

#include "oxglcontext.h"

#include "oxrefobj.h"
#include "oxrefptr.h"

#include <cstdint>

namespace oxGraphics::openGL {

class iDrawerHost;

class glRecording : public iRecorded, public ox::refObj {
public:
    /// Starts compiling a new list (GL_COMPILE) in the host's context. Empty when the host has no
    /// context, it cannot be made current, or a list is already being compiled there.
    static ox::refPtr<glRecording> create(const iDrawerHost& host);
    /// The same with the context given explicitly.
    static ox::refPtr<glRecording> create(const ox::refPtr<iGlContext>& context);

    /// Makes the recording's context current first. False, and the id becomes 0, when that fails,
    /// when no context is current afterwards, or when the id is already 0; otherwise glIsList.
    bool isValid() override;

    /// Ends the compilation (glEndList in the recording's context). False when the recording was
    /// not compiling or its context cannot be made current.
    bool endCompiling();
    bool isCompiling() const { return mCompiling; }

    /// 0 once the recording was found invalid.
    std::uint32_t listId() const { return mListId; }
    const ox::refPtr<iGlContext>& context() const { return mContext; }
    /// What the drawer emitted while compiling; see pickcapture.h for when it can be replayed.
    pickCapture* capture() { return &mCapture; }
    const pickCapture* capture() const { return &mCapture; }

protected:
    /// Deletes the list when it is still valid and releases the id. Never throws.
    ~glRecording() override;

private:
    glRecording(ox::refPtr<iGlContext> context, std::uint32_t listId);

    std::uint32_t mListId;
    ox::refPtr<iGlContext> mContext;
    bool mCompiling = true;
    pickCapture mCapture;
};

} // namespace oxGraphics::openGL
