#version 330 compatibility
// Textured screen quad: the corners come from a vertex array in normalised device coordinates
// (-1..1), so (1, 1, 0, 0) in u_scaleVec2OffsetVec2 covers the whole viewport.

layout(location = 0) in vec2 a_position;

// xy scales the quad, zw then moves it (both in normalised device coordinates).
uniform vec4 u_scaleVec2OffsetVec2;

out vec2 v_texCoord;

void main()
{
    v_texCoord = a_position * 0.5 + 0.5;
    gl_Position = vec4(a_position * u_scaleVec2OffsetVec2.xy + u_scaleVec2OffsetVec2.zw, 0.0, 1.0);
}
