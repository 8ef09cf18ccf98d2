#include "glcsgpass.h"

#include "glstate/glscopedstate.h"
#include "resources/oxglprogramlibrary.h"

#include "oxlog.h"

#include <GL/glew.h>

namespace oxGraphics::openGL {
namespace {

constexpr const char* kLogger = "oxGraphics::openGL::glScene::draw";

constexpr GLuint kCountBits = 0x3F;   // surfaces behind a depth, modulo 64
constexpr GLuint kSolidBit = 0x40;    // the nearest surface is a solid's
constexpr GLuint kFarSideBit = 0x80;  // a volume's far side lies behind it

// Where the depth test fails, front faces take one off the counter and back faces add one: the
// count step and the solid count behind a volume's far side.
void countBehindDepth() {
    glStencilOpSeparate(GL_FRONT, GL_KEEP, GL_DECR_WRAP, GL_KEEP);
    glStencilOpSeparate(GL_BACK, GL_KEEP, GL_INCR_WRAP, GL_KEEP);
    glStencilMask(kCountBits);
}

// The frame's head light as the cut faces take it (see the header): both paths read it.
void lightCutFaces() {
    const float rest = glCsgPass::kCutFaceFull - glCsgPass::kCutFaceFloor;
    const GLfloat floor[] = {glCsgPass::kCutFaceFloor, glCsgPass::kCutFaceFloor, glCsgPass::kCutFaceFloor, 1.0f};
    const GLfloat diffuse[] = {rest, rest, rest, 1.0f};
    const GLfloat none[] = {0.0f, 0.0f, 0.0f, 1.0f};
    glLightModelfv(GL_LIGHT_MODEL_AMBIENT, floor);
    glLightfv(GL_LIGHT0, GL_AMBIENT, none);
    glLightfv(GL_LIGHT0, GL_DIFFUSE, diffuse);
    glLightfv(GL_LIGHT0, GL_SPECULAR, none);
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, none);
}

// The cut-face program (or none: fixed function) for a scope, then the caller's program again.
class cutProgramScope {
public:
    explicit cutProgramScope(shaderProgram* program) : mProgram(program) {
        if (mProgram) mProgram->activate();
        else glUseProgram(0);
    }
    ~cutProgramScope() {
        if (mProgram) mProgram->deactivate();
    }
    cutProgramScope(const cutProgramScope&) = delete;
    cutProgramScope& operator=(const cutProgramScope&) = delete;

private:
    const glProgramScope mSaved;
    shaderProgram* mProgram;
};

} // namespace

glCsgPass::participants_t glCsgPass::collect(const std::vector<ox::refPtr<iDrawable>>& drawables,
                                             const ox::refPtr<iDrawable>& modified) {
    participants_t found;
    for (const auto& drawable : drawables) {
        if (!drawable || drawable == modified) continue;
        if (auto* volume = dynamic_cast<iCsgVolume*>(drawable.get())) found.volumes.push_back({drawable, volume});
        else if (auto* solid = dynamic_cast<iCsgSolid*>(drawable.get())) found.solids.push_back({drawable, solid});
    }
    for (const auto& v : found.volumes) found.members.insert(v.drawable);
    if (found.solids.empty() || found.volumes.empty()) {
        found.solids.clear();  // ordinary drawables
        return found;
    }
    for (const auto& s : found.solids) found.members.insert(s.drawable);
    return found;
}

void glCsgPass::drawSolids(const participants_t& participants, const frameContent_t& content,
                           shaderProgram* standard, const glOpaquePass::programs_t* look,
                           const oxGeo::matrix3d* worldToEye) {
    for (const auto& [drawable, solid] : participants.solids) {
        const drawableEffects_t* effects = content.effectsOf(drawable);
        const auto [drawer, mode, highlight] = mDrawers.choose(content, drawable, effects);
        const bool selected = mode == eRendermode::selected;
        const bool layered = look && look->multilayer && effects && effects->multilayer && mode == eRendermode::opaque;
        const bool overrides = look && mode == eRendermode::colorOverride;
        if (layered) activateMultilayer(*look->multilayer, effects->blank, *worldToEye);
        if (selected && standard) standard->setUniformInt("u_isSelected", 1);
        if (overrides) applyColorOverride(standard, effects);
        drawGuarded(*drawer, drawable, [&, s = solid, d = drawer] { s->drawCsgSolid(d); });
        if (overrides) applyColorOverride(standard, nullptr);
        if (selected && standard) standard->setUniformInt("u_isSelected", 0);
        if (layered && standard) standard->activate();
    }
}

