#pragma once
// Owners of GL object names: one move-only owner per name, exactly the size of the name, that
// deletes it with the matching glDelete* when it is destroyed or reset.
//
// Contract: an owner does not know its context (it is only the name), so the object that holds
// owners makes its own context current before they die or are reset. When that context is
// already gone it took its names along: call abandon() instead. With no context current at all an
// owner deletes nothing, because GL calls without a context may crash; with another context
// current it would delete that context's name of the same number, hence the contract.
//
// Names a host owns are wrapped by glAdoptedName<kind>, the same size, which never deletes.
//
//     glTextureName color = glTextureName::generate();
//     glBindTexture(GL_TEXTURE_2D, color.get());
//     ...
//     if (!context->makeCurrent()) color.abandon();   // before color dies
#include "oxglcontext.h"

#include <GL/glew.h>

#include <utility>

namespace oxGraphics::openGL {

// --- kinds: how one kind of name is generated and deleted ----------------------------------------

struct glTextureNames {
    using handle_t = GLuint;
    static GLuint generate() {
        GLuint name = 0;
        glGenTextures(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteTextures(1, &name); }
    static bool isNull(GLuint name) { return name == 0; }
};

struct glFramebufferNames {
    using handle_t = GLuint;
    static GLuint generate() {
        GLuint name = 0;
        glGenFramebuffers(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteFramebuffers(1, &name); }
    static bool isNull(GLuint name) { return name == 0; }
};

struct glRenderbufferNames {
    using handle_t = GLuint;
    static GLuint generate() {
        GLuint name = 0;
        glGenRenderbuffers(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteRenderbuffers(1, &name); }
    static bool isNull(GLuint name) { return name == 0; }
};

struct glBufferNames {
    using handle_t = GLuint;
    static GLuint generate() {
        GLuint name = 0;
        glGenBuffers(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteBuffers(1, &name); }
    static bool isNull(GLuint name) { return name == 0; }
};

struct glVertexArrayNames {
    using handle_t = GLuint;
    static GLuint generate() {
        GLuint name = 0;
        glGenVertexArrays(1, &name);
        return name;
    }
    static void destroy(GLuint name) { glDeleteVertexArrays(1, &name); }
    static bool isNull(GLuint name) { return name == 0; }
};

/// A run of consecutive display-list names: glDeleteLists needs the count as well as the first
/// name, so this handle is two GLuints.
struct glListRange_t {
    GLuint base = 0;
    GLsizei count = 0;
    bool operator==(const glListRange_t&) const = default;
};

struct glDisplayListNames {
    using handle_t = glListRange_t;
    static glListRange_t generate(GLsizei count) {
        const GLuint base = glGenLists(count);
        return {base, base != 0 ? count : 0};
    }
    static void destroy(glListRange_t range) { glDeleteLists(range.base, range.count); }
    static bool isNull(glListRange_t range) { return range.base == 0; }
};

// --- the owner --------------------------------------------------------------------------------

enum class eNameOwnership { owned, adopted };

/// Holds one handle of `kind`. Owned: deletes it (see the contract above). Adopted: never does.
template <class kind, eNameOwnership ownership = eNameOwnership::owned> class glName {
public:
    using handle_t = typename kind::handle_t;
    static constexpr bool kOwns = ownership == eNameOwnership::owned;

    glName() = default;
    /// Takes over `handle` (owned) or wraps it (adopted).
    explicit glName(handle_t handle) : mHandle(handle) {}
    /// A new name; its arguments are the kind's (a display-list range takes its count). Empty
    /// when GL gave none.
    template <class... arguments>
        requires kOwns
    static glName generate(arguments... values) {
        return glName(kind::generate(values...));
    }

    ~glName() { destroy(); }
    glName(glName&& other) noexcept : mHandle(std::exchange(other.mHandle, handle_t{})) {}
    glName& operator=(glName&& other) noexcept {
        if (this != &other) reset(std::exchange(other.mHandle, handle_t{}));
        return *this;
    }
    glName(const glName&) = delete;
    glName& operator=(const glName&) = delete;

    handle_t get() const { return mHandle; }
    explicit operator bool() const { return !kind::isNull(mHandle); }

    /// Deletes the name held (owned) and holds `handle` instead.
    void reset(handle_t handle = {}) {
        if (handle == mHandle) return;
        destroy();
        mHandle = handle;
    }
    /// Hands the name to the caller, who deletes it from now on.
    [[nodiscard]] handle_t release() { return std::exchange(mHandle, handle_t{}); }
    /// Forgets the name without deleting it: its context is gone and took the name along.
    void abandon() { mHandle = handle_t{}; }

private:
    void destroy() {
        if constexpr (kOwns)
            if (!kind::isNull(mHandle) && isAnyContextCurrent()) kind::destroy(mHandle);
    }

    handle_t mHandle{};
};

/// A host's name, never deleted by the library.
template <class kind> using glAdoptedName = glName<kind, eNameOwnership::adopted>;

using glTextureName = glName<glTextureNames>;
using glFramebufferName = glName<glFramebufferNames>;
using glRenderbufferName = glName<glRenderbufferNames>;
using glBufferName = glName<glBufferNames>;
using glVertexArrayName = glName<glVertexArrayNames>;
using glDisplayListRange = glName<glDisplayListNames>;

// Owners sit in arrays and GPU-side structures in place of the plain names.
static_assert(sizeof(glTextureName) == sizeof(GLuint) && sizeof(glFramebufferName) == sizeof(GLuint) &&
              sizeof(glRenderbufferName) == sizeof(GLuint) && sizeof(glBufferName) == sizeof(GLuint) &&
              sizeof(glVertexArrayName) == sizeof(GLuint) && sizeof(glAdoptedName<glTextureNames>) == sizeof(GLuint));
static_assert(sizeof(glDisplayListRange) == 2 * sizeof(GLuint));

} // namespace oxGraphics::openGL
