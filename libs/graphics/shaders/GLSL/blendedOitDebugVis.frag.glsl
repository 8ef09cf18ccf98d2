#version 330 compatibility
// A look inside the transparency targets for debugging, drawn opaque over the frame:
//   u_debugView 1: the average colour of the transparent fragments (accumulation / weight)
//   u_debugView 2: the revealage, white where nothing transparent lies
//   u_debugView 3: the weight sum, scaled by u_weightScale to be visible

uniform sampler2D u_accumTex;
uniform sampler2D u_revealageTex;
uniform int u_debugView;
uniform float u_weightScale;

void main()
{
    ivec2 texel = ivec2(gl_FragCoord.xy);
    vec4 accum = texelFetch(u_accumTex, texel, 0);
    float weight = texelFetch(u_revealageTex, texel, 0).r;
    if (u_debugView == 2)
        gl_FragData[0] = vec4(vec3(accum.a), 1.0);
    else if (u_debugView == 3)
        gl_FragData[0] = vec4(vec3(clamp(weight * u_weightScale, 0.0, 1.0)), 1.0);
    else
        gl_FragData[0] = vec4(accum.rgb / max(weight, 1e-5), 1.0);
}
