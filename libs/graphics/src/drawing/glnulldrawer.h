#pragma once
// glNullDrawer: runs drawables' code without any geometry output. Matrices, names and colours act
// as in glRenderDrawer; every drawing operation and drawRecording does nothing; a recording begun
// through it is compiled and thrown away (endRecording returns an empty pointer).
#include "glrenderdrawer.h"

namespace oxGraphics::openGL {

class glNullDrawer : public glRenderDrawer {
public:
    explicit glNullDrawer(iDrawerHost* host);
    ~glNullDrawer() override;

    void drawPoint(const oxGeo::point3d&) override {}
    void drawPoints(const std::vector<oxGeo::point3d>&) override {}
    void drawLine(const oxGeo::point3d&, const oxGeo::point3d&, bool) override {}
    void drawArrowHead(const oxGeo::point3d&, const oxGeo::point3d&, float, float) override {}
    void drawStippledLine(const oxGeo::point3d&, const oxGeo::point3d&, int, bool) override {}
    void drawPolyline(const std::vector<oxGeo::point3d>&) override {}
    void drawMesh(const oxGeo::mesh3d&, int) override {}
    void drawMeshPatchColors(const oxGeo::mesh3d&, const std::vector<ox::rgbColor>&, const ox::rgbColor&,
                             const ox::rgbColor&, int) override {}
    void drawPatch(const oxGeo::indexedTrianglePatch3d&, int) override {}
    void drawCylinder(const oxGeo::point3d&, const oxGeo::point3d&, float, float, bool, bool, int, int) override {}
    void drawDisk(const oxGeo::point3d&, const oxGeo::vector3d&, float, int, int) override {}
    void drawSphere(const oxGeo::point3d&, float, int, int, int) override {}
    void drawText(const ox::string&, const ox::string&) override {}
    void drawMeshGradient(const oxGeo::mesh3d&, float, const ox::rgbColor&, const ox::rgbColor&,
                          const oxGeo::point3d&, const oxGeo::point3d&) override {}
    void drawRecording(const ox::refPtr<iRecorded>&) override {}
    /// Closes the open list (in the recording's context) and discards it: always empty.
    ox::refPtr<iRecorded> endRecording() override;
};

} // namespace oxGraphics::openGL
