#pragma once
// iSelectFilter: which pick hits a rectangle query keeps, and the filters the library ships.
//
//     // Only meshes, whether added as they are or wrapped in a boundedDrawable:
//     auto meshes = oxGraphics::typeNameSelectFilter::create({typeid(oxGraphics::meshEntity).name()});
//     auto hits = view->pickSelectInRect(x1, y1, x2, y2, meshes);
//     view->selectMultiple(x1, y1, x2, y2, oxGraphics::eSelectMode::add, meshes);
//
// A filter is asked once per hit record, on the thread that picks. A filter that throws counts
// as rejecting that hit: the scene logs a warning and carries on, nothing escapes the query.
#include "oxgraphics_export.h"

#include "oxdrawable.h"
#include "oxscenetypes.h"

#include "oxrefobj.h"
#include "oxrefptr.h"

#include <functional>
#include <string>
#include <vector>

namespace oxGraphics {

/// Decides whether a hit of a rectangle pick counts. Hosts implement it for their own rules
/// (layers, visibility, the current command's object kinds).
class OX_GRAPHICS_API iSelectFilter : public virtual ox::iRefObj {
public:
    /// True to keep the hit. `drawable` is the drawable the scene holds (hit.drawable); `hit`
    /// carries its depths and the drawable's own selection names (grips, parts).
    virtual bool accept(const ox::refPtr<iDrawable>& drawable, const pickHit_t& hit) const = 0;
};

/// Keeps drawables whose run-time type name (typeid(...).name(), as setPreferredPickTypes takes)
/// is in a list. A boundedDrawable is judged by the drawable it wraps as well as by itself, so a
/// filter for meshEntity also keeps meshes a host added through the adapter. An empty list keeps
/// nothing.
class OX_GRAPHICS_API typeNameSelectFilter : public iSelectFilter, public ox::refObj {
public:
    static ox::refPtr<typeNameSelectFilter> create(std::vector<std::string> typeNames);

    typeNameSelectFilter(const typeNameSelectFilter&) = delete;
    typeNameSelectFilter& operator=(const typeNameSelectFilter&) = delete;

    bool accept(const ox::refPtr<iDrawable>& drawable, const pickHit_t& hit) const override;
    const std::vector<std::string>& typeNames() const { return mTypeNames; }

protected:
    explicit typeNameSelectFilter(std::vector<std::string> typeNames);
    ~typeNameSelectFilter() override;

private:
    std::vector<std::string> mTypeNames;
};

/// Keeps the hits a function accepts; an empty function keeps everything.
class OX_GRAPHICS_API predicateSelectFilter : public iSelectFilter, public ox::refObj {
public:
    using predicate = std::function<bool(const ox::refPtr<iDrawable>&, const pickHit_t&)>;

    static ox::refPtr<predicateSelectFilter> create(predicate accept);

    predicateSelectFilter(const predicateSelectFilter&) = delete;
    predicateSelectFilter& operator=(const predicateSelectFilter&) = delete;

    bool accept(const ox::refPtr<iDrawable>& drawable, const pickHit_t& hit) const override;

protected:
    explicit predicateSelectFilter(predicate accept);
    ~predicateSelectFilter() override;

private:
    predicate mAccept;
};

/// How selectMultiple combines the drawables in the rectangle with the current selection.
enum class eSelectMode : int {
    replace = 0,  ///< the selection becomes exactly the drawables in the rectangle
    add = 1,      ///< they are added; the rest of the selection stays
    toggle = 2,   ///< each one flips between selected and not selected
    remove = 3,   ///< they are taken out of the selection
};

} // namespace oxGraphics
