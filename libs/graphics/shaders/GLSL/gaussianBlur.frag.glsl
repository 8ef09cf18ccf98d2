#version 330 compatibility
// Gaussian blur, fragment stage: one direction of a separable blur (run twice, across and down),
// reading one texel per pixel of the viewport; texels past the edge repeat the edge.
//   u_texture      what is blurred, the viewport's size
//   u_blurStep     (1, 0) across, (0, 1) down
//   u_blurRadius   in pixels; the kernel's sigma is half of it

uniform sampler2D u_texture;
uniform ivec2 u_blurStep;
uniform int u_blurRadius;

layout(location = 0) out vec4 o_color;

void main()
{
    ivec2 pixel = ivec2(gl_FragCoord.xy);
    ivec2 last = textureSize(u_texture, 0) - 1;
    float sigma = max(float(u_blurRadius) * 0.5, 0.5);
    float falloff = -0.5 / (sigma * sigma);
    vec4 sum = vec4(0.0);
    float weights = 0.0;
    for (int i = -u_blurRadius; i <= u_blurRadius; ++i) {
        float w = exp(float(i * i) * falloff);
        sum += w * texelFetch(u_texture, clamp(pixel + i * u_blurStep, ivec2(0), last), 0);
        weights += w;
    }
    o_color = sum / weights;
}