void glCsgPass::drawOthers(const participants_t& participants, const frameContent_t& content,
                           shaderProgram* standard) {
    for (const auto& drawable : content.drawables) {
        if (drawable == content.modified || participants.members.contains(drawable)) continue;
        const drawableEffects_t* effects = content.effectsOf(drawable);
        if (content.drawsBlurred(drawable, effects)) continue;  // they keep out of the frame's depth
        const auto [drawer, mode, highlight] = mDrawers.choose(content, drawable, effects);
        drawDrawable(*drawer, drawable, mode, standard);
    }
}

void glCsgPass::drawVolumes(const participants_t& participants, glDrawer& drawer) {
    for (const auto& [drawable, volume] : participants.volumes)
        drawGuarded(drawer, drawable, [&, v = volume] { v->drawCsgVolume(&drawer); });
}

void glCsgPass::draw(const participants_t& participants, const frameContent_t& content,
                     const glOpaquePass::programs_t& programs, const oxGeo::matrix3d& worldToEye,
                     const ox::rgbColor& outsideBlank) {
    if (!participants.active()) return;
    shaderProgram* standard = programs.standard;
    if (glstate::readInteger(GL_STENCIL_BITS) < 8) {
        OX_LOG_DEBUG(kLogger, L"the frame buffer has fewer than 8 stencil bits; solids are drawn without their cuts");
        drawSolids(participants, content, standard, &programs, &worldToEye);
        return;
    }
    shaderProgram* cutProgram = nullptr;
    if (standard)
        if (glProgramLibrary* library = glProgramLibrary::forCurrentContext())
            cutProgram = library->program("csgCutFaceShaderProgram").get();
    // Colours are irrelevant while colour writes are off, but whatever a volume sets, its cut
    // faces take the outside-blank colour (the fixed-function material).
    glHighlightDrawer volumeDrawer(mDrawers.render.host(), outsideBlank);

    const glStencilScope stencilState;
    const glCapabilityScope stencilTest(GL_STENCIL_TEST, true);
    const glColorMaskScope colorMask(false, false, false, false);
    const glDepthMaskScope depthMask(true);
    const glDepthFuncScope depthFunction(GL_LEQUAL);
    const glCapabilityScope culling(GL_CULL_FACE, false);
    const glCullFaceScope culledFaces(GL_BACK, GL_CCW);
    const glCapabilityScope depthClamp(GL_DEPTH_CLAMP, false);
    const glCapabilityScope polygonOffset(GL_POLYGON_OFFSET_FILL, false);
    const glPolygonOffsetScope offset(-1.0f, -1.0f);

    // 1. Cleared stencil; the solids' depth, marking where a solid is nearest.
    glStencilMask(0xFF);
    glClearStencil(0);
    glClear(GL_STENCIL_BUFFER_BIT);
    glStencilFunc(GL_ALWAYS, static_cast<GLint>(kSolidBit), 0xFF);
    glStencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
    glStencilMask(kSolidBit);
    drawSolids(participants, content, standard);

    {
        // The volume steps share one program, so their depths agree exactly for step 5's GL_EQUAL.
        const cutProgramScope program(cutProgram);

        // 2. Count the volumes that contain the nearest surface.
        glEnable(GL_DEPTH_CLAMP);
        glDepthMask(GL_FALSE);
        glDepthFunc(GL_LESS);
        glStencilFunc(GL_ALWAYS, 0, 0xFF);
        countBehindDepth();
        drawVolumes(participants, volumeDrawer);

        // 3. The farthest volume surface behind a removed solid surface.
        glEnable(GL_CULL_FACE);
        glCullFace(GL_FRONT);
        glDepthMask(GL_TRUE);
        glDepthFunc(GL_GREATER);
        // (kSolidBit | kCountBits) & stencil above kSolidBit: a solid's surface inside a volume.
        glStencilFunc(GL_LESS, static_cast<GLint>(kFarSideBit | kSolidBit), kSolidBit | kCountBits);
        glStencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
        glStencilMask(kFarSideBit);
        drawVolumes(participants, volumeDrawer);
        glStencilMask(kCountBits);
        glClear(GL_STENCIL_BUFFER_BIT);
    }

    // 4. Count the solids that contain that far side.
    glDisable(GL_CULL_FACE);
    glDepthMask(GL_FALSE);
    glDepthFunc(GL_LESS);
    glStencilFunc(GL_EQUAL, static_cast<GLint>(kFarSideBit), kFarSideBit);
    countBehindDepth();
    drawSolids(participants, content, standard);

    // 5. The opaque pass's depth again over the far sides: far where the volumes went through
    //    every solid, then the other drawables where they lie in front (a tool in the pocket it
    //    cut, a fixture seen through a hole); the cut shows what the opaque pass drew there.
    glDepthMask(GL_TRUE);
    {
        const glProgramScope noProgram(0);
        const glScreenMatrices screen;
        glDepthFunc(GL_ALWAYS);
        glStencilFunc(GL_EQUAL, static_cast<GLint>(kFarSideBit), kFarSideBit | kCountBits);
        glBegin(GL_QUADS);
        glVertex3f(-1.0f, -1.0f, 1.0f);
        glVertex3f(1.0f, -1.0f, 1.0f);
        glVertex3f(1.0f, 1.0f, 1.0f);
        glVertex3f(-1.0f, 1.0f, 1.0f);
        glEnd();
    }
    glDisable(GL_DEPTH_CLAMP);
    glDepthFunc(GL_LESS);
    glStencilFunc(GL_EQUAL, static_cast<GLint>(kFarSideBit), kFarSideBit);
    glStencilOp(GL_KEEP, GL_KEEP, GL_ZERO);
    drawOthers(participants, content, standard);

    {
        // 6. Cut faces: a far side inside a solid.
        const cutProgramScope program(cutProgram);
        const glAttribScope lights(GL_LIGHTING_BIT | GL_CURRENT_BIT);
        if (cutProgram)
            cutProgram->setUniformFloat3("u_outsideBlankColor", outsideBlank.red() / 255.0f,
                                         outsideBlank.green() / 255.0f, outsideBlank.blue() / 255.0f);
        lightCutFaces();
        volumeDrawer.setColor(outsideBlank, 0.0f);
        glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
        glEnable(GL_DEPTH_CLAMP);
        glEnable(GL_CULL_FACE);
        glCullFace(GL_FRONT);
        glDepthMask(GL_FALSE);
        glDepthFunc(GL_EQUAL);
        glStencilFunc(GL_LESS, static_cast<GLint>(kFarSideBit), kFarSideBit | kCountBits);
        glStencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
        glStencilMask(0);
        drawVolumes(participants, volumeDrawer);
    }

    // 7. Visible: the solids where no volume covers their nearest surface.
    glDisable(GL_DEPTH_CLAMP);
    glEnable(GL_CULL_FACE);
    glCullFace(GL_BACK);
    glDepthMask(GL_TRUE);
    glDepthFunc(GL_LEQUAL);
    glColorMask(GL_TRUE, GL_TRUE, GL_TRUE, GL_TRUE);
    glStencilFunc(GL_EQUAL, 0, kFarSideBit | kCountBits);
    glStencilOp(GL_KEEP, GL_KEEP, GL_INCR);
    glStencilMask(kCountBits);
    glEnable(GL_POLYGON_OFFSET_FILL);
    drawSolids(participants, content, standard, &programs, &worldToEye);
}

} // namespace oxGraphics::openGL
