#include "standardView.h"

#include "oxscene.h"

#include "oxgeomatrix.h"
#include "oxgeopoint.h"
#include "oxgeovector.h"

#include <array>
#include <utility>

namespace oxview {
namespace {

constexpr std::array<std::pair<std::string_view, eStandardView>, 10> kNames{{
    {"front", eStandardView::front},
    {"back", eStandardView::back},
    {"left", eStandardView::left},
    {"right", eStandardView::right},
    {"top", eStandardView::top},
    {"bottom", eStandardView::bottom},
    {"front-left", eStandardView::frontLeft},
    {"front-right", eStandardView::frontRight},
    {"back-left", eStandardView::backLeft},
    {"back-right", eStandardView::backRight},
}};

} // namespace

std::optional<eStandardView> standardViewFromName(std::string_view name) {
    for (const auto& [text, view] : kNames)
        if (text == name) return view;
    return std::nullopt;
}

std::string_view standardViewName(eStandardView view) {
    for (const auto& [text, v] : kNames)
        if (v == view) return text;
    return {};
}

std::string_view standardViewNames() {
    return "front, back, left, right, top, bottom, front-left, front-right, back-left, back-right";
}

void applyStandardView(oxGraphics::scene& scene, eStandardView view, bool animate) {
    const oxGeo::matrix3d model;  // the models are shown in world coordinates
    const oxGeo::point3d pivot = scene.currentViewCentre();
    const oxGeo::vector3d screenUp(0.0, 1.0, 0.0);
    switch (view) {
    case eStandardView::front: scene.setFrontView(animate, model, pivot); break;
    case eStandardView::back: scene.setBackView(animate, model, pivot); break;
    case eStandardView::left: scene.setLeftView(animate, model, pivot); break;
    case eStandardView::right: scene.setRightView(animate, model, pivot); break;
    case eStandardView::top: scene.setTopView(animate, model, pivot, screenUp); break;
    case eStandardView::bottom: scene.setBottomView(animate, model, pivot, screenUp); break;
    case eStandardView::frontLeft: scene.setFrontLeftView(animate, model, pivot); break;
    case eStandardView::frontRight: scene.setFrontRightView(animate, model, pivot); break;
    case eStandardView::backLeft: scene.setBackLeftView(animate, model, pivot); break;
    case eStandardView::backRight: scene.setBackRightView(animate, model, pivot); break;
    }
}

} // namespace oxview
