#version 330 compatibility
// Standard lighting, vertex stage: the fixed-function transform, and what the fragment stage
// needs to light per pixel as the fixed-function light set-up does per vertex.
//
// Colours come from the vertex, not from gl_FrontMaterial/gl_BackMaterial. Mesa keeps glMaterial
// calls as per-vertex attributes of immediate-mode and display-list drawing (between glBegin and
// glEnd that is all they can be) and batches consecutive glBegin/glEnd blocks into one draw,
// while the material uniforms hold one value per draw: two meshes of different colours showed
// one. The drawers therefore send each material colour as a vertex colour as well (see
// drawing/glcolorstate.h): the current colour is the front material's ambient and diffuse, the
// secondary colour the back material's.

out vec3 v_eyeNormal; // unit length; zero where the drawer sent a zero normal (unlit lines and points)
out vec4 v_color;
out vec3 v_backColor;

void main()
{
    gl_Position = ftransform(); // bit-identical positions, so the two paths agree at the edges
    // Normalised here because drawers may send any length (GL_NORMALIZE copes on the
    // fixed-function path): the fragment stage tells lit from unlit by the length alone.
    v_eyeNormal = gl_Normal == vec3(0.0) ? vec3(0.0) : normalize(gl_NormalMatrix * gl_Normal);
    v_color = gl_Color;
    v_backColor = gl_SecondaryColor.rgb;
}
