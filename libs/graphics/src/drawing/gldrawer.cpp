#include "gldrawer.h"

#include "gldrawerhost.h"
#include "glcolorstate.h"
#include "glflattriangles.h"
#include "glrecording.h"

#include "oxgeoplane.h"
#include "oxgeotext.h"

#include "oxassert.h"

#include <GL/glew.h>
#include <GL/glu.h>

#include <cmath>
#include <memory>

namespace oxGraphics::openGL {

namespace {

constexpr GLint kShininess = 48;
constexpr double kDegenerateNormal = 1e-6;
constexpr double kRadToDeg = 57.29577951308232;
constexpr float kRadToDegF = 57.2957795f;

/// Lines and points that must not be shaded: lighting off and a zero normal for the duration.
class unlitScope {
public:
    /// Does nothing for lit geometry.
    explicit unlitScope(bool lit) : mActive(!lit) {
        if (!mActive) return;
        glPushAttrib(GL_LIGHTING_BIT);
        glDisable(GL_LIGHTING);
        glNormal3f(0.0f, 0.0f, 0.0f);
    }
    ~unlitScope() {
        if (mActive) glPopAttrib();
    }
    unlitScope(const unlitScope&) = delete;
    unlitScope& operator=(const unlitScope&) = delete;

private:
    bool mActive;
};

struct quadricDeleter {
    void operator()(GLUquadric* q) const { gluDeleteQuadric(q); }
};
using quadricPtr = std::unique_ptr<GLUquadric, quadricDeleter>;

/// Polygon mode 1 is wire-frame, every other value filled.
GLenum polygonModeOf(int mode) { return mode == 1 ? GL_LINE : GL_FILL; }
void applyPolygonMode(int mode) { glPolygonMode(GL_FRONT_AND_BACK, polygonModeOf(mode)); }

void vertex(const oxGeo::point3d& p) { glVertex3d(p.x(), p.y(), p.z()); }

/// The rotation that turns +Z into d, in degrees and about an axis in the XY plane. A zero z is
/// replaced by 1e-8 so a direction in the XY plane still gets its quarter turn.
struct zRotationF {
    float angle;
    float axis[3];
};
zRotationF rotationFromZ(float dx, float dy, float dz) {
    if (dz == 0.0f) dz = 1e-8f;
    const float length = std::sqrt(dx * dx + dy * dy + dz * dz);
    float angle = std::acos(dz / length) * kRadToDegF;
    if (dz < 0.0f) angle = -angle;
    return {angle, {-dz * dy, dz * dx, 0.0f}};
}

} // namespace

glDrawer::glDrawer(iDrawerHost* host) : mHost(host) {}

glDrawer::~glDrawer() {
    finishRecording();
    mCurrentDrawable.reset();
}

void glDrawer::pushMatrix() {
    if (pickCapture* capture = recordingCapture()) capture->pushMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPushMatrix();
}

void glDrawer::multMatrix(const oxGeo::matrix3d& m) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->multMatrix(m);
    double columnMajor[16];
    m.asDoubleArrayColumnMajor(columnMajor);
    glMatrixMode(GL_MODELVIEW);
    glMultMatrixd(columnMajor);
}

void glDrawer::popMatrix() {
    if (pickCapture* capture = recordingCapture()) capture->popMatrix();
    glMatrixMode(GL_MODELVIEW);
    glPopMatrix();
}

void glDrawer::setLineWidth(float width) {
    if (width > 0.0f) glLineWidth(width);
}

void glDrawer::setPointSize(float size) {
    if (size > 0.0f) glPointSize(size);
}

void glDrawer::drawPoint(const oxGeo::point3d& p) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->addPoints(&p, 1);
    glPointSize(5.0f);
    glBegin(GL_POINTS);
    vertex(p);
    glEnd();
}

void glDrawer::drawPoints(const std::vector<oxGeo::point3d>& points) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->addPoints(points.data(), points.size());
    unlitScope unlit(/*lit*/ false);
    glBegin(GL_POINTS);
    for (const auto& p : points) vertex(p);
    glEnd();
}

void glDrawer::drawLine(const oxGeo::point3d& a, const oxGeo::point3d& b, bool lit) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->addLine(a, b);
    unlitScope unlit(lit);
    glBegin(GL_LINES);
    vertex(a);
    vertex(b);
    glEnd();
}

