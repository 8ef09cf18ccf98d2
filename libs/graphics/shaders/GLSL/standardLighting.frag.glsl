#version 330 compatibility
// Standard lighting, fragment stage: GL_LIGHT0 with the material the drawers set, both faces lit
// (the back face with its own material and the normal turned round), as the fixed-function
// two-sided light model does.
//
// Uniforms:
//   u_maskTexture                 sampler of the mask effect: fragments whose mask texel has red
//                                 above 0.5 are dropped; with no mask bound nothing is.
//   u_isSelected                  1 for selected drawables: their highlight colour is lifted
//                                 towards the unlit colour so it reads on faces turned away.
//   u_packedTopBtmColorAndEnable  bit 24 enables a sky/ground ambient: bits 0-11 the sky colour
//                                 and bits 12-23 the ground colour, 4 bits per channel (R high).
//   u_numLayerDescriptions        number of multilayer descriptions; this program draws none.
//   u_forceColorFromVertexAttrib  1 takes the colour from the vertex colour, not the material.

in vec3 v_eyeNormal;
in vec4 v_color;
in vec3 v_eyePosition;
in float v_lit;

uniform sampler2D u_maskTexture;
uniform int u_isSelected;
uniform int u_packedTopBtmColorAndEnable;
uniform int u_numLayerDescriptions;
uniform int u_forceColorFromVertexAttrib;

vec3 unpackColor12(int bits)
{
    return vec3(float((bits >> 8) & 15), float((bits >> 4) & 15), float(bits & 15)) / 15.0;
}

void main()
{
    if (texelFetch(u_maskTexture, ivec2(gl_FragCoord.xy), 0).r > 0.5)
        discard;
    if (v_lit < 0.5) {
        gl_FragColor = v_color;
        return;
    }

    bool front = gl_FrontFacing;
    vec3 n = normalize(front ? v_eyeNormal : -v_eyeNormal);
    vec4 ambientMaterial = front ? gl_FrontMaterial.ambient : gl_BackMaterial.ambient;
    vec4 diffuseMaterial = front ? gl_FrontMaterial.diffuse : gl_BackMaterial.diffuse;
    vec4 specularMaterial = front ? gl_FrontMaterial.specular : gl_BackMaterial.specular;
    vec4 emission = front ? gl_FrontMaterial.emission : gl_BackMaterial.emission;
    float shininess = front ? gl_FrontMaterial.shininess : gl_BackMaterial.shininess;
    if (u_forceColorFromVertexAttrib != 0) {
        ambientMaterial = v_color;
        diffuseMaterial = v_color;
    }

    vec4 lightPosition = gl_LightSource[0].position;
    vec3 l = lightPosition.w == 0.0 ? normalize(lightPosition.xyz)
                                    : normalize(lightPosition.xyz / lightPosition.w - v_eyePosition);
    float diffuse = max(dot(n, l), 0.0);
    vec3 halfVector = normalize(l + vec3(0.0, 0.0, 1.0)); // infinite viewer, as the light model has
    float specular = diffuse > 0.0 ? pow(max(dot(n, halfVector), 0.0), shininess) : 0.0;

    vec3 sceneAmbient = gl_LightModel.ambient.rgb;
    if ((u_packedTopBtmColorAndEnable & (1 << 24)) != 0) {
        vec3 sky = unpackColor12(u_packedTopBtmColorAndEnable & 4095);
        vec3 ground = unpackColor12((u_packedTopBtmColorAndEnable >> 12) & 4095);
        sceneAmbient = mix(ground, sky, n.y * 0.5 + 0.5) * gl_LightModel.ambient.rgb * 5.0;
    }

    vec3 color = emission.rgb + sceneAmbient * ambientMaterial.rgb
               + gl_LightSource[0].ambient.rgb * ambientMaterial.rgb
               + gl_LightSource[0].diffuse.rgb * diffuseMaterial.rgb * diffuse
               + gl_LightSource[0].specular.rgb * specularMaterial.rgb * specular;
    if (u_isSelected != 0)
        color = mix(color, diffuseMaterial.rgb, 0.3);
    gl_FragColor = vec4(clamp(color, 0.0, 1.0), diffuseMaterial.a);
}
