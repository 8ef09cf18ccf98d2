#pragma once
// Counts calls of one GL entry point by swapping GLEW's function pointer for a forwarding
// wrapper while alive. The library and the tests share the system's libGLEW, so the library's
// calls go through the wrapper too.
//
//     glCallCounter<&__glewUniform1i> uniform1i;
//     program.setUniformInt("u_value", 1);
//     EXPECT_EQ(uniform1i.calls(), 1);
#include <GL/glew.h>

#include <type_traits>

namespace oxtest {

namespace detail {
template <auto* Slot, class Function> struct glHook;
template <auto* Slot, class Result, class... Args> struct glHook<Slot, Result(GLAPIENTRY*)(Args...)> {
    static inline int calls = 0;
    static inline Result(GLAPIENTRY* original)(Args...) = nullptr;
    static Result GLAPIENTRY forward(Args... args) {
        ++calls;
        return original(args...);
    }
};
} // namespace detail

template <auto* Slot> class glCallCounter {
    using hook = detail::glHook<Slot, std::remove_pointer_t<decltype(Slot)>>;

public:
    glCallCounter() {
        hook::calls = 0;
        hook::original = *Slot;
        *Slot = &hook::forward;
    }
    ~glCallCounter() { *Slot = hook::original; }
    glCallCounter(const glCallCounter&) = delete;
    glCallCounter& operator=(const glCallCounter&) = delete;

    int calls() const { return hook::calls; }
};

} // namespace oxtest
