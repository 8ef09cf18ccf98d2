#include "glopaquepass.h"

#include "oxlog.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

namespace oxGraphics::openGL {
namespace {

// A colour as 0xRRGGBB in a float, as the standard program unpacks it (exact up to 2^24).
float packedColor(const ox::rgbColor& c) {
    return static_cast<float>((c.red() << 16) | (c.green() << 8) | c.blue());
}

// Column-major floats, as glUniformMatrix4fv takes them without transposing.
std::array<float, 16> columnMajor(const oxGeo::matrix3d& m) {
    std::array<float, 16> out{};
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r) out[static_cast<std::size_t>(c * 4 + r)] = static_cast<float>(m(r, c));
    return out;
}

// Mixes the part colours of a multi-colour drawable with the highlight for one draw.
class highlightMixScope {
public:
    highlightMixScope(glHighlightDrawer& drawer, const ox::refPtr<iDrawable>& drawable)
        : mDrawer(drawer), mActive(dynamic_cast<iMultiColorDrawable*>(drawable.get()) != nullptr) {
        if (!mActive) return;
        mDrawer.setMixColors(true);
        mDrawer.setExemptColor(mDrawer.highlightColor());  // a part already in the highlight shows it plainly
    }
    ~highlightMixScope() {
        if (mActive) mDrawer.setMixColors(false);
    }
    highlightMixScope(const highlightMixScope&) = delete;
    highlightMixScope& operator=(const highlightMixScope&) = delete;

private:
    glHighlightDrawer& mDrawer;
    bool mActive;
};

} // namespace

void logSkippedDrawable() {
    OX_LOG_DEBUG("oxGraphics::openGL::glScene::draw", L"a drawable threw while drawing; it was skipped");
}

void drawDrawable(glDrawer& drawer, const ox::refPtr<iDrawable>& drawable, eRendermode mode, shaderProgram* program) {
    drawGuarded(drawer, drawable, [&] { drawable->draw(&drawer, mode, program); });
}

void applyColorOverride(shaderProgram* program, const drawableEffects_t* effects) {
    if (!program) return;
    if (!effects || !effects->overrideColors) {
        program->setUniformFloat("u_overrideWeight", 0.0f);
        return;
    }
    const ox::rgbColor& c = effects->overrideColor;
    program->setUniformFloat4("u_overrideColor", c.red() / 255.0f, c.green() / 255.0f, c.blue() / 255.0f,
                              1.0f - effects->overrideTransparency);
    program->setUniformFloat("u_overrideWeight", 1.0f);
}

frameDrawers_t::choice_t frameDrawers_t::choose(const frameContent_t& content, const ox::refPtr<iDrawable>& drawable,
                                                const drawableEffects_t* effects) const {
    if (content.highlightsSelection() && content.selection.contains(drawable))
        return {&selection, eRendermode::selected, &selection};
    if (content.modifyEnabled.contains(drawable)) return {&modifyEnabled, eRendermode::modifyEnabled, &modifyEnabled};
    if (effects && effects->overrideColors) {
        overrideColor.setOverride(effects->overrideColor, effects->overrideTransparency);
        return {&overrideColor, eRendermode::colorOverride, nullptr};
    }
    return {&render, eRendermode::opaque, nullptr};
}

void glOpaquePass::draw(const frameContent_t& content, const programs_t& programs, const oxGeo::matrix3d& worldToEye) {
    shaderProgram* program = programs.standard;
    if (program) {
        program->setUniformInt("u_maskTexture", 1);
        program->setUniformInt("u_isSelected", 0);
        program->setUniformInt("u_packedTopBtmColorAndEnable", 0);
        program->setUniformInt("u_numLayerDescriptions", 0);
        program->setUniformInt("u_forceColorFromVertexAttrib", 0);
        program->setUniformFloat("u_overrideWeight", 0.0f);
    }
    for (const auto& drawable : content.drawables) {
        if (drawable == content.modified || (content.leftOut && content.leftOut->contains(drawable))) continue;
        const drawableEffects_t* effects = content.effectsOf(drawable);
        if (content.drawsBlurred(drawable, effects)) continue;

        const auto [drawer, mode, highlight] = mDrawers.choose(content, drawable, effects);
        const bool overrides = mode == eRendermode::colorOverride;

        std::optional<highlightMixScope> mix;
        if (highlight) mix.emplace(*highlight, drawable);
        // Layers show a blank as it is; a highlight or an overriding colour says more.
        if (effects && effects->multilayer && programs.multilayer && mode == eRendermode::opaque) {
            activateMultilayer(*programs.multilayer, effects->blank, worldToEye);
            drawDrawable(*drawer, drawable, mode, programs.multilayer);
            if (program) program->activate();
            continue;
        }
        if (program && mode == eRendermode::selected) program->setUniformInt("u_isSelected", 1);
        if (overrides) applyColorOverride(program, effects);
        drawDrawable(*drawer, drawable, mode, program);
        if (overrides) applyColorOverride(program, nullptr);
        if (program && mode == eRendermode::selected) program->setUniformInt("u_isSelected", 0);
    }
}

void activateMultilayer(shaderProgram& program, const multilayerBlank_t& layers, const oxGeo::matrix3d& worldToEye) {
    oxGeo::matrix3d eyeToWorld;
    if (!worldToEye.inverse(eyeToWorld)) eyeToWorld = oxGeo::matrix3d();
    oxGeo::vector3d axis = layers.axis;
    const double length = axis.length();
    axis = (std::isfinite(length) && length > 0.0) ? axis * (1.0 / length) : oxGeo::vector3d(0.0, 0.0, 1.0);

    std::array<float, 4 * multilayerBlank_t::kMaxLayers> descriptions{};
    const int count = static_cast<int>(std::min<std::size_t>(layers.layers.size(), multilayerBlank_t::kMaxLayers));
    for (int i = 0; i < count; ++i) {
        const blankLayer_t& layer = layers.layers[static_cast<std::size_t>(i)];
        descriptions[static_cast<std::size_t>(4 * i)] = static_cast<float>(layer.from);
        descriptions[static_cast<std::size_t>(4 * i + 1)] = static_cast<float>(layer.to);
        descriptions[static_cast<std::size_t>(4 * i + 2)] = packedColor(layer.color);
    }
    program.activate();
    program.setUniformMat4("u_eyeToWorld", columnMajor(eyeToWorld).data());
    program.setUniformMat4("u_worldToEye", columnMajor(worldToEye).data());
    program.setUniformFloat3("u_layerAxis", static_cast<float>(axis.x()), static_cast<float>(axis.y()),
                             static_cast<float>(axis.z()));
    program.setUniformInt("u_numLayerDescriptions", count);
    if (count > 0) program.setUniformVec4Array("u_layerDescriptions", count, descriptions.data());
    program.setUniformFloat3("u_packedTopBtmColorAndEnable", packedColor(layers.top), packedColor(layers.bottom),
                             layers.colorTopAndBottom ? 1.0f : 0.0f);
    program.setUniformFloat("u_overrideWeight", 0.0f);
}

} // namespace oxGraphics::openGL
