#pragma once
// Scoped GL state: each scope saves one piece of state when it opens and puts back exactly what it
// saved when it closes, so code that works on a caller's or a host's context leaves it as it was.
// Open scopes only while the context they save from is current, and close them in that context.
//
//     {
//         const glFramebufferBindingScope framebuffers(GL_FRAMEBUFFER, target);
//         const glViewportScope viewport(0, 0, width, height);
//         const glCapabilityScope depthTest(GL_DEPTH_TEST, false);
//         draw();
//     }   // framebuffers, viewport and depth test are back
#include <GL/glew.h>

#include <array>
#include <cstddef>

namespace oxGraphics::openGL {

namespace glstate {

inline GLint readInteger(GLenum name) {
    GLint value = 0;
    glGetIntegerv(name, &value);
    return value;
}

inline GLuint readName(GLenum name) { return static_cast<GLuint>(readInteger(name)); }

// A saved binding may name an object deleted while the scope was open. Binding that name again
// would create a new, empty object in a compatibility context, so the binding goes back to 0.
template <class isObject> GLuint restorable(GLuint name, isObject exists) {
    return name != 0 && exists(name) != GL_TRUE ? 0 : name;
}

/// The query that reads a texture target's binding on the active unit; 0 for other targets.
inline GLenum textureBindingQuery(GLenum target) {
    switch (target) {
    case GL_TEXTURE_1D: return GL_TEXTURE_BINDING_1D;
    case GL_TEXTURE_2D: return GL_TEXTURE_BINDING_2D;
    case GL_TEXTURE_1D_ARRAY: return GL_TEXTURE_BINDING_1D_ARRAY;
    case GL_TEXTURE_2D_ARRAY: return GL_TEXTURE_BINDING_2D_ARRAY;
    case GL_TEXTURE_2D_MULTISAMPLE: return GL_TEXTURE_BINDING_2D_MULTISAMPLE;
    case GL_TEXTURE_2D_MULTISAMPLE_ARRAY: return GL_TEXTURE_BINDING_2D_MULTISAMPLE_ARRAY;
    case GL_TEXTURE_RECTANGLE: return GL_TEXTURE_BINDING_RECTANGLE;
    case GL_TEXTURE_3D: return GL_TEXTURE_BINDING_3D;
    case GL_TEXTURE_CUBE_MAP: return GL_TEXTURE_BINDING_CUBE_MAP;
    case GL_TEXTURE_BUFFER: return GL_TEXTURE_BINDING_BUFFER;
    default: return 0;
    }
}

/// The query that reads a buffer target's binding; 0 for other targets.
inline GLenum bufferBindingQuery(GLenum target) {
    switch (target) {
    case GL_ARRAY_BUFFER: return GL_ARRAY_BUFFER_BINDING;
    case GL_ELEMENT_ARRAY_BUFFER: return GL_ELEMENT_ARRAY_BUFFER_BINDING;
    case GL_PIXEL_PACK_BUFFER: return GL_PIXEL_PACK_BUFFER_BINDING;
    case GL_PIXEL_UNPACK_BUFFER: return GL_PIXEL_UNPACK_BUFFER_BINDING;
    case GL_UNIFORM_BUFFER: return GL_UNIFORM_BUFFER_BINDING;
    case GL_COPY_READ_BUFFER: return GL_COPY_READ_BUFFER_BINDING;
    case GL_COPY_WRITE_BUFFER: return GL_COPY_WRITE_BUFFER_BINDING;
    case GL_TEXTURE_BUFFER: return GL_TEXTURE_BUFFER_BINDING;
    case GL_DRAW_INDIRECT_BUFFER: return GL_DRAW_INDIRECT_BUFFER_BINDING;
    case GL_SHADER_STORAGE_BUFFER: return GL_SHADER_STORAGE_BUFFER_BINDING;
    default: return 0;
    }
}

/// The common shape of every scope: saved on construction, restored on destruction, never copied
/// or moved (a moved scope would restore twice or at the wrong time).
class glScope {
public:
    glScope(const glScope&) = delete;
    glScope& operator=(const glScope&) = delete;

protected:
    glScope() = default;
    ~glScope() = default;
};

// One binding read by one query and set by one call: a program, a renderbuffer, a vertex array.
template <class binding> class glBindingScope : glScope {
public:
    /// Saves the binding.
    glBindingScope() : mSaved(readName(binding::query)) {}
    /// Saves the binding, then binds `name`.
    explicit glBindingScope(GLuint name) : glBindingScope() { binding::bind(name); }
    ~glBindingScope() { binding::bind(restorable(mSaved, binding::exists)); }

private:
    GLuint mSaved;
};

struct programBinding {
    static constexpr GLenum query = GL_CURRENT_PROGRAM;
    static void bind(GLuint name) { glUseProgram(name); }
    static GLboolean exists(GLuint name) { return glIsProgram(name); }
};
struct renderbufferBinding {
    static constexpr GLenum query = GL_RENDERBUFFER_BINDING;
    static void bind(GLuint name) { glBindRenderbuffer(GL_RENDERBUFFER, name); }
    static GLboolean exists(GLuint name) { return glIsRenderbuffer(name); }
};
struct vertexArrayBinding {
    static constexpr GLenum query = GL_VERTEX_ARRAY_BINDING;
    static void bind(GLuint name) { glBindVertexArray(name); }
    static GLboolean exists(GLuint name) { return glIsVertexArray(name); }
};

} // namespace glstate

/// GL_CURRENT_PROGRAM.
using glProgramScope = glstate::glBindingScope<glstate::programBinding>;
/// The GL_RENDERBUFFER binding.
using glRenderbufferBindingScope = glstate::glBindingScope<glstate::renderbufferBinding>;
/// The vertex array binding (and with it the element-array binding, which is its state).
using glVertexArrayBindingScope = glstate::glBindingScope<glstate::vertexArrayBinding>;

/// Both framebuffer bindings, draw and read, whichever of them the code inside changes.
class glFramebufferBindingScope : glstate::glScope {
public:
    glFramebufferBindingScope()
        : mDraw(glstate::readName(GL_DRAW_FRAMEBUFFER_BINDING)), mRead(glstate::readName(GL_READ_FRAMEBUFFER_BINDING)) {}
    /// Saves both, then binds `framebuffer` to `target` (GL_FRAMEBUFFER, GL_DRAW_ or GL_READ_FRAMEBUFFER).
    glFramebufferBindingScope(GLenum target, GLuint framebuffer) : glFramebufferBindingScope() {
        glBindFramebuffer(target, framebuffer);
    }
    ~glFramebufferBindingScope() {
        const auto exists = [](GLuint name) { return glIsFramebuffer(name); };
        glBindFramebuffer(GL_DRAW_FRAMEBUFFER, glstate::restorable(mDraw, exists));
        glBindFramebuffer(GL_READ_FRAMEBUFFER, glstate::restorable(mRead, exists));
    }

private:
    GLuint mDraw;
    GLuint mRead;
};

/// The active texture unit and one target's binding on a given unit. The given unit stays active
/// while the scope is open, so the code inside binds and sets parameters on it.
class glTextureBindingScope : glstate::glScope {
public:
    /// `unit` is GL_TEXTURE0 + i. A target without a binding query (see textureBindingQuery)
    /// keeps only the active unit.
    glTextureBindingScope(GLenum unit, GLenum target)
        : mUnit(unit), mTarget(target), mSavedUnit(static_cast<GLenum>(glstate::readInteger(GL_ACTIVE_TEXTURE))) {
        glActiveTexture(unit);
        const GLenum query = glstate::textureBindingQuery(target);
        mHasBinding = query != 0;
        if (mHasBinding) mSavedTexture = glstate::readName(query);
    }
    /// Saves both, then binds `texture` to `target` on `unit`.
    glTextureBindingScope(GLenum unit, GLenum target, GLuint texture) : glTextureBindingScope(unit, target) {
        glBindTexture(target, texture);
    }
    ~glTextureBindingScope() {
        if (mHasBinding) {
            glActiveTexture(mUnit);
            glBindTexture(mTarget, glstate::restorable(mSavedTexture, [](GLuint name) { return glIsTexture(name); }));
        }
        glActiveTexture(mSavedUnit);
    }

private:
    GLenum mUnit;
    GLenum mTarget;
    GLenum mSavedUnit;
    GLuint mSavedTexture = 0;
    bool mHasBinding = false;
};

/// One buffer target's binding. The element-array binding belongs to the bound vertex array:
/// keep the vertex array unchanged while such a scope is open, or restore it with its own scope.
class glBufferBindingScope : glstate::glScope {
public:
    explicit glBufferBindingScope(GLenum target) : mTarget(target) {
        const GLenum query = glstate::bufferBindingQuery(target);
        mHasBinding = query != 0;
        if (mHasBinding) mSaved = glstate::readName(query);
    }
    /// Saves the binding, then binds `buffer`.
    glBufferBindingScope(GLenum target, GLuint buffer) : glBufferBindingScope(target) { glBindBuffer(target, buffer); }
    ~glBufferBindingScope() {
        if (mHasBinding) glBindBuffer(mTarget, glstate::restorable(mSaved, [](GLuint name) { return glIsBuffer(name); }));
    }

private:
    GLenum mTarget;
    GLuint mSaved = 0;
    bool mHasBinding = false;
};

/// One capability (GL_DEPTH_TEST, GL_BLEND, ...) set to the wanted state for the scope.
class glCapabilityScope : glstate::glScope {
public:
    glCapabilityScope(GLenum capability, bool enabled) : mCapability(capability), mSaved(glIsEnabled(capability) == GL_TRUE) {
        set(enabled);
    }
    ~glCapabilityScope() { set(mSaved); }

private:
    void set(bool enabled) const { enabled ? glEnable(mCapability) : glDisable(mCapability); }

