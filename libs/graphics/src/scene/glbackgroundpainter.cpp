#include "glbackgroundpainter.h"

#include "backgroundimagelayout.h"
#include "glstate/glscopedstate.h"

#include <GL/glew.h>

#include <algorithm>

namespace oxGraphics::openGL {
namespace {

void glColor(const ox::rgbColor& c) { glColor4f(c.red() / 255.0f, c.green() / 255.0f, c.blue() / 255.0f, 1.0f); }

} // namespace

void glBackgroundPainter::assign(image_t& image, bool use, const unsigned char* pixels, int width, int height,
                                 int format) {
    image.used = use;
    if (pixels != nullptr && width > 0 && height > 0 && (format == 3 || format == 4)) {
        image.pixels.assign(pixels, pixels + static_cast<std::size_t>(width) * height * format);
        image.width = width;
        image.height = height;
        image.channels = format;
        image.dirty = true;
    } else if (pixels != nullptr) {
        image.used = false;
    }
}

void glBackgroundPainter::setImage(bool use, const unsigned char* pixels, int width, int height, int format) {
    assign(mImage, use, pixels, width, height, format);
}

void glBackgroundPainter::setTemporaryImage(bool use, const unsigned char* pixels, int width, int height, int format) {
    assign(mTemporary, use, pixels, width, height, format);
}

void glBackgroundPainter::setImageTransparency(double transparency) {
    mImageTransparency = std::clamp(transparency, 0.0, 1.0);
}

void glBackgroundPainter::release() {
    mImage.texture.reset();
    mTemporary.texture.reset();
    mQuad.reset();
}

void glBackgroundPainter::abandon() {
    mImage.texture.abandon();
    mTemporary.texture.abandon();
    mQuad.reset(); // checks its own context
}

void glBackgroundPainter::paint(const ox::rgbColor& top, const ox::rgbColor& bottom, int width, int height,
                                shaderProgram* program) {
    if (mTransparent)
        glClearColor(0.0f, 0.0f, 0.0f, 0.0f);
    else
        glClearColor(bottom.red() / 255.0f, bottom.green() / 255.0f, bottom.blue() / 255.0f, 1.0f);
    glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

    image_t* image = temporaryImageUsed()                          ? &mTemporary
                     : (mImage.used && !mImage.pixels.empty()) ? &mImage
                                                               : nullptr;
    const bool gradient = !mTransparent && !(top == bottom);
    if (!gradient && image == nullptr) return;

    glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_DEPTH_BUFFER_BIT | GL_COLOR_BUFFER_BIT | GL_TEXTURE_BIT |
                 GL_POLYGON_BIT);
    glPolygonMode(GL_FRONT_AND_BACK, GL_FILL); // a rubber band leaves GL_LINE behind
    glDisable(GL_LIGHTING);
    glDisable(GL_DEPTH_TEST);
    glDepthMask(GL_FALSE);
    {
        const glScreenMatrices screen;
        if (gradient) paintGradient(top, bottom, program);
        if (image != nullptr) paintImage(*image, width, height);
    }
    glPopAttrib();
}

void glBackgroundPainter::paintGradient(const ox::rgbColor& top, const ox::rgbColor& bottom, shaderProgram* program) {
    if (program != nullptr && !mQuad) mQuad = std::make_unique<glScreenQuad>();
    if (program != nullptr && mQuad->isValid()) {
        const glProgramScope hostProgram;
        program->activate();
        program->setUniformFloat4("u_topColor", top.red() / 255.0f, top.green() / 255.0f, top.blue() / 255.0f, 1.0f);
        program->setUniformFloat4("u_bottomColor", bottom.red() / 255.0f, bottom.green() / 255.0f,
                                  bottom.blue() / 255.0f, 1.0f);
        program->setUniformFloat4("u_scaleVec2OffsetVec2", 1.0f, 1.0f, 0.0f, 0.0f);
        mQuad->draw();
        program->deactivate();
        return;
    }
    glBegin(GL_QUADS);
    glColor(bottom);
    glVertex2f(-1.0f, -1.0f);
    glVertex2f(1.0f, -1.0f);
    glColor(top);
    glVertex2f(1.0f, 1.0f);
    glVertex2f(-1.0f, 1.0f);
    glEnd();
}

void glBackgroundPainter::paintImage(image_t& image, int width, int height) const {
    if (image.dirty || !image.texture) {
        if (!image.texture) image.texture = glTextureName::generate();
        const glPixelStore tightRows(glPixelStore::eDirection::unpack);
        glBindTexture(GL_TEXTURE_2D, image.texture.get());
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, image.width, image.height, 0, image.channels == 4 ? GL_RGBA : GL_RGB,
                     GL_UNSIGNED_BYTE, image.pixels.data());
        image.dirty = false;
    }
    const imageRect_t rect = backgroundImageRect(image.width, image.height, width, height, mSizing, mAlignment);
    const double vw = std::max(width, 1), vh = std::max(height, 1);
    auto ndcX = [&](double px) { return static_cast<float>(px / vw * 2 - 1); };
    auto ndcY = [&](double py) { return static_cast<float>(py / vh * 2 - 1); };
    glEnable(GL_TEXTURE_2D);
    glBindTexture(GL_TEXTURE_2D, image.texture.get());
    glTexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glColor4f(1.0f, 1.0f, 1.0f, static_cast<float>(1.0 - mImageTransparency));
    // Rows are stored top first, so texture row 0 goes to the top edge.
    glBegin(GL_QUADS);
    glTexCoord2f(0, 1); glVertex2f(ndcX(rect.left), ndcY(rect.bottom));
    glTexCoord2f(1, 1); glVertex2f(ndcX(rect.left + rect.width), ndcY(rect.bottom));
    glTexCoord2f(1, 0); glVertex2f(ndcX(rect.left + rect.width), ndcY(rect.bottom + rect.height));
    glTexCoord2f(0, 0); glVertex2f(ndcX(rect.left), ndcY(rect.bottom + rect.height));
    glEnd();
    glBindTexture(GL_TEXTURE_2D, 0);
}

} // namespace oxGraphics::openGL