void glDrawer::drawArrowHead(const oxGeo::point3d& from, const oxGeo::point3d& to, float headLength,
                             float headRadius) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->markUnsupported(); // a GLU cone
    oxGeo::point3d base;
    double length = 0.0, angle = 0.0, axis[3] = {0.0, 0.0, 0.0};
    try {
        base = to + (from - to).norm() * static_cast<double>(headLength);
        oxGeo::vector3d d = to - base;
        if (d.z() == 0.0) d.setZ(1e-8);
        length = d.length();
        angle = std::acos(d.z() / length) * kRadToDeg;
        if (d.z() < 0.0) angle = -angle;
        axis[0] = -d.z() * d.y();
        axis[1] = d.z() * d.x();
        if (axis[0] == 0.0 && axis[1] == 0.0) axis[0] = 1.0;   // along ±z: turn about x
    } catch (...) {
        return;   // a broken geometry library must not take the frame down
    }
    {
        unlitScope unlit(/*lit*/ false);
        glBegin(GL_LINES);
        vertex(from);
        vertex(base);
        glEnd();
    }
    const quadricPtr quadric(gluNewQuadric());
    if (!quadric) return;
    glPushMatrix();
    glTranslated(base.x(), base.y(), base.z());
    glRotated(angle, axis[0], axis[1], axis[2]);
    gluCylinder(quadric.get(), headRadius, 0.0, length, 32, 1);   // the cone, tip at `to`
    gluQuadricOrientation(quadric.get(), GLU_INSIDE);
    gluQuadricNormals(quadric.get(), GLU_SMOOTH);
    gluDisk(quadric.get(), 0.0, headRadius, 32, 1);                 // closes the base
    glTranslated(0.0, 0.0, length);
    glPopMatrix();
}

void glDrawer::drawStippledLine(const oxGeo::point3d& a, const oxGeo::point3d& b, int factor, bool lit) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->addLine(a, b);
    unlitScope unlit(lit);
    glEnable(GL_LINE_STIPPLE);
    glLineStipple(factor, 0x00FF);
    glBegin(GL_LINES);
    vertex(a);
    vertex(b);
    glEnd();
    glDisable(GL_LINE_STIPPLE);
}

void glDrawer::drawPolyline(const std::vector<oxGeo::point3d>& points) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->addPolyline(points);
    unlitScope unlit(/*lit*/ false);
    glBegin(GL_LINE_STRIP);
    for (const auto& p : points) vertex(p);
    glEnd();
}

void glDrawer::drawMesh(const oxGeo::mesh3d& mesh, int mode) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->addMesh(mesh, mode);
    applyPolygonMode(mode);
    glDisable(GL_CULL_FACE);
    glFlatTriangles triangles(polygonModeOf(mode));
    triangles.add(mesh);
}

void glDrawer::drawMeshPatchColors(const oxGeo::mesh3d& mesh, const std::vector<ox::rgbColor>& patchColors,
                                   const ox::rgbColor& defaultColor, const ox::rgbColor& backColor, int mode) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->addMesh(mesh, mode);
    applyPolygonMode(mode);
    glDisable(GL_CULL_FACE);
    const float back[4] = {backColor.red() * kByteToFloat, backColor.green() * kByteToFloat,
                           backColor.blue() * kByteToFloat, 1.0f};
    glMaterialfv(GL_BACK, GL_AMBIENT_AND_DIFFUSE, back);
    glSecondaryColor3fv(back);   // the back colour as the shading program sees it (glcolorstate.h)
    glMateriali(GL_FRONT_AND_BACK, GL_SHININESS, kShininess);

    bool colorSet = false;
    ox::rgbColor current;
    std::size_t index = 0;
    glBegin(GL_TRIANGLES);
    for (const auto& patch : mesh.patches()) {
        const ox::rgbColor& color = index < patchColors.size() ? patchColors[index] : defaultColor;
        ++index;
        const oxGeo::vector3d n = patch.calculatePatchNormalNotNormalized();
        const double length = n.length();
        if (length <= kDegenerateNormal) continue;
        if (!colorSet || !(color == current)) {
            // Material changes are legal between glBegin and glEnd; only changes are sent.
            const float front[4] = {color.red() * kByteToFloat, color.green() * kByteToFloat,
                                    color.blue() * kByteToFloat, 1.0f};
            glColor4fv(front);
            glMaterialfv(GL_FRONT, GL_AMBIENT_AND_DIFFUSE, front);
            current = color;
            colorSet = true;
        }
        glNormal3f(static_cast<float>(n.x() / length), static_cast<float>(n.y() / length),
                   static_cast<float>(n.z() / length));
        forEachTriangle(patch, [](const oxGeo::point3d& a, const oxGeo::point3d& b, const oxGeo::point3d& c) {
            vertex(a);
            vertex(b);
            vertex(c);
        });
    }
    glEnd();
}

void glDrawer::drawPatch(const oxGeo::indexedTrianglePatch3d& patch, int mode) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->addPatch(patch, mode);
    applyPolygonMode(mode);
    glDisable(GL_CULL_FACE);
    glFlatTriangles triangles(polygonModeOf(mode));
    triangles.add(patch);
}

