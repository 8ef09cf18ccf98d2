#version 330 compatibility
// Standard lighting, fragment stage: GL_LIGHT0 as the fixed-function two-sided light model lights
// it, per pixel: both faces lit, the back face with its own colour and the normal turned round.
// Ambient and diffuse material come from the vertex colours (see the vertex stage), alpha is the
// colour's, emission is the material's.
//
// The light is directional, as the frame sets it up (its default position, a head light; see
// scene/glframelights.h), and the drawers never give a material a specular colour: a positional
// light would cost every fragment an interpolated eye position and a highlight a power, and is
// lit here from the direction of its position, without the highlight.
//
// Variants, chosen when the program is built (a branch on a uniform costs every fragment on a
// software rasteriser even when it is not taken):
//   OX_BLENDED_OIT  the transparent pass: the fragment's share of the weighted blended average
//                   instead of a colour (see writeFragment).
//   OX_MULTILAYER_BLANK  a CAM blank in height layers: the material is the colour of the layer the
//                   fragment's world height falls in, and faces looking along the layers' axis
//                   (cosine beyond 0.99) take the top or bottom colour when that is enabled.

in vec3 v_eyeNormal;
in vec4 v_color;
flat in float v_packedBackColor;

// Opaque passes write the colour. The transparent pass draws with the colour factors ONE, ONE
// and the alpha factors ZERO, ONE_MINUS_SRC_ALPHA into two targets:
//   accumulation rgb += colour * alpha * weight, and its alpha *= (1 - alpha): the revealage,
//   weight target r  += alpha * weight, the sum the composite divides by.
// Sums and products do not depend on the order the fragments arrive in. The weight favours
// near fragments and stays within half-float range for a few hundred layers.
void writeFragment(vec4 color)
{
#ifndef OX_BLENDED_OIT
    gl_FragData[0] = color;
#else
    // Alpha as a fixed-point frame buffer would take it: a transparency beyond 0..1 (or not a
    // number) must not turn the sums and the product negative.
    float a = isnan(color.a) ? 1.0 : clamp(color.a, 0.0, 1.0);
    float z = gl_FragCoord.z;
    float w = a * clamp(0.03 / (1e-5 + z * z * z * z), 1e-2, 3e2);
    gl_FragData[0] = vec4(color.rgb * w, a);
    gl_FragData[1] = vec4(w);
#endif
}

vec3 unpackColor(float code)
{
    int bits = int(code);
    return vec3(float((bits >> 16) & 255), float((bits >> 8) & 255), float(bits & 255)) / 255.0;
}

#ifdef OX_MULTILAYER_BLANK
const int kMaxLayers = 16;
uniform vec3 u_layerAxis;                        // unit length
uniform int u_numLayerDescriptions;              // layers in use, 0..kMaxLayers
uniform vec4 u_layerDescriptions[kMaxLayers];    // from, to, packed colour, unused
uniform vec3 u_packedTopBtmColorAndEnable;       // packed top colour, packed bottom colour, 1 = on
in vec3 v_worldPosition;
in vec3 v_worldNormal;

vec3 blankMaterial(vec3 material)
{
    float height = dot(v_worldPosition, u_layerAxis);
    for (int i = 0; i < u_numLayerDescriptions; ++i) {
        vec4 layer = u_layerDescriptions[i];
        if (height >= layer.x && height < layer.y) {
            material = unpackColor(layer.z);
            break;
        }
    }
    if (u_packedTopBtmColorAndEnable.z > 0.5) {
        float along = dot(v_worldNormal, u_layerAxis) * inversesqrt(max(dot(v_worldNormal, v_worldNormal), 1e-30));
        if (along > 0.99)
            material = unpackColor(u_packedTopBtmColorAndEnable.x);
        else if (along < -0.99)
            material = unpackColor(u_packedTopBtmColorAndEnable.y);
    }
    return material;
}
#endif

void main()
{
    bool front = gl_FrontFacing;
    vec3 light = gl_LightSource[0].position.xyz;
    float normalLengthSquared = dot(v_eyeNormal, v_eyeNormal);
    float cosine = dot(v_eyeNormal, light) * inversesqrt(max(normalLengthSquared * dot(light, light), 1e-30));
    float diffuse = max(front ? cosine : -cosine, 0.0);
    vec3 material = (front || v_packedBackColor < 0.0) ? v_color.rgb : unpackColor(v_packedBackColor);
#ifdef OX_MULTILAYER_BLANK
    material = blankMaterial(material);
#endif
    vec3 emission = front ? gl_FrontMaterial.emission.rgb : gl_BackMaterial.emission.rgb;
    vec3 lit = emission + material * (gl_LightModel.ambient.rgb + gl_LightSource[0].ambient.rgb
                                      + gl_LightSource[0].diffuse.rgb * diffuse);
    // Selected rather than branched: the zero normal of unlit lines and points.
    vec3 color = normalLengthSquared < 1e-12 ? v_color.rgb : lit;
    writeFragment(vec4(min(color, vec3(1.0)), v_color.a));
}
