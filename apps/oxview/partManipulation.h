#pragma once
// partManipulation: the selected part of the scene and the move/rotate manipulator on it. The
// window forwards clicks, drags and keys; this class decides what they do to the part.
#include "oxdrawable.h"
#include "oxmoverotationcontrol.h"
#include "oxscene.h"

#include "oxgeomatrix.h"
#include "oxrefptr.h"
#include "oxsettrafo.h"

#include <cstddef>
#include <vector>

namespace oxview {

/// Keyboard steps: moves in the view plane and turns about the part's Z axis.
enum class ePartStep { left, right, up, down, turnLeft, turnRight };

class partManipulation final : public ox::iSetTrafo {
public:
    /// `parts` are the drawables of the scene that can be moved; each gets a placement at the
    /// centre of the top of its bounding box, with the world's axes.
    partManipulation(ox::refPtr<oxGraphics::scene> scene, const std::vector<ox::refPtr<oxGraphics::iDrawable>>& parts);
    ~partManipulation() override;
    partManipulation(const partManipulation&) = delete;
    partManipulation& operator=(const partManipulation&) = delete;

    /// Makes `drawable` the only selected drawable; a part gets the manipulator. Null, or the
    /// drawable that is selected already, clears the selection and takes the manipulator away.
    void toggleSelection(const ox::refPtr<oxGraphics::iDrawable>& drawable);
    /// Puts the manipulator on the part without selecting it (for a picture); nothing for a
    /// drawable that is no part.
    void showManipulatorOn(const ox::refPtr<oxGraphics::iDrawable>& part);

    /// Mouse move without a button: highlights the grip under the cursor.
    void hover(double x, double y);
    /// Button down: starts a drag when (x, y) is on a grip or on the manipulated part itself
    /// (which then moves in its XY plane). False elsewhere, so that clicks on other drawables
    /// still select and drags there still turn the view.
    bool beginDrag(double x, double y);
    void dragTo(double x, double y);
    /// Button up: the part keeps where the drag took it.
    void endDrag(double x, double y);
    /// Puts the part and the manipulator back where they were when the drag began.
    void cancelDrag();
    bool dragging() const;
    /// One keyboard step of the manipulated part (nothing without one or during a drag): a tenth
    /// of the part's size in the view plane, or 15 degrees about its Z axis.
    void step(ePartStep step);

    // ox::iSetTrafo: the manipulator's transformations become the part's.
    void beginSetTrafo(int direction) override;
    bool setTrafo(const oxGeo::matrix3d& trafo) override;
    void endSetTrafo(int direction) override;

private:
    struct part_t {
        ox::refPtr<oxGraphics::iDrawable> mDrawable;
        oxGeo::matrix3d mFrame;           ///< placement before any move: top centre of the box
        oxGeo::matrix3d mTransformation;  ///< what the part has been moved by so far
        double mSize = 1.0;               ///< the longest side of its box
    };

    void attachTo(const ox::refPtr<oxGraphics::iDrawable>& part);
    void detach();

    ox::refPtr<oxGraphics::scene> mScene;
    std::vector<part_t> mParts;
    ox::refPtr<oxGraphics::moveRotationControl> mControl;  ///< null while no part is manipulated
    std::size_t mPart = 0;                                 ///< the manipulated part, with mControl
    oxGeo::matrix3d mTransformationAtStart;                ///< of the part, when the drag began
    bool mInTrafo = false;                                 ///< between beginSetTrafo and endSetTrafo
};

} // namespace oxview