void glDrawer::drawCylinder(const oxGeo::point3d& from, const oxGeo::point3d& to, float radiusFrom,
                            float radiusTo, bool capFrom, bool capTo, int slices, int mode) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->markUnsupported(); // GLU quadrics are not captured
    applyPolygonMode(mode);
    const float dx = static_cast<float>(to.x()) - static_cast<float>(from.x());
    const float dy = static_cast<float>(to.y()) - static_cast<float>(from.y());
    const float dz = static_cast<float>(to.z()) - static_cast<float>(from.z());
    const float length = std::sqrt(dx * dx + dy * dy + dz * dz);
    const zRotationF rotation = rotationFromZ(dx, dy, dz);
    const quadricPtr quadric(gluNewQuadric());
    if (quadric) {
        gluQuadricNormals(quadric.get(), GLU_SMOOTH);
        glPushMatrix();
        glTranslatef(static_cast<float>(from.x()), static_cast<float>(from.y()), static_cast<float>(from.z()));
        glRotatef(rotation.angle, rotation.axis[0], rotation.axis[1], rotation.axis[2]);
        gluQuadricOrientation(quadric.get(), GLU_OUTSIDE);
        gluCylinder(quadric.get(), radiusFrom, radiusTo, length, slices, 1);
        gluQuadricOrientation(quadric.get(), GLU_INSIDE);
        if (capFrom) gluDisk(quadric.get(), 0.0, radiusFrom, slices, 1);
        glTranslatef(0.0f, 0.0f, length);
        gluQuadricOrientation(quadric.get(), GLU_OUTSIDE);
        if (capTo) gluDisk(quadric.get(), 0.0, radiusTo, slices, 1);
        glPopMatrix();
    }
    if (mode == 1) glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void glDrawer::drawDisk(const oxGeo::point3d& center, const oxGeo::vector3d& normal, float radius, int slices,
                        int mode) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->markUnsupported(); // GLU quadrics are not captured
    applyPolygonMode(mode);
    const zRotationF rotation = rotationFromZ(static_cast<float>(normal.x()), static_cast<float>(normal.y()),
                                              static_cast<float>(normal.z()));
    const quadricPtr quadric(gluNewQuadric());
    if (quadric) {
        gluQuadricNormals(quadric.get(), GLU_SMOOTH);
        glPushMatrix();
        glTranslatef(static_cast<float>(center.x()), static_cast<float>(center.y()), static_cast<float>(center.z()));
        glRotatef(rotation.angle, rotation.axis[0], rotation.axis[1], rotation.axis[2]);
        gluQuadricOrientation(quadric.get(), GLU_OUTSIDE);
        gluQuadricOrientation(quadric.get(), GLU_INSIDE);   // deliberately last: the disk faces against `normal`
        gluDisk(quadric.get(), 0.0, radius, slices, 1);
        glPopMatrix();
    }
    if (mode == 1) glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void glDrawer::drawSphere(const oxGeo::point3d& center, float radius, int stacks, int slices, int mode) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->markUnsupported(); // GLU quadrics are not captured
    applyPolygonMode(mode);
    const quadricPtr quadric(gluNewQuadric());
    if (quadric) {
        gluQuadricNormals(quadric.get(), GLU_SMOOTH);
        glPushMatrix();
        glTranslatef(static_cast<float>(center.x()), static_cast<float>(center.y()), static_cast<float>(center.z()));
        gluQuadricOrientation(quadric.get(), GLU_OUTSIDE);
        gluSphere(quadric.get(), radius, slices, stacks);
        glPopMatrix();
    }
    if (mode == 1) glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
}

void glDrawer::drawText(const ox::string& text, const ox::string& font) {
    if (mSkip) return;
    oxGeo::text layout;
    double width = 0.0;
    std::vector<std::vector<oxGeo::polyline2d>> glyphs;
    layout.getTextOutlines(text, font, 2.0, width, glyphs);
    for (const auto& glyph : glyphs) {
        for (const auto& outline : glyph) {
            const std::size_t count = outline.size();
            for (std::size_t i = 0; i < count; ++i)
                drawLine(oxGeo::point3d(outline[i]), oxGeo::point3d(outline[(i + 1) % count]), true);
        }
    }
}