    GLenum mCapability;
    bool mSaved;
};

/// The viewport.
class glViewportScope : glstate::glScope {
public:
    glViewportScope() { glGetIntegerv(GL_VIEWPORT, mSaved.data()); }
    /// Saves the viewport, then sets this one.
    glViewportScope(GLint x, GLint y, GLsizei width, GLsizei height) : glViewportScope() { glViewport(x, y, width, height); }
    ~glViewportScope() { glViewport(mSaved[0], mSaved[1], mSaved[2], mSaved[3]); }

private:
    std::array<GLint, 4> mSaved{};
};

/// The scissor box.
class glScissorBoxScope : glstate::glScope {
public:
    /// Saves the box, then sets this one.
    glScissorBoxScope(GLint x, GLint y, GLsizei width, GLsizei height) {
        glGetIntegerv(GL_SCISSOR_BOX, mSaved.data());
        glScissor(x, y, width, height);
    }
    ~glScissorBoxScope() { glScissor(mSaved[0], mSaved[1], mSaved[2], mSaved[3]); }

private:
    std::array<GLint, 4> mSaved{};
};

/// The depth write mask, set to the wanted state for the scope.
class glDepthMaskScope : glstate::glScope {
public:
    explicit glDepthMaskScope(bool write) {
        glGetBooleanv(GL_DEPTH_WRITEMASK, &mSaved);
        glDepthMask(write ? GL_TRUE : GL_FALSE);
    }
    ~glDepthMaskScope() { glDepthMask(mSaved); }

private:
    GLboolean mSaved = GL_TRUE;
};

/// The colour write mask, set to the wanted channels for the scope. The mask is saved as draw
/// buffer 0 has it and restored on every draw buffer.
class glColorMaskScope : glstate::glScope {
public:
    glColorMaskScope(bool red, bool green, bool blue, bool alpha) {
        glGetBooleanv(GL_COLOR_WRITEMASK, mSaved.data());
        glColorMask(red, green, blue, alpha);
    }
    ~glColorMaskScope() { glColorMask(mSaved[0], mSaved[1], mSaved[2], mSaved[3]); }

private:
    std::array<GLboolean, 4> mSaved{};
};

/// The depth function, set to the wanted one for the scope.
class glDepthFuncScope : glstate::glScope {
public:
    explicit glDepthFuncScope(GLenum function) : mSaved(static_cast<GLenum>(glstate::readInteger(GL_DEPTH_FUNC))) {
        glDepthFunc(function);
    }
    ~glDepthFuncScope() { glDepthFunc(mSaved); }

private:
    GLenum mSaved;
};

/// Polygon offset factor and units, set to the wanted ones for the scope (whether offsetting is
/// enabled for filled polygons, lines or points are capabilities: glCapabilityScope).
class glPolygonOffsetScope : glstate::glScope {
public:
    glPolygonOffsetScope(GLfloat factor, GLfloat units) {
        glGetFloatv(GL_POLYGON_OFFSET_FACTOR, &mFactor);
        glGetFloatv(GL_POLYGON_OFFSET_UNITS, &mUnits);
        glPolygonOffset(factor, units);
    }
    ~glPolygonOffsetScope() { glPolygonOffset(mFactor, mUnits); }

private:
    GLfloat mFactor = 0.0f;
    GLfloat mUnits = 0.0f;
};

/// Which faces culling removes and which winding is front, set for the scope (whether culling is
/// on is a capability: glCapabilityScope). A host may have turned either round.
class glCullFaceScope : glstate::glScope {
public:
    glCullFaceScope(GLenum culled, GLenum frontFace)
        : mCulled(static_cast<GLenum>(glstate::readInteger(GL_CULL_FACE_MODE))),
          mFrontFace(static_cast<GLenum>(glstate::readInteger(GL_FRONT_FACE))) {
        glCullFace(culled);
        glFrontFace(frontFace);
    }
    ~glCullFaceScope() {
        glCullFace(mCulled);
        glFrontFace(mFrontFace);
    }

private:
    GLenum mCulled;
    GLenum mFrontFace;
};

/// Everything the stencil test works with, for front and back faces: function, reference, value
/// mask, the three operations and the write mask; and the stencil clear value. Whether the test
/// is enabled is a capability (glCapabilityScope). The code inside sets what it needs.
class glStencilScope : glstate::glScope {
public:
    glStencilScope() : mFront(read(false)), mBack(read(true)), mClear(glstate::readInteger(GL_STENCIL_CLEAR_VALUE)) {}
    ~glStencilScope() {
        write(GL_FRONT, mFront);
        write(GL_BACK, mBack);
        glClearStencil(mClear);
    }

private:
    struct face_t {
        GLint function, reference, valueMask, fail, depthFail, depthPass, writeMask;
    };
    static face_t read(bool back) {
        using glstate::readInteger;
        return back ? face_t{readInteger(GL_STENCIL_BACK_FUNC),       readInteger(GL_STENCIL_BACK_REF),
                             readInteger(GL_STENCIL_BACK_VALUE_MASK), readInteger(GL_STENCIL_BACK_FAIL),
                             readInteger(GL_STENCIL_BACK_PASS_DEPTH_FAIL), readInteger(GL_STENCIL_BACK_PASS_DEPTH_PASS),
                             readInteger(GL_STENCIL_BACK_WRITEMASK)}
                    : face_t{readInteger(GL_STENCIL_FUNC),       readInteger(GL_STENCIL_REF),
                             readInteger(GL_STENCIL_VALUE_MASK), readInteger(GL_STENCIL_FAIL),
                             readInteger(GL_STENCIL_PASS_DEPTH_FAIL), readInteger(GL_STENCIL_PASS_DEPTH_PASS),
                             readInteger(GL_STENCIL_WRITEMASK)};
    }
    static void write(GLenum face, const face_t& f) {
        glStencilFuncSeparate(face, static_cast<GLenum>(f.function), f.reference, static_cast<GLuint>(f.valueMask));
        glStencilOpSeparate(face, static_cast<GLenum>(f.fail), static_cast<GLenum>(f.depthFail),
                            static_cast<GLenum>(f.depthPass));
        glStencilMaskSeparate(face, static_cast<GLuint>(f.writeMask));
    }

