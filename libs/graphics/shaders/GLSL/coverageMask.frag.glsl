#version 330 compatibility
// Coverage mask, fragment stage: hides the pixels the mask says to hide by moving the frame's
// depth there to the near plane, so nothing drawn afterwards passes the depth test; the colour
// (the background) stays. Drawn over the whole viewport with colour writes off.
//   u_maskTexture   the mask drawables' coverage, one texel per pixel (red > 0.5: covered)
//   u_hideCovered   1: hide the covered pixels, 0: hide the others

uniform sampler2D u_maskTexture;
uniform int u_hideCovered;

void main()
{
    bool covered = texelFetch(u_maskTexture, ivec2(gl_FragCoord.xy), 0).r > 0.5;
    if (covered != (u_hideCovered != 0))
        discard;
    gl_FragDepth = 0.0;
}