void glDrawer::drawMeshGradient(const oxGeo::mesh3d& mesh, float transparency, const ox::rgbColor& colorFrom,
                                const ox::rgbColor& colorTo, const oxGeo::point3d& from, const oxGeo::point3d& to) {
    if (mSkip) return;
    if (pickCapture* capture = recordingCapture()) capture->addMesh(mesh, 0, /*strictDegenerate*/ true);
    const float alpha = 1.0f - transparency;
    const float a[4] = {colorFrom.red() * kByteToFloat, colorFrom.green() * kByteToFloat,
                        colorFrom.blue() * kByteToFloat, alpha};
    const float b[4] = {colorTo.red() * kByteToFloat, colorTo.green() * kByteToFloat, colorTo.blue() * kByteToFloat,
                        alpha};
    const bool uniform = colorFrom == colorTo;
    const oxGeo::vector3d axis = to - from;
    const double axisLength = axis.length();
    const oxGeo::vector3d axisUnit = axisLength > 0.0 ? axis / axisLength : oxGeo::vector3d();

    // The colour of v: where the plane through v across the from→to axis cuts the segment,
    // interpolated from A to B; off the segment, the colour of the nearer end.
    float color[4] = {0.0f, 0.0f, 0.0f, alpha};
    const auto gradient = [&](const oxGeo::point3d& v) {
        const float* pick = b;
        if (uniform) {
            pick = a;
        } else {
            oxGeo::point3d hit;
            if (axisLength > 0.0 && oxGeo::plane3d(v, axisUnit).getIntersection(from, to, hit, 1e-12)) {
                const float t = static_cast<float>((hit - from).length() / axisLength);
                for (int c = 0; c < 3; ++c) color[c] = a[c] + (b[c] - a[c]) * t;
                return;
            }
            if (v.distanceTo(to) > v.distanceTo(from)) pick = a;
        }
        for (int c = 0; c < 3; ++c) color[c] = pick[c];
    };
    const auto corner = [&](const oxGeo::vector3d& n, const oxGeo::point3d& v) {
        gradient(v);
        applyColor(color);
        glNormal3f(static_cast<float>(n.x()), static_cast<float>(n.y()), static_cast<float>(n.z()));
        glVertex3f(static_cast<float>(v.x()), static_cast<float>(v.y()), static_cast<float>(v.z()));
    };

    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
    glDisable(GL_CULL_FACE);
    glBegin(GL_TRIANGLES);
    for (const auto& patch : mesh.patches()) {
        oxGeo::vector3d n = patch.calculatePatchNormalNotNormalized();
        const double length = n.length();
        if (length < kDegenerateNormal) continue;
        // Scaled by its length rather than divided: not unit length, and kept that way
        // (GL_NORMALIZE, which the scene enables, makes it harmless).
        n *= length;
        forEachTriangle(patch, [&](const oxGeo::point3d& a, const oxGeo::point3d& b, const oxGeo::point3d& c) {
            corner(n, a);
            corner(n, b);
            corner(n, c);
        });
    }
    glEnd();
}

bool glDrawer::isRecordingValid(const ox::refPtr<iRecorded>& recording) const {
    auto* gl = dynamic_cast<glRecording*>(recording.get());
    return gl != nullptr && gl->isValid();
}

void glDrawer::drawRecording(const ox::refPtr<iRecorded>& recording) {
    if (mSkip) return;
    auto* gl = dynamic_cast<glRecording*>(recording.get());
    if (gl == nullptr || !gl->isValid()) return;
    if (pickCapture* capture = recordingCapture()) capture->markUnsupported(); // a nested list
    glCallList(gl->listId());
}

void glDrawer::pushName(unsigned int name) {
    if (pickCapture* capture = recordingCapture()) capture->pushName(name);
    glPushName(name);
    ++mNameDepth;
}

void glDrawer::popName() {
    if (mNameDepth == 0) return;
    if (pickCapture* capture = recordingCapture()) capture->popName();
    glPopName();
    --mNameDepth;
}

const wchar_t* glDrawer::sceneName() const { return mHost != nullptr ? mHost->sceneName().c_str() : L""; }

bool glDrawer::sceneViewRayAt(int x, int y, oxGeo::ray<oxGeo::_space3d>& out) const {
    return mHost != nullptr && mHost->getViewRayAt(x, y, out, 0);
}

void glDrawer::beginRecording() {
    if (mSkip) return;
    OX_ASSERT(!mRecording);   // display lists do not nest
    if (mRecording || mHost == nullptr) return;
    mRecording = glRecording::create(*mHost);
}

ox::refPtr<iRecorded> glDrawer::endRecording() {
    ox::refPtr<glRecording> recording = finishRecording();
    if (mSkip) return {};
    return recording;
}

ox::refPtr<glRecording> glDrawer::finishRecording() {
    ox::refPtr<glRecording> recording = std::move(mRecording);
    if (recording) {
        recording->endCompiling();
        recording->capture()->seal();
    }
    return recording;
}

pickCapture* glDrawer::recordingCapture() const { return mRecording ? mRecording->capture() : nullptr; }

void glDrawer::setCurrentDrawable(ox::refPtr<iDrawable> drawable) { mCurrentDrawable = std::move(drawable); }

} // namespace oxGraphics::openGL
