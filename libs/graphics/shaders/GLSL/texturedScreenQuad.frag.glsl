#version 330 compatibility
// Textured screen quad: the texture stretched over the quad, texel colours unchanged.

uniform sampler2D u_texture;

in vec2 v_texCoord;

layout(location = 0) out vec4 o_color;

void main()
{
    o_color = texture(u_texture, v_texCoord);
}
