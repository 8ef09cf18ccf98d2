#version 330 compatibility
// Object outline, fragment stage: one flat colour, no lighting, for silhouettes and masks.
//   u_outlineColor  the colour, alpha included

uniform vec4 u_outlineColor;

void main()
{
    gl_FragData[0] = u_outlineColor;
}
