#pragma once
// ox::iSetTrafo: the host's callback for the transformations an interactive manipulator
// produces while the user drags it.
#include "oxutils_export.h"

namespace oxGeo {
class matrix3d;
}

namespace ox {

/// Implemented by the host and handed to the manipulator, which does not own it. One drag is
/// one beginSetTrafo, any number of setTrafo calls and one endSetTrafo, all on the thread that
/// drives the manipulator.
class OX_UTILS_API iSetTrafo {
public:
    virtual ~iSetTrafo() = default;
    /// A modification begins. `direction` tells the host what kind of modification it is;
    /// the codes belong to the manipulator.
    virtual void beginSetTrafo(int direction) = 0;
    /// An intermediate or final transformation. Returning false rejects it: the manipulator
    /// then keeps its previous result.
    virtual bool setTrafo(const oxGeo::matrix3d& trafo) = 0;
    /// The modification begun with the same `direction` has ended.
    virtual void endSetTrafo(int direction) = 0;
};

} // namespace ox