    face_t mFront;
    face_t mBack;
    GLint mClear;
};

/// A group of the compatibility attribute stack (GL_LIGHTING_BIT, GL_CURRENT_BIT, ...), pushed
/// for the scope: for state with too many pieces to save one by one, such as lights and materials.
class glAttribScope : glstate::glScope {
public:
    explicit glAttribScope(GLbitfield groups) { glPushAttrib(groups); }
    ~glAttribScope() { glPopAttrib(); }
};

/// Blending: whether it is enabled, the RGB and alpha equations and the four factors. Saved as
/// draw buffer 0 has them and restored on every draw buffer, which also undoes glBlendFunci and
/// glBlendEquationi calls made inside.
class glBlendScope : glstate::glScope {
public:
    glBlendScope()
        : mEnabled(glIsEnabled(GL_BLEND) == GL_TRUE),
          mState{glstate::readName(GL_BLEND_EQUATION_RGB), glstate::readName(GL_BLEND_EQUATION_ALPHA),
                 glstate::readName(GL_BLEND_SRC_RGB),      glstate::readName(GL_BLEND_DST_RGB),
                 glstate::readName(GL_BLEND_SRC_ALPHA),    glstate::readName(GL_BLEND_DST_ALPHA)} {}
    ~glBlendScope() {
        mEnabled ? glEnable(GL_BLEND) : glDisable(GL_BLEND);
        glBlendEquationSeparate(mState[0], mState[1]);
        glBlendFuncSeparate(mState[2], mState[3], mState[4], mState[5]);
    }

private:
    bool mEnabled;
    std::array<GLenum, 6> mState;   // equation RGB, equation alpha, source RGB, destination RGB, source alpha, destination alpha
};

/// Tightly packed pixel transfers whatever pixel-store state the host left in its context: saves
/// the pack or unpack parameters and the pixel buffer bound for them, sets byte alignment with no
/// row length, skips or buffer, and puts every one of them back when it goes out of scope.
class glPixelStore : glstate::glScope {
public:
    enum class eDirection { pack, unpack };

