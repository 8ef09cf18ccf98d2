#include "multisampleLimit.h"

#include <GL/gl.h>

namespace oxview {

int usableSamples(int requested, std::ostream& notes) {
    GLint limit = 0;
    glGetIntegerv(GL_MAX_SAMPLES, &limit);
    if (limit <= 0 || requested <= limit) return requested;
    notes << "oxview: " << requested << " samples asked for, the driver offers at most " << limit << "; using "
          << limit << "\n";
    return limit;
}

} // namespace oxview
