// Leaks on purpose, with the GL driver loaded: the address-sanitized suite runs it and passes only
// when the leak checker reports this leak, so no sanitizer option can quietly switch leak
// detection off for the processes that draw.
#include "oxglcontext.h"

#include <cstdio>

int* volatile gLeaked = nullptr; // volatile: the allocation must not be optimised away

int main() {
    auto context = oxGraphics::openGL::createHeadlessContext({16, 16, false});
    if (!context || !context->makeCurrent()) {
        std::puts("leakCanary: no headless GL context");
        return 1;
    }
    gLeaked = new int[64];
    gLeaked[0] = 1;
    gLeaked = nullptr; // the only pointer is gone: a leak the checker must report
    return 0;
}
