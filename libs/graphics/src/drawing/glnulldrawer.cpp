#include "glnulldrawer.h"

#include "glrecording.h"

namespace oxGraphics::openGL {

glNullDrawer::glNullDrawer(iDrawerHost* host) : glRenderDrawer(host) {}

glNullDrawer::~glNullDrawer() = default;

ox::refPtr<iRecorded> glNullDrawer::endRecording() {
    // Dropping the recording deletes its list and releases the id.
    finishRecording();
    return {};
}

} // namespace oxGraphics::openGL
