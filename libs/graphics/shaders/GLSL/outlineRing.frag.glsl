#version 330 compatibility
// Outline ring, fragment stage: the outline colour on every pixel outside the outlined drawables'
// coverage that lies within u_outlineWidth pixels of it, so the outline follows the silhouette
// whatever the geometry. Drawn over the whole viewport at the near plane, with depth test GL_LESS
// so a mask (which moves the frame's depth to the near plane) hides it too.
//   u_coverageTexture  one texel per pixel, red > 0.5 where an outlined drawable is
//   u_outlineColor     the colour, alpha included
//   u_outlineWidth     in pixels

uniform sampler2D u_coverageTexture;
uniform vec4 u_outlineColor;
uniform int u_outlineWidth;

layout(location = 0) out vec4 o_color;

bool covered(ivec2 texel, ivec2 last)
{
    return texelFetch(u_coverageTexture, clamp(texel, ivec2(0), last), 0).r > 0.5;
}

void main()
{
    ivec2 pixel = ivec2(gl_FragCoord.xy);
    ivec2 last = textureSize(u_coverageTexture, 0) - 1;
    if (covered(pixel, last))
        discard;
    int width = u_outlineWidth;
    int reach = width * width;
    bool near = false;
    for (int dy = -width; dy <= width && !near; ++dy)
        for (int dx = -width; dx <= width && !near; ++dx)
            near = dx * dx + dy * dy <= reach && covered(pixel + ivec2(dx, dy), last);
    if (!near)
        discard;
    o_color = u_outlineColor;
    gl_FragDepth = 0.0;
}
