#include "sceneContent.h"

#include "meshFileLoader.h"
#include "progressLine.h"
#include "sampleScene.h"

#include "oxboundeddrawable.h"
#include "oxmeshentity.h"
#include "oxpointentity.h"
#include "oxpolylineentity.h"

#include "oxcolor.h"
#include "oxsharedptr.h"

#include <array>
#include <cstdint>
#include <memory>

namespace oxview {
namespace {

// Light, well separated hues that stay readable on the blue background under lighting.
constexpr std::array<ox::rgbColor, 8> kPalette{{
    {190, 195, 205},
    {225, 135, 40},
    {70, 170, 120},
    {200, 70, 80},
    {130, 120, 225},
    {220, 200, 60},
    {60, 175, 205},
    {210, 110, 170},
}};

// Thick enough to be seen at a glance on a large image, and to be hit by a click.
constexpr std::int32_t kPointSize = 4;
constexpr std::int32_t kLineWidth = 2;

} // namespace

contentResult_t buildContent(const std::vector<std::string>& meshFiles) {
    contentResult_t result;
    if (meshFiles.empty()) {
        result.mContent = buildSampleScene();
        return result;
    }
    for (std::size_t i = 0; i < meshFiles.size(); ++i) {
        meshLoadResult_t loaded;
        {
            progressLine progress("loading '" + meshFiles[i] + "'");
            meshLoadOptions_t options;
            options.mWhileWaiting = [&progress] { progress.update(); };
            loaded = loadMeshFile(meshFiles[i], options);
        }
        if (!loaded.mError.empty()) {
            result.mError = "cannot load '" + meshFiles[i] + "': " + loaded.mError;
            result.mContent = {};
            result.mWarnings.clear();
            return result;
        }
        if (!loaded.mWarning.empty()) result.mWarnings.push_back("'" + meshFiles[i] + "': " + loaded.mWarning);
        const ox::rgbColor color = kPalette[i % kPalette.size()];
        // Every entity is framed by zoomAll and can be picked and moved like a part.
        auto add = [&](const auto& entity) {
            result.mContent.mDrawables.push_back(oxGraphics::boundedDrawable::create(entity));
            result.mContent.mParts.push_back(result.mContent.mDrawables.back());
        };
        if (loaded.mMesh) {
            result.mContent.mTriangles += loaded.mMesh->patchCount();
            auto entity = oxGraphics::meshEntity::create(ox::const_sharedPtr<oxGeo::mesh3d>(std::move(loaded.mMesh)));
            entity->setColor(color);
            add(entity);
        }
        result.mContent.mPoints += loaded.mPoints.size();
        result.mContent.mPolylines += loaded.mPolylines.size();
        if (!loaded.mPoints.empty()) {
            auto entity = oxGraphics::pointEntity::create(loaded.mPoints);
            const auto& c = loaded.mPointColor;
            entity->setColor(c ? ox::rgbColor((*c)[0], (*c)[1], (*c)[2]) : color);
            entity->setPointSize(kPointSize);
            add(entity);
        }
        for (oxGeo::polyline3d& polyline : loaded.mPolylines) {
            auto entity = oxGraphics::polylineEntity::create(
                ox::const_sharedPtr<oxGeo::polyline3d>(std::make_shared<oxGeo::polyline3d>(std::move(polyline))));
            entity->setColor(color);
            entity->setLineWidth(kLineWidth);
            add(entity);
        }
    }
    return result;
}

} // namespace oxview