    explicit glPixelStore(eDirection direction)
        : mDirection(direction),
          mBuffer(direction == eDirection::pack ? GL_PIXEL_PACK_BUFFER : GL_PIXEL_UNPACK_BUFFER, 0) {
        const auto& names = parameterNames();
        for (std::size_t i = 0; i < names.size(); ++i) {
            glGetIntegerv(names[i], &mSaved[i]);
            glPixelStorei(names[i], names[i] == alignmentName() ? 1 : 0);
        }
    }
    ~glPixelStore() {
        const auto& names = parameterNames();
        for (std::size_t i = 0; i < names.size(); ++i) glPixelStorei(names[i], mSaved[i]);
    }

private:
    const std::array<GLenum, 8>& parameterNames() const {
        static const std::array<GLenum, 8> pack = {GL_PACK_SWAP_BYTES,  GL_PACK_LSB_FIRST,   GL_PACK_ROW_LENGTH,
                                                   GL_PACK_IMAGE_HEIGHT, GL_PACK_SKIP_ROWS,   GL_PACK_SKIP_PIXELS,
                                                   GL_PACK_SKIP_IMAGES,  GL_PACK_ALIGNMENT};
        static const std::array<GLenum, 8> unpack = {GL_UNPACK_SWAP_BYTES,  GL_UNPACK_LSB_FIRST, GL_UNPACK_ROW_LENGTH,
                                                     GL_UNPACK_IMAGE_HEIGHT, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS,
                                                     GL_UNPACK_SKIP_IMAGES,  GL_UNPACK_ALIGNMENT};
        return mDirection == eDirection::pack ? pack : unpack;
    }
    GLenum alignmentName() const { return mDirection == eDirection::pack ? GL_PACK_ALIGNMENT : GL_UNPACK_ALIGNMENT; }

