// A host built against the installed package only: one find_package, one target, one frame.
#include "oxscene.h"
#include "oxmeshentity.h"
#include "oxglframebuffer.h"
#include "oxgeomeshfactory.h"
#include <cstdio>
#include <memory>
int main() {
    auto context = oxGraphics::openGL::createHeadlessContext({64, 64});
    auto view = oxGraphics::scene::create(context, false, false);
    view->initGfxApiState();
    view->resize(64, 64, 10.0, 0, 0, 0, 0);
    auto mesh = std::make_shared<oxGeo::mesh3d>();
    oxGeo::meshfactory::appendBoxMesh(2, 2, 2, *mesh, true);
    view->add(ox::refPtr<oxGraphics::iDrawable>(oxGraphics::meshEntity::create(ox::const_sharedPtr<oxGeo::mesh3d>(mesh))));
    view->setupForPainting(); view->renderBefore(); view->draw(); view->renderAfter();
    std::unique_ptr<char[]> pixels(view->writeToBuffer());
    const unsigned char* p = reinterpret_cast<unsigned char*>(pixels.get()) + (32 * 64 + 32) * 4;
    std::printf("centre BGRA %d %d %d %d\n", p[0], p[1], p[2], p[3]);
    return p[0] > 100 ? 0 : 1;
}
