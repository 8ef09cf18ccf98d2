// The select filters the library ships.
#include "oxselectfilter.h"

#include "oxboundeddrawable.h"

#include <algorithm>
#include <typeinfo>

namespace oxGraphics {

ox::refPtr<typeNameSelectFilter> typeNameSelectFilter::create(std::vector<std::string> typeNames) {
    return ox::refPtr<typeNameSelectFilter>(new typeNameSelectFilter(std::move(typeNames)));
}

typeNameSelectFilter::typeNameSelectFilter(std::vector<std::string> typeNames) : mTypeNames(std::move(typeNames)) {}
typeNameSelectFilter::~typeNameSelectFilter() = default;

bool typeNameSelectFilter::accept(const ox::refPtr<iDrawable>& drawable, const pickHit_t& /*hit*/) const {
    const auto listed = [this](const iDrawable& d) {
        return std::find(mTypeNames.begin(), mTypeNames.end(), typeid(d).name()) != mTypeNames.end();
    };
    if (!drawable) return false;
    if (listed(*drawable.get())) return true;
    // Hosts add entities through the adapter to have them framed; the type they think of is the
    // wrapped one.
    const auto* adapter = dynamic_cast<const boundedDrawable*>(drawable.get());
    return adapter != nullptr && adapter->drawable() && listed(*adapter->drawable().get());
}

ox::refPtr<predicateSelectFilter> predicateSelectFilter::create(predicate accept) {
    return ox::refPtr<predicateSelectFilter>(new predicateSelectFilter(std::move(accept)));
}

predicateSelectFilter::predicateSelectFilter(predicate accept) : mAccept(std::move(accept)) {}
predicateSelectFilter::~predicateSelectFilter() = default;

bool predicateSelectFilter::accept(const ox::refPtr<iDrawable>& drawable, const pickHit_t& hit) const {
    return !mAccept || mAccept(drawable, hit);
}

} // namespace oxGraphics
