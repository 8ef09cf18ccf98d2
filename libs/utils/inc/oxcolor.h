#pragma once
#include <cstdint>

namespace ox {

/// A colour of three 8-bit channels.
class rgbColor {
public:
    constexpr rgbColor() = default;
    constexpr rgbColor(std::uint8_t r, std::uint8_t g, std::uint8_t b) : mR(r), mG(g), mB(b) {}

    constexpr void setRGB(unsigned char r, unsigned char g, unsigned char b) { mR = r; mG = g; mB = b; }
    constexpr std::uint8_t red() const { return mR; }
    constexpr std::uint8_t green() const { return mG; }
    constexpr std::uint8_t blue() const { return mB; }

    friend constexpr bool operator==(const rgbColor&, const rgbColor&) = default;

private:
    std::uint8_t mR = 0, mG = 0, mB = 0;
};

} // namespace ox
