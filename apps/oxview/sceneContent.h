#pragma once
// What oxview shows: the mesh files of the command line, or the built-in sample scene.
#include "oxdrawable.h"
#include "oxrefptr.h"

#include <cstddef>
#include <string>
#include <vector>

namespace oxview {

struct sceneContent_t {
    std::vector<ox::refPtr<oxGraphics::iDrawable>> mDrawables;  ///< each frames itself for zoomAll
    std::vector<ox::refPtr<oxGraphics::iDrawable>> mParts;      ///< those the window lets the user move
    ox::refPtr<oxGraphics::iDrawable> mFeaturedPart;            ///< shown with the manipulator; null for none
    std::size_t mTriangles = 0;                                 ///< of the mesh files; 0 for the sample
    std::size_t mPoints = 0;                                    ///< of the mesh files
    std::size_t mPolylines = 0;                                 ///< of the mesh files
};

/// The content, or the one-line reason why a file could not be used.
struct contentResult_t {
    sceneContent_t mContent;
    std::string mError;  ///< "cannot load 'FILE': REASON"; empty on success
    std::vector<std::string> mWarnings;  ///< "'FILE': WHAT WAS LEFT OUT", one per file that lost parts
};

/// Loads every file in a colour of its own (files beyond the palette reuse it): its triangles as
/// one mesh entity, its points as one point entity (in their mean colour when the file gives them
/// colours), each of its polylines as a polyline entity. No files gives the sample scene. Stops
/// at the first file that fails.
contentResult_t buildContent(const std::vector<std::string>& meshFiles);

} // namespace oxview
