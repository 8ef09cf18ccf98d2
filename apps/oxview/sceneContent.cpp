#include "sceneContent.h"

#include "meshFileLoader.h"
#include "sampleScene.h"

#include "oxboundeddrawable.h"
#include "oxmeshentity.h"

#include "oxcolor.h"
#include "oxsharedptr.h"

#include <array>

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

} // namespace

contentResult_t buildContent(const std::vector<std::string>& meshFiles) {
    contentResult_t result;
    if (meshFiles.empty()) {
        result.mContent = buildSampleScene();
        return result;
    }
    for (std::size_t i = 0; i < meshFiles.size(); ++i) {
        meshLoadResult_t loaded = loadMeshFile(meshFiles[i]);
        if (!loaded.mMesh) {
            result.mError = "cannot load '" + meshFiles[i] + "': " + loaded.mError;
            result.mContent = {};
            result.mWarnings.clear();
            return result;
        }
        if (!loaded.mWarning.empty()) result.mWarnings.push_back("'" + meshFiles[i] + "': " + loaded.mWarning);
        result.mContent.mTriangles += loaded.mMesh->patchCount();
        auto entity = oxGraphics::meshEntity::create(ox::const_sharedPtr<oxGeo::mesh3d>(std::move(loaded.mMesh)));
        entity->setColor(kPalette[i % kPalette.size()]);
        result.mContent.mDrawables.push_back(oxGraphics::boundedDrawable::create(entity));
        result.mContent.mParts.push_back(result.mContent.mDrawables.back());
    }
    return result;
}

} // namespace oxview
