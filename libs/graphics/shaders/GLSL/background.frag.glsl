#version 330 compatibility
// Background gradient over the whole viewport, drawn on the screen quad before anything else:
// u_bottomColor at the bottom edge, u_topColor at the top, linear in between.

uniform vec4 u_topColor;
uniform vec4 u_bottomColor;

in vec2 v_texCoord;

void main()
{
    gl_FragData[0] = mix(u_bottomColor, u_topColor, v_texCoord.y);
}