    eDirection mDirection;
    glBufferBindingScope mBuffer;   // the pixel buffer, unbound for the scope
    std::array<GLint, 8> mSaved{};
};

/// Screen-space drawing inside a frame: saves the projection and model-view matrices, loads a
/// screen projection and an identity model-view, and puts both back, and the matrix mode, when it
/// goes out of scope. GL_MODELVIEW is the mode inside.
class glScreenMatrices : glstate::glScope {
public:
    /// Normalised device coordinates (-1..1) without a size; window pixels (0..width, 0..height,
    /// y up) with one.
    explicit glScreenMatrices(int width = 0, int height = 0)
        : mSavedMode(static_cast<GLenum>(glstate::readInteger(GL_MATRIX_MODE))) {
        glMatrixMode(GL_PROJECTION);
        glPushMatrix();
        glLoadIdentity();
        if (width > 0 && height > 0) glOrtho(0, width, 0, height, -1, 1);
        glMatrixMode(GL_MODELVIEW);
        glPushMatrix();
        glLoadIdentity();
    }
    ~glScreenMatrices() {
        glMatrixMode(GL_MODELVIEW);
        glPopMatrix();
        glMatrixMode(GL_PROJECTION);
        glPopMatrix();
        glMatrixMode(mSavedMode);
    }

private:
    GLenum mSavedMode;
};

} // namespace oxGraphics::openGL
