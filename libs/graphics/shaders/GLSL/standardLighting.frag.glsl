#version 330 compatibility
// Standard lighting, fragment stage: GL_LIGHT0 as the fixed-function two-sided light model lights
// it, both faces lit (the back face with its own colour and the normal turned round). Ambient and
// diffuse material come from the vertex colours (see the vertex stage): the front face takes the
// colour, the back face the secondary colour, alpha is the colour's. Emission, specular and
// shininess, which the drawers never vary, come from the material state.
//
// The light is taken as directional, as the frame sets it up (its default position, a head light;
// see scene/glframelights.h): a positional light would cost every fragment the interpolated eye
// position, and is lit here from the direction of its position instead.
//
// Uniforms:
//   u_hasMask                     1 when u_maskTexture holds the mask effect: fragments whose mask
//                                 texel has red above 0.5 are dropped. 0 (the default) looks
//                                 nothing up, whatever a host left bound on that unit.
//   u_maskTexture                 sampler of the mask effect.
//   u_packedTopBtmColorAndEnable  bit 24 enables a sky/ground ambient: bits 0-11 the sky colour
//                                 and bits 12-23 the ground colour, 4 bits per channel (R high).
//   u_numLayerDescriptions        number of multilayer descriptions; this program draws none.
//   u_isBlendedOitPass            1 in the transparent pass: instead of a colour, the fragment's
//                                 share of the weighted blended average (see writeFragment).
// The frame also sets u_isSelected and u_forceColorFromVertexAttrib, which this program does not
// have: a selected drawable shows its highlight colour lit as the fixed-function path lights it,
// and the colour always comes from the vertex.

in vec3 v_eyeNormal;
in vec4 v_color;
in vec3 v_backColor;

uniform int u_hasMask;
uniform sampler2D u_maskTexture;
uniform int u_packedTopBtmColorAndEnable;
uniform int u_numLayerDescriptions;
uniform int u_isBlendedOitPass;

// Opaque passes write the colour. The transparent pass draws with the colour factors ONE, ONE
// and the alpha factors ZERO, ONE_MINUS_SRC_ALPHA into two targets:
//   accumulation rgb += colour * alpha * weight, and its alpha *= (1 - alpha): the revealage,
//   weight target r  += alpha * weight, the sum the composite divides by.
// Sums and products do not depend on the order the fragments arrive in. The weight favours
// near fragments and stays within half-float range for a few hundred layers.
void writeFragment(vec4 color)
{
    if (u_isBlendedOitPass == 0) {
        gl_FragData[0] = color;
        return;
    }
    float a = color.a;
    float z = gl_FragCoord.z;
    float w = a * clamp(0.03 / (1e-5 + z * z * z * z), 1e-2, 3e2);
    gl_FragData[0] = vec4(color.rgb * w, a);
    gl_FragData[1] = vec4(w);
}

vec3 unpackColor12(int bits)
{
    return vec3(float((bits >> 8) & 15), float((bits >> 4) & 15), float(bits & 15)) / 15.0;
}

void main()
{
    if (u_hasMask != 0) {
        if (texelFetch(u_maskTexture, ivec2(gl_FragCoord.xy), 0).r > 0.5)
            discard;
    }
    float normalLengthSquared = dot(v_eyeNormal, v_eyeNormal);
    if (normalLengthSquared < 0.01) { // the zero normal of unlit lines and points
        writeFragment(v_color);
        return;
    }

    bool front = gl_FrontFacing;
    vec3 n = (front ? v_eyeNormal : -v_eyeNormal) * inversesqrt(normalLengthSquared);
    vec3 material = front ? v_color.rgb : v_backColor;
    vec4 specularMaterial = front ? gl_FrontMaterial.specular : gl_BackMaterial.specular;
    vec4 emission = front ? gl_FrontMaterial.emission : gl_BackMaterial.emission;
    float shininess = front ? gl_FrontMaterial.shininess : gl_BackMaterial.shininess;

    vec3 l = normalize(gl_LightSource[0].position.xyz);
    float diffuse = max(dot(n, l), 0.0);
    vec3 halfVector = normalize(l + vec3(0.0, 0.0, 1.0)); // infinite viewer, as the light model has
    float specular = diffuse > 0.0 ? pow(max(dot(n, halfVector), 0.0), shininess) : 0.0;

    vec3 sceneAmbient = gl_LightModel.ambient.rgb;
    if ((u_packedTopBtmColorAndEnable & (1 << 24)) != 0) {
        vec3 sky = unpackColor12(u_packedTopBtmColorAndEnable & 4095);
        vec3 ground = unpackColor12((u_packedTopBtmColorAndEnable >> 12) & 4095);
        sceneAmbient = mix(ground, sky, n.y * 0.5 + 0.5) * gl_LightModel.ambient.rgb * 5.0;
    }

    vec3 color = emission.rgb + (sceneAmbient + gl_LightSource[0].ambient.rgb) * material
               + gl_LightSource[0].diffuse.rgb * material * diffuse
               + gl_LightSource[0].specular.rgb * specularMaterial.rgb * specular;
    writeFragment(vec4(clamp(color, 0.0, 1.0), v_color.a));
}
