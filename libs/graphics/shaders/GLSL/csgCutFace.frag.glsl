#version 330 compatibility
// Cut faces, fragment stage (the vertex stage is standardLighting.vert.glsl): where a cut volume
// opens a solid, the volume's far side is shown as the face of the cut, in the scene's
// outside-blank colour.
//
// Lit from GL_LIGHT0 and the light model as the cut pass sets them for both paths (see
// scene/glcsgpass.h), so fixed function and this program agree: the light model's ambient is the
// floor, the light's diffuse the rest. A cut face is a volume's back face, lit on the normal
// turned towards the viewer as the two-sided light model does. The vertex colour is ignored:
// whatever colour a volume sets, its cut faces take the outside-blank colour.

in vec3 v_eyeNormal;

uniform vec3 u_outsideBlankColor;

void main()
{
    vec3 light = gl_LightSource[0].position.xyz;
    float cosine = dot(v_eyeNormal, light) * inversesqrt(max(dot(v_eyeNormal, v_eyeNormal) * dot(light, light), 1e-30));
    float diffuse = max(gl_FrontFacing ? cosine : -cosine, 0.0);
    vec3 lit = u_outsideBlankColor * (gl_LightModel.ambient.rgb + gl_LightSource[0].ambient.rgb
                                      + gl_LightSource[0].diffuse.rgb * diffuse);
    gl_FragData[0] = vec4(min(lit, vec3(1.0)), 1.0);
}
