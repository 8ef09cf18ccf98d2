#version 330 compatibility
// Standard lighting, vertex stage: the fixed-function transform, and what the fragment stage
// needs to light per pixel as the fixed-function light set-up lights per vertex.
//
// Colours come from the vertex, not from gl_FrontMaterial/gl_BackMaterial. Mesa keeps glMaterial
// calls as per-vertex attributes of immediate-mode and display-list drawing (between glBegin and
// glEnd that is all they can be) and batches consecutive glBegin/glEnd blocks into one draw,
// while the material uniforms hold one value per draw: two meshes of different colours showed
// one. The drawers therefore send each material colour as a vertex colour as well (see
// drawing/glcolorstate.h): the current colour is the front material's ambient and diffuse, the
// secondary colour the back material's.
//
// What is handed on is kept small, because every interpolated value costs the rasteriser per
// triangle and per pixel: the normal, the colour, and the back colour as one flat value. So is
// the work per vertex: a large mesh has more vertices than pixels.

out vec3 v_eyeNormal;  // as the drawer sent it, any length; zero for unlit lines and points
out vec4 v_color;
// The back colour as 0xRRGGBB in a float (exact up to 2^24), or -1 when it is the front colour:
// all the drawers' back colours are constant over a primitive, and a flat value costs next to
// nothing, where three interpolated ones cost a tenth of the frame.
flat out float v_packedBackColor;

// Colour override (ghosted parts, fixtures): 0 takes the vertex colours, 1 takes u_overrideColor
// for both faces, including colours a display list recorded. A mix rather than a branch: two
// multiply-adds per vertex, exact for weight 0.
uniform vec4 u_overrideColor;
uniform float u_overrideWeight;

#ifdef OX_MULTILAYER_BLANK
// World position and normal for the height layers; the camera's transform goes into eye space.
uniform mat4 u_eyeToWorld;
uniform mat4 u_worldToEye;
out vec3 v_worldPosition;
out vec3 v_worldNormal;
#endif

void main()
{
    gl_Position = ftransform(); // bit-identical positions, so the two paths agree at the edges
    // Not normalised here: a large mesh has several vertices per pixel drawn, so the fragment
    // stage does it for less (and GL_NORMALIZE lets drawers send any length).
    v_eyeNormal = gl_NormalMatrix * gl_Normal;
    vec4 frontColor = mix(gl_Color, u_overrideColor, u_overrideWeight);
    vec4 backColor = mix(gl_SecondaryColor, u_overrideColor, u_overrideWeight);
    v_color = frontColor;
    ivec3 back = ivec3(backColor.rgb * 255.0 + 0.5);
    v_packedBackColor = backColor.rgb == frontColor.rgb ? -1.0 : float((back.r << 16) | (back.g << 8) | back.b);
#ifdef OX_MULTILAYER_BLANK
    v_worldPosition = (u_eyeToWorld * (gl_ModelViewMatrix * gl_Vertex)).xyz;
    // Normals go back with the transpose of the forward transform (it may scale per axis).
    v_worldNormal = (vec4(v_eyeNormal, 0.0) * u_worldToEye).xyz;
#endif
}
