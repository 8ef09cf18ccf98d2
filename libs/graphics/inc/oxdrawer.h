#pragma once
// iDrawer: everything a drawable shows goes through it. Drawables never call OpenGL themselves,
// so the same drawable can be rendered, highlighted, picked or recorded by handing it another
// drawer.
#include "oxgraphics_export.h"
#include "oxrecorded.h"

#include "oxcolor.h"
#include "oxgeomatrix.h"
#include "oxgeomesh.h"
#include "oxgeopoint.h"
#include "oxgeoray.h"
#include "oxgeovector.h"
#include "oxrefptr.h"
#include "oxstring.h"

#include <cstdint>
#include <vector>

namespace oxGraphics {

/// The operations in their fixed slot order (0 is the destructor). "mode" arguments: 1 draws
/// wire-frame, every other value filled. Colours are 8-bit; a transparency t in 0..1 is drawn
/// with alpha 1 - t.
class OX_GRAPHICS_API iDrawer {
public:
    virtual ~iDrawer() = default;                                                         // 0
    virtual std::int64_t auxTag() const = 0;                                              // 1
    virtual void pushMatrix() = 0;                                                        // 2
    virtual void multMatrix(const oxGeo::matrix3d& m) = 0;                                // 3
    virtual void popMatrix() = 0;                                                         // 4
    virtual void setColor(const ox::rgbColor& color, float transparency) = 0;             // 5
    virtual void setLineWidth(float width) = 0;                                           // 6
    virtual void setPointSize(float size) = 0;                                            // 7
    virtual void drawPoint(const oxGeo::point3d& p) = 0;                                  // 8
    virtual void drawPoints(const std::vector<oxGeo::point3d>& points) = 0;               // 9
    virtual void drawLine(const oxGeo::point3d& a, const oxGeo::point3d& b, bool lit) = 0; // 10
    virtual void drawArrowHead(const oxGeo::point3d& from, const oxGeo::point3d& to,     // 11
                               float headLength, float headRadius) = 0;
    virtual void drawStippledLine(const oxGeo::point3d& a, const oxGeo::point3d& b,      // 12
                                  int factor, bool lit) = 0;
    virtual void drawPolyline(const std::vector<oxGeo::point3d>& points) = 0;            // 13
    virtual void drawMesh(const oxGeo::mesh3d& mesh, int mode) = 0;                      // 14
    /// Filled triangles coloured per patch: patch i takes patchColors[i]; patches beyond the end
    /// of the table take `defaultColor`. `backColor` is the back-face material of every patch, so
    /// the inside of an open or cut solid stands out.
    virtual void drawMeshPatchColors(const oxGeo::mesh3d& mesh,                           // 15
                                     const std::vector<ox::rgbColor>& patchColors,
                                     const ox::rgbColor& defaultColor, const ox::rgbColor& backColor,
                                     int mode) = 0;
    virtual void drawPatch(const oxGeo::indexedTrianglePatch3d& patch, int mode) = 0;    // 16
    virtual void drawCylinder(const oxGeo::point3d& from, const oxGeo::point3d& to,      // 17
                              float radiusFrom, float radiusTo, bool capFrom, bool capTo,
                              int slices, int mode) = 0;
    virtual void drawDisk(const oxGeo::point3d& center, const oxGeo::vector3d& normal,   // 18
                          float radius, int slices, int mode) = 0;
    virtual void drawSphere(const oxGeo::point3d& center, float radius, int stacks,      // 19
                            int slices, int mode) = 0;
    virtual void drawText(const ox::string& text, const ox::string& font) = 0;           // 20
    virtual void drawMeshGradient(const oxGeo::mesh3d& mesh, float transparency,          // 21
                                  const ox::rgbColor& colorFrom, const ox::rgbColor& colorTo,
                                  const oxGeo::point3d& from, const oxGeo::point3d& to) = 0;
    virtual bool isRecordingValid(const ox::refPtr<iRecorded>& recording) const = 0;     // 22
    virtual bool isRecording() const = 0;                                                 // 23
    virtual void drawRecording(const ox::refPtr<iRecorded>& recording) = 0;              // 24
    virtual void pushName(unsigned int name) = 0;                                         // 25
    virtual void popName() = 0;                                                           // 26
    virtual bool isTransparentPass() const = 0;                                           // 27
    /// The name of the scene being drawn (empty when it has none); valid while the scene lives.
    virtual const wchar_t* sceneName() const = 0;                                         // 28
    /// The viewing ray through window pixel (x, y) of the scene being drawn.
    virtual bool sceneViewRayAt(int x, int y, oxGeo::ray<oxGeo::_space3d>& out) const = 0; // 29
    virtual void beginRecording() = 0;                                                    // 30
    virtual ox::refPtr<iRecorded> endRecording() = 0;                                     // 31
};

} // namespace oxGraphics
