#pragma once
// The mask: host drawables drawn into "maskFbo" say which pixels they cover; before the opaque
// pass, the pixels the mask mode hides get the near plane as their depth (colour writes off), so
// nothing of the frame drawn afterwards shows there and the background stays. Runs on the shader
// path only.
#include "glcoveragedraw.h"

namespace oxGraphics::openGL {

class glMaskPass {
public:
    struct programs_t {
        shaderProgram* flat = nullptr;  ///< "objectOutlineShaderProgram"
        shaderProgram* mask = nullptr;  ///< "coverageMaskShaderProgram"
    };

    /// Applies the mask of `maskDrawables` to the frame of width × height pixels bound for
    /// drawing. Does nothing without drawables or programs. Ends with no program bound; every
    /// other state it changes is put back.
    void apply(const std::vector<ox::refPtr<iDrawable>>& maskDrawables, eMaskMode mode, const programs_t& programs,
               iDrawerHost* host, int width, int height);

    const glEffectTarget& target() const { return mTarget; }
    void release();
    void abandon();

private:
    glEffectTarget mTarget{"maskFbo", glEffectTarget::eFormat::coverage, false};
    std::unique_ptr<glScreenQuad> mQuad;
};

} // namespace oxGraphics::openGL
