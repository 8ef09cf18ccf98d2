#version 330 compatibility
// Blended transparency, the two screen-quad steps around the transparent drawables:
//  - the clear pass (u_isOitClearPass = 1) fills the accumulation and weight targets with their
//    start values, drawn with blending off;
//  - the composite lays the weighted average of the transparent fragments over the frame,
//    drawn with the factors ONE, ONE_MINUS_SRC_ALPHA (premultiplied "over").
// The targets hold (see writeFragment in standardLighting.frag.glsl):
//   u_accumTex      rgb = sum of colour * weight, a = product of (1 - alpha), the revealage
//   u_revealageTex  r   = sum of weight
// Both are read texel by texel at the fragment's own pixel.

uniform sampler2D u_accumTex;
uniform sampler2D u_revealageTex;
uniform int u_isOitClearPass;
uniform vec4 u_oitClearColorAccum;
uniform vec4 u_oitClearColorRevealage;

void main()
{
    if (u_isOitClearPass != 0) {
        gl_FragData[0] = u_oitClearColorAccum;
        gl_FragData[1] = u_oitClearColorRevealage;
        return;
    }
    ivec2 texel = ivec2(gl_FragCoord.xy);
    vec4 accum = texelFetch(u_accumTex, texel, 0);
    float revealage = accum.a;
    if (revealage >= 1.0)
        discard; // no transparent fragment here: leave the frame untouched
    float weight = texelFetch(u_revealageTex, texel, 0).r;
    vec3 average = accum.rgb / max(weight, 1e-5);
    float coverage = 1.0 - revealage;
    gl_FragData[0] = vec4(average * coverage, coverage);
}
