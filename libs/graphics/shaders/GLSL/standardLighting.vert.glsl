#version 330 compatibility
// Standard lighting, vertex stage: the fixed-function transform, and what the fragment stage
// needs to light per pixel as the fixed-function light set-up does per vertex.

out vec3 v_eyeNormal;
out vec4 v_color;
out vec3 v_eyePosition;
// 1 for lit geometry; 0 where the drawer sent a zero normal, its mark for unlit lines and points.
out float v_lit;

void main()
{
    gl_Position = ftransform(); // bit-identical positions, so the two paths agree at the edges
    vec4 eyePosition = gl_ModelViewMatrix * gl_Vertex;
    v_eyePosition = eyePosition.xyz / eyePosition.w;
    v_eyeNormal = gl_NormalMatrix * gl_Normal;
    v_color = gl_Color;
    v_lit = dot(gl_Normal, gl_Normal) > 1e-12 ? 1.0 : 0.0;
}
