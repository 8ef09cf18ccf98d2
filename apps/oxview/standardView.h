#pragma once
// The named standard views of oxview and how they map onto the scene's view setters.
#include <optional>
#include <string_view>

namespace oxGraphics {
class scene;
}

namespace oxview {

enum class eStandardView { front, back, left, right, top, bottom, frontLeft, frontRight, backLeft, backRight };

/// The view of a command-line name (front, back-left, ...); nothing for an unknown name.
std::optional<eStandardView> standardViewFromName(std::string_view name);
std::string_view standardViewName(eStandardView view);
/// Every name, comma separated, for messages.
std::string_view standardViewNames();

/// Turns the camera to the view about the current view centre (so the centre stays put);
/// top and bottom keep world +Y up on the screen.
void applyStandardView(oxGraphics::scene& scene, eStandardView view, bool animate);

} // namespace oxview
